#include "knx/NumberText.h"

#include "knx/TextError.h"

#include <charconv>
#include <sstream>

namespace TavKnx
{
bool IsDecimalDigits(const std::string& text)
{
    if (text.empty())
    {
        return false;
    }
    for (char c : text)
    {
        if (c < '0' || c > '9')
        {
            return false;
        }
    }
    return true;
}

std::uint64_t ParseUnsigned(const std::string& text, std::uint64_t max, const char* what)
{
    std::uint64_t value = 0;
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    if (!IsDecimalDigits(text) || result.ptr != end || result.ec != std::errc() || value > max)
    {
        std::ostringstream message;
        message << what << ": expected a whole number from 0 to " << max << ", got " << Quote(text);
        throw TextError(message.str());
    }
    return value;
}

std::int64_t ParseSigned(const std::string& text, std::int64_t min, std::int64_t max, const char* what)
{
    std::int64_t value = 0;
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    const std::string digits = !text.empty() && text[0] == '-' ? text.substr(1) : text;
    if (!IsDecimalDigits(digits) || result.ptr != end || result.ec != std::errc() || value < min || value > max)
    {
        std::ostringstream message;
        message << what << ": expected a whole number from " << min << " to " << max << ", got " << Quote(text);
        throw TextError(message.str());
    }
    return value;
}
} // namespace TavKnx
