#include "support/GroupValues.h"
#include "support/LogCapture.h"
#include "support/Values.h"

#include <TavObjectModel/KnxValueConverter.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <map>
#include <ostream>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <typeindex>
#include <vector>

using namespace Okaro;
using namespace TavTest;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

namespace
{
// Time of day with a Monday weekday (value model numbering: 0 = Sunday).
OKAVALUE MakeTimeValue(OkaValueType type)
{
    OKAVALUE value(type);
    value.numeric.time.Clear(true);
    value.numeric.time.year = 2000;
    value.numeric.time.month = 1;
    value.numeric.time.day = 1;
    value.numeric.time.hour = 12;
    value.numeric.time.minute = 30;
    value.numeric.time.second = 15;
    value.numeric.time.weekday = 1;
    return value;
}

std::vector<LogLine> Errors(const LogCapture& capture) { return capture.LinesAtOrAbove(log4cplus::ERROR_LOG_LEVEL); }

// Records what the front hands to a converter; all clones share the record.
struct SpyRecord
{
    int fromCalls = 0;
    int toCalls = 0;
    unsigned int definedSize = 0;
    Bytes bytes;
};

class SpyConverter : public KnxConverter
{
public:
    enum class Mode
    {
        Succeed,
        Fail,
        ThrowGroupValueException,
        ThrowOther,
        CloneToNull
    };

    SpyConverter(SpyRecord& record, Mode mode) : record_(record), mode_(mode) {}

    bool ToKnxValue(const KNXDPT&, const OKAVALUE&, KnxStack::GroupValue&) const override
    {
        ++record_.toCalls;
        return Act();
    }
    bool FromKnxValue(const KNXDPT&, const KnxStack::GroupValue& in, OKAVALUE&) const override
    {
        ++record_.fromCalls;
        record_.definedSize = in.GetDefinedSize();
        record_.bytes = BytesOf(in);
        return Act();
    }
    KnxConverter* Clone() const override { return mode_ == Mode::CloneToNull ? nullptr : new SpyConverter(*this); }

private:
    bool Act() const
    {
        switch (mode_)
        {
        case Mode::Fail:
            return false;
        case Mode::ThrowGroupValueException:
            throw KnxStack::GroupValueException("boom");
        case Mode::ThrowOther:
            throw std::runtime_error("other");
        default:
            return true;
        }
    }

