// Where converter objects live: the heap, or the storage of the DPT value map that clones
// them. A small header before each object says which, so delete needs no other knowledge.
#include <TavObjectModel/KnxConverter.h>

#include <TavObjectModel/detail/ConverterStorage.h>

#include <algorithm>
#include <cstdint>
#include <new>

namespace Okaro
{
namespace detail
{
struct ConverterStorage::Block
{
    Block* next;
    std::size_t size;  // usable bytes after the (aligned) header
};

namespace
{
constexpr std::size_t kMaxAlignment = alignof(std::max_align_t);
// The block header rounded up, so the usable bytes start at the strictest alignment.
constexpr std::size_t kBlockHeader =
    (sizeof(void*) + sizeof(std::size_t) + kMaxAlignment - 1) / kMaxAlignment * kMaxAlignment;

// Read by every converter allocation. The library is linked, not loaded late, so the static
// TLS model applies: a plain load instead of a call to the TLS resolver.
#if defined(__GNUC__)
__attribute__((tls_model("initial-exec")))
#endif
thread_local ConverterStorage* currentStorage = nullptr;
} // namespace

ConverterStorage::~ConverterStorage()
{
    while (blocks_ != nullptr)
    {
        Block* next = blocks_->next;
        ::operator delete(blocks_);
        blocks_ = next;
    }
}

void* ConverterStorage::AllocateInNewBlock(std::size_t size)
{
    static_assert(sizeof(Block) <= kBlockHeader, "the block header fits");
    // A new block starts at the strictest alignment: whatever alignment was asked for holds.
    const std::size_t usable = std::max(blocks_ == nullptr ? kFirstBlockSize : kBlockSize, size);
    void* raw = ::operator new(kBlockHeader + usable);
    Block* block = static_cast<Block*>(raw);
    block->next = blocks_;
    block->size = usable;
    blocks_ = block;
    unsigned char* start = static_cast<unsigned char*>(raw) + kBlockHeader;
    end_ = start + usable;
    cursor_ = start + size;
    return start;
}

ConverterPlacement::ConverterPlacement(ConverterStorage& storage) noexcept : previous_(currentStorage)
{
    currentStorage = &storage;
}

ConverterPlacement::~ConverterPlacement() { currentStorage = previous_; }
} // namespace detail

// ---------------------------------------------------------------------------------------
// KnxConverter's allocation

namespace
{
// Before each converter: where its memory came from (null: the heap). Its size keeps the
// object at the strictest alignment.
constexpr std::size_t kObjectHeader = alignof(std::max_align_t);
static_assert(kObjectHeader >= sizeof(detail::ConverterStorage*), "the header holds a pointer");
} // namespace

void* KnxConverter::operator new(std::size_t size)
{
    detail::ConverterStorage* storage = detail::currentStorage;
    void* raw = storage != nullptr ? storage->Allocate(kObjectHeader + size, kObjectHeader)
                                   : ::operator new(kObjectHeader + size);
    ::new (raw) detail::ConverterStorage*(storage);
    return static_cast<unsigned char*>(raw) + kObjectHeader;
}

void KnxConverter::operator delete(void* object) noexcept
{
    if (object == nullptr)
    {
        return;
    }
    void* raw = static_cast<unsigned char*>(object) - kObjectHeader;
    // Storage memory goes back when the storage ends.
    if (*static_cast<detail::ConverterStorage* const*>(raw) == nullptr)
    {
        ::operator delete(raw);
    }
}
} // namespace Okaro
