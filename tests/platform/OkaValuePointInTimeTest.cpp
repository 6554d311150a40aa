#include "support/LogCapture.h"
#include "support/ScopedTimeZone.h"

#include <platform/detail/LocalTimeFields.h>
#include <platform/OkaValue.h>

#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <boost/date_time/posix_time/posix_time_types.hpp>

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <stdexcept>
#include <string>

using boost::gregorian::date;
using boost::posix_time::ptime;
using boost::posix_time::time_duration;

namespace
{
class OkaValuePointInTime : public TavTest::TimeZoneFixture
{
protected:
    OkaValuePointInTime() : TimeZoneFixture("UTC") {}

    static void ExpectFields(const OKATIME& time, int year, int month, int day, int hour, int minute, int second,
                             int weekday)
    {
        EXPECT_EQ(time.year, year);
        EXPECT_EQ(time.month, month);
        EXPECT_EQ(time.day, day);
        EXPECT_EQ(time.hour, hour);
        EXPECT_EQ(time.minute, minute);
        EXPECT_EQ(time.second, second);
        EXPECT_EQ(time.weekday, weekday);
        EXPECT_EQ(time.hundredths, 0);
        EXPECT_EQ(time.kind, 0);
        EXPECT_TRUE(time.localTime);
    }
};

std::string ThrownText(const ptime& when)
{
    try
    {
        OKAVALUE::FromPointInTime(ivtDateTime, when);
    }
    catch (const std::out_of_range& error)
    {
        return error.what();
    }
    return "nothing thrown";
}

std::time_t NeverRepresentable(std::tm*) { return -1; }
} // namespace

TEST_F(OkaValuePointInTime, DateBecomesTheGivenTypeInLocalTime)
{
    TavTest::LogCapture capture;
    const OKAVALUE value = OKAVALUE::FromPointInTime(ivtDate, ptime(date(1990, 1, 1)));
    EXPECT_EQ(value.type, ivtDate);
    EXPECT_EQ(value.subType, OkaDP::istGeneric);
    EXPECT_EQ(value.text.length(), 0u);
    ExpectFields(value.numeric.time, 1990, 1, 1, 0, 0, 0, 1);
    EXPECT_FALSE(value.numeric.time.daylightSaving);
    EXPECT_TRUE(capture.Lines().empty());
}

TEST_F(OkaValuePointInTime, Year1900)
{
    const OKAVALUE value = OKAVALUE::FromPointInTime(ivtDateTime, ptime(date(1900, 1, 1)));
    EXPECT_EQ(value.type, ivtDateTime);
    ExpectFields(value.numeric.time, 1900, 1, 1, 0, 0, 0, 1);
}

TEST_F(OkaValuePointInTime, FieldsAreReadAsLocalTimeInAnotherZone)
{
    UseZone(TavTest::kCentralEuropeanZone);
    const OKAVALUE winter = OKAVALUE::FromPointInTime(ivtDate, ptime(date(1990, 1, 1)));
    ExpectFields(winter.numeric.time, 1990, 1, 1, 0, 0, 0, 1);
    EXPECT_FALSE(winter.numeric.time.daylightSaving);

    const OKAVALUE summer =
        OKAVALUE::FromPointInTime(ivtDateTime, ptime(date(2024, 7, 1), time_duration(12, 30, 15)));
    ExpectFields(summer.numeric.time, 2024, 7, 1, 12, 30, 15, 1);
    EXPECT_TRUE(summer.numeric.time.daylightSaving);

    const OKAVALUE early = OKAVALUE::FromPointInTime(ivtDateTime, ptime(date(1900, 1, 1)));
    ExpectFields(early.numeric.time, 1900, 1, 1, 0, 0, 0, 1);
}

TEST_F(OkaValuePointInTime, FractionsOfASecondAreDropped)
{
    const OKAVALUE value = OKAVALUE::FromPointInTime(
        ivtTime, ptime(date(2024, 5, 1), time_duration(1, 2, 3) + boost::posix_time::milliseconds(990)));
    ExpectFields(value.numeric.time, 2024, 5, 1, 1, 2, 3, 3);
}