    SpyRecord& record_;
    Mode mode_;
};

// Gives the tests access to the protected filling.
class RefillableConverter : public KnxValueConverter
{
public:
    using KnxValueConverter::FillDptValueMap;
};

// ------------------------------------------------------------------ the standard table

struct RangeInfo
{
    bool present = false;
    std::string printed;
    std::array<double, 4> bounds{};
    double scale = 0.0;
};

std::array<double, 4> BoundsOf(const IntegerRange& r)
{
    return {double(r.GetInternalMinimum()), double(r.GetInternalMaximum()), double(r.GetExternalMinimum()),
            double(r.GetExternalMaximum())};
}
std::array<double, 4> BoundsOf(const IntegerRange64& r)
{
    return {double(r.GetInternalMinimum()), double(r.GetInternalMaximum()), double(r.GetExternalMinimum()),
            double(r.GetExternalMaximum())};
}
std::array<double, 4> BoundsOf(const FloatRange& r)
{
    return {r.GetMinimum(), r.GetMaximum(), r.GetExternalMinimum(), r.GetExternalMaximum()};
}
std::array<double, 4> BoundsOf(const FloatIntegerRange& r)
{
    return {r.GetDoubleMinimum(), r.GetDoubleMaximum(), double(r.GetIntegerMinimum()), double(r.GetIntegerMaximum())};
}

template <typename Converter>
bool TryRange(const KnxConverter* converter, RangeInfo& info)
{
    const auto* typed = dynamic_cast<const Converter*>(converter);
    if (typed == nullptr)
    {
        return false;
    }
    std::ostringstream printed;
    printed << typed->GetRange();
    info.present = true;
    info.printed = printed.str();
    info.bounds = BoundsOf(typed->GetRange());
    info.scale = typed->GetRange().GetScaleFactor();
    return true;
}

RangeInfo RangeOf(const KnxConverter* converter)
{
    RangeInfo info;
    TryRange<KnxConverter4Bit>(converter, info) || TryRange<KnxConverter8BitString>(converter, info) ||
        TryRange<KnxConverterByte8BitUnsigned>(converter, info) ||
        TryRange<KnxConverterInteger8BitSigned>(converter, info) || TryRange<KnxConverterStatus8Bit>(converter, info) ||
        TryRange<KnxConverterInteger16BitUnsigned>(converter, info) ||
        TryRange<KnxConverterInteger16BitSigned>(converter, info) ||
        TryRange<KnxConverterFloat16BitFloat>(converter, info) ||
        TryRange<KnxConverterInteger32BitUnsigned>(converter, info) ||
        TryRange<KnxConverterInteger32BitSigned>(converter, info) ||
        TryRange<KnxConverterFloat32BitFloat>(converter, info) || TryRange<KnxConverter14ByteString>(converter, info) ||
        TryRange<KnxConverterSceneNumber>(converter, info) || TryRange<KnxConverterSceneControl>(converter, info) ||
        TryRange<KnxConverterSceneInfo>(converter, info) || TryRange<KnxConverterInteger24BitUnsigned>(converter, info);
    return info;
}

struct ExpectedRow
{
    std::uint16_t mainNumber;
    std::uint16_t subNumber;
    std::uint8_t bits;
    std::int32_t valueType;
    std::int32_t subType;
    std::type_index converter;
    const char* printedRange;  // "" for converters without a range
    std::array<double, 4> bounds;
    double scale;
};

#define T(Class) std::type_index(typeid(Class))
constexpr double kF16 = 670760.0;
constexpr double kF16Low = -671088.64;
constexpr double kF16High = 670760.96;
constexpr double kF32 = 3.40282346638528860e+38;
constexpr double kU32 = 4294967295.0;

const std::vector<ExpectedRow> kExpectedRows = {
    {1, 0, 1, 2, 0, T(KnxConverter1Bit), "", {}, 0},
    {2, 0, 2, 2, 0, T(KnxConverter2Bit), "", {}, 0},
    {3, 0, 4, 3, 3002, T(KnxConverter4Bit), "FloatIntegerRange(-100, 100, 0, 15)", {-100, 100, 0, 15}, 15.0 / 200.0},
    {4, 0, 8, 10, 8001, T(KnxConverter8BitString), "IntegerRange(0, 127, 0, 127)", {0, 127, 0, 127}, 1},
    {4, 1, 8, 10, 8001, T(KnxConverter8BitString), "IntegerRange(0, 127, 0, 127)", {0, 127, 0, 127}, 1},
    {4, 2, 8, 10, 8002, T(KnxConverter8BitString), "IntegerRange(0, 255, 0, 255)", {0, 255, 0, 255}, 1},
    {5, 0, 8, 6, 0, T(KnxConverterByte8BitUnsigned), "IntegerRange(0, 255, 0, 255)", {0, 255, 0, 255}, 1},
    {5, 6, 8, 6, 0, T(KnxConverterByte8BitUnsigned), "IntegerRange(0, 254, 0, 254)", {0, 254, 0, 254}, 1},
    {6, 0, 8, 4, 0, T(KnxConverterInteger8BitSigned), "IntegerRange(-128, 127, -128, 127)", {-128, 127, -128, 127}, 1},
    {6, 20, 8, 6, 3001, T(KnxConverterStatus8Bit), "IntegerRange(0, 255, 0, 255)", {0, 255, 0, 255}, 1},
    {7, 0, 16, 7, 0, T(KnxConverterInteger16BitUnsigned), "IntegerRange(0, 65535, 0, 65535)", {0, 65535, 0, 65535}, 1},
    {8, 0, 16, 4, 0, T(KnxConverterInteger16BitSigned), "IntegerRange(-32768, 32767, -32768, 32767)",
     {-32768, 32767, -32768, 32767}, 1},
    {9, 0, 16, 3, 0, T(KnxConverterFloat16BitFloat), "FloatRange(-671089, 670761, -671089, 670761)",
     {kF16Low, kF16High, kF16Low, kF16High}, 1},
    {9, 1, 16, 3, 3003, T(KnxConverterFloat16BitFloat), "FloatRange(-273, 670760, -273, 670760)",
     {-273, kF16, -273, kF16}, 1},
    {9, 2, 16, 3, 3003, T(KnxConverterFloat16BitFloat), "FloatRange(-670760, 670760, -670760, 670760)",
     {-kF16, kF16, -kF16, kF16}, 1},
    {9, 3, 16, 3, 3003, T(KnxConverterFloat16BitFloat), "FloatRange(-670760, 670760, -670760, 670760)",
     {-kF16, kF16, -kF16, kF16}, 1},
    {9, 4, 16, 3, 3003, T(KnxConverterFloat16BitFloat), "FloatRange(0, 670760, 0, 670760)", {0, kF16, 0, kF16}, 1},
    {9, 5, 16, 3, 3003, T(KnxConverterFloat16BitFloat), "FloatRange(0, 670760, 0, 670760)", {0, kF16, 0, kF16}, 1},
    {9, 6, 16, 3, 3003, T(KnxConverterFloat16BitFloat), "FloatRange(0, 670760, 0, 670760)", {0, kF16, 0, kF16}, 1},
    {9, 7, 16, 3, 3003, T(KnxConverterFloat16BitFloat), "FloatRange(0, 670760, 0, 670760)", {0, kF16, 0, kF16}, 1},
    {9, 8, 16, 3, 3003, T(KnxConverterFloat16BitFloat), "FloatRange(0, 670760, 0, 670760)", {0, kF16, 0, kF16}, 1},
    {9, 10, 16, 3, 3003, T(KnxConverterFloat16BitFloat), "FloatRange(-670760, 670760, -670760, 670760)",
     {-kF16, kF16, -kF16, kF16}, 1},
    {9, 11, 16, 3, 3003, T(KnxConverterFloat16BitFloat), "FloatRange(-670760, 670760, -670760, 670760)",
     {-kF16, kF16, -kF16, kF16}, 1},
    {9, 20, 16, 3, 3003, T(KnxConverterFloat16BitFloat), "FloatRange(-670760, 670760, -670760, 670760)",
     {-kF16, kF16, -kF16, kF16}, 1},
    {9, 21, 16, 3, 3003, T(KnxConverterFloat16BitFloat), "FloatRange(-670760, 670760, -670760, 670760)",
     {-kF16, kF16, -kF16, kF16}, 1},
    {9, 22, 16, 3, 3003, T(KnxConverterFloat16BitFloat), "FloatRange(-670760, 670760, -670760, 670760)",
     {-kF16, kF16, -kF16, kF16}, 1},
    {9, 23, 16, 3, 3003, T(KnxConverterFloat16BitFloat), "FloatRange(-670760, 670760, -670760, 670760)",
     {-kF16, kF16, -kF16, kF16}, 1},
    {9, 24, 16, 3, 3003, T(KnxConverterFloat16BitFloat), "FloatRange(-670760, 670760, -670760, 670760)",
     {-kF16, kF16, -kF16, kF16}, 1},
    {9, 25, 16, 3, 3003, T(KnxConverterFloat16BitFloat), "FloatRange(-670760, 670760, -670760, 670760)",
     {-kF16, kF16, -kF16, kF16}, 1},
    {9, 26, 16, 3, 3003, T(KnxConverterFloat16BitFloat), "FloatRange(-671089, 670761, -671089, 670761)",
     {kF16Low, kF16High, kF16Low, kF16High}, 1},
    {9, 27, 16, 3, 3003, T(KnxConverterFloat16BitFloat), "FloatRange(-459.6, 670761, -459.6, 670761)",
     {-459.6, kF16High, -459.6, kF16High}, 1},
    {9, 28, 16, 3, 3003, T(KnxConverterFloat16BitFloat), "FloatRange(0, 670761, 0, 670761)",
     {0, kF16High, 0, kF16High}, 1},
    {10, 0, 24, 12, 0, T(KnxConverterTimeOfDay), "", {}, 0},
    {11, 0, 24, 11, 0, T(KnxConverterDate), "", {}, 0},
    {12, 0, 32, 8, 0, T(KnxConverterInteger32BitUnsigned), "IntegerRange(0, 4294967295, 0, 4294967295)",
     {0, kU32, 0, kU32}, 1},
    {13, 0, 32, 4, 0, T(KnxConverterInteger32BitSigned),
     "IntegerRange(-2147483648, 2147483647, -2147483648, 2147483647)",
     {-2147483648.0, 2147483647.0, -2147483648.0, 2147483647.0}, 1},
    {14, 0, 32, 3, 0, T(KnxConverterFloat32BitFloat), "FloatRange(-3.40282e+38, 3.40282e+38, -3.40282e+38, 3.40282e+38)",
     {-kF32, kF32, -kF32, kF32}, 1},
    {15, 0, 32, 8, 0, T(KnxConverterInteger32BitUnsigned), "IntegerRange(0, 4294967295, 0, 4294967295)",
     {0, kU32, 0, kU32}, 1},
    {16, 0, 112, 10, 8001, T(KnxConverter14ByteString), "IntegerRange(0, 127, 0, 127)", {0, 127, 0, 127}, 1},
    {16, 1, 112, 10, 8002, T(KnxConverter14ByteString), "IntegerRange(0, 255, 0, 255)", {0, 255, 0, 255}, 1},
    {17, 0, 8, 4, 4001, T(KnxConverterSceneNumber), "IntegerRange(0, 63, 0, 63)", {0, 63, 0, 63}, 1},
    {18, 0, 8, 4, 4001, T(KnxConverterSceneControl), "IntegerRange(0, 63, 0, 63)", {0, 63, 0, 63}, 1},
    {19, 0, 64, 13, 0, T(KnxConverterDateTime), "", {}, 0},
    {20, 0, 8, 6, 0, T(KnxConverterByte8BitUnsigned), "IntegerRange(0, 255, 0, 255)", {0, 255, 0, 255}, 1},
    {20, 102, 8, 6, 0, T(KnxConverterByte8BitUnsigned), "IntegerRange(0, 4, 0, 4)", {0, 4, 0, 4}, 1},
    {20, 103, 8, 6, 0, T(KnxConverterByte8BitUnsigned), "IntegerRange(0, 4, 0, 4)", {0, 4, 0, 4}, 1},
    {21, 0, 8, 6, 0, T(KnxConverterByte8BitUnsigned), "IntegerRange(0, 255, 0, 255)", {0, 255, 0, 255}, 1},
    {23, 0, 8, 6, 0, T(KnxConverterByte8BitUnsigned), "IntegerRange(0, 255, 0, 255)", {0, 255, 0, 255}, 1},
    {26, 0, 8, 6, 0, T(KnxConverterSceneInfo), "IntegerRange(-64, 64, 0, 255)", {-64, 64, 0, 255}, 255.0 / 128.0},
    {27, 0, 32, 8, 0, T(KnxConverterInteger32BitUnsigned), "IntegerRange(0, 4294967295, 0, 4294967295)",
     {0, kU32, 0, kU32}, 1},
    {232, 0, 24, 8, 0, T(KnxConverterInteger24BitUnsigned), "IntegerRange(0, 16777215, 0, 16777215)",
     {0, 16777215, 0, 16777215}, 1},
    {236, 0, 8, 6, 0, T(KnxConverterByte8BitUnsigned), "IntegerRange(0, 255, 0, 255)", {0, 255, 0, 255}, 1},
    {238, 0, 8, 6, 0, T(KnxConverterByte8BitUnsigned), "IntegerRange(0, 255, 0, 255)", {0, 255, 0, 255}, 1},
};
#undef T

std::string DptName(std::uint16_t mainNumber, std::uint16_t subNumber)
{
    return std::to_string(mainNumber) + "." + std::to_string(subNumber);
}
} // namespace

// ====================================================================== the filled map

