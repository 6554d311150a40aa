// OkaValueToGroupValue: type gate, branch table, clamping, refusals and the hand-built
// DPT 19 bytes.
#include "GroupValueOkaValueTestSupport.h"
#include "support/LogCapture.h"

#include <TavObjectModel/GroupValueOkaValue.h>

#include <boost/date_time/gregorian/greg_date.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <ostream>
#include <string>
#include <vector>

namespace
{
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using TavTest::BytesOf;
using TavTest::Error;
using TavTest::Packed;
using TavTest::Bytes;

// Encodes and expects a present group value with these bytes and this bit size, and no log line.
void ExpectEncodes(const OKAVALUE& value, unsigned long dpt, const Bytes& bytes, unsigned int bits)
{
    TavTest::LogCapture capture;
    const auto encoded = Okaro::OkaValueToGroupValue(value, dpt);
    ASSERT_TRUE(encoded.has_value());
    EXPECT_EQ(BytesOf(*encoded), bytes);
    EXPECT_EQ(encoded->GetDefinedSize(), bits);
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

// ---- type gate -------------------------------------------------------------------------

TEST(OkaValueToGroupValueTypeGate, ByteForFloatDptIsRefusedWithBothTypeNames)
{
    TavTest::LogCapture capture;
    EXPECT_FALSE(Okaro::OkaValueToGroupValue(TavTest::ByteValue(5), Packed(9, 1)).has_value());
    EXPECT_THAT(capture.Lines(),
                ElementsAre(Error("OkaValueToGroupValue - Value type mismatch: Expected 'Float', got 'Byte'")));
}

TEST(OkaValueToGroupValueTypeGate, CompatibleButDifferentTypeIsRefusedToo)
{
    TavTest::LogCapture capture;
    EXPECT_FALSE(Okaro::OkaValueToGroupValue(TavTest::DWordValue(5), Packed(7, 1)).has_value());
    EXPECT_THAT(capture.Lines(),
                ElementsAre(Error("OkaValueToGroupValue - Value type mismatch: Expected 'Word', got 'DWord'")));
}

TEST(OkaValueToGroupValueTypeGate, SignedRelativeDptTakesByteNotInteger)
{
    TavTest::LogCapture capture;
    EXPECT_FALSE(Okaro::OkaValueToGroupValue(TavTest::IntegerValue(-1), Packed(6, 10)).has_value());
    EXPECT_THAT(capture.Lines(),
                ElementsAre(Error("OkaValueToGroupValue - Value type mismatch: Expected 'Byte', got 'Integer'")));
}

TEST(OkaValueToGroupValueTypeGate, TimeOfDayDptTakesDayTimeNotTime)
{
    OKAVALUE value = TavTest::DayTimeValue(12, 0, 0, 1);
    value.type = ivtTime;
    TavTest::LogCapture capture;
    EXPECT_FALSE(Okaro::OkaValueToGroupValue(value, Packed(10, 1)).has_value());
    EXPECT_THAT(capture.Lines(),
                ElementsAre(Error("OkaValueToGroupValue - Value type mismatch: Expected 'DayTime', got 'Time'")));
}

TEST(OkaValueToGroupValueTypeGate, CharacterDptExpectsEmpty)
{
    TavTest::LogCapture capture;
    EXPECT_FALSE(Okaro::OkaValueToGroupValue(TavTest::StringValue("A"), Packed(4, 1)).has_value());
    EXPECT_THAT(capture.Lines(),
                ElementsAre(Error("OkaValueToGroupValue - Value type mismatch: Expected 'Empty', got 'String'")));
}

// ---- not supported ---------------------------------------------------------------------

TEST(OkaValueToGroupValueUnsupported, ThreeBitDptWithMatchingTypeIsNotEncoded)
{
    TavTest::LogCapture capture;
    EXPECT_FALSE(Okaro::OkaValueToGroupValue(TavTest::ByteValue(5), Packed(31, 1)).has_value());
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("OkaValueToGroupValue - Value type 31 not supported "
                                                   "(dwDPT=2031617 with value='6 -> Byte 5').")));
}

