// Encoding then decoding gives the value back for the DPTs where the two directions agree;
// the DPTs where they deliberately do not are pinned down one by one.
#include "GroupValueOkaValueTestSupport.h"
#include "support/LogCapture.h"

#include <TavObjectModel/GroupValueOkaValue.h>
#include <TavObjectModel/KnxValueConverter.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <ostream>
#include <ios>
#include <string>
#include <vector>

namespace
{
using ::testing::ElementsAre;
using TavTest::Error;
using TavTest::Packed;

struct RoundTrip
{
    std::string name;
    unsigned long dpt;
    OKAVALUE value;
};

std::ostream& operator<<(std::ostream& out, const RoundTrip& trip) { return out << trip.name; }

std::vector<RoundTrip> AgreeingDpts()
{
    return {
        {"Switch_On", Packed(1, 1), TavTest::BoolValue(true)},
        {"Switch_Off", Packed(1, 1), TavTest::BoolValue(false)},
        {"TwoBitControl_3", Packed(2, 1), TavTest::ByteValue(3)},
        {"TwoBitControl_0", Packed(2, 1), TavTest::ByteValue(0)},
        {"StepControl_15", Packed(3, 7), TavTest::ByteValue(15)},
        {"Unsigned8_0", Packed(5, 1), TavTest::ByteValue(0)},
        {"Unsigned8_255", Packed(5, 1), TavTest::ByteValue(255)},
        {"SignedRelative_Minus1", Packed(6, 10), TavTest::ByteValue(0xFF)},
        {"SignedRelative_Minus128", Packed(6, 1), TavTest::ByteValue(0x80)},
        {"Unsigned16_0", Packed(7, 1), TavTest::WideWordValue(0)},
        {"Unsigned16_65535", Packed(7, 1), TavTest::WideWordValue(65535)},
        {"Signed16_Min", Packed(8, 1), TavTest::IntegerValue(-32768)},
        {"Signed16_Max", Packed(8, 1), TavTest::IntegerValue(32767)},
        {"Float16_21", Packed(9, 1), TavTest::FloatValue(21.0)},
        {"Float16_Minus30", Packed(9, 1), TavTest::FloatValue(-30.0)},
        {"TimeOfDay_Monday", Packed(10, 1), TavTest::DayTimeValue(14, 30, 15, 1)},
        {"TimeOfDay_Sunday", Packed(10, 1), TavTest::DayTimeValue(23, 59, 59, 0)},
        {"TimeOfDay_NoDay", Packed(10, 1), TavTest::DayTimeValue(0, 0, 0, 7)},
        {"Date_1990", Packed(11, 1), TavTest::DateValue(1990, 1, 1)},
        {"Date_LeapDay", Packed(11, 1), TavTest::DateValue(2024, 2, 29)},
        {"Date_2038", Packed(11, 1), TavTest::DateValue(2038, 1, 19)},
        {"Unsigned32_12", Packed(12, 1), TavTest::DWordValue(0xDEADBEEF)},
        {"Signed32_Min", Packed(13, 1), TavTest::IntegerValue(std::numeric_limits<std::int32_t>::min())},
        {"Signed32_Minus2", Packed(13, 1), TavTest::IntegerValue(-2)},
        {"Float32_1_5", Packed(14, 0), TavTest::FloatValue(1.5)},
        {"Access_15", Packed(15, 0), TavTest::DWordValue(0x00123456)},
        {"String_Latin1", Packed(16, 1), TavTest::StringValue("Gr\xC3\xBC\xC3\x9F" "e")},
        {"String_Ascii14", Packed(16, 0), TavTest::StringValue("abcdefghijklmn")},
        {"SceneNumber_0", Packed(17, 1), TavTest::ByteValue(0)},
        {"SceneNumber_63", Packed(17, 1), TavTest::ByteValue(63)},
        {"SceneControl_Learn1", Packed(18, 1), TavTest::ByteValue(0x81)},
        {"DateTime_Friday", Packed(19, 1), TavTest::DateTimeValue(2024, 3, 15, 13, 45, 30)},
        {"DateTime_Sunday", Packed(19, 1), TavTest::DateTimeValue(2024, 3, 17, 10, 20, 30)},
        {"DateTime_1900", Packed(19, 1), TavTest::DateTimeValue(1900, 1, 1, 0, 0, 0)},
        {"DateTime_Last2038Second", Packed(19, 1), TavTest::DateTimeValue(2038, 1, 19, 3, 14, 7)},
        {"Enum8_20", Packed(20, 1), TavTest::ByteValue(5)},
        {"Bitset8_21", Packed(21, 1), TavTest::ByteValue(0xA5)},
        {"Bitset16_22", Packed(22, 1), TavTest::WideWordValue(0x1234)},
        {"SceneInfo_26", Packed(26, 1), TavTest::ByteValue(0x40)},
        {"Combined_27", Packed(27, 1), TavTest::DWordValue(0xFFFF0000)},
        {"Word_217", Packed(217, 1), TavTest::WideWordValue(0x1234)},
        {"Word_234", Packed(234, 1), TavTest::WideWordValue(0x5A5A)},
        {"Word_237", Packed(237, 600), TavTest::WideWordValue(0xFFFF)},
        {"Byte_238", Packed(238, 600), TavTest::ByteValue(0x7F)},
    };
}

class GroupValueOkaValueRoundTrip : public TavTest::TimeZoneFixture, public ::testing::WithParamInterface<RoundTrip>
{
};

TEST_P(GroupValueOkaValueRoundTrip, EncodeThenDecodeGivesTheValueBack)
{
    const RoundTrip& trip = GetParam();
    const auto encoded = Okaro::OkaValueToGroupValue(trip.value, trip.dpt);
    ASSERT_TRUE(encoded.has_value());
    const auto decoded = Okaro::GroupValueToOkaValue(*encoded, trip.dpt);
    ASSERT_TRUE(decoded.has_value());
    EXPECT_EQ(*decoded, trip.value) << decoded->ToString() << " instead of " << trip.value.ToString();
}

INSTANTIATE_TEST_SUITE_P(AgreeingDpts, GroupValueOkaValueRoundTrip, ::testing::ValuesIn(AgreeingDpts()),
                         [](const ::testing::TestParamInfo<RoundTrip>& info) { return info.param.name; });

TEST(GroupValueOkaValueRoundTripTimeZone, DateTimeComesBackInAnyLocalZone)
{
    const TavTest::ScopedTimeZone restoredAfterwards("UTC0");
    for (const char* zone : {"UTC0", TavTest::kCentralEuropeanZone, "EST5EDT,M3.2.0,M11.1.0"})
    {
        SCOPED_TRACE(zone);
        TavTest::ScopedTimeZone::Use(zone);
        const OKAVALUE value = TavTest::DateTimeValue(2024, 1, 15, 12, 0, 0);
        const auto encoded = Okaro::OkaValueToGroupValue(value, Packed(19, 1));
        ASSERT_TRUE(encoded.has_value());
        const auto decoded = Okaro::GroupValueToOkaValue(*encoded, Packed(19, 1));
        ASSERT_TRUE(decoded.has_value());
        EXPECT_EQ(*decoded, value);
    }
}

// ---- where the two directions deliberately disagree ------------------------------------

class GroupValueOkaValueAsymmetry : public TavTest::TimeZoneFixture
{
};

TEST_F(GroupValueOkaValueAsymmetry, TwoBitEnumIsSentWithTwoBitsButCheckedAsEightBits)
{
    const auto encoded = Okaro::OkaValueToGroupValue(TavTest::ByteValue(2), Packed(23, 1));
    ASSERT_TRUE(encoded.has_value());
    EXPECT_EQ(encoded->GetDefinedSize(), 2u);
    TavTest::LogCapture capture;
    EXPECT_FALSE(Okaro::GroupValueToOkaValue(*encoded, Packed(23, 1)).has_value());
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL),
                ElementsAre(Error("FromKnxValue - Failed to convert a GroupValue for DPT 23.1 because of "
                                  "unexpected bit size: 2, expected: 8"),
                            Error("GroupValueToOkaValue - Received invalid value 02 for DPT 23.1")));
}

