#pragma once
// Converters between the internal value (OKAVALUE) and KNX group values, one class per
// family of datapoint types, and (through KnxRange.h) the ranges that describe each
// datapoint's value range. The definitions sit in one unit per family: KnxConverter.cpp (the
// default), KnxConverterBitSceneByte.cpp, KnxConverterIntegerFloat.cpp and
// KnxConverterDateTimeString.cpp.
//
// Converters and ranges are not changed after construction: one object may be shared by
// any number of threads without locks.
#include <TavObjectModel/KnxRange.h>
#include <platform/GroupValue.h>
#include <platform/KnxDpt.h>
#include <platform/OkaValue.h>

#include <cstddef>
#include <new>

namespace Okaro
{
// ---------------------------------------------------------------------------------------
// Converters. Both operations return true when they wrote their output; on false they
// have logged one ERROR line (1.x excepted, which refuses silently). Nothing is thrown
// for bad values; the group value accessors may throw KnxStack::GroupValueException on
// truncated data.

class KnxConverter
{
public:
    virtual ~KnxConverter() = default;
    virtual bool ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value, KnxStack::GroupValue& out) const = 0;
    virtual bool FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& in, OKAVALUE& out) const = 0;
    // A new heap object of the same class with a copy of the range, owned by the caller.
    virtual KnxConverter* Clone() const = 0;

    // Converters come from the heap, or from the storage of the DPT value map that clones
    // them (one block for a whole table); either way they are deleted through the virtual
    // destructor. Placement new stays available.
    static void* operator new(std::size_t size);
    static void operator delete(void* object) noexcept;
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void*, void*) noexcept {}
    // An over-aligned converter class always comes from the heap.
    static void* operator new(std::size_t size, std::align_val_t alignment) { return ::operator new(size, alignment); }
    static void operator delete(void* object, std::align_val_t alignment) noexcept
    {
        ::operator delete(object, alignment);
    }

protected:
    KnxConverter() = default;
    KnxConverter(const KnxConverter&) = default;
    KnxConverter& operator=(const KnxConverter&) = delete;
};

// Converters without a range.
#define TAV_DECLARE_KNX_CONVERTER(Name)                                                               \
    class Name : public KnxConverter                                                                  \
    {                                                                                                 \
    public:                                                                                           \
        Name() = default;                                                                             \
        bool ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value, KnxStack::GroupValue& out) const override; \
        bool FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& in, OKAVALUE& out) const override;  \
        Name* Clone() const override;                                                                 \
    }

// Converters with one range member, fixed at construction.
#define TAV_DECLARE_KNX_RANGE_CONVERTER(Name, RangeType)                                              \
    class Name : public KnxConverter                                                                  \
    {                                                                                                 \
    public:                                                                                           \
        using Range = RangeType;                                                                      \
        explicit Name(const RangeType& range) : range_(range) {}                                      \
        bool ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value, KnxStack::GroupValue& out) const override; \
        bool FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& in, OKAVALUE& out) const override;  \
        Name* Clone() const override;                                                                 \
        const RangeType& GetRange() const { return range_; }                                          \
                                                                                                      \
    private:                                                                                          \
        const RangeType range_;                                                                       \
    }

// Fallback for datapoint types without a class of their own: the value model's generic
// byte codec.
TAV_DECLARE_KNX_CONVERTER(KnxConverterDefault);

TAV_DECLARE_KNX_CONVERTER(KnxConverter1Bit);                                        // 1.x
TAV_DECLARE_KNX_CONVERTER(KnxConverter2Bit);                                        // 2.x
TAV_DECLARE_KNX_RANGE_CONVERTER(KnxConverter4Bit, FloatIntegerRange);               // 3.x
TAV_DECLARE_KNX_RANGE_CONVERTER(KnxConverter8BitString, IntegerRange);              // 4.x
TAV_DECLARE_KNX_RANGE_CONVERTER(KnxConverterByte8BitUnsigned, IntegerRange);        // 5.x, 20.x, 21.x, ...
TAV_DECLARE_KNX_RANGE_CONVERTER(KnxConverterInteger8BitSigned, IntegerRange);       // 6.x
TAV_DECLARE_KNX_RANGE_CONVERTER(KnxConverterStatus8Bit, IntegerRange);              // 6.020
TAV_DECLARE_KNX_RANGE_CONVERTER(KnxConverterInteger16BitUnsigned, IntegerRange);    // 7.x
TAV_DECLARE_KNX_RANGE_CONVERTER(KnxConverterInteger16BitSigned, IntegerRange);      // 8.x
TAV_DECLARE_KNX_RANGE_CONVERTER(KnxConverterFloat16BitFloat, FloatRange);           // 9.x
TAV_DECLARE_KNX_CONVERTER(KnxConverterTimeOfDay);                                   // 10.001
TAV_DECLARE_KNX_CONVERTER(KnxConverterDate);                                        // 11.001
TAV_DECLARE_KNX_RANGE_CONVERTER(KnxConverterInteger32BitUnsigned, IntegerRange64);  // 12.x, 15.x, 27.x
TAV_DECLARE_KNX_RANGE_CONVERTER(KnxConverterInteger32BitSigned, IntegerRange);      // 13.x
TAV_DECLARE_KNX_RANGE_CONVERTER(KnxConverterFloat32BitFloat, FloatRange);           // 14.x
TAV_DECLARE_KNX_RANGE_CONVERTER(KnxConverter14ByteString, IntegerRange);            // 16.x
TAV_DECLARE_KNX_RANGE_CONVERTER(KnxConverterSceneNumber, IntegerRange);             // 17.001
TAV_DECLARE_KNX_RANGE_CONVERTER(KnxConverterSceneControl, IntegerRange);            // 18.001
TAV_DECLARE_KNX_CONVERTER(KnxConverterDateTime);                                    // 19.x
TAV_DECLARE_KNX_RANGE_CONVERTER(KnxConverterSceneInfo, IntegerRange);               // 26.001
TAV_DECLARE_KNX_RANGE_CONVERTER(KnxConverterInteger24BitUnsigned, IntegerRange64);  // 232.x

#undef TAV_DECLARE_KNX_CONVERTER
#undef TAV_DECLARE_KNX_RANGE_CONVERTER
} // namespace Okaro
