#pragma once
// A value as a KNX person reads it, where the DPT's row (knx/DptNames.h) defines it: "21.00 °C"
// for 9.001, "50.2 %" for the raw byte 128 of 5.001, "on" for 1.001, "Mon 12:30:00" for 10.001.
// Shown beside the library's value, never instead of it.
#include <platform/KnxDpt.h>
#include <platform/OkaValue.h>

#include <boost/optional.hpp>

#include <string>

namespace TavKnx
{
// None when the DPT has no row, or its row says nothing the library's value does not.
boost::optional<std::string> KnxTermsText(const KNXDPT& dpt, const OKAVALUE& value);
// KNX's reading first where there is one, the library's value always: "21.00 °C = Float 21 [...]".
std::string DescribeValueInKnxTerms(const KNXDPT& dpt, const OKAVALUE& value);
} // namespace TavKnx