TEST(OkaValueToGroupValueUnsupported, CharacterDptWithMatchingTypeIsNotEncoded)
{
    TavTest::LogCapture capture;
    EXPECT_FALSE(Okaro::OkaValueToGroupValue(OKAVALUE(), Packed(4, 1)).has_value());
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("OkaValueToGroupValue - Value type 4 not supported "
                                                   "(dwDPT=262145 with value='1 -> Empty').")));
}

struct UnsupportedMain
{
    std::uint16_t main;
    OKAVALUE value;
    std::string message;
};

void PrintTo(const UnsupportedMain& c, std::ostream* out) { *out << c.main << " with " << c.value.ToString(); }

std::vector<UnsupportedMain> MainsWithATypeButNoBranch()
{
    return {
        {25, TavTest::ByteValue(1), "Value type 25 not supported (dwDPT=1638401 with value='6 -> Byte 1')."},
        {30, TavTest::DWordValue(2), "Value type 30 not supported (dwDPT=1966081 with value='8 -> DWord 2')."},
        {200, TavTest::WideWordValue(3), "Value type 200 not supported (dwDPT=13107201 with value='7 -> Word 3')."},
        {201, TavTest::WideWordValue(3), "Value type 201 not supported (dwDPT=13172737 with value='7 -> Word 3')."},
        {202, TavTest::WideWordValue(3), "Value type 202 not supported (dwDPT=13238273 with value='7 -> Word 3')."},
        {24, TavTest::StringValue("x"),
         "Value type 24 not supported (dwDPT=1572865 with value='10 -> String \"x\"')."},
        {28, TavTest::StringValue("x"),
         "Value type 28 not supported (dwDPT=1835009 with value='10 -> String \"x\"')."},
        {29, OKAVALUE(), "Value type 29 not supported (dwDPT=1900545 with value='1 -> Empty')."},
    };
}

class OkaValueToGroupValueWithoutBranch : public ::testing::TestWithParam<UnsupportedMain>
{
};

TEST_P(OkaValueToGroupValueWithoutBranch, IsRefusedNamingTheValueType)
{
    const UnsupportedMain& c = GetParam();
    TavTest::LogCapture capture;
    EXPECT_FALSE(Okaro::OkaValueToGroupValue(c.value, Packed(c.main, 1)).has_value());
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("OkaValueToGroupValue - " + c.message)));
}

INSTANTIATE_TEST_SUITE_P(MainNumbersWithATypeButNoBranch, OkaValueToGroupValueWithoutBranch,
                         ::testing::ValuesIn(MainsWithATypeButNoBranch()),
                         [](const ::testing::TestParamInfo<UnsupportedMain>& info) {
                             return "Main" + std::to_string(info.param.main);
                         });

TEST(OkaValueToGroupValueUnsupported, NoMainNumberAndMainAboveBranchTable)
{
    {
        TavTest::LogCapture capture;
        EXPECT_FALSE(Okaro::OkaValueToGroupValue(OKAVALUE(), 5).has_value());
        EXPECT_THAT(capture.Lines(), ElementsAre(Error("OkaValueToGroupValue - Value type 0 not supported "
                                                       "(dwDPT=5 with value='1 -> Empty').")));
    }
    {
        TavTest::LogCapture capture;
        EXPECT_FALSE(Okaro::OkaValueToGroupValue(OKAVALUE(), Packed(239, 1)).has_value());
        EXPECT_THAT(capture.Lines(), ElementsAre(Error("OkaValueToGroupValue - Value type 239 not supported "
                                                       "(dwDPT=15663105 with value='1 -> Empty').")));
    }
}

