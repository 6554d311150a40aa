// The table-driven converter front: default DPTs, the bit size and value type checks, and
// the hand-over to the entry's converter.
#include <TavObjectModel/KnxValueConverter.h>

#include <TavObjectModel/detail/DptText.h>
#include <TavObjectModel/detail/DptValueTable.h>
#include <TavObjectModel/detail/LogFiles.h>
#include <platform/Logging.h>

#include <algorithm>
#include <array>
#include <initializer_list>
#include <memory>
#include <vector>

namespace Okaro
{
using detail::DptText;

namespace
{
const log4cplus::LogLevel kError = log4cplus::ERROR_LOG_LEVEL;

// The front writes the chosen default DPT back into the caller's object; the interface
// takes it as const for historical reasons and callers rely on seeing the DPT used.
KNXDPT& CallerDpt(const KNXDPT& dpt) { return const_cast<KNXDPT&>(dpt); }

// Expected group value size in bits, indexed by main number - 1.
constexpr std::size_t kMainNumberCount = 241;
using ExpectedBitSizes = std::array<std::uint32_t, kMainNumberCount>;

constexpr ExpectedBitSizes MakeExpectedBitSizes()
{
    ExpectedBitSizes sizes{};
    auto set = [&sizes](std::uint32_t bits, std::initializer_list<std::uint16_t> mainNumbers) {
        for (const std::uint16_t mainNumber : mainNumbers)
        {
            sizes[mainNumber - 1u] = bits;
        }
    };
    set(1, {1});
    set(2, {2});
    set(4, {3});
    set(3, {31});
    set(8, {4, 5, 6, 17, 18, 20, 21, 23, 25, 26, 236, 238});
    set(16, {7, 8, 9, 22, 201, 202, 204, 207, 211, 217, 234, 237, 239});
    set(24, {10, 11, 30, 203, 205, 206, 209, 223, 225, 232, 240});
    set(32, {12, 13, 14, 15, 27, 210, 214, 220, 231, 241});
    set(40, {215, 216, 218});
    set(48, {212, 219, 221, 222, 224, 229, 235});
    set(64, {19, 29, 213, 230});
    set(112, {16});
    set(9, {200});
    set(KnxValueConverter::kAnyBitSize, {24, 28});
    return sizes;
}

constexpr ExpectedBitSizes kExpectedBitSizes = MakeExpectedBitSizes();

struct SizeDefault
{
    std::uint8_t bitSize;
    std::uint16_t mainNumber;
    std::uint16_t subNumber;
};

constexpr SizeDefault kSizeDefaults[] = {
    {1, 1, 1},   {2, 2, 1},   {4, 3, 7},     {8, 5, 0},     {16, 9, 0},   {24, 10, 1},
    {32, 14, 0}, {40, 218, 0}, {48, 219, 1}, {64, 19, 1},  {112, 16, 1},
};

constexpr int kAnySize = -1;

struct ValueTypeDefault
{
    std::int32_t valueType;
    int givenBitSize;  // kAnySize: whatever the DPT carries
    std::uint8_t bitSize;
    std::uint16_t mainNumber;
    std::uint16_t subNumber;
};

// The float/32 row (16 bits, 14.0) and the string/112 row (8 bits, 16.0) do not match their
// DPTs; callers may rely on reading them back as they are, so they stay.
constexpr ValueTypeDefault kValueTypeDefaults[] = {
    {ivtBool, kAnySize, 1, 1, 1},
    {1037, kAnySize, 4, 3, 7},
    {ivtByte, kAnySize, 8, 5, 0},
    {1036, kAnySize, 8, 5, 1},
    {ivtFloat, 0, 16, 9, 0},
    {ivtFloat, 4, 4, 3, 0},
    {ivtFloat, 8, 8, 5, 1},
    {ivtFloat, 16, 16, 9, 0},
    {ivtFloat, 32, 16, 14, 0},
    {ivtTime, kAnySize, 24, 10, 1},
    {ivtDate, kAnySize, 24, 11, 1},
    {ivtDWord, kAnySize, 32, 12, 1},
    {ivtInteger, 0, 32, 13, 0},
    {ivtInteger, 8, 8, 6, 0},
    {ivtInteger, 16, 16, 8, 0},
    {14, kAnySize, 32, 13, 100},
    {9, kAnySize, 40, 218, 0},
    {ivtDateTime, kAnySize, 64, 19, 1},
    {ivtString, 0, 112, 16, 1},
    {ivtString, 8, 8, 4, 1},
    {ivtString, 112, 8, 16, 0},
};

struct CompatibilityGroup
{
    std::vector<std::int32_t> members;   // type of the value at hand
    std::vector<std::int32_t> accepted;  // entry types it may be converted by
};

// A date-and-time value suits date and time entries, not the other way round.
const CompatibilityGroup kCompatibilityGroups[] = {
    {{3, 1005, 1036, 1037, 1039}, {3, 1005, 1036, 1037, 1039}},
    {{4, 14}, {4, 14}},
    {{6, 1021}, {6, 1021}},
    {{7, 8, 20}, {7, 8, 20}},
    {{11, 105}, {11, 105}},
    {{12, 104}, {12, 104}},
    {{13, 102, 201}, {11, 12, 13, 102, 104, 105, 201}},
};

bool Contains(const std::vector<std::int32_t>& set, std::int32_t valueType)
{
    return std::find(set.begin(), set.end(), valueType) != set.end();
}

// The entry's converter on `input`. Inline: it is the end of every conversion from KNX. (the group value, or its copy at the DPT's own size);
// `received` is what the failure line shows.
[[gnu::always_inline]] inline bool ConvertFromKnx(const DptValueEntry& entry, const KNXDPT& dpt, const KnxStack::GroupValue& input,
                    const KnxStack::GroupValue& received, OKAVALUE& value)
{
    const KnxConverter* converter = entry.GetConverter();
    if (converter == nullptr)
    {
        TAV_LOG_COLD_FROM(GetGlobalDefaultLogger(), kError, "FromKnxValue", LogFile::KnxValueConverter, 316,
                     "NULL pointer as KnxConverter for DPT = " << DptText{dpt});
        return false;
    }
    if (!converter->FromKnxValue(dpt, input, value))
    {
        TAV_LOG_COLD_FROM(GetGlobalDefaultLogger(), kError, "FromKnxValue", LogFile::KnxValueConverter, 321,
                     "Convert from KNX value failed for DPT = " << DptText{dpt} << " GroupValue = "
                                                                << received.GetRawData().ToString());
        return false;
    }
    return true;
}
// Short values arrive from the bus with size 6; the converter needs the DPT's own size. Copied
// only then (the copy allocates), and out of line, so that the common path keeps a small frame.
[[gnu::noinline]] bool ConvertNarrowedFromKnx(const DptValueEntry& entry, const KNXDPT& dpt,
                                              const KnxStack::GroupValue& received, std::uint32_t bitSize,
                                              OKAVALUE& value)
{
    const KnxStack::GroupValue narrowed(received.GetRawData(), bitSize);
    return ConvertFromKnx(entry, dpt, narrowed, received, value);
}
} // namespace

// ---------------------------------------------------------------------------------------
// KnxValueConverter

KnxValueConverter::KnxValueConverter() { FillDptValueMap(); }

bool KnxValueConverter::Init() { return true; }

bool KnxValueConverter::AddDptValueMapEntry(unsigned short mainNumber, unsigned short subNumber,
                                            unsigned char bitSize, OkaValueType valueType,
                                            OkaDP::OkaValueSubType valueSubType, const KnxConverter& converter)
{
    const KNXDPT dpt{bitSize, mainNumber, subNumber};
    return dptValueMap_.AddEntry(dpt, valueType, valueSubType, converter);
}

void KnxValueConverter::FillDptValueMap()
{
    dptValueMap_.Clear();
    // Every row is stored: a map refuses nothing (a repeated DPT keeps its first entry), so
    // the per-row failure line has nothing to report for this table.
    const std::vector<DptValueMap::Row>& rows = GetStandardMapRows();
    dptValueMap_.AddEntries(rows.data(), rows.size());
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
                TAV_LOG_COLD_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 260,
                        "Convert from KNX value failed. Missing DPT. GroupValue = "
                            << groupValue.GetRawData().ToString());
                return false;
            }
        }

        const DptValueEntry& entry = GetEntry(dpt);
        if (entry.GetValueType() == ivtEmpty)
        {
            // Unknown DPTs are passed through as valid rather than dropped.
            TAV_LOG_COLD_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 271, "No Entry found for DPT = " << DptText{dpt});
            TAV_LOG_COLD_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 272, "Assume validity and accept value!");
            value.type = ivtEmpty;
            return true;
        }

        value.type = entry.GetValueType();

        const std::uint32_t expected = GetExpectedBitSize(dpt.main);
        const unsigned int actual = groupValue.GetDefinedSize();
        const bool sizeIsWrong = expected <= 6 ? actual > 6 : expected != kAnyBitSize && actual != expected;
        if (sizeIsWrong)
        {
            TAV_LOG_COLD_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 307,
                    "Failed to convert a GroupValue for DPT " << DptText{dpt} << " because of unexpected bit size: "
                                                              << actual << ", expected: " << expected);
            return false;
        }
        if (expected <= 6 && actual == 6)
        {
            return ConvertNarrowedFromKnx(entry, dpt, groupValue, expected, value);
        }
        return ConvertFromKnx(entry, dpt, groupValue, groupValue, value);
    }
    catch (const KnxStack::GroupValueException& exception)
    {
        TAV_LOG_COLD_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 330,
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
                TAV_LOG_COLD_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 349,
                        "Convert to KNX value failed. Missing DPT. val = " << value.ToString());
                return false;
            }
        }

        const DptValueEntry& entry = GetEntry(dpt);
        if (entry.GetValueType() == ivtEmpty)
        {
            TAV_LOG_COLD_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 358, "No Entry found for DPT = " << DptText{dpt});
            TAV_LOG_COLD_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 359, "Assume validity and accept value!");
            return true;
        }

        // A value of type 0 (invalid) goes to the converter unchecked; the same type is
        // compatible without a look at the groups.
        if (value.type != 0 && value.type != entry.GetValueType() &&
            !AreValueTypesCompatible(value.type, entry.GetValueType()))
        {
            TAV_LOG_COLD_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 366,
                    "Invalid value type found for DPT = " << DptText{dpt}
                                                          << " val.ivt=" << static_cast<std::int32_t>(value.type));
            return false;
        }

        const KnxConverter* converter = entry.GetConverter();
        if (converter == nullptr)
        {
            TAV_LOG_COLD_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 375, "NULL pointer as KnxConverter for DPT = " << DptText{dpt});
            return false;
        }
        if (!converter->ToKnxValue(dpt, value, groupValue))
        {
            TAV_LOG_COLD_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 380,
                    "Convert to KNX value failed for DPT = " << DptText{dpt} << " val = " << value.ToString());
            return false;
        }
        return true;
    }
    catch (const KnxStack::GroupValueException& exception)
    {
        TAV_LOG_COLD_AT(GetGlobalDefaultLogger(), kError, LogFile::KnxValueConverter, 388,
                "Exception caught during conversion of OKAVALUE to GroupValue: " << exception.what());
        return false;
    }
}

