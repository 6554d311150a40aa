#pragma once
// Storage for the DPT value map's entries and the converter objects they own: a few large
// blocks handed out front to back and freed all at once, instead of one heap allocation per
// entry and per converter. Not installed.
#include <cstddef>
#include <cstdint>

namespace Okaro
{
namespace detail
{
class ConverterStorage
{
public:
    ConverterStorage() = default;
    ~ConverterStorage();
    ConverterStorage(const ConverterStorage&) = delete;
    ConverterStorage& operator=(const ConverterStorage&) = delete;

    // Never null; throws std::bad_alloc. `alignment` is a power of two, at most
    // alignof(std::max_align_t).
    void* Allocate(std::size_t size, std::size_t alignment)
    {
        if (cursor_ != nullptr)
        {
            const std::uintptr_t at = reinterpret_cast<std::uintptr_t>(cursor_);
            const std::size_t padding = static_cast<std::size_t>((alignment - (at & (alignment - 1))) & (alignment - 1));
            if (static_cast<std::size_t>(end_ - cursor_) >= padding + size)
            {
                unsigned char* start = cursor_ + padding;
                cursor_ = start + size;
                return start;
            }
        }
        return AllocateInNewBlock(size);
    }

private:
    struct Block;
    void* AllocateInNewBlock(std::size_t size);
    // The first block is large enough for the standard table.
    static constexpr std::size_t kFirstBlockSize = 8192;
    static constexpr std::size_t kBlockSize = 2048;

    Block* blocks_ = nullptr;
    unsigned char* cursor_ = nullptr;
    unsigned char* end_ = nullptr;
};

// While one is alive, converters created on this thread (KnxConverter's operator new, so
// every Clone) are placed in `storage`; their delete then leaves the memory to the storage.
// Nests: the previous placement returns when this one ends.
class ConverterPlacement
{
public:
    explicit ConverterPlacement(ConverterStorage& storage) noexcept;
    ~ConverterPlacement();
    ConverterPlacement(const ConverterPlacement&) = delete;
    ConverterPlacement& operator=(const ConverterPlacement&) = delete;

private:
    ConverterStorage* previous_;
};
} // namespace detail
} // namespace Okaro