TEST(KnxValueConverterTable, ConstructionLogsNothingAndInitSucceeds)
{
    LogCapture capture;
    KnxValueConverter converter;
    EXPECT_TRUE(converter.Init());
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST(KnxValueConverterTable, HoldsFiftyThreeEntriesUnderTwentySevenMainNumbers)
{
    const KnxValueConverter converter;
    const DptValueMap& map = converter.GetDptValueMap();
    EXPECT_EQ(map.GetEntryCount(), 53u);
    std::vector<std::uint16_t> mainNumbers;
    for (const auto& mainEntry : map.GetEntries())
    {
        mainNumbers.push_back(mainEntry.first);
    }
    EXPECT_THAT(mainNumbers, ElementsAreArray(std::vector<std::uint16_t>{
                                 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 23, 26,
                                 27, 232, 236, 238}));
    // The rows the parameterised test below checks, one per entry.
    ASSERT_EQ(kExpectedRows.size(), 53u);
}

namespace
{
void PrintTo(const ExpectedRow& row, std::ostream* out) { *out << DptName(row.mainNumber, row.subNumber); }

// One row of the standard table.
class KnxValueConverterTableRow : public ::testing::TestWithParam<ExpectedRow>
{
};
} // namespace

TEST_P(KnxValueConverterTableRow, HasItsSizeTypesConverterAndRange)
{
    const ExpectedRow& row = GetParam();
    const KnxValueConverter converter;
    const DptValueMap& map = converter.GetDptValueMap();
    ASSERT_EQ(map.GetEntries().count(row.mainNumber), 1u);
    ASSERT_EQ(map.GetEntries().at(row.mainNumber).count(row.subNumber), 1u);
    const DptValueEntry& entry = map.GetEntries().at(row.mainNumber).at(row.subNumber);
    EXPECT_EQ(entry.GetDpt().size, row.bits);
    EXPECT_EQ(entry.GetDpt().main, row.mainNumber);
    EXPECT_EQ(entry.GetDpt().sub, row.subNumber);
    EXPECT_EQ(entry.GetValueType(), row.valueType);
    EXPECT_EQ(entry.GetValueSubType(), row.subType);
    ASSERT_NE(entry.GetConverter(), nullptr);
    const KnxConverter& actual = *entry.GetConverter();
    EXPECT_EQ(std::type_index(typeid(actual)), row.converter);
    const RangeInfo range = RangeOf(entry.GetConverter());
    EXPECT_EQ(range.present, row.printedRange[0] != '\0');
    if (range.present)
    {
        EXPECT_EQ(range.printed, row.printedRange);
        for (std::size_t i = 0; i < 4; ++i)
        {
            EXPECT_EQ(range.bounds[i], row.bounds[i]) << "bound " << i;
        }
        EXPECT_DOUBLE_EQ(range.scale, row.scale);
    }
}

INSTANTIATE_TEST_SUITE_P(StandardTable, KnxValueConverterTableRow, ::testing::ValuesIn(kExpectedRows),
                         [](const ::testing::TestParamInfo<ExpectedRow>& info) {
                             return "Dpt" + std::to_string(info.param.mainNumber) + "_" +
                                    std::to_string(info.param.subNumber);
                         });

TEST(KnxValueConverterTable, ConvertersAreNotSharedBetweenEntriesOrObjects)
{
    const KnxValueConverter first;
    const KnxValueConverter second;
    std::set<const KnxConverter*> seen;
    for (const KnxValueConverter* converter : {&first, &second})
    {
        for (const auto& mainEntry : converter->GetDptValueMap().GetEntries())
        {
            for (const auto& subEntry : mainEntry.second)
            {
                EXPECT_TRUE(seen.insert(subEntry.second.GetConverter()).second);
            }
        }
    }
    EXPECT_EQ(seen.size(), 106u);
}

TEST(KnxValueConverterTable, RefillingStartsFromAnEmptyMap)
{
    RefillableConverter converter;
    SpyRecord record;
    ASSERT_TRUE(converter.AddDptValueMapEntry(50, 1, 8, ivtByte, OkaDP::istGeneric,
                                              SpyConverter(record, SpyConverter::Mode::Succeed)));
    ASSERT_EQ(converter.GetDptValueMap().GetEntryCount(), 54u);
    LogCapture capture;
    converter.FillDptValueMap();
    EXPECT_EQ(converter.GetDptValueMap().GetEntryCount(), 53u);
    EXPECT_EQ(converter.GetDptValueMap().GetEntries().count(50), 0u);
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST(KnxValueConverterTable, AddedEntryOwnsACloneAndTheFirstRegistrationWins)
{
    KnxValueConverter converter;
    SpyRecord record;
    {
        const SpyConverter onTheStack(record, SpyConverter::Mode::Succeed);
        EXPECT_TRUE(converter.AddDptValueMapEntry(50, 1, 8, ivtByte, OkaDP::istGeneric, onTheStack));
        EXPECT_NE(converter.GetEntry(KNXDPT{8, 50, 1}).GetConverter(), &onTheStack);
    }
    const KnxConverter* stored = converter.GetEntry(KNXDPT{8, 50, 1}).GetConverter();
    EXPECT_TRUE(converter.AddDptValueMapEntry(50, 1, 16, ivtWord, OkaDP::istGeneric,
                                              SpyConverter(record, SpyConverter::Mode::Fail)));
    EXPECT_TRUE(converter.AddDptValueMapEntry(9, 1, 8, ivtByte, OkaDP::istGeneric,
                                              SpyConverter(record, SpyConverter::Mode::Fail)));
    const DptValueEntry& entry = converter.GetEntry(KNXDPT{0, 50, 1});
    EXPECT_EQ(entry.GetConverter(), stored);
    EXPECT_EQ(entry.GetDpt().size, 8);
    EXPECT_EQ(entry.GetValueType(), ivtByte);
    const KnxConverter& floatConverter = *converter.GetEntry(KNXDPT{16, 9, 1}).GetConverter();
    EXPECT_EQ(typeid(floatConverter), typeid(KnxConverterFloat16BitFloat));
    EXPECT_EQ(converter.GetDptValueMap().GetEntryCount(), 54u);
}

// ====================================================================== lookups through the front

TEST(KnxValueConverterLookup, ExactWildcardAndMissingSubNumbers)
{
    const KnxValueConverter converter;
    LogCapture capture;
    const DptValueEntry& exact = converter.GetEntry(KNXDPT{16, 9, 1});
    EXPECT_EQ(exact.GetDpt().sub, 1);
    EXPECT_EQ(RangeOf(exact.GetConverter()).printed, "FloatRange(-273, 670760, -273, 670760)");
    EXPECT_EQ(&converter.GetEntry(KNXDPT{16, 9, 9}), &converter.GetDptValueMap().GetEntries().at(9).at(0));
    EXPECT_EQ(&converter.GetEntry(KNXDPT{16, 9, 0}), &converter.GetDptValueMap().GetEntries().at(9).at(0));
    const DptValueEntry& percent = converter.GetEntry(KNXDPT{8, 5, 1});
    EXPECT_EQ(percent.GetDpt().sub, 0);
    EXPECT_EQ(percent.GetValueType(), ivtByte);
    EXPECT_EQ(RangeOf(percent.GetConverter()).printed, "IntegerRange(0, 255, 0, 255)");
    EXPECT_EQ(converter.GetEntry(KNXDPT{8, 9, 1}).GetDpt().size, 16);
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST(KnxValueConverterLookup, UnknownMainNumberLogsAndGivesTheEmptyRecord)
{
    const KnxValueConverter converter;
    LogCapture capture;
    const DptValueEntry& entry = converter.GetEntry(KNXDPT{16, 22, 1});
    EXPECT_EQ(entry.GetValueType(), ivtEmpty);
    const KnxConverter& defaultConverter = *entry.GetConverter();
    EXPECT_EQ(typeid(defaultConverter), typeid(KnxConverterDefault));
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("GetEntry - No Entry found for DPT = 22.1")));
}

// ====================================================================== expected bit sizes

TEST(KnxValueConverterExpectedBitSize, EveryMainNumber)
{
    std::map<unsigned int, std::uint32_t> listed;
    const auto set = [&listed](std::uint32_t bits, std::initializer_list<unsigned int> mainNumbers) {
        for (unsigned int mainNumber : mainNumbers)
        {
            listed[mainNumber] = bits;
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
    set(2147483647u, {24, 28});
    ASSERT_EQ(listed.size(), 68u);
    for (unsigned int mainNumber = 1; mainNumber <= 241; ++mainNumber)
    {
        const auto found = listed.find(mainNumber);
        EXPECT_EQ(KnxValueConverter::GetExpectedBitSize(mainNumber), found == listed.end() ? 0u : found->second)
            << "main " << mainNumber;
    }
}

TEST(KnxValueConverterExpectedBitSize, OutsideTheTableIsZero)
{
    for (unsigned int mainNumber : {0u, 242u, 255u, 1000u, 65535u, 4294967295u})
    {
        EXPECT_EQ(KnxValueConverter::GetExpectedBitSize(mainNumber), 0u) << "main " << mainNumber;
    }
}

// ====================================================================== default DPTs

TEST(KnxValueConverterDefaults, ForEveryBitSize)
{
    const std::map<unsigned int, std::pair<std::uint16_t, std::uint16_t>> table = {
        {1, {1, 1}},   {2, {2, 1}},    {4, {3, 7}},    {8, {5, 0}},   {16, {9, 0}},  {24, {10, 1}},
        {32, {14, 0}}, {40, {218, 0}}, {48, {219, 1}}, {64, {19, 1}}, {112, {16, 1}},
    };
    for (unsigned int bits = 0; bits < 256; ++bits)
    {
        KNXDPT dpt{static_cast<std::uint8_t>(bits), 77, 88};
        const auto found = table.find(bits);
        const bool result = KnxValueConverter::GetDefaultMappingDptForSize(dpt);
        EXPECT_EQ(dpt.size, bits);
        if (found == table.end())
        {
            EXPECT_FALSE(result) << bits;
            EXPECT_EQ(dpt.main, 77) << bits;
            EXPECT_EQ(dpt.sub, 88) << bits;
        }
        else
        {
            EXPECT_TRUE(result) << bits;
            EXPECT_EQ(dpt.main, found->second.first) << bits;
            EXPECT_EQ(dpt.sub, found->second.second) << bits;
        }
    }
}

TEST(KnxValueConverterDefaults, BitSizeThreeHasNoDefault)
{
    KNXDPT dpt{3, 0, 0};
    EXPECT_FALSE(KnxValueConverter::GetDefaultMappingDptForSize(dpt));
    EXPECT_EQ(dpt.size, 3);
    EXPECT_EQ(dpt.main, 0);
    EXPECT_EQ(dpt.sub, 0);
}

TEST(KnxValueConverterDefaults, ForEveryValueTypeAndGivenSize)
{
    struct Row
    {
        std::int32_t type;
        int given;  // -1: any
        KNXDPT result;
    };
    const std::vector<Row> table = {
        {2, -1, {1, 1, 1}},       {1037, -1, {4, 3, 7}},    {6, -1, {8, 5, 0}},      {1036, -1, {8, 5, 1}},
        {3, 0, {16, 9, 0}},       {3, 4, {4, 3, 0}},        {3, 8, {8, 5, 1}},       {3, 16, {16, 9, 0}},
        {3, 32, {16, 14, 0}},     {12, -1, {24, 10, 1}},    {11, -1, {24, 11, 1}},   {8, -1, {32, 12, 1}},
        {4, 0, {32, 13, 0}},      {4, 8, {8, 6, 0}},        {4, 16, {16, 8, 0}},     {14, -1, {32, 13, 100}},
        {9, -1, {40, 218, 0}},    {13, -1, {64, 19, 1}},    {10, 0, {112, 16, 1}},   {10, 8, {8, 4, 1}},
        {10, 112, {8, 16, 0}},
    };
    const std::vector<std::int32_t> types = {0,  1,  2,  3,   4,   5,   6,   7,    8,    9,    10,   11,  12,
                                             13, 14, 15, 20,  102, 104, 105, 201, 1005, 1021, 1036, 1037, 1039};
    const std::vector<int> sizes = {0, 1, 2, 3, 4, 6, 8, 9, 16, 24, 32, 40, 48, 64, 112, 255};
    int defaults = 0;
    for (std::int32_t type : types)
    {
        for (int size : sizes)
        {
            const Row* expected = nullptr;
            for (const Row& row : table)
            {
                if (row.type == type && (row.given == -1 || row.given == size))
                {
                    expected = &row;
                }
            }
            KNXDPT dpt{static_cast<std::uint8_t>(size), 77, 88};
            OKAVALUE value;
            value.type = static_cast<OkaValueType>(type);
            const bool result = KnxValueConverter::GetDefaultMappingDptForValueType(dpt, value);
            SCOPED_TRACE("type " + std::to_string(type) + " size " + std::to_string(size));
            if (expected == nullptr)
            {
                EXPECT_FALSE(result);
                EXPECT_EQ(dpt.size, size);
                EXPECT_EQ(dpt.main, 77);
                EXPECT_EQ(dpt.sub, 88);
            }
            else
            {
                ++defaults;
                EXPECT_TRUE(result);
                EXPECT_EQ(dpt.size, expected->result.size);
                EXPECT_EQ(dpt.main, expected->result.main);
                EXPECT_EQ(dpt.sub, expected->result.sub);
            }
        }
    }
    // 10 "any size" types times 16 sizes, plus the 11 rows for a given size.
    EXPECT_EQ(defaults, 10 * 16 + 11);
}

TEST(KnxValueConverterDefaults, FloatWith32BitsAndStringWith112BitsKeepTheirOddSizes)
{
    KNXDPT floatDpt{32, 0, 0};
    EXPECT_TRUE(KnxValueConverter::GetDefaultMappingDptForValueType(floatDpt, FloatValue(1.0)));
    EXPECT_EQ(floatDpt.size, 16);
    EXPECT_EQ(floatDpt.main, 14);
    EXPECT_EQ(floatDpt.sub, 0);
    KNXDPT stringDpt{112, 0, 0};
    EXPECT_TRUE(KnxValueConverter::GetDefaultMappingDptForValueType(stringDpt, StringValue("x")));
    EXPECT_EQ(stringDpt.size, 8);
    EXPECT_EQ(stringDpt.main, 16);
    EXPECT_EQ(stringDpt.sub, 0);
}

// ====================================================================== compatibility

TEST(KnxValueConverterCompatibility, EveryPairOfTheKnownTypeCodes)
{
    const std::vector<std::int32_t> types = {0,  1,  2,  3,   4,   5,   6,   7,    8,    9,    10,   11,  12,
                                             13, 14, 15, 20,  102, 104, 105, 201, 1005, 1021, 1036, 1037, 1039};
    const std::set<std::int32_t> floats = {3, 1005, 1036, 1037, 1039};
    const std::set<std::int32_t> dateTimeTargets = {11, 12, 13, 102, 104, 105, 201};
    const std::map<std::int32_t, std::set<std::int32_t>> accepted = {
        {3, floats},         {1005, floats},     {1036, floats},          {1037, floats},
        {1039, floats},      {4, {4, 14}},       {14, {4, 14}},           {6, {6, 1021}},
        {1021, {6, 1021}},   {7, {7, 8, 20}},    {8, {7, 8, 20}},         {20, {7, 8, 20}},
        {11, {11, 105}},     {105, {11, 105}},   {12, {12, 104}},         {104, {12, 104}},
        {13, dateTimeTargets}, {102, dateTimeTargets}, {201, dateTimeTargets},
    };
    int compatiblePairs = 0;
    for (std::int32_t a : types)
    {
        for (std::int32_t b : types)
        {
            const auto group = accepted.find(a);
            const bool expected = a == b || (group != accepted.end() && group->second.count(b) != 0);
            compatiblePairs += expected ? 1 : 0;
            EXPECT_EQ(KnxValueConverter::AreValueTypesCompatible(static_cast<OkaValueType>(a),
                                                                 static_cast<OkaValueType>(b)),
                      expected)
                << a << " -> " << b;
        }
    }
    // 26 identities + floats 5*4 + 2 + 2 + 3*2 + 2 + 2 + date/time 3*6.
    EXPECT_EQ(compatiblePairs, 26 + 20 + 2 + 2 + 6 + 2 + 2 + 18);
}

TEST(KnxValueConverterCompatibility, DateAndTimeAcceptedOnlyOneWay)
{
    EXPECT_TRUE(KnxValueConverter::AreValueTypesCompatible(ivtDateTime, ivtDate));
    EXPECT_TRUE(KnxValueConverter::AreValueTypesCompatible(ivtDateTime, ivtTime));
    EXPECT_FALSE(KnxValueConverter::AreValueTypesCompatible(ivtDate, ivtDateTime));
    EXPECT_FALSE(KnxValueConverter::AreValueTypesCompatible(ivtTime, ivtDateTime));
}

// ====================================================================== FromKnxValue

TEST(KnxValueConverterFromKnx, NoDptWithSixteenBitsBecomesNineZero)
{
    KnxValueConverter converter;
    KNXDPT dpt{0, 0, 0};
    OKAVALUE value;
    LogCapture capture;
    EXPECT_TRUE(converter.FromKnxValue(dpt, MakeGroupValue({0x0C, 0x1A}, 16), value));
    EXPECT_EQ(dpt.size, 16);
    EXPECT_EQ(dpt.main, 9);
    EXPECT_EQ(dpt.sub, 0);
    EXPECT_EQ(value.type, ivtFloat);
    EXPECT_DOUBLE_EQ(value.numeric.real, 21.0);
    EXPECT_THAT(Errors(capture), IsEmpty());
}

TEST(KnxValueConverterFromKnx, GivenBitSizeChoosesTheDefaultEvenIfTheGroupValueDiffers)
{
    KnxValueConverter converter;
    KNXDPT dpt{16, 0, 0};
    OKAVALUE value;
    LogCapture capture;
    EXPECT_FALSE(converter.FromKnxValue(dpt, MakeGroupValue({0x0C}, 8), value));
    EXPECT_EQ(dpt.size, 16);
    EXPECT_EQ(dpt.main, 9);
    EXPECT_EQ(dpt.sub, 0);
    EXPECT_THAT(Errors(capture),
                ElementsAre(Error("FromKnxValue - Failed to convert a GroupValue for DPT 9.0 because of unexpected bit "
                                  "size: 8, expected: 16")));
}

TEST(KnxValueConverterFromKnx, NoDefaultForTheSizeIsAMissingDpt)
{
    KnxValueConverter converter;
    KNXDPT dpt{0, 0, 0};
    OKAVALUE value;
    LogCapture capture;
    EXPECT_FALSE(converter.FromKnxValue(dpt, MakeGroupValue({0x01}, 6), value));
    EXPECT_EQ(dpt.size, 0);
    EXPECT_EQ(dpt.main, 0);
    EXPECT_EQ(dpt.sub, 0);
    EXPECT_EQ(value.type, ivtEmpty);
    EXPECT_THAT(capture.Lines(),
                ElementsAre(Error("FromKnxValue - Convert from KNX value failed. Missing DPT. GroupValue = 01")));
}

TEST(KnxValueConverterFromKnx, WrongBitSizeIsRefusedAfterTheTypeIsSet)
{
    KnxValueConverter converter;
    KNXDPT dpt{16, 9, 1};
    OKAVALUE value;
    LogCapture capture;
    EXPECT_FALSE(converter.FromKnxValue(dpt, MakeGroupValue({0x0C}, 8), value));
    EXPECT_EQ(value.type, ivtFloat);
    EXPECT_THAT(capture.Lines(),
                ElementsAre(Error("FromKnxValue - Failed to convert a GroupValue for DPT 9.1 because of unexpected bit "
                                  "size: 8, expected: 16")));
}

TEST(KnxValueConverterFromKnx, ShortTelegramOfSixBitsIsReadAsOneBit)
{
    KnxValueConverter converter;
    OKAVALUE value;
    LogCapture capture;
    EXPECT_TRUE(converter.FromKnxValue(KNXDPT{1, 1, 1}, MakeGroupValue({0x01}, 6), value));
    EXPECT_EQ(value.type, ivtBool);
    EXPECT_TRUE(value.numeric.boolean);
    EXPECT_THAT(Errors(capture), IsEmpty());
}

TEST(KnxValueConverterFromKnx, ShortTelegramIsNarrowedToTheDptSizeBeforeTheConverter)
{
    KnxValueConverter converter;
    SpyRecord record;
    ASSERT_TRUE(converter.AddDptValueMapEntry(1, 50, 1, ivtBool, OkaDP::istGeneric,
                                              SpyConverter(record, SpyConverter::Mode::Succeed)));
    ASSERT_TRUE(converter.AddDptValueMapEntry(3, 50, 4, ivtFloat, OkaDP::istGeneric,
                                              SpyConverter(record, SpyConverter::Mode::Succeed)));
    OKAVALUE value;
    EXPECT_TRUE(converter.FromKnxValue(KNXDPT{1, 1, 50}, MakeGroupValue({0x01}, 6), value));
    EXPECT_EQ(record.definedSize, 1u);
    EXPECT_EQ(record.bytes, Bytes({0x01}));
    EXPECT_TRUE(converter.FromKnxValue(KNXDPT{4, 3, 50}, MakeGroupValue({0x0B}, 6), value));
    EXPECT_EQ(record.definedSize, 4u);
    // Below 6 bits the caller's group value is passed as it is.
    EXPECT_TRUE(converter.FromKnxValue(KNXDPT{1, 1, 50}, MakeGroupValue({0x01}, 3), value));
    EXPECT_EQ(record.definedSize, 3u);
    EXPECT_TRUE(converter.FromKnxValue(KNXDPT{1, 1, 50}, MakeGroupValue({0x01}, 1), value));
    EXPECT_EQ(record.definedSize, 1u);
    EXPECT_EQ(record.fromCalls, 4);
}

TEST(KnxValueConverterFromKnx, SevenBitsFailTheShortSizeCheck)
{
    KnxValueConverter converter;
    OKAVALUE value;
    LogCapture capture;
    EXPECT_FALSE(converter.FromKnxValue(KNXDPT{1, 1, 1}, MakeGroupValue({0x01}, 7), value));
    EXPECT_THAT(capture.Lines(),
                ElementsAre(Error("FromKnxValue - Failed to convert a GroupValue for DPT 1.1 because of unexpected bit "
                                  "size: 7, expected: 1")));
}

TEST(KnxValueConverterFromKnx, MainNumbers24And28AcceptAnySize)
{
    KnxValueConverter converter;
    SpyRecord record;
    ASSERT_TRUE(converter.AddDptValueMapEntry(24, 1, 0, ivtString, OkaDP::istGeneric,
                                              SpyConverter(record, SpyConverter::Mode::Succeed)));
    ASSERT_TRUE(converter.AddDptValueMapEntry(28, 1, 0, ivtString, OkaDP::istGeneric,
                                              SpyConverter(record, SpyConverter::Mode::Succeed)));
    LogCapture capture;
    for (std::uint16_t mainNumber : {24, 28})
    {
        for (unsigned int bits : {0u, 6u, 8u, 40u, 200u})
        {
            OKAVALUE value;
            EXPECT_TRUE(converter.FromKnxValue(KNXDPT{8, mainNumber, 1}, MakeGroupValue({0x41, 0x00}, bits), value))
                << mainNumber << " " << bits;
            EXPECT_EQ(record.definedSize, bits);
        }
    }
    EXPECT_EQ(record.fromCalls, 10);
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST(KnxValueConverterFromKnx, MainNumberWithoutEntryIsAcceptedWithoutSizeCheck)
{
    KnxValueConverter converter;
    OKAVALUE value = FloatValue(5.5);
    LogCapture capture;
    EXPECT_TRUE(converter.FromKnxValue(KNXDPT{16, 22, 1}, MakeGroupValue({0x12, 0x34}, 16), value));
    EXPECT_EQ(value.type, ivtEmpty);
    EXPECT_DOUBLE_EQ(value.numeric.real, 5.5);
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("GetEntry - No Entry found for DPT = 22.1"),
                                             Error("FromKnxValue - No Entry found for DPT = 22.1"),
                                             Error("FromKnxValue - Assume validity and accept value!")));
}

TEST(KnxValueConverterFromKnx, MissingEntryIsAcceptedEvenWithAWrongSize)
{
    KnxValueConverter converter;
    OKAVALUE value;
    LogCapture capture;
    EXPECT_TRUE(converter.FromKnxValue(KNXDPT{0, 24, 1}, MakeGroupValue({0x12}, 8), value));
    EXPECT_TRUE(converter.FromKnxValue(KNXDPT{0, 40, 0}, MakeGroupValue({0x12}, 8), value));
    EXPECT_EQ(value.type, ivtEmpty);
    EXPECT_THAT(Errors(capture), ElementsAre(Error("GetEntry - No Entry found for DPT = 24.1"),
                                             Error("FromKnxValue - No Entry found for DPT = 24.1"),
                                             Error("FromKnxValue - Assume validity and accept value!"),
                                             Error("GetEntry - No Entry found for DPT = 40.0"),
                                             Error("FromKnxValue - No Entry found for DPT = 40.0"),
                                             Error("FromKnxValue - Assume validity and accept value!")));
}

TEST(KnxValueConverterFromKnx, ConverterRefusalIsReported)
{
    KnxValueConverter converter;
    OKAVALUE value;
    LogCapture capture;
    EXPECT_FALSE(converter.FromKnxValue(KNXDPT{8, 17, 1}, MakeGroupValue({0x40}, 8), value));
    EXPECT_THAT(Errors(capture),
                ElementsAre(Error("FromKnxValue - Scene number is out of range (>63) for SceneNumber: 64"),
                            Error("FromKnxValue - Convert from KNX value failed for DPT = 17.1 GroupValue = 40")));
}

TEST(KnxValueConverterFromKnx, NullConverterIsReported)
{
    KnxValueConverter converter;
    SpyRecord record;
    ASSERT_TRUE(converter.AddDptValueMapEntry(7, 50, 16, ivtWord, OkaDP::istGeneric,
                                              SpyConverter(record, SpyConverter::Mode::CloneToNull)));
    ASSERT_EQ(converter.GetEntry(KNXDPT{16, 7, 50}).GetConverter(), nullptr);
    OKAVALUE value;
    LogCapture capture;
    EXPECT_FALSE(converter.FromKnxValue(KNXDPT{16, 7, 50}, MakeGroupValue({0x12, 0x34}, 16), value));
    EXPECT_EQ(value.type, ivtWord);
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("FromKnxValue - NULL pointer as KnxConverter for DPT = 7.50")));
}

