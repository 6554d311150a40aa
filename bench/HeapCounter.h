#pragma once
// Counts what the global operator new hands out in this program, to measure what building
// an object costs in heap.
#include <cstddef>
#include <cstdint>

namespace benchmark
{
class State;
} // namespace benchmark

namespace TavBench
{
struct HeapCount
{
    std::uint64_t allocations;
    std::uint64_t bytes;
};

HeapCount ReadHeapCount();

// Counts what a benchmark's timed loop takes from the heap, per iteration, as the counters
// "allocations" and "heap_bytes". Start it right before the loop, Report right after.
class HeapPerIteration
{
public:
    HeapPerIteration() : before_(ReadHeapCount()) {}
    void Report(benchmark::State& state) const;

private:
    HeapCount before_;
};
} // namespace TavBench
