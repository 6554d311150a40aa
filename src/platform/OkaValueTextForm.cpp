// The value model's text form (Serialize, Deserialize) and the log text (ToString).
// docs/ValueTextForm.md describes the form; it is exchanged with other programs, so any
// change here must stay readable by the old reader.
#include <platform/detail/HexText.h>
#include <platform/OkaValue.h>
#include <platform/OkaValueFamily.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <system_error>

namespace
{
using Okaro::ParseHexByte;

// Version tag of the internal form: "T.7:payload".
constexpr char kInternalVersion = '7';

const char kHexDigits[] = "0123456789ABCDEF";
const char kLowerHexDigits[] = "0123456789abcdef";

// ---------------------------------------------------------------- numbers

template <typename Number>
bool ParseWhole(std::string_view text, Number& out)
{
    if (text.empty())
    {
        return false;
    }
    const char* end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, out);
    return result.ec == std::errc() && result.ptr == end;
}

bool ParseReal(std::string_view text, double& out)
{
    // Spelled out because from_chars would also take "-nan" and "infinity".
    if (text == "nan")
    {
        out = std::numeric_limits<double>::quiet_NaN();
        return true;
    }
    if (text == "inf" || text == "-inf")
    {
        out = text[0] == '-' ? -std::numeric_limits<double>::infinity() : std::numeric_limits<double>::infinity();
        return true;
    }
    // Only decimal digits, sign, point and exponent: no other spelling of nan and inf, no hex.
    for (char c : text)
    {
        if ((c >= 'a' && c <= 'z' && c != 'e') || (c >= 'A' && c <= 'Z' && c != 'E'))
        {
            return false;
        }
    }
    const char* end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, out, std::chars_format::general);
    return result.ec == std::errc() && result.ptr == end;
}

bool SameBits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

// The shortest "%.*g" text (C locale, whatever the process locale is) that reads back to
// the same double.
std::string FormatReal(double value)
{
    if (std::isnan(value))
    {
        return "nan";
    }
    if (std::isinf(value))
    {
        return value < 0 ? "-inf" : "inf";
    }
    char buffer[64];
    std::string text;
    for (int precision = 1; precision <= std::numeric_limits<double>::max_digits10; ++precision)
    {
        const std::to_chars_result result =
            std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, precision);
        text.assign(buffer, result.ptr);
        double readBack = 0.0;
        if (ParseReal(text, readBack) && SameBits(readBack, value))
        {
            break;
        }
    }
    return text;
}

// ---------------------------------------------------------------- escaped bytes

void AppendEscaped(std::string& out, const char* bytes, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
    {
        const unsigned char c = static_cast<unsigned char>(bytes[i]);
        if (c < 0x20 || c == 0x7F || c == '%')
        {
            out += '%';
            out += kHexDigits[c >> 4];
            out += kHexDigits[c & 0x0F];
        }
        else
        {
            out += static_cast<char>(c);
        }
    }
}

bool ParseEscaped(std::string_view text, oka_string& out)
{
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        if (text[i] != '%')
        {
            bytes += text[i];
            continue;
        }
        unsigned char c = 0;
        if (!ParseHexByte(text, i + 1, c))
        {
            return false;
        }
        bytes += static_cast<char>(c);
        i += 2;
    }
    out.assign(bytes.data(), bytes.size());
    return true;
}

// ---------------------------------------------------------------- field reader

// Reads a text from left to right; each step either consumes what it expects or fails.
class Cursor
{
public:
    explicit Cursor(std::string_view text) : rest_(text) {}

    bool AtEnd() const { return rest_.empty(); }

    bool Skip(char expected)
    {
        if (rest_.empty() || rest_[0] != expected)
        {
            return false;
        }
        rest_.remove_prefix(1);
        return true;
    }

    // Decimal digits (a leading '-' only where signed), at most `maximum`.
    template <typename Number>
    bool Read(Number& out, Number maximum = std::numeric_limits<Number>::max())
    {
        std::size_t length = (std::numeric_limits<Number>::is_signed && !rest_.empty() && rest_[0] == '-') ? 1 : 0;
        const std::size_t digitsStart = length;
        while (length < rest_.size() && rest_[length] >= '0' && rest_[length] <= '9')
        {
            ++length;
        }
        if (length == digitsStart || !ParseWhole(rest_.substr(0, length), out) || out > maximum)
        {
            return false;
        }
        rest_.remove_prefix(length);
        return true;
    }

private:
    std::string_view rest_;
};