TEST(KnxValueConverterFromKnx, TruncatedGroupValueExceptionIsCaught)
{
    KnxValueConverter converter;
    const KnxStack::GroupValue truncated = MakeGroupValue({0x0C}, 16);
    std::string what;
    try
    {
        truncated.GetAsUnsigned16();
    }
    catch (const KnxStack::GroupValueException& exception)
    {
        what = exception.what();
    }
    ASSERT_FALSE(what.empty());
    OKAVALUE value;
    LogCapture capture;
    EXPECT_FALSE(converter.FromKnxValue(KNXDPT{16, 9, 1}, truncated, value));
    EXPECT_EQ(value.type, ivtFloat);
    EXPECT_THAT(Errors(capture), ElementsAre(Error("FromKnxValue - Exception caught during conversion of GroupValue: " +
                                                   what + "(DPT: 9.1, Value: " + value.ToString() + ")")));
}

TEST(KnxValueConverterFromKnx, OtherExceptionsPassThrough)
{
    KnxValueConverter converter;
    SpyRecord record;
    ASSERT_TRUE(converter.AddDptValueMapEntry(7, 51, 16, ivtWord, OkaDP::istGeneric,
                                              SpyConverter(record, SpyConverter::Mode::ThrowOther)));
    OKAVALUE value;
    EXPECT_THROW(converter.FromKnxValue(KNXDPT{16, 7, 51}, MakeGroupValue({0x12, 0x34}, 16), value),
                 std::runtime_error);
    KnxStack::GroupValue groupValue;
    EXPECT_THROW(converter.ToKnxValue(KNXDPT{16, 7, 51}, WordValue(1), groupValue), std::runtime_error);
}