std::uint32_t KnxValueConverter::GetExpectedBitSize(unsigned int mainNumber)
{
    if (mainNumber < 1 || mainNumber > kMainNumberCount)
    {
        return 0;
    }
    return kExpectedBitSizes[mainNumber - 1];
}

bool KnxValueConverter::GetDefaultMappingDptForSize(KNXDPT& dpt)
{
    for (const SizeDefault& row : kSizeDefaults)
    {
        if (row.bitSize == dpt.size)
        {
            dpt.main = row.mainNumber;
            dpt.sub = row.subNumber;
            return true;
        }
    }
    return false;
}

bool KnxValueConverter::GetDefaultMappingDptForValueType(KNXDPT& dpt, const OKAVALUE& value)
{
    for (const ValueTypeDefault& row : kValueTypeDefaults)
    {
        if (row.valueType == value.type && (row.givenBitSize == kAnySize || row.givenBitSize == dpt.size))
        {
            dpt.size = row.bitSize;
            dpt.main = row.mainNumber;
            dpt.sub = row.subNumber;
            return true;
        }
    }
    return false;
}

bool KnxValueConverter::AreValueTypesCompatible(OkaValueType valueType, OkaValueType entryType)
{
    if (valueType == entryType)
    {
        return true;
    }
    for (const CompatibilityGroup& group : kCompatibilityGroups)
    {
        if (Contains(group.members, valueType))
        {
            return Contains(group.accepted, entryType);
        }
    }
    return false;
}
} // namespace Okaro