TEST_F(GroupValueOkaValueAsymmetry, TwentyFourBitIsSentAsThreeBytesButReadAsFour)
{
    const auto encoded = Okaro::OkaValueToGroupValue(TavTest::DWordValue(16744512), Packed(232, 600));
    ASSERT_TRUE(encoded.has_value());
    TavTest::LogCapture capture;
    EXPECT_FALSE(Okaro::GroupValueToOkaValue(*encoded, Packed(232, 600)).has_value());
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL),
                ElementsAre(Error("GroupValueToOkaValue - Received invalid value ff 80 40 for DPT 232.600")));
}

TEST_F(GroupValueOkaValueAsymmetry, ThreeBitIsDecodedButNotEncoded)
{
    EXPECT_TRUE(Okaro::GroupValueToOkaValue(TavTest::MakeGroupValue({0x05}, 3), Packed(31, 1)).has_value());
    EXPECT_FALSE(Okaro::OkaValueToGroupValue(TavTest::ByteValue(5), Packed(31, 1)).has_value());
}

TEST_F(GroupValueOkaValueAsymmetry, CharacterIsNeitherDecodedNorEncoded)
{
    EXPECT_FALSE(Okaro::GroupValueToOkaValue(TavTest::MakeGroupValue({0x41}, 8), Packed(4, 1)).has_value());
    EXPECT_FALSE(Okaro::OkaValueToGroupValue(OKAVALUE(), Packed(4, 1)).has_value());
    EXPECT_FALSE(Okaro::OkaValueToGroupValue(TavTest::StringValue("A"), Packed(4, 1)).has_value());
}

