// CheckGroupValue and GroupValueToOkaValue: validity check, refusals, branch table, dates
// and times read as local time, and the slow-decode report.
#include "GroupValueOkaValueTestSupport.h"
#include "support/LogCapture.h"

#include <TavObjectModel/GroupValueOkaValue.h>

#include <boost/date_time/gregorian/greg_date.hpp>
#include <log4cplus/appender.h>
#include <log4cplus/logger.h>
#include <log4cplus/spi/loggingevent.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

namespace
{
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using TavTest::Error;
using TavTest::Info;
using TavTest::MakeGroupValue;
using TavTest::Packed;
using TavTest::Trace;
using TavTest::Warn;

std::vector<TavTest::LogLine> Reported(const TavTest::LogCapture& capture)
{
    return capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL);
}

class GroupValueToOkaValue : public TavTest::TimeZoneFixture
{
protected:
    // Decodes and expects exactly this value, with nothing reported at INFO or above.
    static void ExpectDecodes(const KnxStack::GroupValue& groupValue, unsigned long dpt, const OKAVALUE& expected)
    {
        TavTest::LogCapture capture;
        const auto decoded = Okaro::GroupValueToOkaValue(groupValue, dpt);
        ASSERT_TRUE(decoded.has_value());
        EXPECT_EQ(*decoded, expected) << decoded->ToString() << " instead of " << expected.ToString();
        EXPECT_THAT(Reported(capture), IsEmpty());
    }
};

// ---- validity check --------------------------------------------------------------------

TEST_F(GroupValueToOkaValue, CheckTracesDptAndBitSize)
{
    TavTest::LogCapture capture;
    EXPECT_TRUE(Okaro::CheckGroupValue(MakeGroupValue({0x0C, 0x1A}, 16), Packed(9, 1)));
    EXPECT_THAT(capture.Lines(), Contains(Trace("CheckGroupValue - DPT is 9.1 with bit size 16")));
    EXPECT_THAT(Reported(capture), IsEmpty());
}

TEST_F(GroupValueToOkaValue, CheckRefusesAWrongBitSize)
{
    TavTest::LogCapture capture;
    EXPECT_FALSE(Okaro::CheckGroupValue(MakeGroupValue({0x0C, 0x1A}, 8), Packed(9, 1)));
    EXPECT_THAT(capture.Lines(), Contains(Trace("CheckGroupValue - DPT is 9.1 with bit size 8")));
    EXPECT_THAT(Reported(capture), ElementsAre(Error("FromKnxValue - Failed to convert a GroupValue for DPT 9.1 "
                                                     "because of unexpected bit size: 8, expected: 16")));
}

TEST_F(GroupValueToOkaValue, CheckAcceptsADptWithoutMapEntry)
{
    TavTest::LogCapture capture;
    EXPECT_TRUE(Okaro::CheckGroupValue(MakeGroupValue({0x12, 0x34}, 16), Packed(22, 1)));
    EXPECT_THAT(Reported(capture), ElementsAre(Error("GetEntry - No Entry found for DPT = 22.1"),
                                               Error("FromKnxValue - No Entry found for DPT = 22.1"),
                                               Error("FromKnxValue - Assume validity and accept value!")));
}

// ---- refusals before decoding ----------------------------------------------------------

TEST_F(GroupValueToOkaValue, DptWithoutValueTypeIsUnsupported)
{
    TavTest::LogCapture capture;
    EXPECT_FALSE(Okaro::GroupValueToOkaValue(MakeGroupValue({0x41}, 8), Packed(4, 1)).has_value());
    EXPECT_FALSE(Okaro::GroupValueToOkaValue(MakeGroupValue({0x41}, 8), Packed(239, 1)).has_value());
    EXPECT_FALSE(Okaro::GroupValueToOkaValue(MakeGroupValue({0x41}, 8), 0).has_value());
    EXPECT_FALSE(Okaro::GroupValueToOkaValue(MakeGroupValue({0x41}, 8), Packed(29, 1)).has_value());
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("GroupValueToOkaValue - Unsupported DPT: 4.1"),
                                             Error("GroupValueToOkaValue - Unsupported DPT: 239.1"),
                                             Error("GroupValueToOkaValue - Unsupported DPT: 0.0"),
                                             Error("GroupValueToOkaValue - Unsupported DPT: 29.1")));
}

