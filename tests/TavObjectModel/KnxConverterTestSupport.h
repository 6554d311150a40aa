#pragma once
// The trace lines the converters write on entry, for the converter tests; values and group
// values come from the shared builders.
#include "support/GroupValues.h"
#include "support/Values.h"

#include <TavObjectModel/KnxConverter.h>
#include <platform/GroupValue.h>
#include <platform/OkaValue.h>

#include <string>

namespace TavTest
{
inline std::string Dpt(const KNXDPT& dpt)
{
    return std::to_string(dpt.main) + "." + std::to_string(dpt.sub);
}

// The DEBUG line a converter writes on entry.
inline std::string ToTraceText(const KNXDPT& dpt, const OKAVALUE& value)
{
    return "ToKnxValue - DPT is used. DPT = " + Dpt(dpt) + " ivt=" + std::to_string(static_cast<int>(value.type)) +
           " val=" + value.ToString();
}

inline std::string FromTraceText(const KNXDPT& dpt, const KnxStack::GroupValue& group)
{
    return "FromKnxValue - DPT is used. DPT = " + Dpt(dpt) + " grp.size=" + std::to_string(group.GetDefinedSize()) +
           " grp.val=" + group.GetRawData().ToString();
}
} // namespace TavTest
