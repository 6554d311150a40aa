#pragma once
// Helpers of the group value codec tests: packed DPT numbers and a decoded value that can be
// compared whether or not there is one. Values, group values and the time zone come from the
// shared support.
#include "support/GroupValues.h"
#include "support/ScopedTimeZone.h"
#include "support/Values.h"

#include <platform/OkaValue.h>

#include <boost/optional.hpp>

#include <cstdint>

namespace TavTest
{
// The decoded value, or a value of type 0 (which no decoder yields) when there is none.
inline OKAVALUE ValueOrInvalid(const boost::optional<OKAVALUE>& decoded)
{
    return decoded ? *decoded : OKAVALUE(static_cast<OkaValueType>(0));
}

inline unsigned long Packed(std::uint16_t main, std::uint16_t sub)
{
    return (static_cast<unsigned long>(main) << 16) | sub;
}
} // namespace TavTest