TEST_F(GroupValueToOkaValue, BytesTheCheckRefusesAreInvalid)
{
    TavTest::LogCapture capture;
    EXPECT_FALSE(Okaro::GroupValueToOkaValue(MakeGroupValue({0x0C, 0x1A}, 8), Packed(9, 1)).has_value());
    EXPECT_THAT(Reported(capture),
                ElementsAre(Error("FromKnxValue - Failed to convert a GroupValue for DPT 9.1 because of "
                                  "unexpected bit size: 8, expected: 16"),
                            Error("GroupValueToOkaValue - Received invalid value 0c 1a for DPT 9.1")));
}

TEST_F(GroupValueToOkaValue, TimeOfDayWithHour25IsRefusedByTheCheck)
{
    TavTest::LogCapture capture;
    EXPECT_FALSE(Okaro::GroupValueToOkaValue(MakeGroupValue({0x19, 0x00, 0x00}, 24), Packed(10, 1)).has_value());
    EXPECT_THAT(Reported(capture),
                ElementsAre(Error("FromKnxValue - No valid TimeOfDay (10.001)!"),
                            Error("FromKnxValue - Convert from KNX value failed for DPT = 10.1 GroupValue = 19 00 00"),
                            Error("GroupValueToOkaValue - Received invalid value 19 00 00 for DPT 10.1")));
}

// ---- simple branches -------------------------------------------------------------------

TEST_F(GroupValueToOkaValue, SwitchIsBool)
{
    ExpectDecodes(MakeGroupValue({0x01}, 1), Packed(1, 1), TavTest::BoolValue(true));
    ExpectDecodes(MakeGroupValue({0x00}, 1), Packed(1, 1), TavTest::BoolValue(false));
    // A short value from the bus arrives with size 6.
    ExpectDecodes(MakeGroupValue({0x01}, 6), Packed(1, 1), TavTest::BoolValue(true));
}

TEST_F(GroupValueToOkaValue, TwoBitControlIsByte)
{
    ExpectDecodes(MakeGroupValue({0x03}, 2), Packed(2, 1), TavTest::ByteValue(3));
    ExpectDecodes(MakeGroupValue({0x02}, 6), Packed(2, 1), TavTest::ByteValue(2));
}

TEST_F(GroupValueToOkaValue, EightBitMainTwentyThreeKeepsOnlyTheLowTwoBits)
{
    ExpectDecodes(MakeGroupValue({0x02}, 8), Packed(23, 1), TavTest::ByteValue(2));
    ExpectDecodes(MakeGroupValue({0x07}, 8), Packed(23, 1), TavTest::ByteValue(3));
}

TEST_F(GroupValueToOkaValue, StepControlIsByte)
{
    ExpectDecodes(MakeGroupValue({0x0B}, 4), Packed(3, 7), TavTest::ByteValue(11));
}

TEST_F(GroupValueToOkaValue, PlainEightBitMainsAreBytes)
{
    ExpectDecodes(MakeGroupValue({0xFF}, 8), Packed(5, 1), TavTest::ByteValue(255));
    ExpectDecodes(MakeGroupValue({0x3F}, 8), Packed(17, 1), TavTest::ByteValue(63));
    ExpectDecodes(MakeGroupValue({0x81}, 8), Packed(18, 1), TavTest::ByteValue(0x81));
    ExpectDecodes(MakeGroupValue({0x02}, 8), Packed(20, 102), TavTest::ByteValue(2));
    ExpectDecodes(MakeGroupValue({0x05}, 8), Packed(21, 1), TavTest::ByteValue(5));
    ExpectDecodes(MakeGroupValue({0x40}, 8), Packed(26, 1), TavTest::ByteValue(0x40));
    ExpectDecodes(MakeGroupValue({0x7F}, 8), Packed(238, 600), TavTest::ByteValue(0x7F));
}

TEST_F(GroupValueToOkaValue, SignedRelativeStaysAByte)
{
    ExpectDecodes(MakeGroupValue({0xFF}, 8), Packed(6, 10), TavTest::ByteValue(255));
    ExpectDecodes(MakeGroupValue({0x80}, 8), Packed(6, 1), TavTest::ByteValue(128));
    ExpectDecodes(MakeGroupValue({0x7F}, 8), Packed(6, 1), TavTest::ByteValue(127));
}

