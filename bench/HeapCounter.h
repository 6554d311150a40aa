#pragma once
// Counts what the global operator new hands out in this program, to measure what building
// an object costs in heap.
#include <cstddef>
#include <cstdint>

namespace TavBench
{
struct HeapCount
{
    std::uint64_t allocations;
    std::uint64_t bytes;
};

HeapCount ReadHeapCount();
} // namespace TavBench
