#include "knx/HexText.h"

#include "knx/TextError.h"

#include <platform/detail/HexText.h>

namespace TavKnx
{
std::vector<std::uint8_t> ParseHex(const std::string& text, const char* what)
{
    if (text.size() % 2 != 0)
    {
        throw TextError(std::string(what) + ": expected an even number of hex digits (two per byte, for example 0c1a), got " +
                        std::to_string(text.size()) + " digits " + Quote(text));
    }
    std::vector<std::uint8_t> bytes;
    bytes.reserve(text.size() / 2);
    for (std::size_t i = 0; i < text.size(); i += 2)
    {
        unsigned char byte = 0;
        if (!Okaro::ParseHexByte(text, i, byte))
        {
            throw TextError(std::string(what) + ": expected hex digits 0-9 a-f, got " + Quote(text));
        }
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