// ---------------------------------------------------------------- time fields

void AppendTime(std::string& out, const OKATIME& time)
{
    char buffer[96];
    std::snprintf(buffer, sizeof buffer, "%04u-%02u-%02uT%02u:%02u:%02u.%02u;w=%u;k=%u;l=%u;d=%u",
                  unsigned{time.year}, unsigned{time.month}, unsigned{time.day}, unsigned{time.hour},
                  unsigned{time.minute}, unsigned{time.second}, unsigned{time.hundredths}, unsigned{time.weekday},
                  unsigned{time.kind}, time.localTime ? 1u : 0u, time.daylightSaving ? 1u : 0u);
    out += buffer;
}

bool ParseTime(std::string_view text, OKATIME& time)
{
    Cursor in(text);
    std::uint8_t localTime = 0;
    std::uint8_t daylightSaving = 0;
    const bool read = in.Read(time.year) && in.Skip('-') && in.Read(time.month) && in.Skip('-') &&
                      in.Read(time.day) && in.Skip('T') && in.Read(time.hour) && in.Skip(':') &&
                      in.Read(time.minute) && in.Skip(':') && in.Read(time.second) && in.Skip('.') &&
                      in.Read(time.hundredths) && in.Skip(';') && in.Skip('w') && in.Skip('=') &&
                      in.Read(time.weekday) && in.Skip(';') && in.Skip('k') && in.Skip('=') && in.Read(time.kind) &&
                      in.Skip(';') && in.Skip('l') && in.Skip('=') && in.Read(localTime, std::uint8_t{1}) &&
                      in.Skip(';') && in.Skip('d') && in.Skip('=') && in.Read(daylightSaving, std::uint8_t{1}) &&
                      in.AtEnd();
    time.localTime = localTime != 0;
    time.daylightSaving = daylightSaving != 0;
    return read;
}

// ---------------------------------------------------------------- raw union bytes

void AppendRaw(std::string& out, const OKAVALUE& value)
{
    unsigned char bytes[sizeof value.numeric];
    std::memcpy(bytes, &value.numeric, sizeof bytes);
    out += 'x';
    for (unsigned char b : bytes)
    {
        out += kLowerHexDigits[b >> 4];
        out += kLowerHexDigits[b & 0x0F];
    }
    if (value.text.length() > 0)
    {
        out += ',';
        AppendEscaped(out, value.text.c_str(), value.text.length());
    }
}

bool ParseRaw(std::string_view text, OKAVALUE& value)
{
    unsigned char bytes[sizeof value.numeric];
    if (text.empty() || text[0] != 'x')
    {
        return false;
    }
    for (std::size_t i = 0; i < sizeof bytes; ++i)
    {
        if (!ParseHexByte(text, 1 + 2 * i, bytes[i]))
        {
            return false;
        }
    }
    const std::string_view rest = text.substr(1 + 2 * sizeof bytes);
    if (!rest.empty() && (rest[0] != ',' || !ParseEscaped(rest.substr(1), value.text)))
    {
        return false;
    }
    std::memcpy(&value.numeric, bytes, sizeof bytes);
    return true;
}

// ---------------------------------------------------------------- payload by family

void AppendPayload(std::string& out, const OKAVALUE& value)
{
    switch (GetValueFamily(value.type))
    {
    case OkaValueFamily::Empty:
        break;
    case OkaValueFamily::Bool:
        // Through the byte: a union written byte-wise may hold other values than 0 and 1.
        out += value.numeric.byte != 0 ? "true" : "false";
        break;
    case OkaValueFamily::Float:
        out += FormatReal(value.numeric.real);
        break;
    case OkaValueFamily::Integer:
        out += std::to_string(value.numeric.integer);
        break;
    case OkaValueFamily::Byte:
        out += std::to_string(unsigned{value.numeric.byte});
        break;
    case OkaValueFamily::Word:
        out += std::to_string(unsigned{value.numeric.word});
        break;
    case OkaValueFamily::DWord:
        out += std::to_string(value.numeric.dword);
        break;
    case OkaValueFamily::String:
        AppendEscaped(out, value.text.c_str(), value.text.length());
        break;
    case OkaValueFamily::Time:
        AppendTime(out, value.numeric.time);
        break;
    case OkaValueFamily::Raw:
        AppendRaw(out, value);
        break;
    }
}

