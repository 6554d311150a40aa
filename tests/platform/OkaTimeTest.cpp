#include "support/ScopedTimeZone.h"

#include <platform/OkaTime.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <ostream>
#include <string>

namespace
{
OKATIME Cleared()
{
    OKATIME time;
    time.Clear(false);
    return time;
}
} // namespace

TEST(OkaTime, ClearZeroesEverythingButTheWeekday)
{
    OKATIME time;
    time.year = 2024;
    time.hundredths = 9;
    time.kind = 3;
    time.daylightSaving = true;
    time.Clear(true);
    EXPECT_EQ(time.year, 0);
    EXPECT_EQ(time.month, 0);
    EXPECT_EQ(time.day, 0);
    EXPECT_EQ(time.hour, 0);
    EXPECT_EQ(time.minute, 0);
    EXPECT_EQ(time.second, 0);
    EXPECT_EQ(time.hundredths, 0);
    EXPECT_EQ(time.weekday, 7);
    EXPECT_EQ(time.kind, 0);
    EXPECT_TRUE(time.localTime);
    EXPECT_FALSE(time.daylightSaving);
    time.Clear(false);
    EXPECT_FALSE(time.localTime);
}

TEST(OkaTime, ValidDateChecksMonthDayAndFebruaryOnly)
{
    EXPECT_TRUE(OKATIME::IsValidDate(2024, 1, 31));
    EXPECT_TRUE(OKATIME::IsValidDate(2024, 12, 1));
    EXPECT_FALSE(OKATIME::IsValidDate(2024, 0, 1));
    EXPECT_FALSE(OKATIME::IsValidDate(2024, 13, 1));
    EXPECT_FALSE(OKATIME::IsValidDate(2024, 5, 0));
    EXPECT_FALSE(OKATIME::IsValidDate(2024, 5, 32));
    // 30-day months are not checked.
    EXPECT_TRUE(OKATIME::IsValidDate(2024, 4, 31));
    EXPECT_TRUE(OKATIME::IsValidDate(2023, 11, 31));
    // February.
    EXPECT_TRUE(OKATIME::IsValidDate(2023, 2, 28));
    EXPECT_FALSE(OKATIME::IsValidDate(2023, 2, 29));
    EXPECT_TRUE(OKATIME::IsValidDate(2024, 2, 29));
    EXPECT_FALSE(OKATIME::IsValidDate(2024, 2, 30));
    EXPECT_FALSE(OKATIME::IsValidDate(2024, 2, 31));
    EXPECT_FALSE(OKATIME::IsValidDate(1900, 2, 29));
    EXPECT_TRUE(OKATIME::IsValidDate(2000, 2, 29));
    // No year limit.
    EXPECT_TRUE(OKATIME::IsValidDate(0, 1, 1));
    EXPECT_TRUE(OKATIME::IsValidDate(65535, 12, 31));
}

TEST(OkaTime, ValidTimeChecksHourMinuteSecond)
{
    EXPECT_TRUE(OKATIME::IsValidTime(0, 0, 0));
    EXPECT_TRUE(OKATIME::IsValidTime(23, 59, 59));
    EXPECT_FALSE(OKATIME::IsValidTime(24, 0, 0));
    EXPECT_FALSE(OKATIME::IsValidTime(25, 0, 0));
    EXPECT_FALSE(OKATIME::IsValidTime(0, 60, 0));
    EXPECT_FALSE(OKATIME::IsValidTime(0, 0, 60));
}

TEST(OkaTime, SetDateComputesTheWeekdayAndKeepsTheTime)
{
    OKATIME time = Cleared();
    time.hour = 12;
    time.hundredths = 34;
    time.kind = 1;
    time.SetDate(2024, 5, 1, true);
    EXPECT_EQ(time.year, 2024);
    EXPECT_EQ(time.month, 5);
    EXPECT_EQ(time.day, 1);
    EXPECT_EQ(time.weekday, 3); // Wednesday
    EXPECT_TRUE(time.localTime);
    EXPECT_EQ(time.hour, 12);
    EXPECT_EQ(time.hundredths, 34);
    EXPECT_EQ(time.kind, 1);
}

struct WeekdayCase
{
    std::uint16_t year;
    std::uint8_t month, day;
    std::uint16_t weekday;
};

void PrintTo(const WeekdayCase& c, std::ostream* out)
{
    *out << c.year << "-" << int{c.month} << "-" << int{c.day} << " weekday " << c.weekday;
}

std::string WeekdayCaseName(const ::testing::TestParamInfo<WeekdayCase>& info)
{
    const WeekdayCase& c = info.param;
    return "Year" + std::to_string(c.year) + "_" + std::to_string(c.month) + "_" + std::to_string(c.day);
}

class OkaTimeWeekday : public ::testing::TestWithParam<WeekdayCase>
{
};

TEST_P(OkaTimeWeekday, IsComputedFromTheDate)
{
    const WeekdayCase& c = GetParam();
    OKATIME time = Cleared();
    time.SetDate(c.year, c.month, c.day, false);
    EXPECT_EQ(time.weekday, c.weekday) << c.year << "-" << int{c.month} << "-" << int{c.day};
}