TEST(OkaValueToGroupValuePackedNumber, OnlyTheLow32BitsCount)
{
    if (sizeof(unsigned long) <= 4)
    {
        GTEST_SKIP() << "unsigned long has no bits above 32 here";
    }
    const unsigned long withHighBits = static_cast<unsigned long>(static_cast<unsigned long long>(1) << 40) |
                                       Packed(31, 1);
    TavTest::LogCapture capture;
    EXPECT_FALSE(Okaro::OkaValueToGroupValue(TavTest::ByteValue(5), withHighBits).has_value());
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("OkaValueToGroupValue - Value type 31 not supported "
                                                   "(dwDPT=2031617 with value='6 -> Byte 5').")));
    ExpectEncodes(TavTest::ByteValue(200), withHighBits - Packed(31, 1) + Packed(5, 1), {200}, 8);
}

// ---- bit and byte branches -------------------------------------------------------------

TEST(OkaValueToGroupValueBranches, SwitchIsOneBit)
{
    ExpectEncodes(TavTest::BoolValue(true), Packed(1, 1), {0x01}, 1);
    ExpectEncodes(TavTest::BoolValue(false), Packed(1, 1), {0x00}, 1);
}

TEST(OkaValueToGroupValueBranches, TwoBitControlTakesPlainAndNibbleForm)
{
    ExpectEncodes(TavTest::ByteValue(3), Packed(2, 1), {0x03}, 2);
    ExpectEncodes(TavTest::ByteValue(17), Packed(2, 1), {0x03}, 2);
    ExpectEncodes(TavTest::ByteValue(2), Packed(23, 1), {0x02}, 2);
}

TEST(OkaValueToGroupValueBranches, StepControlIsFourBits)
{
    ExpectEncodes(TavTest::ByteValue(0x0B), Packed(3, 7), {0x0B}, 4);
}

TEST(OkaValueToGroupValueBranches, PlainEightBitMains)
{
    for (const std::uint16_t main : {5, 18, 20, 21, 26, 238})
    {
        SCOPED_TRACE(main);
        ExpectEncodes(TavTest::ByteValue(0xA5), Packed(main, 1), {0xA5}, 8);
    }
}

TEST(OkaValueToGroupValueBranches, SceneNumberUpTo63)
{
    ExpectEncodes(TavTest::ByteValue(0), Packed(17, 1), {0x00}, 8);
    ExpectEncodes(TavTest::ByteValue(63), Packed(17, 1), {0x3F}, 8);
}

TEST(OkaValueToGroupValueBranches, SceneNumber64IsRefusedSilently)
{
    TavTest::LogCapture capture;
    EXPECT_FALSE(Okaro::OkaValueToGroupValue(TavTest::ByteValue(64), Packed(17, 1)).has_value());
    EXPECT_FALSE(Okaro::OkaValueToGroupValue(TavTest::ByteValue(255), Packed(17, 1)).has_value());
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST(OkaValueToGroupValueBranches, SignedRelativeSendsTheByteAsTwosComplement)
{
    ExpectEncodes(TavTest::ByteValue(255), Packed(6, 10), {0xFF}, 8);
    ExpectEncodes(TavTest::ByteValue(0x80), Packed(6, 1), {0x80}, 8);
    ExpectEncodes(TavTest::ByteValue(0x7F), Packed(6, 1), {0x7F}, 8);
}

// ---- 16-bit branches with clamping -----------------------------------------------------

TEST(OkaValueToGroupValueBranches, UnsignedSixteenBitMains)
{
    for (const std::uint16_t main : {7, 22, 217, 234, 237})
    {
        SCOPED_TRACE(main);
        ExpectEncodes(TavTest::WideWordValue(0x1234), Packed(main, 1), {0x12, 0x34}, 16);
        ExpectEncodes(TavTest::WideWordValue(65535), Packed(main, 1), {0xFF, 0xFF}, 16);
    }
}

TEST(OkaValueToGroupValueBranches, UnsignedSixteenBitAboveRangeIsReportedAndSentClamped)
{
    TavTest::LogCapture capture;
    const auto encoded = Okaro::OkaValueToGroupValue(TavTest::WideWordValue(70000), Packed(7, 1));
    ASSERT_TRUE(encoded.has_value());
    EXPECT_EQ(BytesOf(*encoded), (Bytes{0xFF, 0xFF}));
    EXPECT_EQ(encoded->GetAsUnsigned16(), 65535);
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("OkaValueToGroupValue - Value out of range: 70000 (DPT 7)")));
}

