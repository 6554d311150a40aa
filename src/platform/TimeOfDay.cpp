#include <platform/TimeOfDay.h>

namespace TavApp
{
boost::optional<TimeOfDay> TimeOfDay::Create(int hour, int minute, int second, DayOfWeek day)
{
    const int dayNumber = static_cast<int>(day);
    if (hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 59 || dayNumber > 7)
    {
        return boost::none;
    }
    return TimeOfDay(hour, minute, second, day);
}

boost::optional<TimeOfDay> TimeOfDay::FromOkaTime(const OKATIME& time)
{
    if (!OKATIME::IsValidTime(time.hour, time.minute, time.second) || time.weekday > 7)
    {
        return boost::none;
    }
    DayOfWeek day = static_cast<DayOfWeek>(time.weekday); // Monday..Saturday share their numbers
    if (time.weekday == 0)
    {
        day = DayOfWeek::Sunday;
    }
    else if (time.weekday == 7)
    {
        day = DayOfWeek::NoDay;
    }
    return TimeOfDay(time.hour, time.minute, time.second, day);
}

std::uint16_t TimeOfDay::ToOkaWeekday() const
{
    switch (day_)
    {
    case DayOfWeek::NoDay:
        return 7;
    case DayOfWeek::Sunday:
        return 0;
    default:
        return static_cast<std::uint16_t>(day_);
    }
}
} // namespace TavApp
