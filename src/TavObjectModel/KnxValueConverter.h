#pragma once
// The table-driven converter front between internal values and KNX group values. It owns a
// DPT value map, fills it on construction, checks bit sizes and value types, supplies a default
// DPT when the caller gives none, and turns every failure into a logged ERROR and `false`.
//
// No locks: after construction every operation only reads the map, so one object may serve
// several threads as long as each call has its own value and group value.
#include <TavObjectModel/DptValueMap.h>
#include <TavObjectModel/KnxConverter.h>

#include <platform/GroupValue.h>
#include <platform/KnxDpt.h>
#include <platform/OkaValue.h>

#include <cstdint>

namespace Okaro
{
class KnxValueConverter
{
public:
    // Expected bit size that means "any size is accepted" (main numbers 24 and 28).
    static constexpr std::uint32_t kAnyBitSize = 2147483647u;

    // Fills the DPT value map; an exception while filling (out of memory) leaves the
    // constructor and the half-filled map is destroyed.
    KnxValueConverter();
    virtual ~KnxValueConverter() = default;
    KnxValueConverter(const KnxValueConverter&) = default;
    KnxValueConverter& operator=(const KnxValueConverter&) = default;

    // The map is already filled; kept because callers call it once after construction.
    bool Init();

    const DptValueEntry& GetEntry(const KNXDPT& dpt) const { return dptValueMap_.GetEntry(dpt); }
    const DptValueMap& GetDptValueMap() const { return dptValueMap_; }

    // When dpt.main is 0 the chosen default DPT is written into the caller's object even
    // though it is passed as const, so callers see which DPT was used. Such a DPT must
    // therefore not be a genuinely const object.
    //
    // A DPT without map entry is accepted as valid: `value` gets type ivtEmpty, the result
    // is true. Only KnxStack::GroupValueException is caught; anything else propagates.
    bool FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& groupValue, OKAVALUE& value);
    // As FromKnxValue; a DPT without map entry leaves `groupValue` untouched and returns true.
    bool ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value, KnxStack::GroupValue& groupValue);

    // Sets main and sub from dpt.size; false (DPT untouched) for sizes without a default.
    static bool GetDefaultMappingDptForSize(KNXDPT& dpt);
    // Sets size, main and sub from the value's type (for float, integer and string values
    // also from the size already in the DPT); false (DPT untouched) when there is no default.
    static bool GetDefaultMappingDptForValueType(KNXDPT& dpt, const OKAVALUE& value);
    // Whether a value of type `valueType` may be converted by an entry registered for
    // `entryType`. Not symmetric: a date-and-time value suits a date or time entry, but not
    // the other way round.
    static bool AreValueTypesCompatible(OkaValueType valueType, OkaValueType entryType);
    // Group value size in bits that a main number's DPTs carry: 0 for unknown main numbers,
    // kAnyBitSize where any size is accepted.
    static std::uint32_t GetExpectedBitSize(unsigned int mainNumber);

    // Registers a clone of `converter`; false only when the map refused the entry.
    bool AddDptValueMapEntry(unsigned short mainNumber, unsigned short subNumber, unsigned char bitSize,
                             OkaValueType valueType, OkaDP::OkaValueSubType valueSubType,
                             const KnxConverter& converter);

protected:
    // Clears the map and registers the standard table; run by the constructor.
    void FillDptValueMap();

private:
    DptValueMap dptValueMap_;
};
} // namespace Okaro