TEST(OkaValueToGroupValueBranches, UnsignedSixteenBitMessageNamesTheMainNumber)
{
    TavTest::LogCapture capture;
    const auto encoded = Okaro::OkaValueToGroupValue(TavTest::WideWordValue(65536), Packed(234, 1));
    ASSERT_TRUE(encoded.has_value());
    EXPECT_EQ(BytesOf(*encoded), (Bytes{0xFF, 0xFF}));
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("OkaValueToGroupValue - Value out of range: 65536 (DPT 234)")));
}

TEST(OkaValueToGroupValueBranches, NegativeWordPrintsAsThirtyTwoBitUnsigned)
{
    OKAVALUE value(ivtWord);
    value.numeric.integer = -1;
    TavTest::LogCapture capture;
    const auto encoded = Okaro::OkaValueToGroupValue(value, Packed(7, 1));
    ASSERT_TRUE(encoded.has_value());
    EXPECT_EQ(BytesOf(*encoded), (Bytes{0xFF, 0xFF}));
    EXPECT_THAT(capture.Lines(),
                ElementsAre(Error("OkaValueToGroupValue - Value out of range: 4294967295 (DPT 7)")));
}

TEST(OkaValueToGroupValueBranches, SignedSixteenBitInRange)
{
    ExpectEncodes(TavTest::IntegerValue(32767), Packed(8, 1), {0x7F, 0xFF}, 16);
    ExpectEncodes(TavTest::IntegerValue(-32768), Packed(8, 1), {0x80, 0x00}, 16);
    ExpectEncodes(TavTest::IntegerValue(-2), Packed(8, 1), {0xFF, 0xFE}, 16);
}

TEST(OkaValueToGroupValueBranches, SignedSixteenBitBelowRangeIsReportedAndSentClamped)
{
    TavTest::LogCapture capture;
    const auto encoded = Okaro::OkaValueToGroupValue(TavTest::IntegerValue(-40000), Packed(8, 1));
    ASSERT_TRUE(encoded.has_value());
    EXPECT_EQ(encoded->GetAsSigned16(), -32768);
    EXPECT_EQ(BytesOf(*encoded), (Bytes{0x80, 0x00}));
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("OkaValueToGroupValue - Value out of range: -40000 (DPT 8)")));
}

TEST(OkaValueToGroupValueBranches, SignedSixteenBitAboveRangeIsReportedAndSentClamped)
{
    TavTest::LogCapture capture;
    const auto encoded = Okaro::OkaValueToGroupValue(TavTest::IntegerValue(32768), Packed(8, 7));
    ASSERT_TRUE(encoded.has_value());
    EXPECT_EQ(BytesOf(*encoded), (Bytes{0x7F, 0xFF}));
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("OkaValueToGroupValue - Value out of range: 32768 (DPT 8)")));
}

// ---- floats ----------------------------------------------------------------------------

TEST(OkaValueToGroupValueBranches, SixteenBitFloat)
{
    ExpectEncodes(TavTest::FloatValue(21.0), Packed(9, 1), {0x0C, 0x1A}, 16);
    ExpectEncodes(TavTest::FloatValue(0.0), Packed(9, 1), {0x00, 0x00}, 16);
}

