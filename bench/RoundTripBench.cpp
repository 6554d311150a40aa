// Blocking requests against the in-process device stack: each SetValue or GetValue sends,
// files a docket, waits for the callback thread's answer and wakes up. Reported per call as
// the median and the 90th percentile of every call's own latency (median_us, p90_us) next to
// Google Benchmark's mean time.
#include "HeapCounter.h"

#include <TavObjectModel/DscAsyncRequestMessenger.h>
#include <TavObjectModel/RequestMessengerDeviceStack.h>
#include <platform/LocalDeviceStackClient.h>

#include <benchmark/benchmark.h>
#include <log4cplus/logger.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <vector>

namespace
{
struct Stack
{
    Lumo::LocalDeviceStackClient client;
    Okaro::RemoteRequestMessengerDeviceStack adapter{client};
    Okaro::DscAsyncRequestMessenger messenger{adapter, boost::posix_time::seconds(5), 0,
                                             log4cplus::Logger::getInstance("Bench")};
    Stack() { messenger.SetAsResponseHandler(); }
    ~Stack() { messenger.UnsetAsResponseHandler(); }
};

// One stack for all caller threads, as in an application.
Stack& SharedStack()
{
    static Stack stack;
    return stack;
}

// The sample below which the given share of the samples lies (0.5: the median).
double Percentile(std::vector<double>& samples, double share)
{
    if (samples.empty())
        return 0.0;
    const std::size_t rank =
        std::min(samples.size() - 1, static_cast<std::size_t>(static_cast<double>(samples.size()) * share));
    const auto at = samples.begin() + static_cast<std::ptrdiff_t>(rank);
    std::nth_element(samples.begin(), at, samples.end());
    return *at;
}

template <typename Call>
void Measure(benchmark::State& state, Call call)
{
    // Room for every call of this run, so that no sample is paid for by growing the vector
    // inside the timed loop (a fast single caller makes far more calls than 65536).
    std::vector<double> latencies;
    latencies.reserve(static_cast<std::size_t>(state.max_iterations));
    bool failed = false;
    const TavBench::HeapPerIteration heap;
    for (auto _ : state)
    {
        const auto start = std::chrono::steady_clock::now();
        const Okaro::Docket docket = call();
        const auto end = std::chrono::steady_clock::now();
        failed = failed || !docket.IsReplyValid();
        latencies.push_back(std::chrono::duration<double, std::micro>(end - start).count());
    }
    heap.Report(state);
    if (failed)
        state.SkipWithError("a request failed");
    // Averaged over the caller threads: each thread's median, and its 90th percentile, which
    // shows how long a caller waits when others go before it on the request mutex.
    state.counters["median_us"] = benchmark::Counter(Percentile(latencies, 0.5), benchmark::Counter::kAvgThreads);
    state.counters["p90_us"] = benchmark::Counter(Percentile(latencies, 0.9), benchmark::Counter::kAvgThreads);
}

void SetValueRoundTrip(benchmark::State& state)
{
    Stack& stack = SharedStack();
    OKAVALUE value(ivtFloat);
    value.numeric.real = 21.5;
    const unsigned long id = 1000u + static_cast<unsigned long>(state.thread_index());
    Measure(state, [&] { return stack.messenger.SetValue(id, value, false); });
}

void GetValueRoundTrip(benchmark::State& state)
{
    Stack& stack = SharedStack();
    const unsigned long id = 1000u + static_cast<unsigned long>(state.thread_index());
    Measure(state, [&] { return stack.messenger.GetValue(id, false); });
}

BENCHMARK(SetValueRoundTrip)->Threads(1)->Threads(4)->UseRealTime();
BENCHMARK(GetValueRoundTrip)->Threads(1)->Threads(4)->UseRealTime();
} // namespace
