#include <platform/OkaTime.h>

namespace
{
bool IsLeapYear(unsigned year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

bool IsCalendarMonth(unsigned month) { return month >= 1 && month <= 12; }

// Sakamoto's method on the proleptic Gregorian calendar. 400 years are added because the
// 400-year cycle is a whole number of weeks, which keeps year 0 (and its January and
// February, counted in year -1) free of negative division. 0 = Sunday.
int WeekdayOf(unsigned year, unsigned month, unsigned day)
{
    static const int monthOffset[12] = {0, 3, 2, 5, 0, 3, 5, 1, 4, 6, 2, 4};
    const long y = static_cast<long>(year) + 400 - (month < 3 ? 1 : 0);
    return static_cast<int>((y + y / 4 - y / 100 + y / 400 + monthOffset[month - 1] + static_cast<long>(day)) % 7);
}

int DayOfYear(unsigned year, unsigned month, unsigned day)
{
    static const int daysBefore[12] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
    const int leapDay = (month > 2 && IsLeapYear(year)) ? 1 : 0;
    return daysBefore[month - 1] + leapDay + static_cast<int>(day) - 1;
}

// A month outside 1..12 has no weekday: 7 (no day).
std::uint16_t OkaWeekdayOf(unsigned year, unsigned month, unsigned day)
{
    return IsCalendarMonth(month) ? static_cast<std::uint16_t>(WeekdayOf(year, month, day)) : 7;
}
} // namespace

void OKATIME::Clear(bool local)
{
    year = 0;
    month = 0;
    day = 0;
    hour = 0;
    minute = 0;
    second = 0;
    hundredths = 0;
    weekday = 7;
    kind = 0;
    localTime = local;
    daylightSaving = false;
}

bool OKATIME::IsValidDate(std::uint16_t year, std::uint8_t month, std::uint8_t day)
{
    if (!IsCalendarMonth(month) || day < 1 || day > 31)
    {
        return false;
    }
    if (month == 2)
    {
        return day <= (IsLeapYear(year) ? 29 : 28);
    }
    return true;
}

bool OKATIME::IsValidTime(std::uint8_t hour, std::uint8_t minute, std::uint8_t second)
{
    return hour <= 23 && minute <= 59 && second <= 59;
}

void OKATIME::SetDate(std::uint16_t newYear, std::uint8_t newMonth, std::uint8_t newDay, bool local)
{
    year = newYear;
    month = newMonth;
    day = newDay;
    weekday = OkaWeekdayOf(newYear, newMonth, newDay);
    localTime = local;
}

void OKATIME::SetDateTime(std::uint16_t newYear, std::uint8_t newMonth, std::uint8_t newDay, std::uint8_t newHour,
                          std::uint8_t newMinute, std::uint8_t newSecond, bool local)
{
    SetDate(newYear, newMonth, newDay, local);
    hour = newHour;
    minute = newMinute;
    second = newSecond;
}

OKATIME::operator std::tm() const
{
    std::tm result{};
    result.tm_year = static_cast<int>(year) - 1900;
    result.tm_mon = static_cast<int>(month) - 1;
    result.tm_mday = day;
    result.tm_hour = hour;
    result.tm_min = minute;
    result.tm_sec = second;
    if (IsCalendarMonth(month))
    {
        result.tm_wday = WeekdayOf(year, month, day);
        result.tm_yday = DayOfYear(year, month, day);
    }
    result.tm_isdst = -1;
    return result;
}

OKATIME& OKATIME::operator=(std::time_t when)
{
    std::tm fields{};
    if (localtime_r(&when, &fields) == nullptr)
    {
        // Only a year beyond int can fail here; there is no date to show.
        Clear(true);
        return *this;
    }
    year = static_cast<std::uint16_t>(fields.tm_year + 1900);
    month = static_cast<std::uint8_t>(fields.tm_mon + 1);
    day = static_cast<std::uint8_t>(fields.tm_mday);
    hour = static_cast<std::uint8_t>(fields.tm_hour);
    minute = static_cast<std::uint8_t>(fields.tm_min);
    second = static_cast<std::uint8_t>(fields.tm_sec);
    hundredths = 0;
    weekday = static_cast<std::uint16_t>(fields.tm_wday);
    kind = 0;
    localTime = true;
    daylightSaving = fields.tm_isdst > 0;
    return *this;
}

bool operator==(const OKATIME& a, const OKATIME& b)
{
    return a.year == b.year && a.month == b.month && a.day == b.day && a.hour == b.hour && a.minute == b.minute &&
           a.second == b.second && a.hundredths == b.hundredths && a.weekday == b.weekday && a.kind == b.kind &&
           a.localTime == b.localTime && a.daylightSaving == b.daylightSaving;
}
