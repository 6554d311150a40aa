#pragma once
// Storage for the DPT value map's entries and the converter objects they own: a few large
// blocks handed out front to back and freed all at once, instead of one heap allocation per
// entry and per converter. Not installed.
#include <cstddef>

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
    void* Allocate(std::size_t size, std::size_t alignment);

private:
    struct Block;
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
