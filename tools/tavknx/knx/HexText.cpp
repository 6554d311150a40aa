#include "knx/HexText.h"

#include "knx/TextError.h"

#include <platform/detail/HexText.h>

namespace TavKnx
{
namespace
{
bool IsSeparator(char c)
{
    return c == ' ' || c == '\t' || c == ':';
}
} // namespace

std::vector<std::uint8_t> ParseHex(const std::string& text, const char* what)
{
    const std::string::size_type first = text.find_first_not_of(" \t");
    std::string digits = first == std::string::npos ? std::string() : text.substr(first, text.find_last_not_of(" \t") - first + 1);
    if (digits.size() >= 2 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X'))
    {
        digits.erase(0, 2);
    }
    std::string packed;
    bool oddGroup = false;
    std::size_t groupLength = 0;
    for (std::size_t i = 0; i <= digits.size(); ++i)
    {
        if (i == digits.size() || IsSeparator(digits[i]))
        {
            // A separator stands between two bytes: the digits before it are whole bytes.
            oddGroup = oddGroup || groupLength % 2 != 0;
            groupLength = 0;
            continue;
        }
        if (Okaro::HexDigitValue(digits[i]) < 0)
        {
            throw TextError(std::string(what) + ": expected hex digits 0-9 a-f (bytes may be separated by blanks or ':', "
                                                "0x in front), got " + Quote(text));
        }
        packed += digits[i];
        ++groupLength;
    }
    if (packed.size() % 2 != 0)
    {
        throw TextError(std::string(what) + ": expected an even number of hex digits (two per byte, for example 0c1a), got " +
                        std::to_string(packed.size()) + (packed.size() == 1 ? " digit " : " digits ") + Quote(text));
    }
    if (oddGroup)
    {
        throw TextError(std::string(what) + ": expected two hex digits per byte between separators (for example 0c 1a), got " +
                        Quote(text));
    }
    std::vector<std::uint8_t> bytes;
    bytes.reserve(packed.size() / 2);
    for (std::size_t i = 0; i < packed.size(); i += 2)
    {
        unsigned char byte = 0;
        Okaro::ParseHexByte(packed, i, byte);
        bytes.push_back(byte);
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
} // namespace TavKnx
