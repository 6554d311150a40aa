#pragma once
// Converters between the internal value (OKAVALUE) and KNX group values, one class per
// family of datapoint types, and the ranges that describe each datapoint's value range.
//
// Converters and ranges are not changed after construction: one object may be shared by
// any number of threads without locks.
#include <platform/GroupValue.h>
#include <platform/KnxDpt.h>
#include <platform/OkaValue.h>

#include <cstdint>
#include <ostream>

namespace Okaro
{
// ---------------------------------------------------------------------------------------
// Ranges. Each holds an internal interval, an external interval and a scale factor that
// starts at 1.0; whoever sets the bounds calls CalculateScaleFactor once (or uses
// CreateScaled, which does both).

// Integer bounds of 32 bits (IntegerRange) or 64 bits (IntegerRange64, so that 4294967295
// fits).
template <typename Bound>
class BasicIntegerRange
{
public:
    BasicIntegerRange(Bound internalMinimum, Bound internalMaximum, Bound externalMinimum, Bound externalMaximum);
    static BasicIntegerRange CreateScaled(Bound internalMinimum, Bound internalMaximum, Bound externalMinimum,
                                          Bound externalMaximum);

    // External width / internal width. The bounds are not reordered, so a range given
    // high-to-low gets a negative factor. A zero width logs and keeps the factor.
    void CalculateScaleFactor();

    // Internal minimum <= x <= internal maximum.
    bool IsInRange(std::int64_t x) const;
    // Leaves x and returns true when it is in range, else moves it to the nearer bound
    // and returns false.
    bool Clamp(Bound& x) const;

    Bound GetInternalMinimum() const { return internalMinimum_; }
    Bound GetInternalMaximum() const { return internalMaximum_; }
    Bound GetExternalMinimum() const { return externalMinimum_; }
    Bound GetExternalMaximum() const { return externalMaximum_; }
    double GetScaleFactor() const { return scaleFactor_; }

    bool operator==(const BasicIntegerRange& other) const;
    bool operator!=(const BasicIntegerRange& other) const { return !(*this == other); }

private:
    Bound internalMinimum_;
    Bound internalMaximum_;
    Bound externalMinimum_;
    Bound externalMaximum_;
    double scaleFactor_ = 1.0;
};

using IntegerRange = BasicIntegerRange<std::int32_t>;
using IntegerRange64 = BasicIntegerRange<std::int64_t>;

extern template class BasicIntegerRange<std::int32_t>;
extern template class BasicIntegerRange<std::int64_t>;

// "IntegerRange(a, b, c, d)"
std::ostream& operator<<(std::ostream& out, const IntegerRange& range);
std::ostream& operator<<(std::ostream& out, const IntegerRange64& range);

class FloatRange
{
public:
    FloatRange(double minimum, double maximum, double externalMinimum, double externalMaximum);
    static FloatRange CreateScaled(double minimum, double maximum, double externalMinimum, double externalMaximum);

    // Outer width / inner width, each width taken between the smaller and the larger bound.
    void CalculateScaleFactor();

    bool IsInRange(double x) const;
    bool Clamp(double& x) const;
    // (x - minimum) * scale + external minimum, not rounded.
    double MapInnerToOuter(double x) const;

    double GetMinimum() const { return minimum_; }
    double GetMaximum() const { return maximum_; }
    double GetExternalMinimum() const { return externalMinimum_; }
    double GetExternalMaximum() const { return externalMaximum_; }
    double GetScaleFactor() const { return scaleFactor_; }

    bool operator==(const FloatRange& other) const;
    bool operator!=(const FloatRange& other) const { return !(*this == other); }

private:
    double minimum_;
    double maximum_;
    double externalMinimum_;
    double externalMaximum_;
    double scaleFactor_ = 1.0;
};

// "FloatRange(a, b, c, d)"
std::ostream& operator<<(std::ostream& out, const FloatRange& range);

// A double interval mapped onto an integer interval (DPT 3 dimming steps).
class FloatIntegerRange
{
public:
    FloatIntegerRange(double doubleMinimum, double doubleMaximum, std::int32_t integerMinimum,
                      std::int32_t integerMaximum);
    static FloatIntegerRange CreateScaled(double doubleMinimum, double doubleMaximum, std::int32_t integerMinimum,
                                          std::int32_t integerMaximum);

    // Integer width / double width, bounds not reordered.
    void CalculateScaleFactor();

    bool IsInRange(double x) const;
    bool Clamp(double& x) const;
    // (x - double minimum) * scale + integer minimum, rounded half away from zero.
    std::int32_t MapDoubleToInteger(double x) const;
    // (i - integer minimum) / scale + double minimum.
    double MapIntegerToDouble(std::int32_t i) const;

    double GetDoubleMinimum() const { return doubleMinimum_; }
    double GetDoubleMaximum() const { return doubleMaximum_; }
    std::int32_t GetIntegerMinimum() const { return integerMinimum_; }
    std::int32_t GetIntegerMaximum() const { return integerMaximum_; }
    double GetScaleFactor() const { return scaleFactor_; }

    bool operator==(const FloatIntegerRange& other) const;
    bool operator!=(const FloatIntegerRange& other) const { return !(*this == other); }

private:
    double doubleMinimum_;
    double doubleMaximum_;
    std::int32_t integerMinimum_;
    std::int32_t integerMaximum_;
    double scaleFactor_ = 1.0;
};

// "FloatIntegerRange(a, b, c, d)"
std::ostream& operator<<(std::ostream& out, const FloatIntegerRange& range);

// Rounds half away from zero, then truncates toward zero into 32 bits (values beyond the
// 32-bit range saturate instead of being undefined).
std::int32_t RoundHalfAwayFromZero(double value);

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
