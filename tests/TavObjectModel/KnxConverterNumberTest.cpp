// Converters of 16, 24 and 32 bits: 7.x, 8.x, 9.x, 12.x, 13.x, 14.x and the 24-bit value.
#include "KnxConverterTestSupport.h"
#include "support/LogCapture.h"

#include <TavObjectModel/KnxConverter.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

using namespace Okaro;
using namespace TavTest;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{
constexpr OkaValueType kInvalid = static_cast<OkaValueType>(0);

class NumberConverter : public ::testing::Test
{
protected:
    std::vector<LogLine> Refusals() const { return capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL); }

    LogCapture capture;
    const KnxStack::GroupValue untouched = MakeGroupValue({0xAA, 0xBB}, 16);
    KnxStack::GroupValue out = untouched;
    const OKAVALUE before = StringValue("before", ivtEmpty);
    OKAVALUE value = before;
};

class KnxConverterSignedThirtyTwo : public NumberConverter
{
};

class KnxConverterUnsignedSixteen : public NumberConverter
{
};

class KnxConverterSignedSixteen : public NumberConverter
{
};

class KnxConverterTwentyFourBit : public NumberConverter
{
};

class KnxConverterUnsignedThirtyTwo : public NumberConverter
{
};
} // namespace

// --- 13.x --------------------------------------------------------------------------------

TEST_F(KnxConverterSignedThirtyTwo, ScalesToKnx)
{
    const KnxConverterInteger32BitSigned converter(IntegerRange::CreateScaled(0, 100, 0, 1000));
    const KNXDPT dpt{32, 13, 1};
    ASSERT_TRUE(converter.ToKnxValue(dpt, IntegerValue(5), out));
    EXPECT_EQ(out.GetAsSigned32(), 50);
    EXPECT_THAT(BytesOf(out), ElementsAre(0u, 0u, 0u, 50u));
    EXPECT_THAT(capture.Lines(), ElementsAre(Trace(ToTraceText(dpt, IntegerValue(5)))));
}

TEST_F(KnxConverterSignedThirtyTwo, RefusesOutsideTheInternalRange)
{
    const KnxConverterInteger32BitSigned converter(IntegerRange::CreateScaled(0, 100, 0, 1000));
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{32, 13, 1}, IntegerValue(101), out));
    EXPECT_EQ(out, untouched);
    EXPECT_THAT(Refusals(), ElementsAre(Error("ToKnxValue - The internal value of DPT=13.1, ivt=4 is out of range: 101!")));
}

TEST_F(KnxConverterSignedThirtyTwo, DeliversUnscaledFromKnx)
{
    const KnxConverterInteger32BitSigned converter(IntegerRange::CreateScaled(0, 100, 0, 1000));
    const KNXDPT dpt{32, 13, 1};
    const KnxStack::GroupValue group = MakeGroupValue({0, 0, 0, 50}, 32);
    ASSERT_TRUE(converter.FromKnxValue(dpt, group, value));
    EXPECT_EQ(value.type, ivtInteger);
    EXPECT_EQ(value.numeric.integer, 50);  // not 5
    EXPECT_THAT(capture.Lines(), ElementsAre(Trace(FromTraceText(dpt, group))));
}

TEST_F(KnxConverterSignedThirtyTwo, ChecksReceivedValuesAgainstTheInternalBounds)
{
    const KnxConverterInteger32BitSigned converter(IntegerRange::CreateScaled(0, 100, 0, 1000));
    // 500 is a valid external value, yet outside the internal bounds.
    EXPECT_FALSE(converter.FromKnxValue(KNXDPT{32, 13, 1}, MakeGroupValue({0, 0, 0x01, 0xF4}, 32), value));
    EXPECT_EQ(value, before);
    EXPECT_THAT(Refusals(), ElementsAre(Error("FromKnxValue - The group value of DPT=13.1 is out of range: 500!")));
}

