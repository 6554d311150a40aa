// The heap counters of a benchmark, per call. Apart from HeapCounter.cpp, whose replaced
// operator new and delete must not meet the benchmark library's inline code.
#include "HeapCounter.h"

#include <benchmark/benchmark.h>

namespace TavBench
{
void HeapPerIteration::Report(benchmark::State& state) const
{
    const HeapCount after = ReadHeapCount();
    // The counts are the whole program's: in a benchmark of several threads each thread's
    // window holds about every thread's calls (and the helper threads' work for them), so
    // the figure per call divides by all calls, and the threads' figures are averaged.
    const double calls = static_cast<double>(state.iterations()) * static_cast<double>(state.threads());
    const double divisor = calls > 0.0 ? calls : 1.0;
    state.counters["allocations"] = benchmark::Counter(
        static_cast<double>(after.allocations - before_.allocations) / divisor, benchmark::Counter::kAvgThreads);
    state.counters["heap_bytes"] = benchmark::Counter(static_cast<double>(after.bytes - before_.bytes) / divisor,
                                                      benchmark::Counter::kAvgThreads);
}
} // namespace TavBench
