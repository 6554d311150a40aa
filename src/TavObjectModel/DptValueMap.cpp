// The DPT value map and its entries. Its lookup messages report as the converter front
// (LogFile::KnxValueConverter), which is where integrators have always found them.
#include <TavObjectModel/DptValueMap.h>

#include <TavObjectModel/detail/DptText.h>
#include <TavObjectModel/detail/LogFiles.h>
#include <platform/Logging.h>

#include <TavObjectModel/detail/ConverterStorage.h>

#include <algorithm>
#include <new>
#include <stdexcept>
#include <utility>

namespace Okaro
{
using detail::DptText;

namespace
{
const log4cplus::LogLevel kError = log4cplus::ERROR_LOG_LEVEL;

// The lookup's fall-backs to the no-entry record, out of line so that a found entry costs
// only the search.
[[gnu::noinline, gnu::cold]] const DptValueEntry& NoEntryFor(const KNXDPT& dpt, int line)
{
    TAV_LOG_COLD_FROM(GetGlobalDefaultLogger(), kError, "GetEntry", LogFile::KnxValueConverter, line,
                 "No Entry found for DPT = " << DptText{dpt});
    return DptValueMap::GetNoEntryRecord();
}

[[gnu::noinline, gnu::cold]] const DptValueEntry& NoWildcardFor(const KNXDPT& dpt)
{
    TAV_LOG_COLD_FROM(GetGlobalDefaultLogger(), kError, "GetEntry", LogFile::KnxValueConverter, 160,
                 "No Entry found for DPT = " << static_cast<unsigned int>(dpt.main) << ".x");
    return DptValueMap::GetNoEntryRecord();
}
} // namespace

// ---------------------------------------------------------------------------------------
// DptValueEntry

DptValueEntry::DptValueEntry(const KNXDPT& dpt, OkaValueType valueType, OkaDP::OkaValueSubType valueSubType,
                             KnxConverter* converter)
    : dpt_(dpt), valueType_(valueType), valueSubType_(valueSubType), converter_(converter)
{
}

DptValueEntry::DptValueEntry(const DptValueEntry& other)
    : dpt_(other.dpt_),
      valueType_(other.valueType_),
      valueSubType_(other.valueSubType_),
      converter_(other.converter_ != nullptr ? other.converter_->Clone() : nullptr)
{
}

DptValueEntry::DptValueEntry(DptValueEntry&& other) noexcept
    : dpt_(other.dpt_),
      valueType_(other.valueType_),
      valueSubType_(other.valueSubType_),
      converter_(std::exchange(other.converter_, nullptr))
{
}

DptValueEntry& DptValueEntry::operator=(const DptValueEntry& other)
{
    if (this != &other)
    {
        DptValueEntry copy(other);
        std::swap(dpt_, copy.dpt_);
        std::swap(valueType_, copy.valueType_);
        std::swap(valueSubType_, copy.valueSubType_);
        std::swap(converter_, copy.converter_);
    }
    return *this;
}

DptValueEntry::~DptValueEntry()
{
    delete converter_;
    converter_ = nullptr;
}

// ---------------------------------------------------------------------------------------
// DptValueMap

const DptValueEntry& DptValueMap::GetNoEntryRecord()
{
    static const DptValueEntry record(KNXDPT{0, 0, 0}, ivtEmpty, OkaDP::istGeneric, new KnxConverterDefault());
    return record;
}

DptValueMap::DptValueMap() : mainRanges_{} {}

DptValueMap::~DptValueMap() { Destroy(); }

DptValueMap::DptValueMap(const DptValueMap& other) : DptValueMap()
{
    *this = other;
}

DptValueMap& DptValueMap::operator=(const DptValueMap& other)
{
    if (this != &other)
    {
        Clear();
        slots_.reserve(other.slots_.size());
        for (const Slot& slot : other.slots_)
        {
            // Under the key it was registered with, which need not be the entry's own DPT.
            AddEntry(KNXDPT{slot.entry->GetDpt().size, slot.main, slot.sub}, *slot.entry);
        }
    }
    return *this;
}

detail::ConverterStorage& DptValueMap::Storage()
{
    if (storage_ != nullptr)
    {
        return *storage_;
    }
    storage_ = std::make_unique<detail::ConverterStorage>();
    // The standard table's size: one allocation for the slots.
    slots_.reserve(64);
    return *storage_;
}

DptValueMap::SubEntries DptValueMap::FindMain(std::uint16_t main) const
{
    const Slot* const slots = slots_.data();
    if (main < kIndexedMainCount)
    {
        const MainRange range = mainRanges_[main];
        // A main number without entries may keep a stale start.
        return range.count == 0 ? SubEntries(slots, slots)
                                : SubEntries(slots + range.first, slots + range.first + range.count);
    }
    const auto lower = std::lower_bound(slots, slots + slots_.size(), main,
                                        [](const Slot& slot, std::uint16_t value) { return slot.main < value; });
    const Slot* upper = lower;
    while (upper != slots + slots_.size() && upper->main == main)
    {
        ++upper;
    }
    return SubEntries(lower, upper);
}

const DptValueEntry* DptValueMap::SubEntries::Find(std::uint16_t sub) const
{
    // A main number has a few entries (9.x the most, 20): a straight scan is fastest.
    for (const Slot* slot = first_; slot != last_ && slot->sub <= sub; ++slot)
    {
        if (slot->sub == sub)
        {
            return slot->entry;
        }
    }
    return nullptr;
}

const DptValueEntry& DptValueMap::SubEntries::at(std::uint16_t sub) const
{
    const DptValueEntry* entry = Find(sub);
    if (entry == nullptr)
    {
        throw std::out_of_range("DptValueMap: no entry for this sub number");
    }
    return *entry;
}

DptValueMap::Entries::const_iterator::value_type DptValueMap::Entries::const_iterator::operator*() const
{
    const Slot* last = slot_;
    while (last != last_ && last->main == slot_->main)
    {
        ++last;
    }
    return value_type(slot_->main, SubEntries(slot_, last));
}

DptValueMap::Entries::const_iterator& DptValueMap::Entries::const_iterator::operator++()
{
    const std::uint16_t main = slot_->main;
    while (slot_ != last_ && slot_->main == main)
    {
        ++slot_;
    }
    return *this;
}

DptValueMap::Entries::const_iterator DptValueMap::Entries::begin() const
{
    const Slot* const slots = map_.slots_.data();
    return const_iterator(slots, slots + map_.slots_.size());
}

DptValueMap::Entries::const_iterator DptValueMap::Entries::end() const
{
    const Slot* const last = map_.slots_.data() + map_.slots_.size();
    return const_iterator(last, last);
}

std::size_t DptValueMap::Entries::size() const
{
    std::size_t mains = 0;
    for (auto main = begin(); main != end(); ++main)
    {
        ++mains;
    }
    return mains;
}

DptValueMap::SubEntries DptValueMap::Entries::at(std::uint16_t main) const
{
    const SubEntries subEntries = map_.FindMain(main);
    if (subEntries.empty())
    {
        throw std::out_of_range("DptValueMap: no entry for this main number");
    }
    return subEntries;
}

const DptValueEntry& DptValueMap::GetEntryOtherwise(const KNXDPT& dpt) const
{
    const SubEntries subEntries = FindMain(dpt.main);
    if (subEntries.empty())
    {
        return NoEntryFor(dpt, 141);
    }
    const DptValueEntry* exact = subEntries.Find(dpt.sub);
    if (exact != nullptr)
    {
        return *exact;
    }
    if (dpt.sub == 0)
    {
        return NoEntryFor(dpt, 152);
    }
    // Sorted by sub number: the wildcard, when there is one, comes first.
    const auto first = *subEntries.begin();
    if (first.first == 0)
    {
        return first.second;
    }
    return NoWildcardFor(dpt);
}

bool DptValueMap::Insert(std::uint16_t main, std::uint16_t sub, DptValueEntry* entry)
{
    const auto before = [](const Slot& slot, const Slot& other) {
        return slot.main < other.main || (slot.main == other.main && slot.sub < other.sub);
    };
    const Slot inserted{main, sub, entry};
    const auto position = std::lower_bound(slots_.begin(), slots_.end(), inserted, before);
    if (position != slots_.end() && position->main == main && position->sub == sub)
    {
        return false;
    }
    const std::size_t index = static_cast<std::size_t>(position - slots_.begin());
    slots_.insert(position, inserted);
    // The slots of the higher main numbers moved up by one.
    for (std::size_t higher = static_cast<std::size_t>(main) + 1u; higher < kIndexedMainCount; ++higher)
    {
        ++mainRanges_[higher].first;
    }
    if (main < kIndexedMainCount)
    {
        MainRange& range = mainRanges_[main];
        if (range.count == 0)
        {
            range.first = static_cast<std::uint16_t>(index);
        }
        ++range.count;
    }
    return true;
}

void DptValueMap::Keep(const KNXDPT& dpt, DptValueEntry* stored)
{
    // Tables are mostly registered in order: then the new slot simply goes to the end (the
    // reserved capacity makes push_back safe from throwing here).
    if (dpt.main < kIndexedMainCount && slots_.size() < slots_.capacity() &&
        (slots_.empty() || slots_.back().main < dpt.main ||
         (slots_.back().main == dpt.main && slots_.back().sub < dpt.sub)))
    {
        MainRange& range = mainRanges_[dpt.main];
        if (range.count == 0)
        {
            range.first = static_cast<std::uint16_t>(slots_.size());
        }
        ++range.count;
        slots_.push_back(Slot{dpt.main, dpt.sub, stored});
        return;
    }
    bool inserted = false;
    try
    {
        inserted = Insert(dpt.main, dpt.sub, stored);
    }
    catch (...)
    {
        stored->~DptValueEntry();
        throw;
    }
    if (!inserted)
    {
        // The first registration wins; repeating it is not an error.
        stored->~DptValueEntry();
    }
}

bool DptValueMap::AddEntry(const KNXDPT& dpt, const DptValueEntry& entry)
{
    detail::ConverterStorage& storage = Storage();
    void* place = storage.Allocate(sizeof(DptValueEntry));
    DptValueEntry* stored = nullptr;
    {
        const detail::ConverterPlacement placement(storage);
        stored = new (place) DptValueEntry(entry);
    }
    Keep(dpt, stored);
    return true;
}

bool DptValueMap::AddEntry(const KNXDPT& dpt, DptValueEntry&& entry)
{
    detail::ConverterStorage& storage = Storage();
    void* place = storage.Allocate(sizeof(DptValueEntry));
    DptValueEntry* stored = new (place) DptValueEntry(std::move(entry));
    Keep(dpt, stored);
    return true;
}

bool DptValueMap::AddEntry(const KNXDPT& dpt, OkaValueType valueType, OkaDP::OkaValueSubType valueSubType,
                           const KnxConverter& converter)
{
    detail::ConverterStorage& storage = Storage();
    void* place = storage.Allocate(sizeof(DptValueEntry));
    KnxConverter* clone = nullptr;
    {
        const detail::ConverterPlacement placement(storage);
        clone = converter.Clone();
    }
    DptValueEntry* stored = new (place) DptValueEntry(dpt, valueType, valueSubType, clone);
    Keep(dpt, stored);
    return true;
}

void DptValueMap::AddEntries(const Row* rows, std::size_t count)
{
    detail::ConverterStorage& storage = Storage();
    if (slots_.capacity() - slots_.size() < count)
    {
        slots_.reserve(slots_.size() + count);
    }
    // One placement for the whole table, and the entries side by side.
    const detail::ConverterPlacement placement(storage);
    for (const Row* row = rows; row != rows + count; ++row)
    {
        void* place = storage.Allocate(sizeof(DptValueEntry));
        KnxConverter* clone = row->converter != nullptr ? row->converter->Clone() : nullptr;
        DptValueEntry* stored = new (place) DptValueEntry(row->dpt, row->valueType, row->valueSubType, clone);
        const std::uint16_t main = row->dpt.main;
        const std::uint16_t sub = row->dpt.sub;
        if (main < kIndexedMainCount &&
            (slots_.empty() || slots_.back().main < main || (slots_.back().main == main && slots_.back().sub < sub)))
        {
            MainRange& range = mainRanges_[main];
            if (range.count == 0)
            {
                range.first = static_cast<std::uint16_t>(slots_.size());
            }
            ++range.count;
            slots_.push_back(Slot{main, sub, stored});  // reserved above: does not throw
        }
        else
        {
            Keep(row->dpt, stored);
        }
    }
}

void DptValueMap::Destroy()
{
    for (Slot& slot : slots_)
    {
        // Built here as exactly this class: no virtual dispatch needed.
        slot.entry->DptValueEntry::~DptValueEntry();
    }
    slots_.clear();
}

void DptValueMap::Clear()
{
    // Without slots every main number is already without entries (a new map, or one cleared).
    if (!slots_.empty())
    {
        Destroy();
        mainRanges_.fill(MainRange{0, 0});
    }
    storage_.reset();
}
} // namespace Okaro
