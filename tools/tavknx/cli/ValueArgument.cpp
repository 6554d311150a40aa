#include "cli/ValueArgument.h"

#include "cli/CommandLine.h"
#include "knx/DptText.h"
#include "knx/NumberText.h"

#include <TavObjectModel/KnxLdsMapping.h>

#include <platform/OkaValueFamily.h>

#include <boost/algorithm/string/case_conv.hpp>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

namespace TavKnx
{
namespace
{
const char* const kTypeList =
    "bool, byte, word, dword, integer, float, string, date, time, daytime, datetime, empty, invalid or a type code";

std::string Shown(const std::string& text)
{
    return "'" + (text.size() > 40 ? text.substr(0, 40) + "..." : text) + "'";
}

double ParseFloat(const std::string& text)
{
    const std::string lower = boost::algorithm::to_lower_copy(text);
    if (lower == "nan")
    {
        return std::numeric_limits<double>::quiet_NaN();
    }
    if (lower == "inf")
    {
        return std::numeric_limits<double>::infinity();
    }
    if (lower == "-inf")
    {
        return -std::numeric_limits<double>::infinity();
    }
    // from_chars also reads "infinity" and hex floats; only plain decimals are asked for.
    const bool plain = !text.empty() && text.find_first_not_of("0123456789.-eE+") == std::string::npos;
    double value = 0.0;
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value, std::chars_format::general);
    if (!plain || result.ptr != end || result.ec != std::errc() || !std::isfinite(value))
    {
        throw UsageError("VALUE float: expected a decimal number, nan, inf or -inf, got " + Shown(text));
    }
    return value;
}

bool ParseBool(const std::string& text)
{
    const std::string lower = boost::algorithm::to_lower_copy(text);
    if (lower == "true" || lower == "1" || lower == "on")
    {
        return true;
    }
    if (lower == "false" || lower == "0" || lower == "off")
    {
        return false;
    }
    throw UsageError("VALUE bool: expected true, false, on, off, 1 or 0, got " + Shown(text));
}

// Two decimal digits; the library decides whether the number makes sense.
std::uint8_t TwoDigits(const std::string& text, std::size_t at)
{
    return static_cast<std::uint8_t>((text[at] - '0') * 10 + (text[at + 1] - '0'));
}

bool Matches(const std::string& text, const char* pattern)
{
    // Pattern: 'd' a digit, anything else itself.
    std::size_t i = 0;
    for (; pattern[i] != '\0'; ++i)
    {
        if (i >= text.size())
        {
            return false;
        }
        if (pattern[i] == 'd' ? (text[i] < '0' || text[i] > '9') : text[i] != pattern[i])
        {
            return false;
        }
    }
    return i == text.size();
}

void SetDate(OKATIME& time, const std::string& text)
{
    const auto year = static_cast<std::uint16_t>(std::stoi(text.substr(0, 4)));
    time.SetDate(year, TwoDigits(text, 5), TwoDigits(text, 8), true);
}

void SetClock(OKATIME& time, const std::string& text, std::size_t at)
{
    time.hour = TwoDigits(text, at);
    time.minute = TwoDigits(text, at + 3);
    time.second = TwoDigits(text, at + 6);
}

OKAVALUE ParseDate(const std::string& text)
{
    if (!Matches(text, "dddd-dd-dd"))
    {
        throw UsageError("VALUE date: expected YYYY-MM-DD, got " + Shown(text));
    }
    OKAVALUE value(ivtDate);
    SetDate(value.numeric.time, text);
    return value;
}

OKAVALUE ParseDateTime(const std::string& text)
{
    if (!Matches(text, "dddd-dd-ddTdd:dd:dd"))
    {
        throw UsageError("VALUE datetime: expected YYYY-MM-DDTHH:MM:SS, got " + Shown(text));
    }
    OKAVALUE value(ivtDateTime);
    SetDate(value.numeric.time, text);
    SetClock(value.numeric.time, text, 11);
    return value;
}

// The weekday after '/': a name (Mon ... Sun) or the value model's number 0-6 (0 = Sunday).
std::uint16_t ParseWeekday(const char* typeName, const std::string& text, const std::string& weekdayText)
{
    static const char* const names[] = {"sun", "mon", "tue", "wed", "thu", "fri", "sat"};
    const std::string lower = boost::algorithm::to_lower_copy(weekdayText);
    for (std::uint16_t day = 0; day < 7; ++day)
    {
        if (lower == names[day] || lower == std::to_string(day))
        {
            return day;
        }
    }
    throw UsageError(std::string("VALUE ") + typeName +
                     ": the weekday after '/' must be Mon, Tue, Wed, Thu, Fri, Sat, Sun or the value model's "
                     "number 0-6 (0 = Sunday, 1 = Monday), got " +
                     Shown(text));
}

// A time of day as the decoder builds it: placeholder date 2000-01-01, weekday 0..6 or 7.
OKAVALUE ParseTime(OkaValueType type, const char* typeName, const std::string& text)
{
    const bool withWeekday = text.size() > 9 && Matches(text.substr(0, 9), "dd:dd:dd/");
    if (!withWeekday && !Matches(text, "dd:dd:dd"))
    {
        throw UsageError(std::string("VALUE ") + typeName +
                         ": expected HH:MM:SS or HH:MM:SS/DAY (DAY Mon ... Sun, or 0-6 with 0 = Sunday), got " +
                         Shown(text));
    }
    const std::uint16_t weekday = withWeekday ? ParseWeekday(typeName, text, text.substr(9)) : 7;
    OKAVALUE value(type);
    OKATIME& time = value.numeric.time;
    time.year = 2000;
    time.month = 1;
    time.day = 1;
    SetClock(time, text, 0);
    time.weekday = weekday;
    time.kind = 1;
    return value;
}

// "CODE:decimal": the decimal goes into the member the type code uses.
OKAVALUE ParseCodedValue(const std::string& codeText, const std::string& text)
{
    const auto code = static_cast<std::int32_t>(ParseSigned(codeText, 0, 2147483647, "VALUE type code"));
    OKAVALUE value(static_cast<OkaValueType>(code));
    const std::string what = "VALUE payload of type code " + codeText;
    switch (GetValueFamily(value.type))
    {
    case OkaValueFamily::Float:
        value.numeric.real = ParseFloat(text);
        break;
    case OkaValueFamily::Bool:
        value.numeric.boolean = ParseBool(text);
        break;
    case OkaValueFamily::Byte:
        value.numeric.byte = static_cast<std::uint8_t>(ParseUnsigned(text, 255, what.c_str()));
        break;
    case OkaValueFamily::Word:
        value.numeric.word = static_cast<std::uint16_t>(ParseUnsigned(text, 65535, what.c_str()));
        break;
    case OkaValueFamily::DWord:
    case OkaValueFamily::Raw:
        value.numeric.dword = static_cast<std::uint32_t>(ParseUnsigned(text, 4294967295u, what.c_str()));
        break;
    case OkaValueFamily::Integer:
        value.numeric.integer = static_cast<std::int32_t>(ParseSigned(text, -2147483648LL, 2147483647LL, what.c_str()));
        break;
    case OkaValueFamily::Empty:
        if (!text.empty())
        {
            throw UsageError(what + ": an empty value takes no payload, got " + Shown(text));
        }
        break;
    case OkaValueFamily::String:
    case OkaValueFamily::Time:
        throw UsageError("VALUE type code " + codeText + ": takes no decimal payload; use the type names string, date, "
                                                        "time, daytime or datetime");
    }
    return value;
}

const char* BareTypeName(OkaValueType type)
{
    switch (type)
    {
    case ivtBool:
        return "bool";
    case ivtByte:
        return "byte";
    case ivtWord:
        return "word";
    case ivtDWord:
        return "dword";
    case ivtInteger:
        return "integer";
    case ivtFloat:
        return "float";
    case ivtString:
        return "string";
    case ivtDate:
        return "date";
    case ivtTime:
        return "time";
    case ivtDayTime:
        return "daytime";
    case ivtDateTime:
        return "datetime";
    default:
        return nullptr;
    }
}

bool IsTypeName(const std::string& lower)
{
    static const char* const names[] = {"bool",   "byte", "word", "dword",   "integer",  "float", "string",
                                        "date",   "time", "daytime", "datetime", "empty", "invalid"};
    for (const char* name : names)
    {
        if (lower == name)
        {
            return true;
        }
    }
    return false;
}
} // namespace