TEST_F(GroupValueToOkaValue, UnsignedSixteenBitMainsAreWords)
{
    ExpectDecodes(MakeGroupValue({0xFF, 0xFE}, 16), Packed(7, 1), TavTest::WideWordValue(65534));
}

TEST_F(GroupValueToOkaValue, UnsignedSixteenBitMainsWithoutMapEntryAreWordsToo)
{
    for (const std::uint16_t main : {22, 217, 234, 237})
    {
        SCOPED_TRACE(main);
        TavTest::LogCapture capture;
        const auto decoded = Okaro::GroupValueToOkaValue(MakeGroupValue({0x12, 0x34}, 16), Packed(main, 1));
        ASSERT_TRUE(decoded.has_value());
        EXPECT_EQ(*decoded, TavTest::WideWordValue(0x1234));
        const std::string dpt = std::to_string(main) + ".1";
        EXPECT_THAT(Reported(capture), ElementsAre(Error("GetEntry - No Entry found for DPT = " + dpt),
                                                   Error("FromKnxValue - No Entry found for DPT = " + dpt),
                                                   Error("FromKnxValue - Assume validity and accept value!")));
    }
}

TEST_F(GroupValueToOkaValue, SignedSixteenBitIsInteger)
{
    ExpectDecodes(MakeGroupValue({0x80, 0x00}, 16), Packed(8, 1), TavTest::IntegerValue(-32768));
    ExpectDecodes(MakeGroupValue({0x7F, 0xFF}, 16), Packed(8, 1), TavTest::IntegerValue(32767));
}

TEST_F(GroupValueToOkaValue, SixteenBitFloatIsFloat)
{
    ExpectDecodes(MakeGroupValue({0x0C, 0x1A}, 16), Packed(9, 1), TavTest::FloatValue(21.0));
    ExpectDecodes(MakeGroupValue({0x8A, 0x24}, 16), Packed(9, 1), TavTest::FloatValue(-30.0));
}

TEST_F(GroupValueToOkaValue, UnsignedThirtyTwoBitMainsAreDWords)
{
    for (const std::uint16_t main : {12, 15, 27})
    {
        SCOPED_TRACE(main);
        ExpectDecodes(MakeGroupValue({0xDE, 0xAD, 0xBE, 0xEF}, 32), Packed(main, 1), TavTest::DWordValue(0xDEADBEEF));
    }
}

TEST_F(GroupValueToOkaValue, SignedThirtyTwoBitIsInteger)
{
    ExpectDecodes(MakeGroupValue({0xFF, 0xFF, 0xFF, 0xFE}, 32), Packed(13, 1), TavTest::IntegerValue(-2));
}

TEST_F(GroupValueToOkaValue, ThirtyTwoBitFloatIsWidenedToDouble)
{
    ExpectDecodes(MakeGroupValue({0x3F, 0xC0, 0x00, 0x00}, 32), Packed(14, 0), TavTest::FloatValue(1.5));
    ExpectDecodes(MakeGroupValue({0x3D, 0xCC, 0xCC, 0xCD}, 32), Packed(14, 0),
                  TavTest::FloatValue(static_cast<double>(0.1f)));
}

TEST_F(GroupValueToOkaValue, ThreeBitMainIsByte)
{
    TavTest::LogCapture capture;
    const auto decoded = Okaro::GroupValueToOkaValue(MakeGroupValue({0x05}, 3), Packed(31, 1));
    ASSERT_TRUE(decoded.has_value());
    EXPECT_EQ(*decoded, TavTest::ByteValue(5));
    EXPECT_THAT(Reported(capture), ElementsAre(Error("GetEntry - No Entry found for DPT = 31.1"),
                                               Error("FromKnxValue - No Entry found for DPT = 31.1"),
                                               Error("FromKnxValue - Assume validity and accept value!")));
}

// ---- mains with a value type but no branch ---------------------------------------------

struct MainWithoutBranch
{
    std::uint16_t main;
    std::uint16_t sub;
    KnxStack::GroupValue value;
};

void PrintTo(const MainWithoutBranch& c, std::ostream* out)
{
    *out << c.main << "." << c.sub << " " << c.value.GetRawData().ToString() << " (" << c.value.GetDefinedSize()
         << " bits)";
}

std::vector<MainWithoutBranch> MainsWithoutBranch()
{
    return {
        {25, 1000, MakeGroupValue({0x12}, 8)},
        {30, 1010, MakeGroupValue({0x01, 0x02, 0x03}, 24)},
        {24, 1, MakeGroupValue({0x41, 0x00}, 16)},
        {200, 100, MakeGroupValue({0x01, 0x02}, 9)},
        {202, 2, MakeGroupValue({0x01, 0x02}, 16)},
    };
}

class GroupValueToOkaValueWithoutBranch : public TavTest::TimeZoneFixture,
                                          public ::testing::WithParamInterface<MainWithoutBranch>
{
};

TEST_P(GroupValueToOkaValueWithoutBranch, GivesAPresentEmptyValue)
{
    const MainWithoutBranch& c = GetParam();
    TavTest::LogCapture capture;
    const auto decoded = Okaro::GroupValueToOkaValue(c.value, Packed(c.main, c.sub));
    ASSERT_TRUE(decoded.has_value());
    EXPECT_EQ(decoded->type, ivtEmpty);
    EXPECT_EQ(*decoded, OKAVALUE());
    EXPECT_THAT(Reported(capture), Contains(Error("FromKnxValue - Assume validity and accept value!")));
    EXPECT_THAT(capture.Lines(), Contains(Trace("CheckGroupValue - DPT is " + std::to_string(c.main) + "." +
                                                std::to_string(c.sub) + " with bit size " +
                                                std::to_string(c.value.GetDefinedSize()))));
}

INSTANTIATE_TEST_SUITE_P(MainsWithATypeButNoBranch, GroupValueToOkaValueWithoutBranch,
                         ::testing::ValuesIn(MainsWithoutBranch()),
                         [](const ::testing::TestParamInfo<MainWithoutBranch>& info) {
                             return "Dpt" + std::to_string(info.param.main) + "_" + std::to_string(info.param.sub);
                         });

// ---- truncated telegrams never throw the group value exception -------------------------

TEST_F(GroupValueToOkaValue, TruncatedTelegramWithoutMapEntryIsInvalid)
{
    TavTest::LogCapture capture;
    EXPECT_FALSE(Okaro::GroupValueToOkaValue(MakeGroupValue({0x12}, 16), Packed(22, 1)).has_value());
    EXPECT_THAT(Reported(capture), ElementsAre(Error("GetEntry - No Entry found for DPT = 22.1"),
                                               Error("FromKnxValue - No Entry found for DPT = 22.1"),
                                               Error("FromKnxValue - Assume validity and accept value!"),
                                               Error("GroupValueToOkaValue - Received invalid value 12 for DPT 22.1")));
}

TEST_F(GroupValueToOkaValue, ThreeByteTwentyFourBitTelegramIsInvalid)
{
    // The check reads three bytes and accepts them; decoding reads four and cannot.
    TavTest::LogCapture capture;
    EXPECT_FALSE(Okaro::GroupValueToOkaValue(MakeGroupValue({0xFF, 0x80, 0x40}, 24), Packed(232, 600)).has_value());
    EXPECT_THAT(Reported(capture), ElementsAre(Error("GroupValueToOkaValue - Received invalid value ff 80 40 for DPT "
                                                     "232.600")));
}

TEST_F(GroupValueToOkaValue, FourByteTwentyFourBitTelegramIsReadAsThirtyTwoBits)
{
    ExpectDecodes(MakeGroupValue({0xFF, 0x80, 0x40, 0x01}, 24), Packed(232, 600), TavTest::DWordValue(0xFF804001));
}

TEST_F(GroupValueToOkaValue, TruncatedTelegramWithMapEntryIsRefusedByTheCheck)
{
    TavTest::LogCapture capture;
    EXPECT_FALSE(Okaro::GroupValueToOkaValue(MakeGroupValue({0x01, 0x02, 0x03}, 32), Packed(12, 1)).has_value());
    const std::vector<TavTest::LogLine> lines = Reported(capture);
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back(), Error("GroupValueToOkaValue - Received invalid value 01 02 03 for DPT 12.1"));
}

// ---- time of day -----------------------------------------------------------------------

TEST_F(GroupValueToOkaValue, TimeOfDayHasPlaceholderDateAndKind1)
{
    // Monday 14:30:15.
    ExpectDecodes(MakeGroupValue({0x2E, 0x1E, 0x0F}, 24), Packed(10, 1), TavTest::DayTimeValue(14, 30, 15, 1));
}