TEST(OkaValueToGroupValueBranches, SixteenBitFloatInfinityIsRefusedSilently)
{
    TavTest::LogCapture capture;
    EXPECT_FALSE(Okaro::OkaValueToGroupValue(TavTest::FloatValue(std::numeric_limits<double>::infinity()),
                                             Packed(9, 1))
                     .has_value());
    EXPECT_FALSE(Okaro::OkaValueToGroupValue(TavTest::FloatValue(-std::numeric_limits<double>::infinity()),
                                             Packed(9, 1))
                     .has_value());
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST(OkaValueToGroupValueBranches, SixteenBitFloatNaNIsSentAsInvalidCode)
{
    ExpectEncodes(TavTest::FloatValue(std::numeric_limits<double>::quiet_NaN()), Packed(9, 1), {0x7F, 0xFF}, 16);
}

TEST(OkaValueToGroupValueBranches, SixteenBitFloatLargestFiniteIsClampedBySetter)
{
    ExpectEncodes(TavTest::FloatValue(std::numeric_limits<double>::max()), Packed(9, 1), {0x7F, 0xFE}, 16);
}

TEST(OkaValueToGroupValueBranches, ThirtyTwoBitFloat)
{
    ExpectEncodes(TavTest::FloatValue(1.5), Packed(14, 0), {0x3F, 0xC0, 0x00, 0x00}, 32);
    ExpectEncodes(TavTest::FloatValue(-2.0), Packed(14, 68), {0xC0, 0x00, 0x00, 0x00}, 32);
}

TEST(OkaValueToGroupValueBranches, ThirtyTwoBitFloatBeyondSinglePrecisionIsInfinity)
{
    ExpectEncodes(TavTest::FloatValue(1e300), Packed(14, 0), {0x7F, 0x80, 0x00, 0x00}, 32);
    ExpectEncodes(TavTest::FloatValue(-1e300), Packed(14, 0), {0xFF, 0x80, 0x00, 0x00}, 32);
    ExpectEncodes(TavTest::FloatValue(std::numeric_limits<double>::infinity()), Packed(14, 0),
                  {0x7F, 0x80, 0x00, 0x00}, 32);
}

// Narrowing rounds to nearest: up to half a unit in the last place above the largest float
// (2^103) a double still becomes that float; from there on it is the infinity of its sign.
TEST(OkaValueToGroupValueBranches, ThirtyTwoBitFloatNarrowsToNearestAtTheEdgeOfTheRange)
{
    const double halfUnitAbove = static_cast<double>(std::numeric_limits<float>::max()) + 0x1p103;
    ExpectEncodes(TavTest::FloatValue(3.4028235e38), Packed(14, 0), {0x7F, 0x7F, 0xFF, 0xFF}, 32);
    ExpectEncodes(TavTest::FloatValue(-3.4028235e38), Packed(14, 0), {0xFF, 0x7F, 0xFF, 0xFF}, 32);
    ExpectEncodes(TavTest::FloatValue(1e39), Packed(14, 0), {0x7F, 0x80, 0x00, 0x00}, 32);
    ExpectEncodes(TavTest::FloatValue(std::nextafter(halfUnitAbove, 0.0)), Packed(14, 0), {0x7F, 0x7F, 0xFF, 0xFF},
                  32);
    ExpectEncodes(TavTest::FloatValue(-std::nextafter(halfUnitAbove, 0.0)), Packed(14, 0),
                  {0xFF, 0x7F, 0xFF, 0xFF}, 32);
    ExpectEncodes(TavTest::FloatValue(halfUnitAbove), Packed(14, 0), {0x7F, 0x80, 0x00, 0x00}, 32);
    ExpectEncodes(TavTest::FloatValue(-halfUnitAbove), Packed(14, 0), {0xFF, 0x80, 0x00, 0x00}, 32);
}

// ---- 32-bit and 24-bit -----------------------------------------------------------------

TEST(OkaValueToGroupValueBranches, UnsignedThirtyTwoBitMains)
{
    for (const std::uint16_t main : {12, 15, 27})
    {
        SCOPED_TRACE(main);
        ExpectEncodes(TavTest::DWordValue(0xDEADBEEF), Packed(main, 1), {0xDE, 0xAD, 0xBE, 0xEF}, 32);
    }
}

TEST(OkaValueToGroupValueBranches, SignedThirtyTwoBit)
{
    ExpectEncodes(TavTest::IntegerValue(-2), Packed(13, 1), {0xFF, 0xFF, 0xFF, 0xFE}, 32);
    ExpectEncodes(TavTest::IntegerValue(0x01020304), Packed(13, 1), {0x01, 0x02, 0x03, 0x04}, 32);
}

TEST(OkaValueToGroupValueBranches, TwentyFourBitIsBuiltByteByByte)
{
    ExpectEncodes(TavTest::DWordValue(16744512), Packed(232, 600), {0xFF, 0x80, 0x40}, 24);
}

TEST(OkaValueToGroupValueBranches, TwentyFourBitKeepsOnlyTheLow24Bits)
{
    ExpectEncodes(TavTest::DWordValue(0x12345678), Packed(232, 600), {0x34, 0x56, 0x78}, 24);
}

// ---- time of day and date --------------------------------------------------------------

TEST(OkaValueToGroupValueBranches, TimeOfDayWithWeekday)
{
    // Monday is 1 in both numberings; KNX puts the day in the top three bits of the hour.
    ExpectEncodes(TavTest::DayTimeValue(14, 30, 15, 1), Packed(10, 1), {0x2E, 0x1E, 0x0F}, 24);
}

TEST(OkaValueToGroupValueBranches, TimeOfDaySundayAndNoDay)
{
    ExpectEncodes(TavTest::DayTimeValue(23, 59, 59, 0), Packed(10, 1), {0xF7, 0x3B, 0x3B}, 24);
    ExpectEncodes(TavTest::DayTimeValue(0, 0, 0, 7), Packed(10, 1), {0x00, 0x00, 0x00}, 24);
}

TEST(OkaValueToGroupValueBranches, TimeOfDayThatCannotBeRepresentedListsEveryField)
{
    TavTest::LogCapture capture;
    EXPECT_FALSE(Okaro::OkaValueToGroupValue(TavTest::DayTimeValue(14, 30, 15, 8), Packed(10, 1)).has_value());
    EXPECT_FALSE(Okaro::OkaValueToGroupValue(TavTest::DayTimeValue(24, 0, 0, 1), Packed(10, 1)).has_value());
    EXPECT_THAT(capture.Lines(),
                ElementsAre(Error("OkaValueToGroupValue - Could not convert OKATIME 2000 1 1 14 30 15 0 8 1 0 0  "
                                  "to TimeOfDay"),
                            Error("OkaValueToGroupValue - Could not convert OKATIME 2000 1 1 24 0 0 0 1 1 0 0  "
                                  "to TimeOfDay")));
}

TEST(OkaValueToGroupValueBranches, DateWritesDayMonthAndTwoDigitYear)
{
    ExpectEncodes(TavTest::DateValue(2024, 3, 15), Packed(11, 1), {0x0F, 0x03, 0x18}, 24);
    ExpectEncodes(TavTest::DateValue(1990, 1, 1), Packed(11, 1), {0x01, 0x01, 0x5A}, 24);
    ExpectEncodes(TavTest::DateValue(2089, 12, 31), Packed(11, 1), {0x1F, 0x0C, 0x59}, 24);
}

TEST(OkaValueToGroupValueBranches, DateOutsideTheKnxCenturyIsSentAsYearModulo100)
{
    ExpectEncodes(TavTest::DateValue(2090, 6, 1), Packed(11, 1), {0x01, 0x06, 0x5A}, 24);
}

TEST(OkaValueToGroupValueBranches, DateOf31AprilPassesTheDateCheck)
{
    ExpectEncodes(TavTest::DateValue(2024, 4, 31), Packed(11, 1), {0x1F, 0x04, 0x18}, 24);
}

TEST(OkaValueToGroupValueBranches, InvalidDateIsRefused)
{
    TavTest::LogCapture capture;
    EXPECT_FALSE(Okaro::OkaValueToGroupValue(TavTest::DateValue(2023, 2, 29), Packed(11, 1)).has_value());
    EXPECT_FALSE(Okaro::OkaValueToGroupValue(TavTest::DateValue(2024, 13, 1), Packed(11, 1)).has_value());
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("OkaValueToGroupValue - Not a valid date: 2023 2 29 "),
                                             Error("OkaValueToGroupValue - Not a valid date: 2024 13 1 ")));
}

