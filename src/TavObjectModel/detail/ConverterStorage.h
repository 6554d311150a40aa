#pragma once
// Storage for the DPT value map's entries and the converter objects they own: a few large
// blocks handed out front to back and freed all at once, instead of one heap allocation per
// entry and per converter. Not installed.
#include <cstddef>
#include <cstdint>
#include <new>

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

    // Every piece starts at the strictest alignment: sizes are rounded up to it, so the
    // cursor never needs padding.
    static constexpr std::size_t kGranule = alignof(std::max_align_t);

    // Never null; throws std::bad_alloc.
    void* Allocate(std::size_t size)
    {
        size = (size + kGranule - 1) & ~(kGranule - 1);
        // Both null before the first block: no room.
        if (static_cast<std::size_t>(end_ - cursor_) >= size)
        {
            unsigned char* start = cursor_;
            cursor_ += size;
            return start;
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

// Where converters created on this thread go: null for the heap. A plain thread-local
// pointer (no dynamic initialisation), read by every clone; the library is linked, not loaded
// late, so the static TLS model applies.
#if defined(__GNUC__)
extern __thread ConverterStorage* tCurrentStorage __attribute__((tls_model("initial-exec")));
#else
extern thread_local ConverterStorage* tCurrentStorage;
#endif

// While one is alive, converters created on this thread (KnxConverter's operator new, so
// every Clone) are placed in `storage`; their delete then leaves the memory to the storage.
// Nests: the previous placement returns when this one ends.
class ConverterPlacement
{
public:
    explicit ConverterPlacement(ConverterStorage& storage) noexcept : previous_(tCurrentStorage)
    {
        tCurrentStorage = &storage;
    }
    ~ConverterPlacement() { tCurrentStorage = previous_; }
    ConverterPlacement(const ConverterPlacement&) = delete;
    ConverterPlacement& operator=(const ConverterPlacement&) = delete;

private:
    ConverterStorage* previous_;
};

// Before each converter: where its memory came from (null: the heap). Its size keeps the
// object at the strictest alignment.
constexpr std::size_t kConverterHeader = ConverterStorage::kGranule;

// Memory for a converter of `size` bytes with its header, from the current placement or the
// heap. KnxConverter's operator delete reads the header back.
inline void* AllocateConverter(std::size_t size)
{
    ConverterStorage* storage = tCurrentStorage;
    void* raw = storage != nullptr ? storage->Allocate(kConverterHeader + size) : ::operator new(kConverterHeader + size);
    ::new (raw) ConverterStorage*(storage);
    return static_cast<unsigned char*>(raw) + kConverterHeader;
}
} // namespace detail
} // namespace Okaro
