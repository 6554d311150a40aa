#pragma once
// Calendar date and time of day as the value model holds it inside OKAVALUE.
#include <cstdint>
#include <ctime>

struct OKATIME
{
    std::uint16_t year;
    std::uint8_t month;     // 1..12
    std::uint8_t day;       // 1..31
    std::uint8_t hour;
    std::uint8_t minute;
    std::uint8_t second;
    std::uint8_t hundredths; // hundredths of a second
    std::uint16_t weekday;  // 0 = Sunday .. 6 = Saturday, 7 = no day
    std::uint16_t kind;     // 1 = a time of day whose date part is only a placeholder, else 0
    bool localTime;         // the fields are local time (not UTC)
    bool daylightSaving;    // daylight saving time was in effect

    // All fields 0, weekday 7 (no day), localTime as given.
    void Clear(bool local);

    // Month 1..12, day 1..31, February at most 28 (29 in a leap year); the 30-day
    // months are not checked and the year has no limit.
    static bool IsValidDate(std::uint16_t year, std::uint8_t month, std::uint8_t day);
    // Hour 0..23, minute and second 0..59.
    static bool IsValidTime(std::uint8_t hour, std::uint8_t minute, std::uint8_t second);

    // Sets the date (and the weekday computed from it) and the local-time flag.
    void SetDate(std::uint16_t year, std::uint8_t month, std::uint8_t day, bool local);
    void SetDateTime(std::uint16_t year, std::uint8_t month, std::uint8_t day, std::uint8_t hour,
                     std::uint8_t minute, std::uint8_t second, bool local);

    // Broken-down time; tm_wday is computed from the date, tm_isdst is -1.
    operator std::tm() const;

    // Breaks a point in time down in local time (the inverse of reading the fields
    // with mktime); hundredths 0, kind 0, localTime true.
    OKATIME& operator=(std::time_t when);
};

bool operator==(const OKATIME& a, const OKATIME& b);
inline bool operator!=(const OKATIME& a, const OKATIME& b) { return !(a == b); }