INSTANTIATE_TEST_SUITE_P(AcrossCenturies, OkaTimeWeekday,
                         ::testing::Values(WeekdayCase{1900, 1, 1, 1}, WeekdayCase{1970, 1, 1, 4},
                                           WeekdayCase{1990, 1, 1, 1}, WeekdayCase{2000, 1, 1, 6},
                                           WeekdayCase{2000, 2, 29, 2}, WeekdayCase{2000, 3, 1, 3},
                                           WeekdayCase{2024, 2, 29, 4}, WeekdayCase{2038, 1, 19, 2},
                                           WeekdayCase{1582, 10, 15, 5}, WeekdayCase{0, 1, 1, 6},
                                           WeekdayCase{0, 3, 1, 3}, WeekdayCase{1, 1, 1, 1},
                                           WeekdayCase{9999, 12, 31, 5}, WeekdayCase{1899, 12, 31, 0}),
                         WeekdayCaseName);

TEST(OkaTime, SetDateWithoutACalendarMonthHasNoWeekday)
{
    OKATIME time = Cleared();
    time.SetDate(2024, 13, 1, false);
    EXPECT_EQ(time.weekday, 7);
}

TEST(OkaTime, SetDateTimeSetsAllSixFields)
{
    OKATIME time = Cleared();
    time.SetDateTime(1990, 1, 1, 13, 14, 15, false);
    EXPECT_EQ(time.year, 1990);
    EXPECT_EQ(time.hour, 13);
    EXPECT_EQ(time.minute, 14);
    EXPECT_EQ(time.second, 15);
    EXPECT_EQ(time.weekday, 1);
    EXPECT_FALSE(time.localTime);
}

TEST(OkaTime, ConversionToTmComputesWeekdayAndDayOfYear)
{
    OKATIME time = Cleared();
    time.SetDateTime(2024, 3, 1, 8, 9, 10, true);
    time.weekday = 0; // a wrong stored weekday does not matter
    const std::tm fields = time;
    EXPECT_EQ(fields.tm_year, 124);
    EXPECT_EQ(fields.tm_mon, 2);
    EXPECT_EQ(fields.tm_mday, 1);
    EXPECT_EQ(fields.tm_hour, 8);
    EXPECT_EQ(fields.tm_min, 9);
    EXPECT_EQ(fields.tm_sec, 10);
    EXPECT_EQ(fields.tm_wday, 5);  // Friday
    EXPECT_EQ(fields.tm_yday, 60); // leap year
    EXPECT_EQ(fields.tm_isdst, -1);

    time.SetDate(1900, 1, 1, true);
    const std::tm early = time;
    EXPECT_EQ(early.tm_year, 0);
    EXPECT_EQ(early.tm_wday, 1);
    EXPECT_EQ(early.tm_yday, 0);

    time.SetDate(2023, 12, 31, true);
    const std::tm last = time;
    EXPECT_EQ(last.tm_yday, 364);
}

TEST(OkaTime, AssignTimeTBreaksDownInLocalTime)
{
    const TavTest::ScopedTimeZone zone("UTC");
    OKATIME time = Cleared();
    time.hundredths = 55;
    time.kind = 1;
    const std::time_t when = 1714563045; // 2024-05-01 11:30:45 UTC
    time = when;
    EXPECT_EQ(time.year, 2024);
    EXPECT_EQ(time.month, 5);
    EXPECT_EQ(time.day, 1);
    EXPECT_EQ(time.hour, 11);
    EXPECT_EQ(time.minute, 30);
    EXPECT_EQ(time.second, 45);
    EXPECT_EQ(time.hundredths, 0);
    EXPECT_EQ(time.weekday, 3);
    EXPECT_EQ(time.kind, 0);
    EXPECT_TRUE(time.localTime);
    EXPECT_FALSE(time.daylightSaving);
}

TEST(OkaTime, AssignTimeTNotesDaylightSaving)
{
    const TavTest::ScopedTimeZone zone(TavTest::kCentralEuropeanZone);
    OKATIME time = Cleared();
    time = std::time_t{1714563045}; // 13:30:45 summer time
    EXPECT_EQ(time.hour, 13);
    EXPECT_TRUE(time.daylightSaving);
    time = std::time_t{1704067200}; // 2024-01-01 01:00 winter time
    EXPECT_EQ(time.day, 1);
    EXPECT_EQ(time.hour, 1);
    EXPECT_FALSE(time.daylightSaving);
}

TEST(OkaTime, AssignTimeTIsTheInverseOfMktime)
{
    const TavTest::ScopedTimeZone zone(TavTest::kCentralEuropeanZone);
    OKATIME time = Cleared();
    time.SetDateTime(2024, 7, 14, 22, 5, 0, true);
    std::tm fields = time;
    const std::time_t when = std::mktime(&fields);
    OKATIME back = Cleared();
    back = when;
    EXPECT_EQ(back.year, 2024);
    EXPECT_EQ(back.month, 7);
    EXPECT_EQ(back.day, 14);
    EXPECT_EQ(back.hour, 22);
    EXPECT_EQ(back.minute, 5);
    EXPECT_EQ(back.weekday, 0);
}

TEST(OkaTime, EqualityComparesEveryField)
{
    OKATIME a = Cleared();
    a.SetDateTime(2024, 5, 1, 1, 2, 3, true);
    OKATIME b = a;
    EXPECT_EQ(a, b);
    b.daylightSaving = true;
    EXPECT_NE(a, b);
    b = a;
    b.kind = 1;
    EXPECT_NE(a, b);
    b = a;
    b.hundredths = 1;
    EXPECT_NE(a, b);
}
