#include "CommandLine.h"

#include <TavObjectModel/KnxValueConverter.h>

#include <charconv>
#include <limits>
#include <sstream>

namespace TavKnx
{
namespace
{
bool IsDigits(const std::string& text)
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

int HexDigit(char c)
{
    if (c >= '0' && c <= '9')
    {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f')
    {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F')
    {
        return c - 'A' + 10;
    }
    return -1;
}
} // namespace

std::string Quote(const std::string& text)
{
    std::string shown;
    for (char c : text.substr(0, 40))
    {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F)
        {
            shown += '?';
        }
        else
        {
            shown += c;
        }
    }
    if (text.size() > 40)
    {
        shown += "...";
    }
    return "'" + shown + "'";
}

void Invocation::RequireArgs(std::size_t min, std::size_t max, const char* names) const
{
    if (args.size() < min || args.size() > max)
    {
        std::ostringstream message;
        message << "expected " << (max == 0 ? "no arguments" : names) << ", got " << args.size() << " argument" << (args.size() == 1 ? "" : "s");
        if (args.size() > max)
        {
            message << " (first extra: " << Quote(args[max]) << ")";
        }
        throw UsageError(message.str());
    }
}

bool Invocation::HasBits() const
{
    return options.count("bits") != 0;
}

std::uint32_t Invocation::Bits() const
{
    return ParseBits(options["bits"].as<std::string>());
}

std::uint64_t ParseUnsigned(const std::string& text, std::uint64_t max, const char* what)
{
    std::uint64_t value = 0;
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    if (!IsDigits(text) || result.ptr != end || result.ec != std::errc() || value > max)
    {
        std::ostringstream message;
        message << what << ": expected a whole number from 0 to " << max << ", got " << Quote(text);
        throw UsageError(message.str());
    }
    return value;
}

std::int64_t ParseSigned(const std::string& text, std::int64_t min, std::int64_t max, const char* what)
{
    std::int64_t value = 0;
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    const std::string digits = !text.empty() && text[0] == '-' ? text.substr(1) : text;
    if (!IsDigits(digits) || result.ptr != end || result.ec != std::errc() || value < min || value > max)
    {
        std::ostringstream message;
        message << what << ": expected a whole number from " << min << " to " << max << ", got " << Quote(text);
        throw UsageError(message.str());
    }
    return value;
}

KNXDPT ParseDpt(const std::string& text, const char* what)
{
    const std::string::size_type dot = text.find('.');
    const std::string mainText = text.substr(0, dot);
    const std::string subText = dot == std::string::npos ? "0" : text.substr(dot + 1);
    if (!IsDigits(mainText) || !IsDigits(subText))
    {
        throw UsageError(std::string(what) + ": expected MAIN.SUB in decimal (for example 9.001), got " + Quote(text));
    }
    const std::string mainWhat = std::string(what) + " main number";
    const std::string subWhat = std::string(what) + " sub number";
    KNXDPT dpt{};
    dpt.main = static_cast<std::uint16_t>(ParseUnsigned(mainText, 65535, mainWhat.c_str()));
    dpt.sub = static_cast<std::uint16_t>(ParseUnsigned(subText, 65535, subWhat.c_str()));
    return dpt;
}

std::uint32_t PackDpt(const KNXDPT& dpt)
{
    return (static_cast<std::uint32_t>(dpt.main) << 16) | dpt.sub;
}

std::string FormatDpt(const KNXDPT& dpt)
{
    return std::to_string(dpt.main) + "." + std::to_string(dpt.sub);
}

std::vector<std::uint8_t> ParseHex(const std::string& text, const char* what)
{
    if (text.size() % 2 != 0)
    {
        throw UsageError(std::string(what) + ": expected an even number of hex digits (two per byte, for example 0c1a), got " +
                         std::to_string(text.size()) + " digits " + Quote(text));
    }
    std::vector<std::uint8_t> bytes;
    bytes.reserve(text.size() / 2);
    for (std::size_t i = 0; i < text.size(); i += 2)
    {
        const int high = HexDigit(text[i]);
        const int low = HexDigit(text[i + 1]);
        if (high < 0 || low < 0)
        {
            throw UsageError(std::string(what) + ": expected hex digits 0-9 a-f, got " + Quote(text));
        }
        bytes.push_back(static_cast<std::uint8_t>(high * 16 + low));
    }
    return bytes;
}

std::string FormatHex(const std::vector<std::uint8_t>& bytes)
{
    static const char digits[] = "0123456789abcdef";
    std::string text;
    for (std::uint8_t byte : bytes)
    {
        text += digits[byte >> 4];
        text += digits[byte & 0x0F];
    }
    return text;
}

std::uint32_t ParseBits(const std::string& text, const char* what)
{
    return static_cast<std::uint32_t>(ParseUnsigned(text, 255, what));
}

std::uint32_t DefaultBits(std::uint16_t mainNumber, std::size_t byteCount)
{
    const std::uint32_t expected = Okaro::KnxValueConverter::GetExpectedBitSize(mainNumber);
    if (byteCount == 1 && expected > 0 && expected < 8)
    {
        return expected;
    }
    // Saturates instead of wrapping for absurdly long input.
    return byteCount > 0x1FFFFFFFu ? 0xFFFFFFFFu : static_cast<std::uint32_t>(byteCount * 8u);
}
} // namespace TavKnx
