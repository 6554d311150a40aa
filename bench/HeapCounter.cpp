// Replaces the global operator new and delete of the benchmark program with counting ones.
#include "HeapCounter.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace
{
std::atomic<std::uint64_t> allocationCount{0};
std::atomic<std::uint64_t> allocatedBytes{0};
} // namespace

namespace TavBench
{
HeapCount ReadHeapCount()
{
    return HeapCount{allocationCount.load(std::memory_order_relaxed), allocatedBytes.load(std::memory_order_relaxed)};
}
} // namespace TavBench

void* operator new(std::size_t size)
{
    allocationCount.fetch_add(1, std::memory_order_relaxed);
    allocatedBytes.fetch_add(size, std::memory_order_relaxed);
    if (void* block = std::malloc(size == 0 ? 1 : size))
        return block;
    throw std::bad_alloc();
}

void* operator new[](std::size_t size) { return operator new(size); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }
