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
} // namespace

#if defined(__GNUC__)
__thread ConverterStorage* tCurrentStorage __attribute__((tls_model("initial-exec"))) = nullptr;
#else
thread_local ConverterStorage* tCurrentStorage = nullptr;
#endif

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
} // namespace detail

// ---------------------------------------------------------------------------------------
// KnxConverter's allocation

void* KnxConverter::operator new(std::size_t size) { return detail::AllocateConverter(size); }

void KnxConverter::operator delete(void* object) noexcept
{
    if (object == nullptr)
    {
        return;
    }
    void* raw = static_cast<unsigned char*>(object) - detail::kConverterHeader;
    // Storage memory goes back when the storage ends.
    if (*static_cast<detail::ConverterStorage* const*>(raw) == nullptr)
    {
        ::operator delete(raw);
    }
}
} // namespace Okaro
