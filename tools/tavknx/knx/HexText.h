#pragma once
// A group value's bytes as hex digits, two per byte, no separators ("0c1a"); "" is no bytes.
#include <cstdint>
#include <string>
#include <vector>

namespace TavKnx
{
// Either case is read. Throws TextError naming `what`.
std::vector<std::uint8_t> ParseHex(const std::string& text, const char* what = "HEX");
// Lower case.
std::string FormatHex(const std::vector<std::uint8_t>& bytes);
} // namespace TavKnx
