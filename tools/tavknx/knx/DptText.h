#pragma once
// DPTs as people write them ("9.001", "9.1", "9") and the group value size that goes with a
// DPT when none is given.
#include <platform/KnxDpt.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace TavKnx
{
// "main.sub" in decimal; "9" is sub 0. The size is left 0. Throws TextError naming `what`.
KNXDPT ParseDpt(const std::string& text, const char* what = "DPT");
// main in the high 16 bits, sub in the low ones: the codec's DPT number.
std::uint32_t PackDpt(const KNXDPT& dpt);
// "9.1": how results name a DPT.
std::string FormatDpt(const KNXDPT& dpt);

// A group value size in bits: 0..255 (the width of a DPT's size field). Throws TextError.
std::uint32_t ParseBits(const std::string& text, const char* what = "--bits");
// The group value's defined size when none is given: the main number's expected size when it
// is below 8 and one byte is given, else 8 bits per byte.
std::uint32_t DefaultBits(std::uint16_t mainNumber, std::size_t byteCount);
} // namespace TavKnx