TEST_F(GroupValueToOkaValue, TimeOfDaySundayIsWeekday0AndNoDayIs7)
{
    ExpectDecodes(MakeGroupValue({0xF7, 0x3B, 0x3B}, 24), Packed(10, 1), TavTest::DayTimeValue(23, 59, 59, 0));
    ExpectDecodes(MakeGroupValue({0x00, 0x00, 0x00}, 24), Packed(10, 1), TavTest::DayTimeValue(0, 0, 0, 7));
}

TEST_F(GroupValueToOkaValue, TimeOfDayValueTypeIsTheMainTypesOne)
{
    const auto decoded = Okaro::GroupValueToOkaValue(MakeGroupValue({0x2E, 0x1E, 0x0F}, 24), Packed(10, 1));
    ASSERT_TRUE(decoded.has_value());
    EXPECT_EQ(decoded->type, ivtDayTime);
    EXPECT_EQ(decoded->numeric.time.kind, 1);
    EXPECT_FALSE(decoded->numeric.time.localTime);
}

// ---- date ------------------------------------------------------------------------------

TEST_F(GroupValueToOkaValue, DateIsMidnightOfThatDay)
{
    ExpectDecodes(MakeGroupValue({0x0F, 0x03, 0x18}, 24), Packed(11, 1), TavTest::DateValue(2024, 3, 15));
    const auto decoded = Okaro::GroupValueToOkaValue(MakeGroupValue({0x0F, 0x03, 0x18}, 24), Packed(11, 1));
    ASSERT_TRUE(decoded.has_value());
    EXPECT_EQ(decoded->type, ivtDate);
    EXPECT_EQ(decoded->numeric.time.weekday, 5);
    EXPECT_EQ(decoded->numeric.time.hour, 0);
}

TEST_F(GroupValueToOkaValue, DateYearByteBoundaries)
{
    ExpectDecodes(MakeGroupValue({0x0F, 0x06, 0x5F}, 24), Packed(11, 1), TavTest::DateValue(1995, 6, 15));
    ExpectDecodes(MakeGroupValue({0x01, 0x01, 0x5A}, 24), Packed(11, 1), TavTest::DateValue(1990, 1, 1));
    ExpectDecodes(MakeGroupValue({0x1F, 0x0C, 0x63}, 24), Packed(11, 1), TavTest::DateValue(1999, 12, 31));
    ExpectDecodes(MakeGroupValue({0x01, 0x01, 0x00}, 24), Packed(11, 1), TavTest::DateValue(2000, 1, 1));
}

TEST_F(GroupValueToOkaValue, DatesAfter2038LimitArePresentWithoutType)
{
    ExpectDecodes(MakeGroupValue({0x13, 0x01, 0x26}, 24), Packed(11, 1), TavTest::DateValue(2038, 1, 19));
    ExpectDecodes(MakeGroupValue({0x14, 0x01, 0x26}, 24), Packed(11, 1), OKAVALUE());
    ExpectDecodes(MakeGroupValue({0x1F, 0x0C, 0x59}, 24), Packed(11, 1), OKAVALUE());
}

TEST_F(GroupValueToOkaValue, DateWithFourBytesIsRefused)
{
    TavTest::LogCapture capture;
    EXPECT_FALSE(
        Okaro::GroupValueToOkaValue(MakeGroupValue({0x0F, 0x03, 0x18, 0x00}, 24), Packed(11, 1)).has_value());
    EXPECT_THAT(Reported(capture), ElementsAre(Warn("GroupValueToOkaValue - Received an invalid DPT 11.001 date from "
                                                    "the KNX: Length in bytes is 4, expected 3")));
}

TEST_F(GroupValueToOkaValue, DateWithYearByte100IsRefused)
{
    TavTest::LogCapture capture;
    EXPECT_FALSE(Okaro::GroupValueToOkaValue(MakeGroupValue({0x01, 0x01, 0x64}, 24), Packed(11, 1)).has_value());
    EXPECT_THAT(Reported(capture), ElementsAre(Warn("GroupValueToOkaValue - Received an invalid DPT 11.001 date from "
                                                    "the KNX: Year 100 is out of range (0-99)")));
}

TEST_F(GroupValueToOkaValue, DateWithMonthZeroIsRefusedByTheCheck)
{
    TavTest::LogCapture capture;
    EXPECT_FALSE(Okaro::GroupValueToOkaValue(MakeGroupValue({0x01, 0x00, 0x18}, 24), Packed(11, 1)).has_value());
    const std::vector<TavTest::LogLine> lines = Reported(capture);
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back(), Error("GroupValueToOkaValue - Received invalid value 01 00 18 for DPT 11.1"));
}

