#pragma once
// The VALUE argument of encode, to-knx and send: "TYPE:TEXT", for example float:21.5,
// bool:true, date:2024-04-30, time:12:30:00/Mon, string:Hello, 1039:21.5 (a type code and a
// decimal); or, with the DPT known, the bare TEXT read as the DPT's value type (21.5, on).
#include <platform/KnxDpt.h>
#include <platform/OkaValue.h>

#include <string>

namespace TavKnx
{
// Throws UsageError naming what was expected.
OKAVALUE ParseValue(const std::string& text);
// TYPE:TEXT as above, or TEXT alone read as the value type the library gives `dpt`
// (KnxLdsMapping::GetIvtFromDpt). A time DPT reads "12:30:00" as a time, not as type code 12.
OKAVALUE ParseValue(const std::string& text, const KNXDPT& dpt);
} // namespace TavKnx
