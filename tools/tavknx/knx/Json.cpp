#include "knx/Json.h"

#include <utf8.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iterator>

namespace TavKnx
{
JsonObject& JsonObject::AddRaw(const std::string& key, const std::string& json)
{
    if (!body_.empty())
    {
        body_ += ",";
    }
    body_ += JsonString(key) + ":" + json;
    return *this;
}

JsonObject& JsonObject::Add(const std::string& key, bool value)
{
    return AddRaw(key, value ? "true" : "false");
}

JsonObject& JsonObject::Add(const std::string& key, std::int64_t value)
{
    return AddRaw(key, std::to_string(value));
}

JsonObject& JsonObject::Add(const std::string& key, std::uint64_t value)
{
    return AddRaw(key, std::to_string(value));
}

JsonObject& JsonObject::Add(const std::string& key, const std::string& value)
{
    return AddRaw(key, JsonString(value));
}

JsonObject& JsonObject::AddNull(const std::string& key)
{
    return AddRaw(key, "null");
}

std::string JsonObject::Str() const
{
    return "{" + body_ + "}";
}

std::string JsonString(const std::string& bytes)
{
    std::string text;
    utf8::replace_invalid(bytes.begin(), bytes.end(), std::back_inserter(text));
    std::string quoted = "\"";
    for (char c : text)
    {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
        {
            quoted += '\\';
            quoted += c;
        }
        else if (byte < 0x20 || byte == 0x7F)
        {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", byte);
            quoted += escape;
        }
        else
        {
            quoted += c;
        }
    }
    return quoted + "\"";
}

std::string FormatDouble(double value)
{
    if (std::isnan(value))
    {
        return "nan";
    }
    if (std::isinf(value))
    {
        return value > 0 ? "inf" : "-inf";
    }
    char text[40];
    for (int precision = 1; precision <= 17; ++precision)
    {
        std::snprintf(text, sizeof text, "%.*g", precision, value);
        if (std::strtod(text, nullptr) == value)
        {
            break;
        }
    }
    return text;
}
} // namespace TavKnx