TEST_F(GroupValueToOkaValue, DateOf31AprilThrowsFromTheCalendar)
{
    TavTest::LogCapture capture;
    try
    {
        (void)Okaro::GroupValueToOkaValue(MakeGroupValue({0x1F, 0x04, 0x18}, 24), Packed(11, 1));
        ADD_FAILURE() << "31 April decoded";
    }
    catch (const boost::gregorian::bad_day_of_month& error)
    {
        EXPECT_EQ(std::string(error.what()), "Day of month is not valid for year");
    }
    EXPECT_THAT(Reported(capture), IsEmpty());
}

// ---- date and time ---------------------------------------------------------------------

TEST_F(GroupValueToOkaValue, DateTimeIsReadFromTheBytes)
{
    // Friday 2024-03-15 13:45:30 with the weekday bits and flags set; both are ignored.
    ExpectDecodes(MakeGroupValue({0x7C, 0x03, 0x0F, 0xAD, 0x2D, 0x1E, 0x20, 0x00}, 64), Packed(19, 1),
                  TavTest::DateTimeValue(2024, 3, 15, 13, 45, 30));
    ExpectDecodes(MakeGroupValue({0x7C, 0x03, 0x0F, 0x0D, 0x2D, 0x1E, 0xFF, 0xFF}, 64), Packed(19, 1),
                  TavTest::DateTimeValue(2024, 3, 15, 13, 45, 30));
}

TEST_F(GroupValueToOkaValue, DateTimeOnASunday)
{
    const auto decoded = Okaro::GroupValueToOkaValue(
        MakeGroupValue({0x7C, 0x03, 0x11, 0xEA, 0x14, 0x1E, 0x20, 0x00}, 64), Packed(19, 1));
    ASSERT_TRUE(decoded.has_value());
    EXPECT_EQ(*decoded, TavTest::DateTimeValue(2024, 3, 17, 10, 20, 30));
    EXPECT_EQ(decoded->numeric.time.weekday, 0);
}

TEST_F(GroupValueToOkaValue, DateTimeUpTo2038Limit)
{
    ExpectDecodes(MakeGroupValue({0x8A, 0x01, 0x13, 0x43, 0x0E, 0x07, 0x20, 0x00}, 64), Packed(19, 1),
                  TavTest::DateTimeValue(2038, 1, 19, 3, 14, 7));
    ExpectDecodes(MakeGroupValue({0x8A, 0x01, 0x13, 0x43, 0x0E, 0x08, 0x20, 0x00}, 64), Packed(19, 1), OKAVALUE());
    ExpectDecodes(MakeGroupValue({0x8B, 0x01, 0x01, 0x00, 0x00, 0x00, 0x20, 0x00}, 64), Packed(19, 1), OKAVALUE());
}

TEST_F(GroupValueToOkaValue, DateTimeInYear2100IsPresentWithoutType)
{
    TavTest::LogCapture capture;
    const auto decoded = Okaro::GroupValueToOkaValue(
        MakeGroupValue({0xC8, 0x01, 0x01, 0x00, 0x00, 0x00, 0x20, 0x00}, 64), Packed(19, 1));
    ASSERT_TRUE(decoded.has_value());
    EXPECT_EQ(decoded->type, ivtEmpty);
    EXPECT_EQ(*decoded, OKAVALUE());
    EXPECT_THAT(Reported(capture), IsEmpty());
}

TEST_F(GroupValueToOkaValue, DateTimeEarliestYear)
{
    // Year byte 0 is 1900, before any 32-bit time_t: the fields are kept as they are.
    ExpectDecodes(MakeGroupValue({0x00, 0x01, 0x01, 0x00, 0x00, 0x00, 0x20, 0x00}, 64), Packed(19, 1),
                  TavTest::DateTimeValue(1900, 1, 1, 0, 0, 0));
}

