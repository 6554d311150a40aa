// Blocking SetValue through the device stack on knxd: one caller, the library's messenger, a
// private knxd (dummy bus, unix socket) started for the run. Targets: median under 300 us,
// 99th percentile under 2 ms (the counters median_us and p99_us).
#include <TavObjectModel/DscAsyncRequestMessenger.h>
#include <TavObjectModel/RequestMessengerDeviceStack.h>
#include <devicestack/KnxdDeviceStackClient.h>

#include <benchmark/benchmark.h>

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

namespace
{
// Starts the daemon for the benchmark's run and stops it afterwards.
class PrivateKnxd
{
public:
    PrivateKnxd() : state_("/tmp/tav-bench-knxd." + std::to_string(::getpid()))
    {
        ok_ = std::system(("bash " TAV_KNXD_FIXTURE_SCRIPT " start " + state_).c_str()) == 0;
        std::ifstream file(state_);
        std::string dir;
        std::getline(file, dir);
        url_ = "local:" + dir + "/knx";
    }
    ~PrivateKnxd() { (void)!std::system(("bash " TAV_KNXD_FIXTURE_SCRIPT " stop " + state_).c_str()); }
    bool Ok() const { return ok_; }
    const std::string& Url() const { return url_; }

private:
    std::string state_;
    std::string url_;
    bool ok_ = false;
};

void BM_DeviceStackBlockingSetValue(benchmark::State& state)
{
    PrivateKnxd knxd;
    if (!knxd.Ok())
    {
        state.SkipWithError("knxd did not start");
        return;
    }
    Lumo::DeviceObject object;
    object.co = 1;
    object.groupAddresses = {0x0A03};
    object.dpt = KNXDPT{0, 9, 1};
    Lumo::ParseObjectFlags("CRWTU", object.flags);
    Lumo::KnxdDeviceStackClient client(knxd.Url(), {object});
    Okaro::RemoteRequestMessengerDeviceStack messenger(client);
    Okaro::DscAsyncRequestMessenger requests(messenger, boost::posix_time::seconds(5), 0,
                                             log4cplus::Logger::getInstance("DeviceStackBench"));
    requests.SetAsResponseHandler();
    OKAVALUE value(ivtFloat);
    std::vector<double> latencies;
    latencies.reserve(100000);
    bool failed = false;
    for (auto _ : state)
    {
        value.numeric.real = static_cast<double>(latencies.size() % 500) / 10.0;
        const auto start = std::chrono::steady_clock::now();
        const Okaro::Docket docket = requests.SetValue(100101, value, false);
        latencies.push_back(std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count());
        failed = failed || !docket.IsReplyValid();
    }
    requests.UnsetAsResponseHandler();
    if (failed)
    {
        state.SkipWithError("a SetValue failed");
        return;
    }
    std::sort(latencies.begin(), latencies.end());
    state.counters["median_us"] = latencies[latencies.size() / 2];
    state.counters["p99_us"] = latencies[latencies.size() * 99 / 100];
}
BENCHMARK(BM_DeviceStackBlockingSetValue)->Iterations(20000)->Unit(benchmark::kMicrosecond);
} // namespace
