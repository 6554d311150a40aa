#pragma once
// Hex digits read back into bytes, two digits a byte, either case: one reader for the value
// text form and the tool, so both take exactly the same spellings.
#include <cstddef>
#include <string_view>

namespace Okaro
{
// 0-15 for '0'-'9', 'a'-'f' and 'A'-'F'; -1 for any other character.
int HexDigitValue(char c);
// The byte written as the two digits at text[at], text[at + 1]. False, with `out` untouched,
// when the text ends before them or either is no hex digit.
bool ParseHexByte(std::string_view text, std::size_t at, unsigned char& out);
} // namespace Okaro