TEST_F(GroupValueToOkaValue, DateTimeOf31AprilThrowsFromTheCalendar)
{
    TavTest::LogCapture capture;
    try
    {
        (void)Okaro::GroupValueToOkaValue(MakeGroupValue({0x7C, 0x04, 0x1F, 0x00, 0x00, 0x00, 0x20, 0x00}, 64),
                                          Packed(19, 1));
        ADD_FAILURE() << "31 April decoded";
    }
    catch (const boost::gregorian::bad_day_of_month& error)
    {
        EXPECT_EQ(std::string(error.what()), "Day of month is not valid for year");
    }
    EXPECT_THAT(Reported(capture), IsEmpty());
}

TEST_F(GroupValueToOkaValue, DateTimeWithMonthZeroIsRefusedByTheCheck)
{
    TavTest::LogCapture capture;
    EXPECT_FALSE(Okaro::GroupValueToOkaValue(MakeGroupValue({0x7C, 0x00, 0x01, 0x00, 0x00, 0x00, 0x20, 0x00}, 64),
                                             Packed(19, 1))
                     .has_value());
    const std::vector<TavTest::LogLine> lines = Reported(capture);
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back(),
              Error("GroupValueToOkaValue - Received invalid value 7c 00 01 00 00 00 20 00 for DPT 19.1"));
}

// ---- strings ---------------------------------------------------------------------------

TEST_F(GroupValueToOkaValue, StringIsLatin1TurnedIntoUtf8)
{
    ExpectDecodes(MakeGroupValue({0x47, 0x72, 0xFC, 0xDF, 0x65, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 112), Packed(16, 1),
                  TavTest::StringValue("Gr\xC3\xBC\xC3\x9F" "e"));
    ExpectDecodes(MakeGroupValue({0x61, 0x62, 0x63, 0x64, 0x65, 0x66, 0x67, 0x68, 0x69, 0x6A, 0x6B, 0x6C, 0x6D, 0x6E},
                                 112),
                  Packed(16, 0), TavTest::StringValue("abcdefghijklmn"));
}

TEST_F(GroupValueToOkaValue, AsciiStringKeepsCharactersTheCheckWouldDrop)
{
    // The check only reports the non-ASCII character; the decoded text keeps it.
    TavTest::LogCapture capture;
    const auto decoded = Okaro::GroupValueToOkaValue(
        MakeGroupValue({0x47, 0x72, 0xFC, 0x6E, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 112), Packed(16, 0));
    ASSERT_TRUE(decoded.has_value());
    EXPECT_EQ(TavTest::TextOf(*decoded), "Gr\xC3\xBCn");
    EXPECT_EQ(decoded->type, ivtString);
    EXPECT_THAT(Reported(capture),
                ElementsAre(Info("FromKnxValue - Invalid characters for DPT 16.0 has been replaced with _.")));
}

// ---- packed number ---------------------------------------------------------------------

TEST_F(GroupValueToOkaValue, OnlyTheLow32BitsOfThePackedNumberCount)
{
    if (sizeof(unsigned long) <= 4)
    {
        GTEST_SKIP() << "unsigned long has no bits above 32 here";
    }
    const unsigned long withHighBits =
        static_cast<unsigned long>(static_cast<unsigned long long>(1) << 40) | Packed(9, 1);
    TavTest::LogCapture capture;
    const auto decoded = Okaro::GroupValueToOkaValue(MakeGroupValue({0x0C, 0x1A}, 16), withHighBits);
    ASSERT_TRUE(decoded.has_value());
    EXPECT_EQ(*decoded, TavTest::FloatValue(21.0));
    EXPECT_THAT(capture.Lines(), Contains(Trace("CheckGroupValue - DPT is 9.1 with bit size 16")));
}

// ---- local time ------------------------------------------------------------------------

class GroupValueToOkaValueInLocalTime : public TavTest::TimeZoneFixture
{
protected:
    GroupValueToOkaValueInLocalTime() : TimeZoneFixture(TavTest::kCentralEuropeanZone) {}
};

TEST_F(GroupValueToOkaValueInLocalTime, FieldsAreReadAsLocalSummerTime)
{
    const auto decoded = Okaro::GroupValueToOkaValue(
        MakeGroupValue({0x7C, 0x07, 0x01, 0x0C, 0x00, 0x00, 0x20, 0x00}, 64), Packed(19, 1));
    ASSERT_TRUE(decoded.has_value());
    OKAVALUE expected = TavTest::DateTimeValue(2024, 7, 1, 12, 0, 0);
    expected.numeric.time.daylightSaving = true;
    EXPECT_EQ(*decoded, expected);
}

TEST_F(GroupValueToOkaValueInLocalTime, FieldsAreReadAsLocalWinterTime)
{
    const auto decoded = Okaro::GroupValueToOkaValue(
        MakeGroupValue({0x7C, 0x01, 0x0F, 0x0C, 0x00, 0x00, 0x20, 0x00}, 64), Packed(19, 1));
    ASSERT_TRUE(decoded.has_value());
    EXPECT_EQ(*decoded, TavTest::DateTimeValue(2024, 1, 15, 12, 0, 0));
}

TEST_F(GroupValueToOkaValueInLocalTime, HourSkippedBySpringChangeMovesAnHourOn)
{
    // 2024-03-31 02:30 does not exist in central Europe.
    const auto decoded = Okaro::GroupValueToOkaValue(
        MakeGroupValue({0x7C, 0x03, 0x1F, 0x02, 0x1E, 0x00, 0x20, 0x00}, 64), Packed(19, 1));
    ASSERT_TRUE(decoded.has_value());
    OKAVALUE expected = TavTest::DateTimeValue(2024, 3, 31, 3, 30, 0);
    expected.numeric.time.daylightSaving = true;
    EXPECT_EQ(*decoded, expected) << decoded->ToString();
}

TEST_F(GroupValueToOkaValueInLocalTime, DateIsMidnightLocalTime)
{
    const auto decoded = Okaro::GroupValueToOkaValue(MakeGroupValue({0x01, 0x07, 0x18}, 24), Packed(11, 1));
    ASSERT_TRUE(decoded.has_value());
    OKAVALUE expected = TavTest::DateValue(2024, 7, 1);
    expected.numeric.time.daylightSaving = true;
    EXPECT_EQ(*decoded, expected);
}

// ---- slow decodes ----------------------------------------------------------------------

// Makes the validity check slow by stalling on its trace line, which is written while the
// decode is being timed.
class StallingAppender : public log4cplus::Appender
{
public:
    StallingAppender() { setName(LOG4CPLUS_TEXT("TavTestStall")); }
    ~StallingAppender() override { destructorImpl(); }
    void close() override {}

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override
    {
        if (event.getMessage().rfind("CheckGroupValue - ", 0) == 0)
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(150));
        }
    }
};