TEST_F(KnxConverterSignedThirtyTwo, RoundsHalfAwayFromZero)
{
    const KnxConverterInteger32BitSigned third(IntegerRange::CreateScaled(0, 3, 0, 1));
    ASSERT_TRUE(third.ToKnxValue(KNXDPT{32, 13, 1}, IntegerValue(2), out));  // 0.667
    EXPECT_EQ(out.GetAsSigned32(), 1);
    ASSERT_TRUE(third.ToKnxValue(KNXDPT{32, 13, 1}, IntegerValue(1), out));  // 0.333
    EXPECT_EQ(out.GetAsSigned32(), 0);

    const KnxConverterInteger32BitSigned negative(IntegerRange::CreateScaled(0, 10, -5, 0));
    ASSERT_TRUE(negative.ToKnxValue(KNXDPT{32, 13, 1}, IntegerValue(5), out));  // -2.5
    EXPECT_EQ(out.GetAsSigned32(), -3);
}

TEST_F(KnxConverterSignedThirtyTwo, FullRangeIsTheIdentity)
{
    const KnxConverterInteger32BitSigned converter(
        IntegerRange::CreateScaled(-2147483647 - 1, 2147483647, -2147483647 - 1, 2147483647));
    for (const std::int32_t v : {-2147483647 - 1, -1, 0, 1, 2147483647})
    {
        ASSERT_TRUE(converter.ToKnxValue(KNXDPT{32, 13, 1}, IntegerValue(v), out));
        EXPECT_EQ(out.GetAsSigned32(), v);
        ASSERT_TRUE(converter.FromKnxValue(KNXDPT{32, 13, 1}, out, value));
        EXPECT_EQ(value.numeric.integer, v);
    }
}

TEST_F(KnxConverterSignedThirtyTwo, AcceptsMainOrType)
{
    const KnxConverterInteger32BitSigned converter(IntegerRange::CreateScaled(0, 100, 0, 100));
    EXPECT_TRUE(converter.ToKnxValue(KNXDPT{16, 9, 1}, IntegerValue(7), out));  // the type suffices
    EXPECT_TRUE(converter.ToKnxValue(KNXDPT{32, 13, 1}, WordValue(7), out));    // the main number suffices
    EXPECT_EQ(out.GetAsSigned32(), 7);
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{16, 9, 1}, FloatValue(7.0), out));
    EXPECT_FALSE(converter.FromKnxValue(KNXDPT{32, 12, 1}, MakeGroupValue({0, 0, 0, 1}, 32), value));
    EXPECT_EQ(value, before);
    EXPECT_THAT(Refusals(), ElementsAre(Error("ToKnxValue - Wrong DPT main number (13.x) or oka value type (ivtInteger)!"),
                                        Error("FromKnxValue - Wrong DPT main number (13.x)!")));
}

// --- 7.x ---------------------------------------------------------------------------------

TEST_F(KnxConverterUnsignedSixteen, BothWays)
{
    const KnxConverterInteger16BitUnsigned converter(IntegerRange::CreateScaled(0, 65535, 0, 65535));
    const KNXDPT dpt{16, 7, 1};
    ASSERT_TRUE(converter.ToKnxValue(dpt, WordValue(0x1234), out));
    EXPECT_THAT(BytesOf(out), ElementsAre(0x12u, 0x34u));
    const KnxStack::GroupValue group = MakeGroupValue({0xFE, 0xDC}, 16);
    ASSERT_TRUE(converter.FromKnxValue(dpt, group, value));
    EXPECT_EQ(value.type, ivtWord);
    EXPECT_EQ(value.numeric.word, 0xFEDC);
    EXPECT_THAT(capture.Lines(),
                ElementsAre(Trace(ToTraceText(dpt, WordValue(0x1234))), Trace(FromTraceText(dpt, group))));
}

TEST_F(KnxConverterUnsignedSixteen, AcceptsTheWordTypeOnAnotherDpt)
{
    const KnxConverterInteger16BitUnsigned converter(IntegerRange::CreateScaled(0, 65535, 0, 65535));
    EXPECT_TRUE(converter.ToKnxValue(KNXDPT{8, 5, 1}, WordValue(300), out));
    EXPECT_EQ(out.GetAsUnsigned16(), 300);
    EXPECT_TRUE(converter.ToKnxValue(KNXDPT{16, 7, 1}, IntegerValue(301), out));
    EXPECT_EQ(out.GetAsUnsigned16(), 301);
}