// ====================================================================== ToKnxValue

TEST(KnxValueConverterToKnx, IntegerOnThirteenOneSucceeds)
{
    KnxValueConverter converter;
    KnxStack::GroupValue groupValue;
    LogCapture capture;
    EXPECT_TRUE(converter.ToKnxValue(KNXDPT{32, 13, 1}, IntegerValue(-2), groupValue));
    EXPECT_EQ(BytesOf(groupValue), Bytes({0xFF, 0xFF, 0xFF, 0xFE}));
    EXPECT_EQ(groupValue.GetDefinedSize(), 32u);
    EXPECT_THAT(Errors(capture), IsEmpty());
}

TEST(KnxValueConverterToKnx, FloatOnThirteenOneIsAnInvalidType)
{
    KnxValueConverter converter;
    KnxStack::GroupValue groupValue;
    LogCapture capture;
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{32, 13, 1}, FloatValue(1.5), groupValue));
    EXPECT_EQ(groupValue, KnxStack::GroupValue());
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("ToKnxValue - Invalid value type found for DPT = 13.1 val.ivt=3")));
}

TEST(KnxValueConverterToKnx, DateAndTimeValueSuitsATimeEntryButNotTheReverse)
{
    KnxValueConverter converter;
    KnxStack::GroupValue groupValue;
    LogCapture capture;
    EXPECT_TRUE(converter.ToKnxValue(KNXDPT{24, 10, 1}, MakeTimeValue(ivtDateTime), groupValue));
    EXPECT_EQ(BytesOf(groupValue), Bytes({0x2C, 0x1E, 0x0F}));
    EXPECT_THAT(Errors(capture), IsEmpty());

    KnxStack::GroupValue untouched;
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{64, 19, 1}, MakeTimeValue(ivtTime), untouched));
    EXPECT_EQ(untouched, KnxStack::GroupValue());
    EXPECT_THAT(Errors(capture), ElementsAre(Error("ToKnxValue - Invalid value type found for DPT = 19.1 val.ivt=12")));
}

