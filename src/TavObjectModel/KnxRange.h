#pragma once
// The value ranges a converter may carry. Not changed after construction, so shared by any
// number of threads without locks. <TavObjectModel/KnxConverter.h> includes this header.
#include <cstdint>
#include <ostream>

namespace Okaro
{
// Each range holds an internal interval, an external interval and a scale factor that
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
    bool IsInRange(std::int64_t x) const { return internalMinimum_ <= x && x <= internalMaximum_; }
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

    bool IsInRange(double x) const { return minimum_ <= x && x <= maximum_; }
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

    bool IsInRange(double x) const { return doubleMinimum_ <= x && x <= doubleMaximum_; }
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
} // namespace Okaro
