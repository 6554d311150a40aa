#pragma once
// A group value's bytes as hex digits, two per byte, as bus monitors and log lines print them:
// "0c1a", "0C 1A", "0c:1a", "0x0c1a"; "" is no bytes.
#include <cstdint>
#include <string>
#include <vector>

namespace TavKnx
{
// Either case; blanks at both ends are ignored; one "0x" in front; blanks or ':' between
// bytes. Throws TextError naming `what`, counting the hex digits only.
std::vector<std::uint8_t> ParseHex(const std::string& text, const char* what = "HEX");
// Lower case, no separators.
std::string FormatHex(const std::vector<std::uint8_t>& bytes);
} // namespace TavKnx