TEST_F(OkaValuePointInTime, LastSecondOfA32BitTimeIsKept)
{
    for (const char* zone : {"UTC", TavTest::kCentralEuropeanZone})
    {
        UseZone(zone);
        const OKAVALUE value =
            OKAVALUE::FromPointInTime(ivtDateTime, ptime(date(2038, 1, 19), time_duration(3, 14, 7)));
        EXPECT_EQ(value.type, ivtDateTime) << zone;
        ExpectFields(value.numeric.time, 2038, 1, 19, 3, 14, 7, 2);
    }
}

TEST_F(OkaValuePointInTime, LaterPointsGiveTheDefaultValue)
{
    for (const char* zone : {"UTC", TavTest::kCentralEuropeanZone})
    {
        UseZone(zone);
        const OKAVALUE next = OKAVALUE::FromPointInTime(ivtDateTime, ptime(date(2038, 1, 19), time_duration(3, 14, 8)));
        EXPECT_EQ(next.type, ivtEmpty);
        EXPECT_EQ(next, OKAVALUE());
        const OKAVALUE far = OKAVALUE::FromPointInTime(ivtDate, ptime(date(2100, 1, 1)));
        EXPECT_EQ(far, OKAVALUE());
    }
}

TEST_F(OkaValuePointInTime, SpecialPointsThrow)
{
    EXPECT_THROW(OKAVALUE::FromPointInTime(ivtDate, ptime(boost::posix_time::not_a_date_time)), std::out_of_range);
    EXPECT_EQ(ThrownText(ptime(boost::posix_time::not_a_date_time)), "tm unable to handle not-a-date-time value");
    EXPECT_EQ(ThrownText(ptime(boost::posix_time::pos_infin)), "tm unable to handle +infinity date value");
    EXPECT_EQ(ThrownText(ptime(boost::posix_time::neg_infin)), "tm unable to handle -infinity date value");
}

TEST_F(OkaValuePointInTime, TheSecondBeforeTheEpochIsATrueMinusOne)
{
    const OKAVALUE value =
        OKAVALUE::FromPointInTime(ivtDateTime, ptime(date(1969, 12, 31), time_duration(23, 59, 59)));
    EXPECT_EQ(value.type, ivtDateTime);
    ExpectFields(value.numeric.time, 1969, 12, 31, 23, 59, 59, 3);
}

TEST_F(OkaValuePointInTime, FieldsMktimeCannotRepresentAreTakenAsTheyAre)
{
    UseZone(TavTest::kCentralEuropeanZone);
    std::tm fields{};
    fields.tm_year = 1; // 1901-12-13 20:45:51, just before a 32-bit time_t begins
    fields.tm_mon = 11;
    fields.tm_mday = 13;
    fields.tm_hour = 20;
    fields.tm_min = 45;
    fields.tm_sec = 51;
    fields.tm_isdst = -1;
    const OKATIME time = LocalTimeFromFields(fields, &NeverRepresentable);
    ExpectFields(time, 1901, 12, 13, 20, 45, 51, 5);
    EXPECT_FALSE(time.daylightSaving);

    fields.tm_year = 0;
    fields.tm_mon = 0;
    fields.tm_mday = 1;
    fields.tm_hour = 0;
    fields.tm_min = 0;
    fields.tm_sec = 0;
    EXPECT_EQ(LocalTimeFromFields(fields, &NeverRepresentable), LocalTimeFromFields(fields));
}

TEST_F(OkaValuePointInTime, MinusOneForTheSecondBeforeTheEpochIsAValidTime)
{
    // In this zone -1 is 1970-01-01 00:59:59: the value is taken from time_t -1, not from the fields.
    UseZone(TavTest::kCentralEuropeanZone);
    std::tm fields{};
    fields.tm_year = 69;
    fields.tm_mon = 11;
    fields.tm_mday = 31;
    fields.tm_hour = 23;
    fields.tm_min = 59;
    fields.tm_sec = 59;
    fields.tm_isdst = -1;
    const OKATIME time = LocalTimeFromFields(fields, &NeverRepresentable);
    ExpectFields(time, 1970, 1, 1, 0, 59, 59, 4);
}
