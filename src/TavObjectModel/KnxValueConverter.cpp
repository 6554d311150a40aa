// The DPT value map and the table-driven converter front. The map lives in this unit so that
// its lookup messages carry the front's file name, as every other line of the front does.
#include <TavObjectModel/KnxValueConverter.h>

#include <TavObjectModel/DptValueTable.h>

#include <TavObjectModel/detail/LogFiles.h>
#include <platform/Logging.h>

#include <memory>
#include <ostream>
#include <utility>

namespace Okaro
{
namespace
{
const log4cplus::LogLevel kError = log4cplus::ERROR_LOG_LEVEL;

// main "." sub, decimal, no leading zeros.
struct DptText
{
    const KNXDPT& dpt;
};

std::ostream& operator<<(std::ostream& out, const DptText& text)
{
    return out << static_cast<unsigned int>(text.dpt.main) << '.' << static_cast<unsigned int>(text.dpt.sub);
}

// The front writes the chosen default DPT back into the caller's object; the interface
// takes it as const for historical reasons and callers rely on seeing the DPT used.
KNXDPT& CallerDpt(const KNXDPT& dpt) { return const_cast<KNXDPT&>(dpt); }
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

// ---------------------------------------------------------------------------------------
// KnxValueConverter

KnxValueConverter::KnxValueConverter() { FillDptValueMap(); }

bool KnxValueConverter::Init() { return true; }

const DptValueEntry& KnxValueConverter::GetEntry(const KNXDPT& dpt) const { return dptValueMap_.GetEntry(dpt); }

bool KnxValueConverter::AddDptValueMapEntry(unsigned short mainNumber, unsigned short subNumber,
                                            unsigned char bitSize, OkaValueType valueType,
                                            OkaDP::OkaValueSubType valueSubType, const KnxConverter& converter)
{
    const KNXDPT dpt{bitSize, mainNumber, subNumber};
    return dptValueMap_.AddEntry(dpt, DptValueEntry(dpt, valueType, valueSubType, converter.Clone()));
}

void KnxValueConverter::FillDptValueMap()
{
    dptValueMap_.Clear();
    for (const DptValueRow& row : GetStandardDptValueRows())
    {
        const std::unique_ptr<KnxConverter> converter = row.makeConverter();
        if (!AddDptValueMapEntry(row.mainNumber, row.subNumber, row.bitSize, row.valueType, row.valueSubType,
                                 *converter))
        {
            TAV_LOG_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 234, "Add DPT value map entry failed. DPT=" << row.text);
        }
    }
}

bool KnxValueConverter::FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& groupValue, OKAVALUE& value)
{
    try
    {
        if (dpt.main == 0)
        {
            if (dpt.size != 0)
            {
                GetDefaultMappingDptForSize(CallerDpt(dpt));
            }
            else
            {
                KNXDPT sized = dpt;
                sized.size = static_cast<std::uint8_t>(groupValue.GetDefinedSize());
                if (GetDefaultMappingDptForSize(sized))
                {
                    CallerDpt(dpt) = sized;
                }
            }
            if (dpt.main == 0)
            {
                TAV_LOG_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 260,
                        "Convert from KNX value failed. Missing DPT. GroupValue = "
                            << groupValue.GetRawData().ToString());
                return false;
            }
        }

        const DptValueEntry& entry = GetEntry(dpt);
        if (entry.GetValueType() == ivtEmpty)
        {
            // Unknown DPTs are passed through as valid rather than dropped.
            TAV_LOG_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 271, "No Entry found for DPT = " << DptText{dpt});
            TAV_LOG_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 272, "Assume validity and accept value!");
            value.type = ivtEmpty;
            return true;
        }

        value.type = entry.GetValueType();

        const std::uint32_t expected = GetExpectedBitSize(dpt.main);
        const unsigned int actual = groupValue.GetDefinedSize();
        bool sizeIsWrong = false;
        const KnxStack::GroupValue* input = &groupValue;
        KnxStack::GroupValue narrowed;
        if (expected <= 6)
        {
            if (actual > 6)
            {
                sizeIsWrong = true;
            }
            else
            {
                // Short values arrive from the bus with size 6; the converter needs the
                // DPT's own size. Copied only then: the copy allocates.
                if (actual == 6)
                {
                    narrowed = KnxStack::GroupValue(groupValue.GetRawData(), expected);
                    input = &narrowed;
                }
            }
        }
        else if (expected != kAnyBitSize && actual != expected)
        {
            sizeIsWrong = true;
        }
        if (sizeIsWrong)
        {
            TAV_LOG_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 307,
                    "Failed to convert a GroupValue for DPT " << DptText{dpt} << " because of unexpected bit size: "
                                                              << actual << ", expected: " << expected);
            return false;
        }

        const KnxConverter* converter = entry.GetConverter();
        if (converter == nullptr)
        {
            TAV_LOG_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 316, "NULL pointer as KnxConverter for DPT = " << DptText{dpt});
            return false;
        }
        if (!converter->FromKnxValue(dpt, *input, value))
        {
            TAV_LOG_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 321,
                    "Convert from KNX value failed for DPT = " << DptText{dpt} << " GroupValue = "
                                                               << groupValue.GetRawData().ToString());
            return false;
        }
        return true;
    }
    catch (const KnxStack::GroupValueException& exception)
    {
        TAV_LOG_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 330,
                "Exception caught during conversion of GroupValue: " << exception.what() << "(DPT: " << DptText{dpt}
                                                                      << ", Value: " << value.ToString() << ")");
        return false;
    }
}

bool KnxValueConverter::ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value, KnxStack::GroupValue& groupValue)
{
    try
    {
        if (dpt.main == 0)
        {
            if (!GetDefaultMappingDptForValueType(CallerDpt(dpt), value))
            {
                GetDefaultMappingDptForSize(CallerDpt(dpt));
            }
            if (dpt.main == 0)
            {
                TAV_LOG_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 349,
                        "Convert to KNX value failed. Missing DPT. val = " << value.ToString());
                return false;
            }
        }

        const DptValueEntry& entry = GetEntry(dpt);
        if (entry.GetValueType() == ivtEmpty)
        {
            TAV_LOG_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 358, "No Entry found for DPT = " << DptText{dpt});
            TAV_LOG_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 359, "Assume validity and accept value!");
            return true;
        }

        // A value of type 0 (invalid) goes to the converter unchecked.
        if (value.type != 0 && !AreValueTypesCompatible(value.type, entry.GetValueType()))
        {
            TAV_LOG_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 366,
                    "Invalid value type found for DPT = " << DptText{dpt}
                                                          << " val.ivt=" << static_cast<std::int32_t>(value.type));
            return false;
        }

        const KnxConverter* converter = entry.GetConverter();
        if (converter == nullptr)
        {
            TAV_LOG_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 375, "NULL pointer as KnxConverter for DPT = " << DptText{dpt});
            return false;
        }
        if (!converter->ToKnxValue(dpt, value, groupValue))
        {
            TAV_LOG_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 380,
                    "Convert to KNX value failed for DPT = " << DptText{dpt} << " val = " << value.ToString());
            return false;
        }
        return true;
    }
    catch (const KnxStack::GroupValueException& exception)
    {
        TAV_LOG_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 388,
                "Exception caught during conversion of OKAVALUE to GroupValue: " << exception.what());
        return false;
    }
}
} // namespace Okaro
