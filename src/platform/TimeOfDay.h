#pragma once
// A time of day with an optional weekday, in the KNX numbering of days.
#include <platform/DayOfWeek.h>
#include <platform/OkaTime.h>

#include <boost/optional.hpp>

#include <cstdint>

namespace TavApp
{
using DayOfWeek = KnxStack::DayOfWeek;

class TimeOfDay
{
public:
    // Hour 0..23, minute and second 0..59, day 0..7; anything else yields nothing.
    static boost::optional<TimeOfDay> Create(int hour, int minute, int second, DayOfWeek day);
    // From the hour, minute, second and weekday of an OKATIME; nothing for a weekday
    // above 7 or an invalid time.
    static boost::optional<TimeOfDay> FromOkaTime(const OKATIME& time);

    int GetHour() const { return hour_; }
    int GetMinute() const { return minute_; }
    int GetSecond() const { return second_; }
    DayOfWeek GetWeekday() const { return day_; }
    // OKATIME weekday: Monday..Saturday 1..6, Sunday 0, no day 7.
    std::uint16_t ToOkaWeekday() const;

private:
    TimeOfDay(int hour, int minute, int second, DayOfWeek day)
        : hour_(hour), minute_(minute), second_(second), day_(day)
    {
    }

    int hour_;
    int minute_;
    int second_;
    DayOfWeek day_;
};
} // namespace TavApp
