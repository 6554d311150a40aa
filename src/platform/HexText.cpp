#include <platform/detail/HexText.h>

namespace Okaro
{
int HexDigitValue(char c)
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

bool ParseHexByte(std::string_view text, std::size_t at, unsigned char& out)
{
    if (at + 2 > text.size())
    {
        return false;
    }
    const int high = HexDigitValue(text[at]);
    const int low = HexDigitValue(text[at + 1]);
    if (high < 0 || low < 0)
    {
        return false;
    }
    out = static_cast<unsigned char>(high * 16 + low);
    return true;
}
} // namespace Okaro