TEST_F(GroupValueOkaValueAsymmetry, SceneNumberIsRangeCheckedOnlyWhenSending)
{
    EXPECT_FALSE(Okaro::OkaValueToGroupValue(TavTest::ByteValue(64), Packed(17, 1)).has_value());
    // Received, the byte would pass the plain 8-bit branch; the validity check stops it.
    TavTest::LogCapture capture;
    EXPECT_FALSE(Okaro::GroupValueToOkaValue(TavTest::MakeGroupValue({0xBF}, 8), Packed(17, 1)).has_value());
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL),
                ElementsAre(Error("FromKnxValue - Scene number is out of range (>63) for SceneNumber: 191"),
                            Error("FromKnxValue - Convert from KNX value failed for DPT = 17.1 GroupValue = bf"),
                            Error("GroupValueToOkaValue - Received invalid value bf for DPT 17.1")));
}

TEST_F(GroupValueOkaValueAsymmetry, OutOfRangeSixteenBitValuesComeBackClamped)
{
    const auto word = Okaro::OkaValueToGroupValue(TavTest::WideWordValue(70000), Packed(7, 1));
    ASSERT_TRUE(word.has_value());
    EXPECT_EQ(TavTest::ValueOrInvalid(Okaro::GroupValueToOkaValue(*word, Packed(7, 1))), TavTest::WideWordValue(65535));
    const auto integer = Okaro::OkaValueToGroupValue(TavTest::IntegerValue(-40000), Packed(8, 1));
    ASSERT_TRUE(integer.has_value());
    EXPECT_EQ(TavTest::ValueOrInvalid(Okaro::GroupValueToOkaValue(*integer, Packed(8, 1))), TavTest::IntegerValue(-32768));
}

TEST_F(GroupValueOkaValueAsymmetry, SixteenBitFloatLosesPrecisionAndInfinityIsNotSent)
{
    const auto encoded = Okaro::OkaValueToGroupValue(TavTest::FloatValue(21.013), Packed(9, 1));
    ASSERT_TRUE(encoded.has_value());
    const auto decoded = Okaro::GroupValueToOkaValue(*encoded, Packed(9, 1));
    ASSERT_TRUE(decoded.has_value());
    EXPECT_EQ(decoded->type, ivtFloat);
    EXPECT_DOUBLE_EQ(decoded->numeric.real, 21.02);  // steps of 0.02 at this exponent
    EXPECT_FALSE(Okaro::OkaValueToGroupValue(TavTest::FloatValue(std::numeric_limits<double>::infinity()),
                                             Packed(9, 1))
                     .has_value());
}