// ---- strings ---------------------------------------------------------------------------

Bytes Padded(Bytes bytes)
{
    bytes.resize(14, 0);
    return bytes;
}

TEST(OkaValueToGroupValueBranches, StringIsSentAsLatin1)
{
    // "Grüße" in UTF-8; ü and ß are Latin-1 0xFC and 0xDF.
    ExpectEncodes(TavTest::StringValue("Gr\xC3\xBC\xC3\x9F" "e"), Packed(16, 1),
                  Padded({0x47, 0x72, 0xFC, 0xDF, 0x65}), 112);
    ExpectEncodes(TavTest::StringValue("abc"), Packed(16, 0), Padded({0x61, 0x62, 0x63}), 112);
}

TEST(OkaValueToGroupValueBranches, StringCharactersOutsideLatin1BecomeQuestionMarks)
{
    // The euro sign has no Latin-1 code.
    ExpectEncodes(TavTest::StringValue("\xE2\x82\xAC" "5"), Packed(16, 0), Padded({0x3F, 0x35}), 112);
}

TEST(OkaValueToGroupValueBranches, StringIsCutAt14Bytes)
{
    ExpectEncodes(TavTest::StringValue("abcdefghijklmnop"), Packed(16, 0),
                  {0x61, 0x62, 0x63, 0x64, 0x65, 0x66, 0x67, 0x68, 0x69, 0x6A, 0x6B, 0x6C, 0x6D, 0x6E}, 112);
}

