#pragma once
// Whether the switch-driven codec put a different value on the bus than it was given: it
// clamps to the DPT's range and writes 32767 and NaN as DPT 9's invalid code 7fff, silently,
// as the controller's applications expect. The tool reads the written bytes back with the
// same codec to tell its user.
#include <platform/GroupValue.h>
#include <platform/OkaValue.h>

#include <boost/optional.hpp>

#include <cstdint>
#include <string>

namespace TavKnx
{
struct CodecChange
{
    enum Kind
    {
        Changed,      // the bytes read back as another value: `readBack`
        InvalidCode,  // the bytes read back as no value: the DPT's invalid code
        Unreadable,   // the codec refuses to read a float's bytes back (out of the DPT's range)
    } kind;
    std::string readBack;  // the value the bytes read back as (ValueText) when Changed
};

// None when the bytes read back as `value` (within the DPT's rounding: a hundredth or 1/1024
// of a float), when `value` is NaN (asked for the invalid code) or when the reading back
// throws; times, which carry a placeholder date, are not compared. Logs nothing: the
// library's lines of the reading back are held back.
boost::optional<CodecChange> FindCodecChange(const OKAVALUE& value, const KnxStack::GroupValue& written,
                                             std::uint32_t packedDpt);
} // namespace TavKnx