OKAVALUE ParseValue(const std::string& argument, const KNXDPT& dpt)
{
    const OkaValueType type = Okaro::KnxLdsMapping::GetIvtFromDpt(PackDpt(dpt));
    const std::string prefix = boost::algorithm::to_lower_copy(argument.substr(0, argument.find(':')));
    const bool bareTime =
        (type == ivtTime || type == ivtDayTime || type == ivtDateTime) &&
        (Matches(argument.substr(0, 8), "dd:dd:dd") || Matches(argument.substr(0, 19), "dddd-dd-ddTdd:dd:dd"));
    // A type code before ':' ("1039:21.5"), except in a text, where "12:30" is the text.
    const bool coded = argument.find(':') != std::string::npos && type != ivtString &&
                       prefix.find_first_not_of("0123456789") == std::string::npos;
    const bool typed = !bareTime && (IsTypeName(prefix) || coded);
    // A word before ':' that is no type name is a typo of one, except in a text.
    const bool misspelt = argument.find(':') != std::string::npos && !prefix.empty() && type != ivtString &&
                          prefix.find_first_not_of("abcdefghijklmnopqrstuvwxyz") == std::string::npos;
    if (typed || misspelt)
    {
        return ParseValue(argument);
    }
    const char* name = BareTypeName(type);
    if (name == nullptr)
    {
        throw UsageError("VALUE: DPT " + FormatKnxDpt(dpt) + " has no value type to read " + Shown(argument) +
                         " as; give TYPE:TEXT (for example float:21.5)");
    }
    return ParseValue(std::string(name) + ":" + argument);
}