TEST(OkaValueToGroupValueBranches, StringWithInvalidUtf8IsRefused)
{
    TavTest::LogCapture capture;
    EXPECT_FALSE(Okaro::OkaValueToGroupValue(TavTest::StringValue("a\xFF" "b"), Packed(16, 0)).has_value());
    EXPECT_THAT(capture.Lines(),
                ElementsAre(Error("OkaValueToGroupValue - Got OKAVALUE that contains a non-UTF8 string")));
}

TEST(OkaValueToGroupValueBranches, StringCheckCoversBytesAfterAZero)
{
    TavTest::LogCapture capture;
    EXPECT_FALSE(Okaro::OkaValueToGroupValue(TavTest::StringValue(std::string("a\0\xC3", 3)), Packed(16, 0))
                     .has_value());
    EXPECT_THAT(capture.Lines(),
                ElementsAre(Error("OkaValueToGroupValue - Got OKAVALUE that contains a non-UTF8 string")));
}

// ---- date and time ---------------------------------------------------------------------

TEST(OkaValueToGroupValueDateTime, WeekdayInTopBitsOfHourAndFlags0x20)
{
    // Friday 2024-03-15 13:45:30: Friday is 5, 5 << 5 | 13 = 0xAD.
    ExpectEncodes(TavTest::DateTimeValue(2024, 3, 15, 13, 45, 30), Packed(19, 1),
                  {0x7C, 0x03, 0x0F, 0xAD, 0x2D, 0x1E, 0x20, 0x00}, 64);
}

TEST(OkaValueToGroupValueDateTime, SundayIsWrittenAsSeven)
{
    const auto encoded =
        Okaro::OkaValueToGroupValue(TavTest::DateTimeValue(2024, 3, 17, 10, 20, 30), Packed(19, 1));
    ASSERT_TRUE(encoded.has_value());
    const Bytes bytes = BytesOf(*encoded);
    EXPECT_EQ(bytes, (Bytes{0x7C, 0x03, 0x11, 0xEA, 0x14, 0x1E, 0x20, 0x00}));
    EXPECT_EQ(bytes[3] & 0xE0, 0xE0);
    EXPECT_EQ(bytes[6], 0x20);
}

TEST(OkaValueToGroupValueDateTime, WeekdayComesFromTheDateNotFromTheValue)
{
    OKAVALUE value = TavTest::DateTimeValue(2024, 3, 17, 0, 0, 0);
    value.numeric.time.weekday = 3;
    ExpectEncodes(value, Packed(19, 1), {0x7C, 0x03, 0x11, 0xE0, 0x00, 0x00, 0x20, 0x00}, 64);
}

