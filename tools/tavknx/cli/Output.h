#pragma once
// Results on stdout: one line of text for people, or with --json one JSON object per line.
#include "knx/Json.h"

#include <platform/GroupValue.h>
#include <platform/KnxDpt.h>
#include <platform/OkaValue.h>

#include <iosfwd>
#include <string>

namespace TavKnx
{
// A group value result: {"ok":true,"dpt":"9.1","hex":"0c1a","bits":16}, or "9.1: 0c1a (16 bits)".
// Commands that say more (send) add their fields to these.
JsonObject GroupValueResultJson(const std::string& dpt, const KnxStack::GroupValue& value);
std::string GroupValueResultText(const std::string& dpt, const KnxStack::GroupValue& value);

// Conversion results, printed the same way by every command.
void PrintValueResult(const std::string& dpt, const OKAVALUE& value, bool json, std::ostream& out);
void PrintGroupValueResult(const std::string& dpt, const KnxStack::GroupValue& value, bool json, std::ostream& out);
void PrintRefusal(const std::string& dpt, bool json, std::ostream& out);
// A refusal the library does not log: `reason` goes to stderr as "tavknx COMMAND: PREFIX: REASON"
// and into the text result, "PREFIX: refused (REASON)"; JSON stays {"ok":false}.
void PrintRefusal(const std::string& prefix, const std::string& command, const std::string& reason, bool json,
                  std::ostream& out);

// "9.001 DPT_Value_Temp": the DPT as KNX writes it, with its name where knx/DptNames.h has one.
std::string DptLabel(const KNXDPT& dpt);

// The same for a DPT: text names it as KNX does ("9.001 DPT_Value_Temp") and shows the value in
// KNX terms before the library's ("21.00 °C = Float 21 [...]"); JSON as before ("dpt":"9.1") with
// "name" and "unit" added at the end where the DPT has them.
JsonObject GroupValueResultJson(const KNXDPT& dpt, const KnxStack::GroupValue& value);
std::string GroupValueResultText(const KNXDPT& dpt, const KnxStack::GroupValue& value);
void PrintValueResult(const KNXDPT& dpt, const OKAVALUE& value, bool json, std::ostream& out);
void PrintGroupValueResult(const KNXDPT& dpt, const KnxStack::GroupValue& value, bool json, std::ostream& out);
void PrintRefusal(const KNXDPT& dpt, bool json, std::ostream& out);
} // namespace TavKnx