OKAVALUE ParseValue(const std::string& argument)
{
    const std::string::size_type colon = argument.find(':');
    const std::string type = boost::algorithm::to_lower_copy(argument.substr(0, colon));
    const std::string text = colon == std::string::npos ? std::string() : argument.substr(colon + 1);
    if (colon == std::string::npos && type != "empty" && type != "invalid")
    {
        throw UsageError("VALUE: expected TYPE:TEXT (for example float:21.5), got " + Shown(argument));
    }
    OKAVALUE value;
    if (type == "bool")
    {
        value.Reset(ivtBool);
        value.numeric.boolean = ParseBool(text);
    }
    else if (type == "byte")
    {
        value.Reset(ivtByte);
        value.numeric.byte = static_cast<std::uint8_t>(ParseUnsigned(text, 255, "VALUE byte"));
    }
    else if (type == "word")
    {
        value.Reset(ivtWord);
        value.numeric.word = static_cast<std::uint16_t>(ParseUnsigned(text, 65535, "VALUE word"));
    }
    else if (type == "dword")
    {
        value.Reset(ivtDWord);
        value.numeric.dword = static_cast<std::uint32_t>(ParseUnsigned(text, 4294967295u, "VALUE dword"));
    }
    else if (type == "integer")
    {
        value.Reset(ivtInteger);
        value.numeric.integer = static_cast<std::int32_t>(ParseSigned(text, -2147483648LL, 2147483647LL, "VALUE integer"));
    }
    else if (type == "float")
    {
        value.Reset(ivtFloat);
        value.numeric.real = ParseFloat(text);
    }
    else if (type == "string")
    {
        value.Reset(ivtString);
        value.text.assign(text.data(), text.size());
    }
    else if (type == "date")
    {
        value = ParseDate(text);
    }
    else if (type == "time")
    {
        value = ParseTime(ivtTime, "time", text);
    }
    else if (type == "daytime")
    {
        value = ParseTime(ivtDayTime, "daytime", text);
    }
    else if (type == "datetime")
    {
        value = ParseDateTime(text);
    }
    else if (type == "empty" || type == "invalid")
    {
        if (!text.empty())
        {
            throw UsageError("VALUE " + type + ": takes no text, got " + Shown(text));
        }
        value.Reset(type == "empty" ? ivtEmpty : static_cast<OkaValueType>(0));
    }
    else if (!type.empty() && type.find_first_not_of("0123456789") == std::string::npos)
    {
        value = ParseCodedValue(type, text);
    }
    else
    {
        throw UsageError("VALUE: unknown type " + Shown(argument.substr(0, colon)) + ", expected " + kTypeList);
    }
    return value;
}
} // namespace TavKnx