TEST(OkaValueToGroupValueDateTime, YearsAround2038HaveNoLimitWhenSending)
{
    // Tuesday 2038-01-19.
    ExpectEncodes(TavTest::DateTimeValue(2038, 1, 19, 3, 14, 7), Packed(19, 1),
                  {0x8A, 0x01, 0x13, 0x43, 0x0E, 0x07, 0x20, 0x00}, 64);
    ExpectEncodes(TavTest::DateTimeValue(2038, 1, 19, 3, 14, 8), Packed(19, 1),
                  {0x8A, 0x01, 0x13, 0x43, 0x0E, 0x08, 0x20, 0x00}, 64);
    // Friday 2100-01-01.
    ExpectEncodes(TavTest::DateTimeValue(2100, 1, 1, 0, 0, 0), Packed(19, 1),
                  {0xC8, 0x01, 0x01, 0xA0, 0x00, 0x00, 0x20, 0x00}, 64);
}

TEST(OkaValueToGroupValueDateTime, YearOffsetIsTruncatedToEightBits)
{
    // 2155 (a Wednesday) is the last year the byte holds; 2156 (Thursday) wraps to 0 and
    // 1899 (Sunday) to 255.
    ExpectEncodes(TavTest::DateTimeValue(2155, 12, 31, 0, 0, 0), Packed(19, 1),
                  {0xFF, 0x0C, 0x1F, 0x60, 0x00, 0x00, 0x20, 0x00}, 64);
    ExpectEncodes(TavTest::DateTimeValue(2156, 1, 1, 0, 0, 0), Packed(19, 1),
                  {0x00, 0x01, 0x01, 0x80, 0x00, 0x00, 0x20, 0x00}, 64);
    ExpectEncodes(TavTest::DateTimeValue(1899, 12, 31, 0, 0, 0), Packed(19, 1),
                  {0xFF, 0x0C, 0x1F, 0xE0, 0x00, 0x00, 0x20, 0x00}, 64);
}

template <typename Exception>
void ExpectCalendarError(const OKAVALUE& value, const std::string& text)
{
    TavTest::LogCapture capture;
    try
    {
        (void)Okaro::OkaValueToGroupValue(value, Packed(19, 1));
        ADD_FAILURE() << "no calendar error for " << text;
    }
    catch (const Exception& error)
    {
        EXPECT_EQ(std::string(error.what()), text);
    }
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST(OkaValueToGroupValueDateTime, CalendarErrorsLeaveTheFunction)
{
    ExpectCalendarError<boost::gregorian::bad_year>(TavTest::DateTimeValue(1399, 1, 1, 0, 0, 0),
                                                    "Year is out of valid range: 1400..9999");
    ExpectCalendarError<boost::gregorian::bad_year>(TavTest::DateTimeValue(10000, 1, 1, 0, 0, 0),
                                                    "Year is out of valid range: 1400..9999");
    ExpectCalendarError<boost::gregorian::bad_month>(TavTest::DateTimeValue(2024, 13, 1, 0, 0, 0),
                                                     "Month number is out of range 1..12");
    ExpectCalendarError<boost::gregorian::bad_month>(TavTest::DateTimeValue(2024, 0, 1, 0, 0, 0),
                                                     "Month number is out of range 1..12");
    ExpectCalendarError<boost::gregorian::bad_day_of_month>(TavTest::DateTimeValue(2024, 5, 0, 0, 0, 0),
                                                            "Day of month value is out of range 1..31");
    ExpectCalendarError<boost::gregorian::bad_day_of_month>(TavTest::DateTimeValue(2024, 4, 31, 0, 0, 0),
                                                            "Day of month is not valid for year");
}

TEST(OkaValueToGroupValueDateTime, CalendarErrorsAreOutOfRangeErrors)
{
    EXPECT_THROW((void)Okaro::OkaValueToGroupValue(TavTest::DateTimeValue(2023, 2, 29, 0, 0, 0), Packed(19, 1)),
                 std::out_of_range);
}
} // namespace