TEST_F(GroupValueToOkaValue, FastDecodeReportsNoDuration)
{
    TavTest::LogCapture capture;
    ASSERT_TRUE(Okaro::GroupValueToOkaValue(MakeGroupValue({0x0C, 0x1A}, 16), Packed(9, 1)).has_value());
    EXPECT_THAT(Reported(capture), IsEmpty());
}

TEST_F(GroupValueToOkaValue, SlowDecodeReportsItsDurationAtInfo)
{
    TavTest::LogCapture capture;
    log4cplus::SharedAppenderPtr stall(new StallingAppender);
    log4cplus::Logger::getRoot().addAppender(stall);
    const auto decoded = Okaro::GroupValueToOkaValue(MakeGroupValue({0x0C, 0x1A}, 16), Packed(9, 1));
    log4cplus::Logger::getRoot().removeAppender(stall);

    ASSERT_TRUE(decoded.has_value());
    const std::vector<TavTest::LogLine> lines = Reported(capture);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].level, log4cplus::INFO_LOG_LEVEL);
    EXPECT_THAT(lines[0].message, ::testing::MatchesRegex("~MeasureDuration - Decoding a KNX value took "
                                                          "[0-9]+\\.[0-9]{6}s wall, .*CPU \\(.*%\\)"));
}

TEST_F(GroupValueToOkaValue, SlowDecodeEndingInACalendarErrorStillReportsItsDuration)
{
    TavTest::LogCapture capture;
    log4cplus::SharedAppenderPtr stall(new StallingAppender);
    log4cplus::Logger::getRoot().addAppender(stall);
    EXPECT_THROW((void)Okaro::GroupValueToOkaValue(MakeGroupValue({0x1F, 0x04, 0x18}, 24), Packed(11, 1)),
                 boost::gregorian::bad_day_of_month);
    log4cplus::Logger::getRoot().removeAppender(stall);

    const std::vector<TavTest::LogLine> lines = Reported(capture);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].level, log4cplus::INFO_LOG_LEVEL);
    EXPECT_EQ(lines[0].message.rfind("~MeasureDuration - Decoding a KNX value took ", 0), 0u);
}
} // namespace
