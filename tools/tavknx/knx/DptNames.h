#pragma once
// KNX's own vocabulary for DPTs: the name (DPT_Value_Temp), the unit (°C) and, for 1-bit DPTs,
// the words for 0 and 1 (off, on), as the KNX standard's datapoint type list gives them. The
// table covers at least every DPT the library maps (docs/DptNames.md lists it).
#include <platform/KnxDpt.h>

#include <cstddef>
#include <cstdint>

namespace TavKnx
{
struct DptName
{
    std::uint16_t main;
    std::uint16_t sub;
    const char* name;  // "DPT_Value_Temp"
    const char* unit;  // "°C" (UTF-8), "" when the DPT has none
    const char* zero;  // 1-bit DPTs: what 0 means ("off"); null otherwise
    const char* one;   // 1-bit DPTs: what 1 means ("on"); null otherwise
};

// The row of main.sub, or null when the table has none (the size is not looked at).
const DptName* FindDptName(const KNXDPT& dpt);
// All rows, ordered by main and sub number.
const DptName* DptNamesBegin();
const DptName* DptNamesEnd();
} // namespace TavKnx