TEST(KnxValueConverterToKnx, FloatWith32BitsWritesFourteenZeroWithSixteenBitsIntoTheCallersDpt)
{
    KnxValueConverter converter;
    KNXDPT dpt{32, 0, 0};
    KnxStack::GroupValue groupValue;
    LogCapture capture;
    EXPECT_TRUE(converter.ToKnxValue(dpt, FloatValue(21.5), groupValue));
    EXPECT_EQ(dpt.size, 16);
    EXPECT_EQ(dpt.main, 14);
    EXPECT_EQ(dpt.sub, 0);
    EXPECT_EQ(BytesOf(groupValue), Bytes({0x41, 0xAC, 0x00, 0x00}));
    EXPECT_THAT(Errors(capture), IsEmpty());
}

TEST(KnxValueConverterToKnx, SizeDefaultIsTheFallbackForTypesWithoutDefault)
{
    KnxValueConverter converter;
    KNXDPT dpt{16, 0, 0};
    KnxStack::GroupValue groupValue;
    LogCapture capture;
    EXPECT_FALSE(converter.ToKnxValue(dpt, WordValue(7), groupValue));
    EXPECT_EQ(dpt.size, 16);
    EXPECT_EQ(dpt.main, 9);
    EXPECT_EQ(dpt.sub, 0);
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("ToKnxValue - Invalid value type found for DPT = 9.0 val.ivt=7")));
}

TEST(KnxValueConverterToKnx, NoDefaultAtAllIsAMissingDpt)
{
    KnxValueConverter converter;
    KNXDPT dpt{0, 0, 0};
    const OKAVALUE value = WordValue(7);
    KnxStack::GroupValue groupValue;
    LogCapture capture;
    EXPECT_FALSE(converter.ToKnxValue(dpt, value, groupValue));
    EXPECT_EQ(dpt.main, 0);
    EXPECT_THAT(capture.Lines(),
                ElementsAre(Error("ToKnxValue - Convert to KNX value failed. Missing DPT. val = " + value.ToString())));
}

TEST(KnxValueConverterToKnx, MissingEntryIsAcceptedAndLeavesTheGroupValue)
{
    KnxValueConverter converter;
    KnxStack::GroupValue groupValue = MakeGroupValue({0xAB}, 8);
    LogCapture capture;
    EXPECT_TRUE(converter.ToKnxValue(KNXDPT{16, 22, 1}, FloatValue(1.0), groupValue));
    EXPECT_EQ(groupValue, MakeGroupValue({0xAB}, 8));
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("GetEntry - No Entry found for DPT = 22.1"),
                                             Error("ToKnxValue - No Entry found for DPT = 22.1"),
                                             Error("ToKnxValue - Assume validity and accept value!")));
}

TEST(KnxValueConverterToKnx, InvalidValueSkipsTheTypeCheck)
{
    KnxValueConverter converter;
    OKAVALUE invalid;
    invalid.type = static_cast<OkaValueType>(0);
    KnxStack::GroupValue groupValue;
    LogCapture capture;
    EXPECT_TRUE(converter.ToKnxValue(KNXDPT{16, 9, 1}, invalid, groupValue));
    EXPECT_EQ(BytesOf(groupValue), Bytes({0x7F, 0xFF}));
    EXPECT_THAT(Errors(capture), IsEmpty());
}

TEST(KnxValueConverterToKnx, ConverterRefusalIsReported)
{
    KnxValueConverter converter;
    const OKAVALUE value = FloatValue(-300.0);
    KnxStack::GroupValue groupValue;
    LogCapture capture;
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{16, 9, 1}, value, groupValue));
    EXPECT_THAT(Errors(capture),
                ElementsAre(Error("ToKnxValue - The internal value of DPT=9.1, f=-300 is out of the allowed range."),
                            Error("ToKnxValue - Convert to KNX value failed for DPT = 9.1 val = " + value.ToString())));
}

