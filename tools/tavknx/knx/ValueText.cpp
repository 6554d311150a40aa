#include "knx/ValueText.h"

#include <platform/OkaValueFamily.h>

#include <cmath>
#include <iomanip>
#include <sstream>

namespace TavKnx
{
namespace
{
std::string TwoDigits(unsigned number)
{
    std::ostringstream text;
    text << std::setw(2) << std::setfill('0') << number;
    return text.str();
}

std::string DateText(const OKATIME& time)
{
    std::ostringstream text;
    text << std::setw(4) << std::setfill('0') << time.year << "-" << TwoDigits(time.month) << "-"
         << TwoDigits(time.day);
    return text.str();
}

std::string ClockText(const OKATIME& time)
{
    return TwoDigits(time.hour) + ":" + TwoDigits(time.minute) + ":" + TwoDigits(time.second);
}

bool IsTimeOfDay(OkaValueType type)
{
    return type == ivtTime || type == ivtDayTime;
}

// JSON has no NaN or infinity: those become strings.
std::string JsonDouble(double value, bool floatType)
{
    const std::string text = FormatDouble(value);
    if (!std::isfinite(value))
    {
        return "\"" + text + "\"";
    }
    if (floatType && text.find_first_of(".e") == std::string::npos)
    {
        return text + ".0";
    }
    return text;
}
} // namespace

std::string ValueJson(const OKAVALUE& value)
{
    const OKATIME& time = value.numeric.time;
    switch (GetValueFamily(value.type))
    {
    case OkaValueFamily::Bool:
        return value.numeric.boolean ? "true" : "false";
    case OkaValueFamily::Float:
        return JsonDouble(value.numeric.real, true);
    case OkaValueFamily::Integer:
        return std::to_string(static_cast<std::int64_t>(value.numeric.integer));
    case OkaValueFamily::Byte:
        return std::to_string(static_cast<std::uint64_t>(value.numeric.byte));
    case OkaValueFamily::Word:
        return std::to_string(static_cast<std::uint64_t>(value.numeric.word));
    case OkaValueFamily::DWord:
        return std::to_string(static_cast<std::uint64_t>(value.numeric.dword));
    case OkaValueFamily::String:
        return JsonString(std::string(value.text.c_str(), value.text.length()));
    case OkaValueFamily::Time:
        if (value.type == ivtDate)
        {
            return JsonString(DateText(time));
        }
        if (IsTimeOfDay(value.type))
        {
            return JsonString(ClockText(time));
        }
        return JsonString(DateText(time) + "T" + ClockText(time));
    case OkaValueFamily::Empty:
    case OkaValueFamily::Raw:
        break;
    }
    return "null";
}

void AddValueFields(JsonObject& object, const OKAVALUE& value)
{
    object.Add("ivt", static_cast<std::int64_t>(value.type));
    object.Add("type", OKAVALUE::GetNameFromValueType(value.type));
    object.Add("subType", static_cast<std::int64_t>(value.subType));
    object.AddRaw("value", ValueJson(value));
    if (IsTimeOfDay(value.type))
    {
        object.Add("weekday", static_cast<std::uint64_t>(value.numeric.time.weekday));
    }
}

std::string ValueText(const OKAVALUE& value)
{
    const OKATIME& time = value.numeric.time;
    switch (GetValueFamily(value.type))
    {
    case OkaValueFamily::Bool:
        return value.numeric.boolean ? "true" : "false";
    case OkaValueFamily::Float:
        return FormatDouble(value.numeric.real);
    case OkaValueFamily::Integer:
        return std::to_string(value.numeric.integer);
    case OkaValueFamily::Byte:
        return std::to_string(value.numeric.byte);
    case OkaValueFamily::Word:
        return std::to_string(value.numeric.word);
    case OkaValueFamily::DWord:
        return std::to_string(value.numeric.dword);
    case OkaValueFamily::String:
        return JsonString(std::string(value.text.c_str(), value.text.length()));
    case OkaValueFamily::Time:
        if (value.type == ivtDate)
        {
            return DateText(time);
        }
        if (IsTimeOfDay(value.type))
        {
            return ClockText(time) + " " + WeekdayName(time.weekday) + " (value model weekday " +
                   std::to_string(time.weekday) + (time.weekday < 7 ? ", 0 = Sunday)" : ")");
        }
        return DateText(time) + "T" + ClockText(time);
    case OkaValueFamily::Empty:
    case OkaValueFamily::Raw:
        break;
    }
    return "(no value)";
}

std::string WeekdayName(unsigned weekday)
{
    static const char* const names[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    return weekday < 7 ? names[weekday] : "no day";
}

std::string DescribeValue(const OKAVALUE& value)
{
    std::ostringstream text;
    text << OKAVALUE::GetNameFromValueType(value.type) << " " << ValueText(value) << " [ivt "
         << static_cast<std::int64_t>(value.type) << ", sub-type " << static_cast<std::int64_t>(value.subType) << "]";
    return text.str();
}

std::vector<std::uint8_t> BytesOf(const KnxStack::GroupValue& value)
{
    const KnxStack::BinaryData& raw = value.GetRawData();
    return std::vector<std::uint8_t>(raw.GetData(), raw.GetData() + raw.GetSize());
}
} // namespace TavKnx