TEST_F(GroupValueOkaValueAsymmetry, SixteenBitFloatNaNComesBackAsNaN)
{
    // Agrees, but NaN never compares equal, so it is not in the list above.
    const auto encoded = Okaro::OkaValueToGroupValue(TavTest::FloatValue(std::nan("")), Packed(9, 1));
    ASSERT_TRUE(encoded.has_value());
    TavTest::LogCapture capture;
    const auto decoded = Okaro::GroupValueToOkaValue(*encoded, Packed(9, 1));
    ASSERT_TRUE(decoded.has_value());
    EXPECT_EQ(decoded->type, ivtFloat);
    EXPECT_TRUE(std::isnan(decoded->numeric.real));
    EXPECT_TRUE(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL).empty());
}

TEST_F(GroupValueOkaValueAsymmetry, ThirtyTwoBitFloatIsNarrowedToSinglePrecision)
{
    const auto encoded = Okaro::OkaValueToGroupValue(TavTest::FloatValue(0.1), Packed(14, 0));
    ASSERT_TRUE(encoded.has_value());
    EXPECT_EQ(TavTest::ValueOrInvalid(Okaro::GroupValueToOkaValue(*encoded, Packed(14, 0))),
              TavTest::FloatValue(static_cast<double>(0.1f)));
}

TEST_F(GroupValueOkaValueAsymmetry, StringLosesCharactersOutsideLatin1AndBeyond14Bytes)
{
    const auto euro = Okaro::OkaValueToGroupValue(TavTest::StringValue("\xE2\x82\xAC" "5"), Packed(16, 1));
    ASSERT_TRUE(euro.has_value());
    EXPECT_EQ(TavTest::ValueOrInvalid(Okaro::GroupValueToOkaValue(*euro, Packed(16, 1))), TavTest::StringValue("?5"));
    const auto longText = Okaro::OkaValueToGroupValue(TavTest::StringValue("abcdefghijklmnop"), Packed(16, 1));
    ASSERT_TRUE(longText.has_value());
    EXPECT_EQ(TavTest::ValueOrInvalid(Okaro::GroupValueToOkaValue(*longText, Packed(16, 1))), TavTest::StringValue("abcdefghijklmn"));
}

TEST_F(GroupValueOkaValueAsymmetry, DateOutsideTheKnxCenturyComesBackInIt)
{
    const auto encoded = Okaro::OkaValueToGroupValue(TavTest::DateValue(1989, 6, 1), Packed(11, 1));
    ASSERT_TRUE(encoded.has_value());
    EXPECT_EQ(TavTest::ValueOrInvalid(Okaro::GroupValueToOkaValue(*encoded, Packed(11, 1))), OKAVALUE());  // 2089, after 2038
    const auto early = Okaro::OkaValueToGroupValue(TavTest::DateValue(1930, 6, 1), Packed(11, 1));
    ASSERT_TRUE(early.has_value());
    EXPECT_EQ(TavTest::ValueOrInvalid(Okaro::GroupValueToOkaValue(*early, Packed(11, 1))), TavTest::DateValue(2030, 6, 1));
}

TEST_F(GroupValueOkaValueAsymmetry, DatesAndTimesAfter2038ComeBackWithoutType)
{
    const auto date = Okaro::OkaValueToGroupValue(TavTest::DateValue(2050, 1, 1), Packed(11, 1));
    ASSERT_TRUE(date.has_value());
    EXPECT_EQ(TavTest::ValueOrInvalid(Okaro::GroupValueToOkaValue(*date, Packed(11, 1))), OKAVALUE());
    const auto dateTime = Okaro::OkaValueToGroupValue(TavTest::DateTimeValue(2038, 1, 19, 3, 14, 8), Packed(19, 1));
    ASSERT_TRUE(dateTime.has_value());
    EXPECT_EQ(TavTest::ValueOrInvalid(Okaro::GroupValueToOkaValue(*dateTime, Packed(19, 1))), OKAVALUE());
}

