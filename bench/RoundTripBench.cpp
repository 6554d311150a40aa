// Blocking requests against the in-process device stack: each SetValue or GetValue sends,
// files a docket, waits for the callback thread's answer and wakes up. Reported per call as
// the median of every call's own latency (median_us) next to Google Benchmark's mean time.
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

double Median(std::vector<double>& samples)
{
    if (samples.empty())
        return 0.0;
    const auto middle = samples.begin() + static_cast<std::ptrdiff_t>(samples.size() / 2);
    std::nth_element(samples.begin(), middle, samples.end());
    return *middle;
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
    // Averaged over the caller threads: each thread's median.
    state.counters["median_us"] = benchmark::Counter(Median(latencies), benchmark::Counter::kAvgThreads);
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