TEST(KnxValueConverterToKnx, NullConverterIsReported)
{
    KnxValueConverter converter;
    SpyRecord record;
    ASSERT_TRUE(converter.AddDptValueMapEntry(7, 50, 16, ivtWord, OkaDP::istGeneric,
                                              SpyConverter(record, SpyConverter::Mode::CloneToNull)));
    KnxStack::GroupValue groupValue;
    LogCapture capture;
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{16, 7, 50}, WordValue(1), groupValue));
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("ToKnxValue - NULL pointer as KnxConverter for DPT = 7.50")));
}

TEST(KnxValueConverterToKnx, GroupValueExceptionIsCaught)
{
    KnxValueConverter converter;
    SpyRecord record;
    ASSERT_TRUE(converter.AddDptValueMapEntry(7, 52, 16, ivtWord, OkaDP::istGeneric,
                                              SpyConverter(record, SpyConverter::Mode::ThrowGroupValueException)));
    KnxStack::GroupValue groupValue;
    LogCapture capture;
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{16, 7, 52}, WordValue(1), groupValue));
    EXPECT_THAT(capture.Lines(),
                ElementsAre(Error("ToKnxValue - Exception caught during conversion of OKAVALUE to GroupValue: boom")));
    OKAVALUE value;
    capture.Clear();
    EXPECT_FALSE(converter.FromKnxValue(KNXDPT{16, 7, 52}, MakeGroupValue({0, 1}, 16), value));
    EXPECT_THAT(capture.Lines(),
                ElementsAre(Error("FromKnxValue - Exception caught during conversion of GroupValue: boom(DPT: 7.52, "
                                  "Value: " +
                                  value.ToString() + ")")));
}

// ====================================================================== paths that never succeed

namespace
{
std::string FrontFailure(const KNXDPT& dpt, const OKAVALUE& value)
{
    return "ToKnxValue - Convert to KNX value failed for DPT = " + DptName(dpt.main, dpt.sub) +
           " val = " + value.ToString();
}
} // namespace

TEST(KnxValueConverterNeverSucceeds, TwoBitControlThroughTheFront)
{
    KnxValueConverter converter;
    KnxStack::GroupValue groupValue;
    LogCapture capture;
    const OKAVALUE boolValue = BoolValue(true);
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{2, 2, 1}, boolValue, groupValue));
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{2, 2, 1}, ByteValue(3), groupValue));
    EXPECT_EQ(groupValue, KnxStack::GroupValue());
    EXPECT_THAT(Errors(capture),
                ElementsAre(Error("ToKnxValue - Wrong oka value type (ivtByte) or DPT main number (2.x)!"),
                            Error(FrontFailure(KNXDPT{2, 2, 1}, boolValue)),
                            Error("ToKnxValue - Invalid value type found for DPT = 2.1 val.ivt=6")));
}

TEST(KnxValueConverterNeverSucceeds, FourBitDimmingThroughTheFront)
{
    KnxValueConverter converter;
    KnxStack::GroupValue groupValue;
    LogCapture capture;
    const OKAVALUE floatValue = FloatValue(50.0);
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{4, 3, 7}, floatValue, groupValue));
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{4, 3, 7}, ByteValue(11), groupValue));
    EXPECT_EQ(groupValue, KnxStack::GroupValue());
    EXPECT_THAT(Errors(capture),
                ElementsAre(Error("ToKnxValue - Wrong oka value type (ivtByte) or DPT main number (3.x)!"),
                            Error(FrontFailure(KNXDPT{4, 3, 7}, floatValue)),
                            Error("ToKnxValue - Invalid value type found for DPT = 3.7 val.ivt=6")));
}

TEST(KnxValueConverterNeverSucceeds, SceneControlThroughTheFront)
{
    KnxValueConverter converter;
    KnxStack::GroupValue groupValue;
    LogCapture capture;
    const OKAVALUE integerValue = IntegerValue(5);
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{8, 18, 1}, integerValue, groupValue));
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{8, 18, 1}, ByteValue(5), groupValue));
    EXPECT_EQ(groupValue, KnxStack::GroupValue());
    EXPECT_THAT(Errors(capture),
                ElementsAre(Error("ToKnxValue - Wrong DPT for Scene number (18.001) or oka value type (ivtByte)."),
                            Error(FrontFailure(KNXDPT{8, 18, 1}, integerValue)),
                            Error("ToKnxValue - Invalid value type found for DPT = 18.1 val.ivt=6")));
}

TEST(KnxValueConverterNeverSucceeds, BytesOnTheUnscaledByteWildcards)
{
    KnxValueConverter converter;
    const OKAVALUE byteValue = ByteValue(128);
    for (std::uint16_t mainNumber : {20, 21, 23, 236, 238})
    {
        for (std::uint16_t subNumber : {0, 1, 102})
        {
            const KNXDPT dpt{8, mainNumber, subNumber};
            KnxStack::GroupValue groupValue;
            LogCapture capture;
            EXPECT_FALSE(converter.ToKnxValue(dpt, byteValue, groupValue)) << DptName(mainNumber, subNumber);
            EXPECT_EQ(groupValue, KnxStack::GroupValue());
            EXPECT_THAT(Errors(capture),
                        ElementsAre(Error("ToKnxValue - Wrong oka value type (ivtByte) or DPT main number (5.x)!"),
                                    Error(FrontFailure(dpt, byteValue))));
        }
    }
}

TEST(KnxValueConverterNeverSucceeds, EveryByteOnFiveX)
{
    KnxValueConverter converter;
    for (unsigned int byte = 0; byte < 256; ++byte)
    {
        const OKAVALUE value = ByteValue(static_cast<std::uint8_t>(byte));
        KnxStack::GroupValue groupValue;
        LogCapture capture;
        EXPECT_FALSE(converter.ToKnxValue(KNXDPT{8, 5, 1}, value, groupValue)) << byte;
        EXPECT_EQ(groupValue, KnxStack::GroupValue());
        EXPECT_THAT(Errors(capture),
                    ElementsAre(Error("ToKnxValue - Value out of raw range [0..254] for DPT 5.006: " +
                                      std::to_string(byte)),
                                Error(FrontFailure(KNXDPT{8, 5, 1}, value))));
    }
}

TEST(KnxValueConverterNeverSucceeds, DayTimeValueOnTenX)
{
    KnxValueConverter converter;
    KnxStack::GroupValue groupValue;
    LogCapture capture;
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{24, 10, 1}, MakeTimeValue(ivtDayTime), groupValue));
    EXPECT_EQ(groupValue, KnxStack::GroupValue());
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("ToKnxValue - Invalid value type found for DPT = 10.1 val.ivt=15")));
}

// ====================================================================== every main number, both ways

