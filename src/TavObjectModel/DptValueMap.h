#pragma once
// The DPT value map: per KNX datapoint type the group value's bit size, the internal value's
// type and sub-type, and the converter between the two. Filled once by KnxValueConverter and
// read-only afterwards, so it is read without locks.
#include <TavObjectModel/KnxConverter.h>

#include <platform/KnxDpt.h>
#include <platform/OkaValueType.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace Okaro
{
// One row of the map. Owns its converter: a copy gets a fresh Clone, so no two entries ever
// share a converter object and callers may register a converter that lives on their stack.
class DptValueEntry
{
public:
    // Takes ownership of `converter` (may be null).
    DptValueEntry(const KNXDPT& dpt, OkaValueType valueType, OkaDP::OkaValueSubType valueSubType,
                  KnxConverter* converter);
    DptValueEntry(const DptValueEntry& other);
    // Takes the converter over; the moved-from entry has none.
    DptValueEntry(DptValueEntry&& other) noexcept;
    DptValueEntry& operator=(const DptValueEntry& other);
    virtual ~DptValueEntry();

    const KNXDPT& GetDpt() const { return dpt_; }
    OkaValueType GetValueType() const { return valueType_; }
    OkaDP::OkaValueSubType GetValueSubType() const { return valueSubType_; }
    // Null when the entry was registered without a converter.
    const KnxConverter* GetConverter() const { return converter_; }

private:
    KNXDPT dpt_;
    OkaValueType valueType_;
    OkaDP::OkaValueSubType valueSubType_;
    KnxConverter* converter_;
};

namespace detail
{
class ConverterStorage;
} // namespace detail

class DptValueMap
{
    struct Slot
    {
        std::uint16_t main;
        std::uint16_t sub;
        DptValueEntry* entry;
    };

public:
    // The entries of one main number, by ascending sub number (0 = the ".x" wildcard). Reads
    // like a std::map<sub number, DptValueEntry>; valid until the map changes.
    class SubEntries
    {
    public:
        class const_iterator
        {
        public:
            using value_type = std::pair<std::uint16_t, const DptValueEntry&>;
            explicit const_iterator(const Slot* slot) : slot_(slot) {}
            value_type operator*() const { return value_type(slot_->sub, *slot_->entry); }
            const_iterator& operator++()
            {
                ++slot_;
                return *this;
            }
            bool operator==(const const_iterator& other) const { return slot_ == other.slot_; }
            bool operator!=(const const_iterator& other) const { return slot_ != other.slot_; }

        private:
            const Slot* slot_;
        };

        SubEntries(const Slot* first, const Slot* last) : first_(first), last_(last) {}
        const_iterator begin() const { return const_iterator(first_); }
        const_iterator end() const { return const_iterator(last_); }
        std::size_t size() const { return static_cast<std::size_t>(last_ - first_); }
        bool empty() const { return first_ == last_; }
        std::size_t count(std::uint16_t sub) const { return Find(sub) != nullptr ? 1u : 0u; }
        // Throws std::out_of_range without such an entry.
        const DptValueEntry& at(std::uint16_t sub) const;
        // Null without such an entry.
        const DptValueEntry* Find(std::uint16_t sub) const;

    private:
        const Slot* first_;
        const Slot* last_;
    };

    // Every entry by ascending main number. Reads like a std::map<main number, SubEntries>;
    // valid until the map changes.
    class Entries
    {
    public:
        class const_iterator
        {
        public:
            using value_type = std::pair<std::uint16_t, SubEntries>;
            const_iterator(const Slot* slot, const Slot* last) : slot_(slot), last_(last) {}
            value_type operator*() const;
            const_iterator& operator++();
            bool operator==(const const_iterator& other) const { return slot_ == other.slot_; }
            bool operator!=(const const_iterator& other) const { return slot_ != other.slot_; }

        private:
            const Slot* slot_;
            const Slot* last_;
        };

        explicit Entries(const DptValueMap& map) : map_(map) {}
        const_iterator begin() const;
        const_iterator end() const;
        // Number of main numbers.
        std::size_t size() const;
        bool empty() const { return map_.slots_.empty(); }
        std::size_t count(std::uint16_t main) const { return map_.FindMain(main).empty() ? 0u : 1u; }
        // Throws std::out_of_range without entries for `main`.
        SubEntries at(std::uint16_t main) const;

    private:
        const DptValueMap& map_;
    };

    DptValueMap();
    virtual ~DptValueMap();
    DptValueMap(const DptValueMap& other);
    DptValueMap& operator=(const DptValueMap& other);

    // Exact sub number, else the main number's wildcard, else the no-entry record (value type
    // ivtEmpty). Logs at ERROR when it falls back to the record; never throws for unknown DPTs.
    // The DPT's bit size plays no part.
    const DptValueEntry& GetEntry(const KNXDPT& dpt) const
    {
        // Every conversion looks its DPT up: a found entry costs an index read and a short
        // scan here; the fall-backs with their messages are out of line.
        if (dpt.main < kIndexedMainCount)
        {
            const MainRange range = mainRanges_[dpt.main];
            if (range.count != 0)
            {
                const Slot* const first = slots_.data() + range.first;
                const Slot* const last = first + range.count;
                for (const Slot* slot = first; slot != last && slot->sub <= dpt.sub; ++slot)
                {
                    if (slot->sub == dpt.sub)
                    {
                        return *slot->entry;
                    }
                }
                // Sorted by sub number: the wildcard, when there is one, comes first.
                if (dpt.sub != 0 && first->sub == 0)
                {
                    return *first->entry;
                }
            }
        }
        return GetEntryOtherwise(dpt);
    }

    // Stores a copy under (main, sub). The first registration of a DPT wins: a repeated one
    // leaves the stored entry alone and still reports success.
    bool AddEntry(const KNXDPT& dpt, const DptValueEntry& entry);
    // The same, taking the entry's converter over instead of cloning it again.
    bool AddEntry(const KNXDPT& dpt, DptValueEntry&& entry);
    // The same for an entry that owns a Clone of `converter`.
    bool AddEntry(const KNXDPT& dpt, OkaValueType valueType, OkaDP::OkaValueSubType valueSubType,
                  const KnxConverter& converter);

    // One row of a table registered at once.
    struct Row
    {
        KNXDPT dpt;
        OkaValueType valueType;
        OkaDP::OkaValueSubType valueSubType;
        const KnxConverter* converter;  // cloned; may be null
    };
    // AddEntry(row.dpt, row.valueType, row.valueSubType, *row.converter) for each row in
    // turn, in one pass: what filling a whole table costs is mostly the clones themselves.
    void AddEntries(const Row* rows, std::size_t count);

    // Removes every entry, deleting their converters.
    void Clear();

    Entries GetEntries() const { return Entries(*this); }
    std::size_t GetEntryCount() const { return slots_.size(); }

    // The process-wide record returned for a DPT without entry: DPT {0, 0, 0}, value type
    // ivtEmpty, sub-type generic, a KnxConverterDefault. Created on first use, thread-safe.
    static const DptValueEntry& GetNoEntryRecord();

private:
    // Where the entries of a main number below this start in slots_: every converter call
    // looks its DPT up, so the main number is found without a search.
    static constexpr std::uint16_t kIndexedMainCount = 256;
    struct MainRange
    {
        std::uint16_t first;
        std::uint16_t count;
    };

    SubEntries FindMain(std::uint16_t main) const;
    // GetEntry for the DPTs its inline part does not find: main numbers beyond the index, and
    // the fall-backs to the no-entry record.
    const DptValueEntry& GetEntryOtherwise(const KNXDPT& dpt) const;
    detail::ConverterStorage& Storage();
    // Places `entry` (built in the storage) at its sorted position; false when the DPT is
    // already there.
    bool Insert(std::uint16_t main, std::uint16_t sub, DptValueEntry* entry);
    // Inserts `stored`, or destroys it when the DPT is already there (or inserting throws).
    void Keep(const KNXDPT& dpt, DptValueEntry* stored);
    // Destroys every entry (and so its converter); the index is left to the caller.
    void Destroy();

    // Sorted by main, then sub number; the entries and their converters (when cloned here)
    // live in storage_, so filling the map takes a few allocations rather than one per node
    // and converter.
    std::vector<Slot> slots_;
    std::array<MainRange, kIndexedMainCount> mainRanges_;
    std::unique_ptr<detail::ConverterStorage> storage_;
};
} // namespace Okaro
