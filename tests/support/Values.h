#pragma once
// Builds values of the value model for tests: one builder per value type, and the time
// fields the converters and the codec read.
#include <platform/OkaTime.h>
#include <platform/OkaValue.h>

#include <cstdint>
#include <ostream>
#include <string>

// Readable failure messages for values.
inline void PrintTo(const OKAVALUE& value, std::ostream* out) { *out << value.ToString(); }

namespace TavTest
{
inline OKAVALUE BoolValue(bool boolean, OkaValueType type = ivtBool)
{
    OKAVALUE value(type);
    value.numeric.boolean = boolean;
    return value;
}

inline OKAVALUE ByteValue(std::uint8_t byte, OkaValueType type = ivtByte)
{
    OKAVALUE value(type);
    value.numeric.byte = byte;
    return value;
}

inline OKAVALUE WordValue(std::uint16_t word, OkaValueType type = ivtWord)
{
    OKAVALUE value(type);
    value.numeric.word = word;
    return value;
}

// A word value whose number is written through the double word, as the codec reads it, so
// that a payload wider than a word reaches its range check.
inline OKAVALUE WideWordValue(std::uint32_t number)
{
    OKAVALUE value(ivtWord);
    value.numeric.dword = number;
    return value;
}

inline OKAVALUE DWordValue(std::uint32_t dword, OkaValueType type = ivtDWord)
{
    OKAVALUE value(type);
    value.numeric.dword = dword;
    return value;
}

inline OKAVALUE IntegerValue(std::int32_t integer, OkaValueType type = ivtInteger)
{
    OKAVALUE value(type);
    value.numeric.integer = integer;
    return value;
}

inline OKAVALUE FloatValue(double real, OkaValueType type = ivtFloat,
                           OkaDP::OkaValueSubType subType = OkaDP::istGeneric)
{
    OKAVALUE value(type, subType);
    value.numeric.real = real;
    return value;
}

inline OKAVALUE StringValue(const std::string& text, OkaValueType type = ivtString)
{
    OKAVALUE value(type);
    value.text.assign(text.data(), text.size());
    return value;
}

// The text of a string value, embedded zero bytes included.
inline std::string TextOf(const OKAVALUE& value) { return std::string(value.text.c_str(), value.text.length()); }

// Time fields with every other field zero; weekday 7 is "no day".
inline OKATIME MakeTime(std::uint16_t year, std::uint8_t month, std::uint8_t day, std::uint8_t hour = 0,
                        std::uint8_t minute = 0, std::uint8_t second = 0, std::uint16_t weekday = 7)
{
    OKATIME time{};
    time.year = year;
    time.month = month;
    time.day = day;
    time.hour = hour;
    time.minute = minute;
    time.second = second;
    time.weekday = weekday;
    return time;
}

inline OKAVALUE TimeValue(const OKATIME& time, OkaValueType type)
{
    OKAVALUE value(type);
    value.numeric.time = time;
    return value;
}

// A time of day as the decoder writes it: date part 2000-01-01, kind 1.
inline OKAVALUE DayTimeValue(std::uint8_t hour, std::uint8_t minute, std::uint8_t second, std::uint16_t weekday)
{
    OKAVALUE value(ivtDayTime);
    OKATIME& time = value.numeric.time;
    time.year = 2000;
    time.month = 1;
    time.day = 1;
    time.hour = hour;
    time.minute = minute;
    time.second = second;
    time.weekday = weekday;
    time.kind = 1;
    return value;
}

inline OKAVALUE DateValue(std::uint16_t year, std::uint8_t month, std::uint8_t day)
{
    OKAVALUE value(ivtDate);
    value.numeric.time.Clear(true);
    value.numeric.time.SetDate(year, month, day, true);
    return value;
}

inline OKAVALUE DateTimeValue(std::uint16_t year, std::uint8_t month, std::uint8_t day, std::uint8_t hour,
                              std::uint8_t minute, std::uint8_t second, OkaValueType type = ivtDateTime)
{
    OKAVALUE value(type);
    value.numeric.time.Clear(true);
    value.numeric.time.SetDateTime(year, month, day, hour, minute, second, true);
    return value;
}
} // namespace TavTest
