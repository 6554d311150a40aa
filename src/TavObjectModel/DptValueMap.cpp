// The DPT value map and its entries. Its lookup messages report as the converter front
// (LogFile::KnxValueConverter), which is where integrators have always found them.
#include <TavObjectModel/DptValueMap.h>

#include <TavObjectModel/detail/DptText.h>
#include <TavObjectModel/detail/LogFiles.h>
#include <platform/Logging.h>

#include <tuple>
#include <utility>

namespace Okaro
{
using detail::DptText;

namespace
{
const log4cplus::LogLevel kError = log4cplus::ERROR_LOG_LEVEL;
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

DptValueMap::DptValueMap(const DptValueMap& other) : entries_(other.entries_)
{
    RebuildIndex();
}

DptValueMap& DptValueMap::operator=(const DptValueMap& other)
{
    if (this != &other)
    {
        entries_ = other.entries_;
        RebuildIndex();
    }
    return *this;
}

const DptValueMap::SubMap* DptValueMap::FindSubMap(std::uint16_t main) const
{
    if (main < kIndexedMainCount)
    {
        return main < subMapByMain_.size() ? subMapByMain_[main] : nullptr;
    }
    const auto mainEntry = entries_.find(main);
    return mainEntry != entries_.end() ? &mainEntry->second : nullptr;
}

void DptValueMap::IndexMain(std::uint16_t main, const SubMap& subEntries)
{
    if (main >= kIndexedMainCount)
    {
        return;
    }
    if (subMapByMain_.empty())
    {
        // One allocation: the standard table reaches main number 238 anyway.
        subMapByMain_.resize(kIndexedMainCount, nullptr);
    }
    subMapByMain_[main] = &subEntries;
}

void DptValueMap::RebuildIndex()
{
    subMapByMain_.clear();
    for (const auto& mainEntry : entries_)
    {
        IndexMain(mainEntry.first, mainEntry.second);
    }
}

const DptValueEntry& DptValueMap::GetEntry(const KNXDPT& dpt) const
{
    const SubMap* found = FindSubMap(dpt.main);
    if (found == nullptr)
    {
        TAV_LOG_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 141, "No Entry found for DPT = " << DptText{dpt});
        return GetNoEntryRecord();
    }
    const SubMap& subEntries = *found;
    const auto exact = subEntries.find(dpt.sub);
    if (exact != subEntries.end())
    {
        return exact->second;
    }
    if (dpt.sub == 0)
    {
        TAV_LOG_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 152, "No Entry found for DPT = " << DptText{dpt});
        return GetNoEntryRecord();
    }
    const auto wildcard = subEntries.find(0);
    if (wildcard != subEntries.end())
    {
        return wildcard->second;
    }
    TAV_LOG_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 160,
            "No Entry found for DPT = " << static_cast<unsigned int>(dpt.main) << ".x");
    return GetNoEntryRecord();
}

bool DptValueMap::AddEntry(const KNXDPT& dpt, const DptValueEntry& entry)
{
    return AddEntry(dpt, DptValueEntry(entry));
}

bool DptValueMap::AddEntry(const KNXDPT& dpt, DptValueEntry&& entry)
{
    auto mainEntry = entries_.find(dpt.main);
    if (mainEntry == entries_.end())
    {
        bool inserted = false;
        std::tie(mainEntry, inserted) = entries_.emplace(dpt.main, SubMap());
        if (!inserted)
        {
            return false;
        }
        IndexMain(dpt.main, mainEntry->second);
    }
    // The first registration wins; repeating it is not an error.
    mainEntry->second.try_emplace(dpt.sub, std::move(entry));
    return true;
}

void DptValueMap::Clear()
{
    for (auto& mainEntry : entries_)
    {
        mainEntry.second.clear();
    }
    entries_.clear();
    subMapByMain_.clear();
}

std::size_t DptValueMap::GetEntryCount() const
{
    std::size_t count = 0;
    for (const auto& mainEntry : entries_)
    {
        count += mainEntry.second.size();
    }
    return count;
}
} // namespace Okaro