TEST(KnxValueConverterEndToEnd, FromKnxForEveryRegisteredMainNumber)
{
    KnxValueConverter converter;
    const auto from = [&converter](KNXDPT dpt, const Bytes& bytes, unsigned int bits) {
        OKAVALUE value;
        EXPECT_TRUE(converter.FromKnxValue(dpt, MakeGroupValue(bytes, bits), value)) << DptName(dpt.main, dpt.sub);
        return value;
    };
    LogCapture capture;
    OKAVALUE v = from({1, 1, 1}, {0x01}, 1);
    EXPECT_EQ(v.type, ivtBool);
    EXPECT_TRUE(v.numeric.boolean);
    v = from({2, 2, 1}, {0x03}, 2);
    EXPECT_EQ(v.type, ivtByte);
    EXPECT_EQ(v.numeric.byte, 3);
    v = from({4, 3, 7}, {0x0B}, 4);
    EXPECT_EQ(v.type, ivtFloat);  // the map's type; the 4-bit converter only writes the byte
    EXPECT_EQ(v.numeric.byte, 0x0B);
    v = from({8, 4, 1}, {0x41}, 8);
    EXPECT_EQ(v.type, ivtString);
    EXPECT_STREQ(v.text.c_str(), "A");
    v = from({8, 5, 1}, {0x80}, 8);
    EXPECT_EQ(v.type, ivtByte);
    EXPECT_EQ(v.numeric.byte, 0x80);
    v = from({8, 6, 1}, {0xFF}, 8);
    EXPECT_EQ(v.type, ivtInteger);
    EXPECT_EQ(v.numeric.integer, -1);
    v = from({8, 6, 20}, {0x21}, 8);
    EXPECT_EQ(v.type, ivtByte);
    EXPECT_EQ(v.numeric.byte, 0x21);
    v = from({16, 7, 1}, {0x12, 0x34}, 16);
    EXPECT_EQ(v.type, ivtWord);
    EXPECT_EQ(v.numeric.word, 0x1234);
    v = from({16, 8, 1}, {0xFF, 0xFE}, 16);
    EXPECT_EQ(v.type, ivtInteger);
    EXPECT_EQ(v.numeric.integer, -2);
    v = from({16, 9, 1}, {0x0C, 0x1A}, 16);
    EXPECT_EQ(v.type, ivtFloat);
    EXPECT_DOUBLE_EQ(v.numeric.real, 21.0);
    v = from({24, 10, 1}, {0x2C, 0x1E, 0x0F}, 24);
    EXPECT_EQ(v.type, ivtDayTime);
    EXPECT_EQ(v.numeric.time.hour, 12);
    EXPECT_EQ(v.numeric.time.minute, 30);
    EXPECT_EQ(v.numeric.time.second, 15);
    EXPECT_EQ(v.numeric.time.weekday, 1);
    v = from({24, 11, 1}, {0x15, 0x03, 0x18}, 24);
    EXPECT_EQ(v.type, ivtDate);
    EXPECT_EQ(v.numeric.time.year, 2024);
    EXPECT_EQ(v.numeric.time.month, 3);
    EXPECT_EQ(v.numeric.time.day, 21);
    v = from({32, 12, 1}, {0xDE, 0xAD, 0xBE, 0xEF}, 32);
    EXPECT_EQ(v.type, ivtDWord);
    EXPECT_EQ(v.numeric.dword, 0xDEADBEEFu);
    v = from({32, 13, 1}, {0xFF, 0xFF, 0xFF, 0xFE}, 32);
    EXPECT_EQ(v.type, ivtInteger);
    EXPECT_EQ(v.numeric.integer, -2);
    v = from({32, 14, 1}, {0x41, 0xAC, 0x00, 0x00}, 32);
    EXPECT_EQ(v.type, ivtFloat);
    EXPECT_DOUBLE_EQ(v.numeric.real, 21.5);
    v = from({32, 15, 0}, {0x00, 0x00, 0x00, 0x2A}, 32);
    EXPECT_EQ(v.type, ivtDWord);
    EXPECT_EQ(v.numeric.dword, 42u);
    v = from({112, 16, 0}, {'H', 'e', 'l', 'l', 'o', 0, 0, 0, 0, 0, 0, 0, 0, 0}, 112);
    EXPECT_EQ(v.type, ivtString);
    EXPECT_STREQ(v.text.c_str(), "Hello");
    v = from({8, 17, 1}, {0x05}, 8);
    EXPECT_EQ(v.type, ivtByte);
    EXPECT_EQ(v.numeric.integer, 5);
    v = from({8, 18, 1}, {0x85}, 8);
    EXPECT_EQ(v.type, ivtInteger);
    EXPECT_EQ(v.numeric.byte, 0x85);
    v = from({64, 19, 1}, {124, 0x03, 0x15, 0x0C, 0x1E, 0x0F, 0x20, 0x00}, 64);
    EXPECT_EQ(v.type, ivtDateTime);
    EXPECT_EQ(v.numeric.time.year, 2024);
    EXPECT_EQ(v.numeric.time.month, 3);
    EXPECT_EQ(v.numeric.time.day, 21);
    EXPECT_EQ(v.numeric.time.hour, 12);
    EXPECT_EQ(v.numeric.time.minute, 30);
    EXPECT_EQ(v.numeric.time.second, 15);
    v = from({8, 20, 102}, {0x02}, 8);
    EXPECT_EQ(v.type, ivtByte);
    EXPECT_EQ(v.numeric.byte, 2);
    v = from({8, 21, 1}, {0x05}, 8);
    EXPECT_EQ(v.type, ivtByte);
    EXPECT_EQ(v.numeric.byte, 5);
    v = from({8, 23, 1}, {0x02}, 8);
    EXPECT_EQ(v.type, ivtByte);
    EXPECT_EQ(v.numeric.byte, 2);
    v = from({8, 26, 1}, {0x3F}, 8);
    EXPECT_EQ(v.type, ivtByte);
    EXPECT_EQ(v.numeric.byte, 0x3F);
    v = from({32, 27, 1}, {0x00, 0x01, 0x00, 0x02}, 32);
    EXPECT_EQ(v.type, ivtDWord);
    EXPECT_EQ(v.numeric.dword, 65538u);
    v = from({24, 232, 600}, {0x12, 0x34, 0x56}, 24);
    EXPECT_EQ(v.type, ivtDWord);
    EXPECT_EQ(v.numeric.dword, 0x123456u);
    v = from({8, 236, 1}, {0x07}, 8);
    EXPECT_EQ(v.type, ivtByte);
    EXPECT_EQ(v.numeric.byte, 7);
    v = from({8, 238, 1}, {0x09}, 8);
    EXPECT_EQ(v.type, ivtByte);
    EXPECT_EQ(v.numeric.byte, 9);
    EXPECT_THAT(Errors(capture), IsEmpty());
}

TEST(KnxValueConverterEndToEnd, ToKnxForEveryMainNumberThatCanSucceed)
{
    KnxValueConverter converter;
    struct Case
    {
        KNXDPT dpt;
        OKAVALUE value;
        Bytes bytes;
        unsigned int bits;
    };
    OKAVALUE latin1 = StringValue("\xC3\xA9");  // e-acute in UTF-8
    const std::vector<Case> cases = {
        {{1, 1, 1}, BoolValue(true), {0x01}, 1},
        {{8, 4, 1}, StringValue("A"), {0x41}, 8},
        {{8, 4, 2}, latin1, {0xE9}, 8},
        {{8, 5, 6}, ByteValue(255), {0xFF}, 8},
        {{8, 6, 1}, IntegerValue(-1), {0xFF}, 8},
        {{8, 6, 20}, ByteValue(0x21), {0x21}, 8},
        {{16, 7, 1}, WordValue(0x1234), {0x12, 0x34}, 16},
        {{16, 8, 1}, IntegerValue(-2), {0xFF, 0xFE}, 16},
        {{16, 9, 1}, FloatValue(21.0), {0x0C, 0x1A}, 16},
        {{24, 10, 1}, MakeTimeValue(ivtTime), {0x2C, 0x1E, 0x0F}, 24},
        {{24, 11, 1}, DateValue(2024, 3, 21), {0x15, 0x03, 0x18}, 24},
        {{32, 12, 1}, DWordValue(0xDEADBEEF), {0xDE, 0xAD, 0xBE, 0xEF}, 32},
        {{32, 13, 1}, IntegerValue(-2), {0xFF, 0xFF, 0xFF, 0xFE}, 32},
        {{32, 14, 1}, FloatValue(21.5), {0x41, 0xAC, 0x00, 0x00}, 32},
        {{32, 15, 0}, DWordValue(42), {0x00, 0x00, 0x00, 0x2A}, 32},
        {{112, 16, 0}, StringValue("Hello"), {'H', 'e', 'l', 'l', 'o', 0, 0, 0, 0, 0, 0, 0, 0, 0}, 112},
        {{8, 17, 1}, IntegerValue(5), {0x05}, 8},
        {{64, 19, 1}, DateTimeValue(2024, 3, 21, 12, 30, 15), {0xE8, 0x03, 0x15, 0x0C, 0x1E, 0x0F, 0x20, 0x00}, 64},
        {{8, 26, 1}, ByteValue(0x3F), {0x3F}, 8},
        {{32, 27, 1}, DWordValue(65538), {0x00, 0x01, 0x00, 0x02}, 32},
        {{24, 232, 600}, DWordValue(0x123456), {0x12, 0x34, 0x56}, 24},
    };
    LogCapture capture;
    for (const Case& c : cases)
    {
        KnxStack::GroupValue groupValue;
        EXPECT_TRUE(converter.ToKnxValue(c.dpt, c.value, groupValue)) << DptName(c.dpt.main, c.dpt.sub);
        EXPECT_EQ(BytesOf(groupValue), c.bytes) << DptName(c.dpt.main, c.dpt.sub);
        EXPECT_EQ(groupValue.GetDefinedSize(), c.bits) << DptName(c.dpt.main, c.dpt.sub);
    }
    EXPECT_THAT(Errors(capture), IsEmpty());
}