TEST_F(KnxConverterUnsignedSixteen, Refusals)
{
    const KnxConverterInteger16BitUnsigned converter(IntegerRange::CreateScaled(0, 65535, 0, 65535));
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{16, 8, 1}, IntegerValue(1), out));
    EXPECT_EQ(out, untouched);
    EXPECT_FALSE(converter.FromKnxValue(KNXDPT{16, 8, 1}, MakeGroupValue({0, 1}, 16), value));
    EXPECT_EQ(value, before);
    EXPECT_THAT(Refusals(), ElementsAre(Error("ToKnxValue - Wrong DPT main number (7.x) or oka value type (ivtWord)!"),
                                        Error("FromKnxValue - Wrong DPT main number (7.x)!")));
}

// --- 8.x ---------------------------------------------------------------------------------

TEST_F(KnxConverterSignedSixteen, BothWays)
{
    const KnxConverterInteger16BitSigned converter(IntegerRange::CreateScaled(-32768, 32767, -32768, 32767));
    ASSERT_TRUE(converter.ToKnxValue(KNXDPT{16, 8, 1}, IntegerValue(-2), out));
    EXPECT_THAT(BytesOf(out), ElementsAre(0xFFu, 0xFEu));
    ASSERT_TRUE(converter.ToKnxValue(KNXDPT{16, 8, 1}, IntegerValue(70000), out));  // cut to 16 bits
    EXPECT_THAT(BytesOf(out), ElementsAre(0x11u, 0x70u));
    ASSERT_TRUE(converter.FromKnxValue(KNXDPT{16, 8, 1}, MakeGroupValue({0xFF, 0xFE}, 16), value));
    EXPECT_EQ(value.type, ivtInteger);
    EXPECT_EQ(value.numeric.integer, -2);
    EXPECT_THAT(Refusals(), IsEmpty());
}

TEST_F(KnxConverterSignedSixteen, Refusals)
{
    const KnxConverterInteger16BitSigned converter(IntegerRange::CreateScaled(-32768, 32767, -32768, 32767));
    EXPECT_TRUE(converter.ToKnxValue(KNXDPT{16, 7, 1}, IntegerValue(1), out));  // the type suffices
    out = untouched;
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{16, 7, 1}, WordValue(1), out));
    EXPECT_EQ(out, untouched);
    EXPECT_FALSE(converter.FromKnxValue(KNXDPT{16, 7, 1}, MakeGroupValue({0, 1}, 16), value));
    EXPECT_EQ(value, before);
    EXPECT_THAT(Refusals(), ElementsAre(Error("ToKnxValue - Wrong DPT main number (8.x) or oka value type (ivtInteger)!"),
                                        Error("FromKnxValue - Wrong DPT main number (8.x)!")));
}

// --- 24-bit ------------------------------------------------------------------------------

TEST_F(KnxConverterTwentyFourBit, KeepsTheLowBitsMostSignificantFirst)
{
    const KnxConverterInteger24BitUnsigned converter(IntegerRange64::CreateScaled(0, 16777215, 0, 16777215));
    const KNXDPT dpt{24, 232, 600};
    const OKAVALUE big = IntegerValue((1 << 24) + 1, ivtDWord);
    ASSERT_TRUE(converter.ToKnxValue(dpt, big, out));
    EXPECT_THAT(BytesOf(out), ElementsAre(0x00u, 0x00u, 0x01u));
    EXPECT_EQ(out.GetDefinedSize(), 24u);
    EXPECT_THAT(capture.Lines(), ElementsAre(Trace(ToTraceText(dpt, big))));
}

