#pragma once
// KNX bus addresses as people write them: group addresses "main/middle/sub" (5/3/8 bits) and
// individual addresses "area.line.device" (4/4/8 bits).
#include <boost/optional.hpp>

#include <cstdint>
#include <string>

namespace TavKnx
{
// "1/2/3" (three levels).
std::string FormatGroupAddress(std::uint16_t address);
// "4/1024" (two levels: main/sub 0-31/0-2047).
std::string FormatTwoLevelGroupAddress(std::uint16_t address);
// The address in the form `written` has: two levels when it has one '/', else three. For
// echoing an address the way the user gave it.
std::string FormatGroupAddressLike(std::uint16_t address, const std::string& written);
// "1.1.5".
std::string FormatIndividualAddress(std::uint16_t address);
// Three levels "0-31/0-7/0-255" or two levels "0-31/0-2047"; decimal digits only, no blanks.
// Nothing for anything else.
boost::optional<std::uint16_t> ParseGroupAddress(const std::string& text);
} // namespace TavKnx