// `value` arrives reset to its type: union zero, text empty.
bool ParsePayload(std::string_view text, OKAVALUE& value)
{
    switch (GetValueFamily(value.type))
    {
    case OkaValueFamily::Empty:
        return text.empty();
    case OkaValueFamily::Bool:
        if (text == "true" || text == "1")
        {
            value.numeric.boolean = true;
            return true;
        }
        return text == "false" || text == "0";
    case OkaValueFamily::Float:
        return ParseReal(text, value.numeric.real);
    case OkaValueFamily::Integer:
        return ParseWhole(text, value.numeric.integer);
    case OkaValueFamily::Byte:
        return ParseWhole(text, value.numeric.byte);
    case OkaValueFamily::Word:
        return ParseWhole(text, value.numeric.word);
    case OkaValueFamily::DWord:
        return ParseWhole(text, value.numeric.dword);
    case OkaValueFamily::String:
        return ParseEscaped(text, value.text);
    case OkaValueFamily::Time:
        return ParseTime(text, value.numeric.time);
    case OkaValueFamily::Raw:
        return ParseRaw(text, value);
    }
    return false;
}

// "digits[.7][/digits]" in front of the ':'.
bool ParseTag(std::string_view tag, std::int32_t& type, std::int32_t& subType)
{
    Cursor in(tag);
    if (!in.Read(type))
    {
        return false;
    }
    if (in.Skip('.') && !in.Skip(kInternalVersion))
    {
        return false;
    }
    subType = 0;
    if (in.Skip('/') && !in.Read(subType))
    {
        return false;
    }
    return in.AtEnd();
}
} // namespace

void OKAVALUE::Serialize(oka_string& out, bool internal) const
{
    std::string text;
    // A plain float stays a bare number in the default form, readable by anything.
    if (internal || type != ivtFloat || subType != OkaDP::istGeneric)
    {
        text += std::to_string(static_cast<std::int32_t>(type));
        if (internal)
        {
            text += '.';
            text += kInternalVersion;
        }
        if (subType != OkaDP::istGeneric)
        {
            text += '/';
            text += std::to_string(static_cast<std::int32_t>(subType));
        }
        text += ':';
    }
    AppendPayload(text, *this);
    out.assign(text.data(), text.size());
}

bool OKAVALUE::Deserialize(const oka_string& in)
{
    const std::string_view text(in.c_str(), in.length());
    const std::size_t colon = text.find(':');
    OKAVALUE parsed;
    if (colon == std::string_view::npos)
    {
        parsed.Reset(ivtFloat);
        if (!ParseReal(text, parsed.numeric.real))
        {
            return false;
        }
    }
    else
    {
        std::int32_t parsedType = 0;
        std::int32_t parsedSubType = 0;
        if (!ParseTag(text.substr(0, colon), parsedType, parsedSubType))
        {
            return false;
        }
        parsed.Reset(static_cast<OkaValueType>(parsedType));
        parsed.subType = static_cast<OkaDP::OkaValueSubType>(parsedSubType);
        if (!ParsePayload(text.substr(colon + 1), parsed))
        {
            return false;
        }
    }
    *this = parsed;
    return true;
}

std::string OKAVALUE::ToString() const
{
    std::string text = GetNameFromValueType(type);
    const OkaValueFamily family = GetValueFamily(type);
    if (family == OkaValueFamily::Empty)
    {
        return text;
    }
    text += ' ';
    if (family == OkaValueFamily::String)
    {
        text += '"';
        AppendPayload(text, *this);
        text += '"';
    }
    else
    {
        AppendPayload(text, *this);
    }
    return text;
}