TEST_F(KnxConverterTwentyFourBit, HasNoTest)
{
    const KnxConverterInteger24BitUnsigned converter(IntegerRange64::CreateScaled(0, 16777215, 0, 16777215));
    ASSERT_TRUE(converter.ToKnxValue(KNXDPT{8, 1, 1}, IntegerValue(0x123456, ivtString), out));
    EXPECT_THAT(BytesOf(out), ElementsAre(0x12u, 0x34u, 0x56u));
    ASSERT_TRUE(converter.FromKnxValue(KNXDPT{8, 1, 1}, MakeGroupValue({0xAB, 0xCD, 0xEF}, 24), value));
    EXPECT_EQ(value.numeric.integer, 0xABCDEF);
    EXPECT_EQ(value.type, ivtEmpty);  // the type is left to the caller
    EXPECT_THAT(Refusals(), IsEmpty());
}

// --- 12.x --------------------------------------------------------------------------------

TEST_F(KnxConverterUnsignedThirtyTwo, TestsTheTypeOnly)
{
    const KnxConverterInteger32BitUnsigned converter(IntegerRange64::CreateScaled(0, 4294967295LL, 0, 4294967295LL));
    const KNXDPT dpt{16, 7, 1};
    ASSERT_TRUE(converter.ToKnxValue(dpt, DWordValue(4294967295u), out));
    EXPECT_THAT(BytesOf(out), ElementsAre(0xFFu, 0xFFu, 0xFFu, 0xFFu));
    EXPECT_THAT(capture.Lines(), ElementsAre(Trace(ToTraceText(dpt, DWordValue(4294967295u)))));
}

TEST_F(KnxConverterUnsignedThirtyTwo, Refusals)
{
    const KnxConverterInteger32BitUnsigned converter(IntegerRange64::CreateScaled(0, 1000, 0, 1000));
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{32, 12, 1}, IntegerValue(5), out));
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{32, 12, 1}, DWordValue(1001), out));
    EXPECT_EQ(out, untouched);
    EXPECT_THAT(Refusals(), ElementsAre(Error("ToKnxValue - Wrong oka value type (ivtDWord)!"),
                                        Error("ToKnxValue - The internal value of DPT=12.1, ivt=8 is out of range: 1001!")));
}

TEST_F(KnxConverterUnsignedThirtyTwo, FromKnxHasNoDptTest)
{
    const KnxConverterInteger32BitUnsigned converter(IntegerRange64::CreateScaled(0, 1000, 0, 1000));
    ASSERT_TRUE(converter.FromKnxValue(KNXDPT{16, 9, 1}, MakeGroupValue({0, 0, 0x03, 0xE8}, 32), value));
    EXPECT_EQ(value.type, ivtDWord);
    EXPECT_EQ(value.numeric.dword, 1000u);
}

TEST_F(KnxConverterUnsignedThirtyTwo, FromKnxNamesTheOutputsCurrentType)
{
    const KnxConverterInteger32BitUnsigned converter(IntegerRange64::CreateScaled(0, 1000, 0, 1000));
    EXPECT_FALSE(converter.FromKnxValue(KNXDPT{32, 12, 1}, MakeGroupValue({0, 0, 0x03, 0xE9}, 32), value));
    EXPECT_EQ(value, before);
    EXPECT_THAT(Refusals(), ElementsAre(Error("FromKnxValue - The internal value of DPT=12.1, ivt=1 is out of range: 1001!")));
}

// --- 9.x ---------------------------------------------------------------------------------

class KnxConverterFloat16 : public NumberConverter
{
protected:
    const KnxConverterFloat16BitFloat converter{FloatRange::CreateScaled(-273.0, 670760.0, -273.0, 670760.0)};
    const KNXDPT dpt{16, 9, 1};
};

TEST_F(KnxConverterFloat16, WritesValuesInRange)
{
    ASSERT_TRUE(converter.ToKnxValue(dpt, FloatValue(21.0), out));
    EXPECT_THAT(BytesOf(out), ElementsAre(0x0Cu, 0x1Au));
    EXPECT_THAT(capture.Lines(), ElementsAre(Trace(ToTraceText(dpt, FloatValue(21.0)))));
}