TEST_F(GroupValueOkaValueAsymmetry, TimeOfDayComesBackWithPlaceholderDate)
{
    OKAVALUE value = TavTest::DayTimeValue(8, 15, 0, 3);
    value.numeric.time.year = 2024;
    value.numeric.time.month = 6;
    value.numeric.time.day = 12;
    value.numeric.time.kind = 0;
    const auto encoded = Okaro::OkaValueToGroupValue(value, Packed(10, 1));
    ASSERT_TRUE(encoded.has_value());
    EXPECT_EQ(TavTest::ValueOrInvalid(Okaro::GroupValueToOkaValue(*encoded, Packed(10, 1))), TavTest::DayTimeValue(8, 15, 0, 3));
}

TEST_F(GroupValueOkaValueAsymmetry, MainsWithTypeButNoBranchAreDecodedEmptyAndNotEncoded)
{
    for (const std::uint16_t main : {25, 30})
    {
        SCOPED_TRACE(main);
        const auto decoded = Okaro::GroupValueToOkaValue(
            main == 25 ? TavTest::MakeGroupValue({0x12}, 8) : TavTest::MakeGroupValue({0x01, 0x02, 0x03}, 24),
            Packed(main, 1));
        ASSERT_TRUE(decoded.has_value());
        EXPECT_EQ(*decoded, OKAVALUE());
        const OKAVALUE typed = main == 25 ? TavTest::ByteValue(0x12) : TavTest::DWordValue(0x010203);
        EXPECT_FALSE(Okaro::OkaValueToGroupValue(typed, Packed(main, 1)).has_value());
    }
}
} // namespace

// ---- DPT 14: both paths narrow alike ----------------------------------------------------

namespace
{
// Doubles around the edges of the single range: the largest float and half a unit above it,
// the smallest normal float, the subnormals and what lies below the smallest of them; each a
// few steps either way, both signs.
std::vector<double> DoublesAtTheSingleRangeEdges()
{
    const double largest = std::numeric_limits<float>::max();
    const double anchors[] = {largest,
                              largest + 0x1p103,
                              std::numeric_limits<float>::min(),
                              std::numeric_limits<float>::min() / 2,
                              std::numeric_limits<float>::denorm_min(),
                              std::numeric_limits<float>::denorm_min() / 2,
                              std::numeric_limits<float>::denorm_min() / 4,
                              1e39,
                              std::numeric_limits<double>::max()};
    std::vector<double> doubles;
    for (const double anchor : anchors)
    {
        for (const double sign : {1.0, -1.0})
        {
            double below = sign * anchor;
            double above = sign * anchor;
            doubles.push_back(sign * anchor);
            for (int step = 0; step < 3; ++step)
            {
                below = std::nextafter(below, 0.0);
                above = std::nextafter(above, sign * std::numeric_limits<double>::infinity());
                doubles.push_back(below);
                doubles.push_back(above);
            }
        }
    }
    return doubles;
}
} // namespace

TEST(GroupValueOkaValueNarrowing, CodecAndTableDrivenConverterWriteTheSameSingle)
{
    Okaro::KnxValueConverter front;
    for (const double number : DoublesAtTheSingleRangeEdges())
    {
        SCOPED_TRACE(testing::Message() << std::hexfloat << number);
        const OKAVALUE value = TavTest::FloatValue(number);
        const auto codec = Okaro::OkaValueToGroupValue(value, Packed(14, 0));
        ASSERT_TRUE(codec.has_value());
        KnxStack::GroupValue table;
        ASSERT_TRUE(front.ToKnxValue(KNXDPT{32, 14, 0}, value, table));
        EXPECT_EQ(TavTest::BytesOf(*codec), TavTest::BytesOf(table));

        // What is on the bus reads back as the narrowed number on both paths.
        const auto decoded = Okaro::GroupValueToOkaValue(*codec, Packed(14, 0));
        ASSERT_TRUE(decoded.has_value());
        OKAVALUE read;
        ASSERT_TRUE(front.FromKnxValue(KNXDPT{32, 14, 0}, table, read));
        EXPECT_EQ(decoded->numeric.real, read.numeric.real);
    }
}
