#pragma once
// Switch-driven conversion between KNX group values and OKAVALUE, keyed by a packed DPT
// number: main number in the upper 16 bits, sub number in the lower 16 bits (31.001 is
// 2031617). Only the low 32 bits of the packed number are used, whatever the width of
// unsigned long.
#include <platform/GroupValue.h>
#include <platform/OkaValue.h>

#include <boost/optional.hpp>

namespace Okaro
{
// True when the table-driven KnxValueConverter accepts these bytes for this DPT and the
// group value's defined bit size. Builds and fills a fresh converter on every call.
bool CheckGroupValue(const KnxStack::GroupValue& value, unsigned long packedDpt);

// Empty when the DPT has no value type, the bytes fail CheckGroupValue, or a DPT 10/11
// time or date is invalid. Never throws KnxStack::GroupValueException; calendar errors of
// DPT 11 and 19 (impossible days and months) leave as Boost.Date_Time exceptions.
boost::optional<OKAVALUE> GroupValueToOkaValue(const KnxStack::GroupValue& value, unsigned long packedDpt);

// Empty when the value's type is not exactly the DPT's value type, or the DPT or value
// cannot be encoded. Calendar errors of DPT 19 leave as Boost.Date_Time exceptions.
boost::optional<KnxStack::GroupValue> OkaValueToGroupValue(const OKAVALUE& value, unsigned long packedDpt);
} // namespace Okaro