TEST_F(KnxConverterFloat16, InvalidValueIsSentAs32767)
{
    const OKAVALUE invalid(kInvalid);
    ASSERT_TRUE(converter.ToKnxValue(dpt, invalid, out));
    KnxStack::GroupValue expected;
    expected.SetAsFloat16(32767.0);
    EXPECT_EQ(out, expected);
    EXPECT_THAT(BytesOf(out), ElementsAre(0x7Fu, 0xFFu));
}

TEST_F(KnxConverterFloat16, RefusesOutsideTheInnerBounds)
{
    EXPECT_FALSE(converter.ToKnxValue(dpt, FloatValue(-300.0), out));
    EXPECT_EQ(out, untouched);
    EXPECT_THAT(Refusals(),
                ElementsAre(Error("ToKnxValue - The internal value of DPT=9.1, f=-300 is out of the allowed range.")));
}

TEST_F(KnxConverterFloat16, AcceptsMainTypeOrInvalid)
{
    EXPECT_TRUE(converter.ToKnxValue(KNXDPT{32, 14, 1}, FloatValue(1.0), out));
    EXPECT_TRUE(converter.ToKnxValue(KNXDPT{32, 14, 1}, OKAVALUE(kInvalid), out));
    EXPECT_TRUE(converter.ToKnxValue(dpt, IntegerValue(0), out));
    out = untouched;
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{32, 14, 1}, IntegerValue(0), out));
    EXPECT_EQ(out, untouched);
    EXPECT_THAT(Refusals(), ElementsAre(Error("ToKnxValue - Wrong DPT main number (9.x) or oka value type (ivtFloat)!")));
}

TEST_F(KnxConverterFloat16, ReceivedInvalidCodeGivesAnInvalidValue)
{
    value = FloatValue(1.25);
    ASSERT_TRUE(converter.FromKnxValue(dpt, MakeGroupValue({0x7F, 0xFF}, 16), value));
    EXPECT_EQ(value.type, kInvalid);
    EXPECT_EQ(value.numeric.real, 1.25);  // numeric part untouched
}

TEST_F(KnxConverterFloat16, FromKnxStoresTheDoubleWithoutSettingTheType)
{
    const KnxStack::GroupValue group = MakeGroupValue({0x0C, 0x1A}, 16);
    ASSERT_TRUE(converter.FromKnxValue(KNXDPT{16, 7, 1}, group, value));  // no DPT test
    EXPECT_EQ(value.numeric.real, 21.0);
    EXPECT_EQ(value.type, ivtEmpty);
    EXPECT_THAT(capture.Lines(), ElementsAre(Trace(FromTraceText(KNXDPT{16, 7, 1}, group))));
}

TEST_F(KnxConverterFloat16, FromKnxStoresTheDoubleBeforeRefusingIt)
{
    KnxStack::GroupValue group;
    group.SetAsFloat16(-300.0);
    EXPECT_FALSE(converter.FromKnxValue(dpt, group, value));
    EXPECT_EQ(value.numeric.real, -300.0);
    EXPECT_EQ(value.type, ivtEmpty);
    EXPECT_THAT(Refusals(),
                ElementsAre(Error("FromKnxValue - The internal value of DPT=9.1, f=-300 is out of the allowed range.")));
}

// --- 14.x --------------------------------------------------------------------------------

class KnxConverterFloat32 : public NumberConverter
{
protected:
    const KnxConverterFloat32BitFloat converter{
        FloatRange::CreateScaled(-3.40282346638528860e+38, 3.40282346638528860e+38, -3.40282346638528860e+38,
                                 3.40282346638528860e+38)};
    const KNXDPT dpt{32, 14, 1};
};

TEST_F(KnxConverterFloat32, WritesTheNarrowedDouble)
{
    ASSERT_TRUE(converter.ToKnxValue(dpt, FloatValue(1.5), out));
    EXPECT_THAT(BytesOf(out), ElementsAre(0x3Fu, 0xC0u, 0x00u, 0x00u));
    EXPECT_THAT(capture.Lines(), ElementsAre(Trace(ToTraceText(dpt, FloatValue(1.5)))));
}

