#pragma once
// Helpers shared by the group value codec tests: building group values and values, reading
// bytes back, and a fixed local time zone.
#include <platform/GroupValue.h>
#include <platform/OkaValue.h>

#include <boost/optional.hpp>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <initializer_list>
#include <ostream>
#include <string>
#include <vector>

// Readable failure messages for values.
inline void PrintTo(const OKAVALUE& value, std::ostream* out) { *out << value.ToString(); }

namespace TavTest
{
// The decoded value, or a value of type 0 (which no decoder yields) when there is none.
inline OKAVALUE ValueOrInvalid(const boost::optional<OKAVALUE>& decoded)
{
    return decoded ? *decoded : OKAVALUE(static_cast<OkaValueType>(0));
}

inline unsigned long Packed(std::uint16_t main, std::uint16_t sub)
{
    return (static_cast<unsigned long>(main) << 16) | sub;
}

inline KnxStack::GroupValue MakeGroupValue(std::initializer_list<std::uint8_t> bytes, unsigned int bits)
{
    const std::vector<std::uint8_t> data(bytes);
    return KnxStack::GroupValue(KnxStack::BinaryData(data.data(), static_cast<unsigned int>(data.size())), bits);
}

inline std::vector<std::uint8_t> BytesOf(const KnxStack::GroupValue& value)
{
    const KnxStack::BinaryData& raw = value.GetRawData();
    return std::vector<std::uint8_t>(raw.GetData(), raw.GetData() + raw.GetSize());
}

inline OKAVALUE ByteValue(std::uint8_t byte)
{
    OKAVALUE value(ivtByte);
    value.numeric.byte = byte;
    return value;
}

inline OKAVALUE BoolValue(bool flag)
{
    OKAVALUE value(ivtBool);
    value.numeric.boolean = flag;
    return value;
}

inline OKAVALUE WordValue(std::uint32_t number)
{
    OKAVALUE value(ivtWord);
    value.numeric.dword = number;  // a wider payload than a word can hold reaches the range check
    return value;
}

inline OKAVALUE DWordValue(std::uint32_t number)
{
    OKAVALUE value(ivtDWord);
    value.numeric.dword = number;
    return value;
}

inline OKAVALUE IntegerValue(std::int32_t number)
{
    OKAVALUE value(ivtInteger);
    value.numeric.integer = number;
    return value;
}

inline OKAVALUE FloatValue(double number)
{
    OKAVALUE value(ivtFloat);
    value.numeric.real = number;
    return value;
}

inline OKAVALUE StringValue(const std::string& bytes)
{
    OKAVALUE value(ivtString);
    value.text.assign(bytes.data(), bytes.size());
    return value;
}

inline std::string TextOf(const OKAVALUE& value) { return std::string(value.text.c_str(), value.text.length()); }

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
                              std::uint8_t minute, std::uint8_t second)
{
    OKAVALUE value(ivtDateTime);
    value.numeric.time.Clear(true);
    value.numeric.time.SetDateTime(year, month, day, hour, minute, second, true);
    return value;
}

// Runs every test in a fixed local time zone, since dates are read back through mktime.
class FixedTimeZoneTest : public ::testing::Test
{
public:
    static void UseZone(const char* zone)
    {
        setenv("TZ", zone, 1);
        tzset();
    }

protected:
    explicit FixedTimeZoneTest(const char* zone = "UTC0") : zone_(zone) {}

    void SetUp() override
    {
        const char* previous = std::getenv("TZ");
        hadZone_ = previous != nullptr;
        if (hadZone_)
        {
            previousZone_ = previous;
        }
        UseZone(zone_.c_str());
    }

    void TearDown() override
    {
        if (hadZone_)
        {
            setenv("TZ", previousZone_.c_str(), 1);
        }
        else
        {
            unsetenv("TZ");
        }
        tzset();
    }

private:
    std::string zone_;
    bool hadZone_ = false;
    std::string previousZone_;
};

// Central European time with daylight saving from the last Sunday of March to the last
// Sunday of October.
constexpr const char* kCentralEuropeanZone = "CET-1CEST,M3.5.0,M10.5.0/3";
} // namespace TavTest
