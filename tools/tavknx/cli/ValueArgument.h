#pragma once
// The VALUE argument of encode and to-knx: "TYPE:TEXT", for example float:21.5, bool:true,
// date:2024-04-30, time:12:30:00/1, string:Hello, 1039:21.5 (a type code and a decimal).
#include <platform/OkaValue.h>

#include <string>

namespace TavKnx
{
// Throws UsageError naming what was expected.
OKAVALUE ParseValue(const std::string& text);
} // namespace TavKnx
