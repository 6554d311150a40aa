#pragma once
// DPTs as people and the commissioning software write them ("9.001", "9.1", "9", "9,001",
// "DPST-9-1", "DPT-9", "DPT9.001") and the group value size that goes with a DPT when none is
// given. One reader for the command line, the telegram files and the group address maps.
#include <platform/KnxDpt.h>

#include <boost/optional.hpp>

#include <cstddef>
#include <cstdint>
#include <string>

namespace TavKnx
{
// Any of the forms above, the prefixes in either case; a missing sub number is 0. The size is
// left 0. Throws TextError naming `what`.
KNXDPT ParseDpt(const std::string& text, const char* what = "DPT");
// The same forms without exceptions (for files with many lines): none when `text` is no DPT.
boost::optional<KNXDPT> TryParseDpt(const std::string& text);
// main in the high 16 bits, sub in the low ones: the codec's DPT number.
std::uint32_t PackDpt(const KNXDPT& dpt);
// "9.1": how JSON results name a DPT (the form scripts already read).
std::string FormatDpt(const KNXDPT& dpt);
// "9.001": how text results name a DPT, the sub number in three digits as KNX writes it.
std::string FormatKnxDpt(const KNXDPT& dpt);

// A group value size in bits: 0..255 (the width of a DPT's size field). Throws TextError.
std::uint32_t ParseBits(const std::string& text, const char* what = "--bits");
// "1 bit", "16 bits".
std::string BitsText(std::uint64_t bits);
// The group value's defined size when none is given: the main number's expected size when it
// is below 8 and one byte is given, else 8 bits per byte.
std::uint32_t DefaultBits(std::uint16_t mainNumber, std::size_t byteCount);
} // namespace TavKnx