TEST_F(KnxConverterFloat32, HasNoRangeCheck)
{
    ASSERT_TRUE(converter.ToKnxValue(dpt, FloatValue(1e39), out));
    EXPECT_THAT(BytesOf(out), ElementsAre(0x7Fu, 0x80u, 0x00u, 0x00u));  // +infinity
}

// As the codec's DPT 14 branch: round to nearest, so the edge of the single range gives the
// largest float up to half a unit above it (2^103), the infinity from there on.
TEST_F(KnxConverterFloat32, NarrowsToNearestAtTheEdgeOfTheRange)
{
    const double halfUnitAbove = static_cast<double>(std::numeric_limits<float>::max()) + 0x1p103;
    const struct
    {
        double number;
        std::vector<unsigned int> bytes;
    } rows[] = {
        {3.4028235e38, {0x7F, 0x7F, 0xFF, 0xFF}},
        {-3.4028235e38, {0xFF, 0x7F, 0xFF, 0xFF}},
        {1e39, {0x7F, 0x80, 0x00, 0x00}},
        {std::nextafter(halfUnitAbove, 0.0), {0x7F, 0x7F, 0xFF, 0xFF}},
        {-std::nextafter(halfUnitAbove, 0.0), {0xFF, 0x7F, 0xFF, 0xFF}},
        {halfUnitAbove, {0x7F, 0x80, 0x00, 0x00}},
        {-halfUnitAbove, {0xFF, 0x80, 0x00, 0x00}},
        {std::numeric_limits<double>::max(), {0x7F, 0x80, 0x00, 0x00}},
        {-std::numeric_limits<double>::max(), {0xFF, 0x80, 0x00, 0x00}},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.number);
        ASSERT_TRUE(converter.ToKnxValue(dpt, FloatValue(row.number), out));
        EXPECT_THAT(BytesOf(out), ElementsAre(row.bytes[0], row.bytes[1], row.bytes[2], row.bytes[3]));
    }
}

TEST_F(KnxConverterFloat32, InvalidValueIsSentAsAQuietNan)
{
    ASSERT_TRUE(converter.ToKnxValue(KNXDPT{16, 9, 1}, OKAVALUE(kInvalid), out));
    EXPECT_THAT(BytesOf(out), ElementsAre(0x7Fu, 0xC0u, 0x00u, 0x00u));
}

TEST_F(KnxConverterFloat32, Refusals)
{
    EXPECT_TRUE(converter.ToKnxValue(KNXDPT{16, 9, 1}, FloatValue(2.0), out));  // the type suffices
    out = untouched;
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{16, 9, 1}, IntegerValue(2), out));
    EXPECT_EQ(out, untouched);
    EXPECT_FALSE(converter.FromKnxValue(KNXDPT{16, 9, 1}, MakeGroupValue({0x3F, 0xC0, 0, 0}, 32), value));
    EXPECT_EQ(value, before);
    EXPECT_THAT(Refusals(), ElementsAre(Error("ToKnxValue - Wrong DPT main number (14.x) or oka value type (ivtFloat)!"),
                                        Error("FromKnxValue - Wrong DPT main number (14.x)!")));
}

TEST_F(KnxConverterFloat32, FromKnxGivesAFloat)
{
    const KnxStack::GroupValue group = MakeGroupValue({0x3F, 0xC0, 0, 0}, 32);
    ASSERT_TRUE(converter.FromKnxValue(dpt, group, value));
    EXPECT_EQ(value.type, ivtFloat);
    EXPECT_EQ(value.numeric.real, 1.5);
    EXPECT_THAT(capture.Lines(), ElementsAre(Trace(FromTraceText(dpt, group))));
}

TEST_F(KnxConverterFloat32, ReceivedNanGivesTypeZeroWithTheNan)
{
    ASSERT_TRUE(converter.FromKnxValue(dpt, MakeGroupValue({0x7F, 0xC0, 0, 0}, 32), value));
    EXPECT_EQ(value.type, kInvalid);
    EXPECT_TRUE(std::isnan(value.numeric.real));
}
