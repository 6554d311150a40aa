#include <platform/TimeOfDay.h>

#include <gtest/gtest.h>

using TavApp::DayOfWeek;
using TavApp::TimeOfDay;

namespace
{
OKATIME TimeWithWeekday(int hour, int minute, int second, std::uint16_t weekday)
{
    OKATIME time;
    time.Clear(true);
    time.hour = static_cast<std::uint8_t>(hour);
    time.minute = static_cast<std::uint8_t>(minute);
    time.second = static_cast<std::uint8_t>(second);
    time.weekday = weekday;
    return time;
}
} // namespace

TEST(TimeOfDay, CreateAcceptsTheWholeRange)
{
    const auto first = TimeOfDay::Create(0, 0, 0, DayOfWeek::NoDay);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->GetHour(), 0);
    EXPECT_EQ(first->GetWeekday(), DayOfWeek::NoDay);
    const auto last = TimeOfDay::Create(23, 59, 59, DayOfWeek::Sunday);
    ASSERT_TRUE(last);
    EXPECT_EQ(last->GetHour(), 23);
    EXPECT_EQ(last->GetMinute(), 59);
    EXPECT_EQ(last->GetSecond(), 59);
    EXPECT_EQ(last->GetWeekday(), DayOfWeek::Sunday);
}

TEST(TimeOfDay, CreateRefusesValuesOutOfRange)
{
    EXPECT_FALSE(TimeOfDay::Create(24, 0, 0, DayOfWeek::Monday));
    EXPECT_FALSE(TimeOfDay::Create(25, 0, 0, DayOfWeek::Monday));
    EXPECT_FALSE(TimeOfDay::Create(-1, 0, 0, DayOfWeek::Monday));
    EXPECT_FALSE(TimeOfDay::Create(0, 60, 0, DayOfWeek::Monday));
    EXPECT_FALSE(TimeOfDay::Create(0, -1, 0, DayOfWeek::Monday));
    EXPECT_FALSE(TimeOfDay::Create(0, 0, 60, DayOfWeek::Monday));
    EXPECT_FALSE(TimeOfDay::Create(0, 0, -1, DayOfWeek::Monday));
    EXPECT_FALSE(TimeOfDay::Create(0, 0, 0, static_cast<DayOfWeek>(8)));
}

TEST(TimeOfDay, OkaWeekdayOfEveryDay)
{
    EXPECT_EQ(TimeOfDay::Create(1, 2, 3, DayOfWeek::NoDay)->ToOkaWeekday(), 7);
    EXPECT_EQ(TimeOfDay::Create(1, 2, 3, DayOfWeek::Monday)->ToOkaWeekday(), 1);
    EXPECT_EQ(TimeOfDay::Create(1, 2, 3, DayOfWeek::Tuesday)->ToOkaWeekday(), 2);
    EXPECT_EQ(TimeOfDay::Create(1, 2, 3, DayOfWeek::Wednesday)->ToOkaWeekday(), 3);
    EXPECT_EQ(TimeOfDay::Create(1, 2, 3, DayOfWeek::Thursday)->ToOkaWeekday(), 4);
    EXPECT_EQ(TimeOfDay::Create(1, 2, 3, DayOfWeek::Friday)->ToOkaWeekday(), 5);
    EXPECT_EQ(TimeOfDay::Create(1, 2, 3, DayOfWeek::Saturday)->ToOkaWeekday(), 6);
    EXPECT_EQ(TimeOfDay::Create(1, 2, 3, DayOfWeek::Sunday)->ToOkaWeekday(), 0);
}

TEST(TimeOfDay, FromOkaTimeIsTheInverseOfToOkaWeekday)
{
    for (int day = 0; day <= 7; ++day)
    {
        const auto original = TimeOfDay::Create(12, 34, 56, static_cast<DayOfWeek>(day));
        ASSERT_TRUE(original);
        const auto back = TimeOfDay::FromOkaTime(TimeWithWeekday(12, 34, 56, original->ToOkaWeekday()));
        ASSERT_TRUE(back) << day;
        EXPECT_EQ(back->GetWeekday(), static_cast<DayOfWeek>(day));
        EXPECT_EQ(back->GetHour(), 12);
        EXPECT_EQ(back->GetMinute(), 34);
        EXPECT_EQ(back->GetSecond(), 56);
    }
}

TEST(TimeOfDay, FromOkaTimeMapsSundayAndNoDay)
{
    EXPECT_EQ(TimeOfDay::FromOkaTime(TimeWithWeekday(0, 0, 0, 0))->GetWeekday(), DayOfWeek::Sunday);
    EXPECT_EQ(TimeOfDay::FromOkaTime(TimeWithWeekday(0, 0, 0, 7))->GetWeekday(), DayOfWeek::NoDay);
    EXPECT_EQ(TimeOfDay::FromOkaTime(TimeWithWeekday(0, 0, 0, 6))->GetWeekday(), DayOfWeek::Saturday);
}

TEST(TimeOfDay, FromOkaTimeRefusesAWeekdayAboveSevenOrAnInvalidTime)
{
    EXPECT_FALSE(TimeOfDay::FromOkaTime(TimeWithWeekday(0, 0, 0, 8)));
    EXPECT_FALSE(TimeOfDay::FromOkaTime(TimeWithWeekday(0, 0, 0, 0xFFFF)));
    EXPECT_FALSE(TimeOfDay::FromOkaTime(TimeWithWeekday(24, 0, 0, 1)));
    EXPECT_FALSE(TimeOfDay::FromOkaTime(TimeWithWeekday(0, 60, 0, 1)));
    EXPECT_FALSE(TimeOfDay::FromOkaTime(TimeWithWeekday(0, 0, 60, 1)));
}
