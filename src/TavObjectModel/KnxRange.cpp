#include <TavObjectModel/KnxRange.h>

#include <TavObjectModel/detail/LogFiles.h>
#include <platform/Logging.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace Okaro
{
namespace
{
const log4cplus::Logger& Log()
{
    return GetGlobalDefaultLogger();
}

// Width of a 64-bit interval; wraps instead of overflowing for extreme bounds.
std::int64_t Width(std::int64_t minimum, std::int64_t maximum)
{
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(maximum) - static_cast<std::uint64_t>(minimum));
}
} // namespace

std::int32_t RoundHalfAwayFromZero(double value)
{
    if (value > 0.0)
    {
        value += 0.5;
    }
    else if (value < 0.0)
    {
        value -= 0.5;
    }
    value = std::trunc(value);
    if (std::isnan(value))
    {
        return 0;
    }
    if (value >= static_cast<double>(std::numeric_limits<std::int32_t>::max()))
    {
        return std::numeric_limits<std::int32_t>::max();
    }
    if (value <= static_cast<double>(std::numeric_limits<std::int32_t>::min()))
    {
        return std::numeric_limits<std::int32_t>::min();
    }
    return static_cast<std::int32_t>(value);
}

template <typename Bound>
BasicIntegerRange<Bound>::BasicIntegerRange(Bound internalMinimum, Bound internalMaximum, Bound externalMinimum,
                                            Bound externalMaximum)
    : internalMinimum_(internalMinimum),
      internalMaximum_(internalMaximum),
      externalMinimum_(externalMinimum),
      externalMaximum_(externalMaximum)
{
}

template <typename Bound>
BasicIntegerRange<Bound> BasicIntegerRange<Bound>::CreateScaled(Bound internalMinimum, Bound internalMaximum,
                                                                Bound externalMinimum, Bound externalMaximum)
{
    BasicIntegerRange range(internalMinimum, internalMaximum, externalMinimum, externalMaximum);
    range.CalculateScaleFactor();
    return range;
}

template <typename Bound>
void BasicIntegerRange<Bound>::CalculateScaleFactor()
{
    const std::int64_t internalWidth = Width(internalMinimum_, internalMaximum_);
    if (internalWidth == 0)
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 170,
                "Failed to calculate the scale factor because of invalid internal range [" << internalMinimum_ << ", "
                                                                                            << internalMaximum_ << "].");
        return;
    }
    const std::int64_t externalWidth = Width(externalMinimum_, externalMaximum_);
    if (externalWidth == 0)
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 178,
                "Failed to calculate the scale factor because of invalid external range [" << externalMinimum_ << ", "
                                                                                            << externalMaximum_ << "].");
        return;
    }
    scaleFactor_ = static_cast<double>(externalWidth) / static_cast<double>(internalWidth);
    if (scaleFactor_ == 0.0)
    {
        // Cannot happen with two non-zero integer widths; kept as a guard.
        scaleFactor_ = 1.0;
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 188,
                "Failed to calculate the scale factor because of invalid internal range ["
                    << internalMinimum_ << ", " << internalMaximum_ << "] or because of invalid external range ["
                    << externalMinimum_ << ", " << externalMaximum_ << "].");
    }
}

template <typename Bound>
bool BasicIntegerRange<Bound>::Clamp(Bound& x) const
{
    if (x < internalMinimum_)
    {
        x = internalMinimum_;
        return false;
    }
    if (x > internalMaximum_)
    {
        x = internalMaximum_;
        return false;
    }
    return true;
}

template <typename Bound>
bool BasicIntegerRange<Bound>::operator==(const BasicIntegerRange& other) const
{
    return internalMinimum_ == other.internalMinimum_ && internalMaximum_ == other.internalMaximum_ &&
           externalMinimum_ == other.externalMinimum_ && externalMaximum_ == other.externalMaximum_ &&
           scaleFactor_ == other.scaleFactor_;
}

template class BasicIntegerRange<std::int32_t>;
template class BasicIntegerRange<std::int64_t>;

namespace
{
template <typename Range>
std::ostream& PrintIntegerRange(std::ostream& out, const Range& range)
{
    return out << "IntegerRange(" << range.GetInternalMinimum() << ", " << range.GetInternalMaximum() << ", "
               << range.GetExternalMinimum() << ", " << range.GetExternalMaximum() << ")";
}
} // namespace

std::ostream& operator<<(std::ostream& out, const IntegerRange& range)
{
    return PrintIntegerRange(out, range);
}

std::ostream& operator<<(std::ostream& out, const IntegerRange64& range)
{
    return PrintIntegerRange(out, range);
}

FloatRange::FloatRange(double minimum, double maximum, double externalMinimum, double externalMaximum)
    : minimum_(minimum), maximum_(maximum), externalMinimum_(externalMinimum), externalMaximum_(externalMaximum)
{
}

FloatRange FloatRange::CreateScaled(double minimum, double maximum, double externalMinimum, double externalMaximum)
{
    FloatRange range(minimum, maximum, externalMinimum, externalMaximum);
    range.CalculateScaleFactor();
    return range;
}

void FloatRange::CalculateScaleFactor()
{
    const double innerWidth = std::max(minimum_, maximum_) - std::min(minimum_, maximum_);
    const double outerWidth = std::max(externalMinimum_, externalMaximum_) - std::min(externalMinimum_, externalMaximum_);
    if (innerWidth == 0.0)
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 266,
                "Failed to calculate the scale factor because of invalid double range [" << minimum_ << ", " << maximum_
                                                                                          << "].");
        return;
    }
    if (outerWidth == 0.0)
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 273,
                "Failed to calculate the scale factor because of invalid external range [" << externalMinimum_ << ", "
                                                                                            << externalMaximum_ << "].");
        return;
    }
    scaleFactor_ = outerWidth / innerWidth;
    if (scaleFactor_ == 0.0)
    {
        scaleFactor_ = 1.0;
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 282,
                "Failed to calculate the scale factor because of invalid double range ["
                    << minimum_ << ", " << maximum_ << "] or because invalid external range [" << externalMinimum_
                    << ", " << externalMaximum_ << "].");
    }
}

bool FloatRange::Clamp(double& x) const
{
    if (x < minimum_)
    {
        x = minimum_;
        return false;
    }
    if (x > maximum_)
    {
        x = maximum_;
        return false;
    }
    return IsInRange(x);  // false for NaN, which stays as it is
}

double FloatRange::MapInnerToOuter(double x) const
{
    return (x - minimum_) * scaleFactor_ + externalMinimum_;
}

bool FloatRange::operator==(const FloatRange& other) const
{
    return minimum_ == other.minimum_ && maximum_ == other.maximum_ && externalMinimum_ == other.externalMinimum_ &&
           externalMaximum_ == other.externalMaximum_ && scaleFactor_ == other.scaleFactor_;
}

std::ostream& operator<<(std::ostream& out, const FloatRange& range)
{
    return out << "FloatRange(" << range.GetMinimum() << ", " << range.GetMaximum() << ", "
               << range.GetExternalMinimum() << ", " << range.GetExternalMaximum() << ")";
}

FloatIntegerRange::FloatIntegerRange(double doubleMinimum, double doubleMaximum, std::int32_t integerMinimum,
                                     std::int32_t integerMaximum)
    : doubleMinimum_(doubleMinimum),
      doubleMaximum_(doubleMaximum),
      integerMinimum_(integerMinimum),
      integerMaximum_(integerMaximum)
{
}

FloatIntegerRange FloatIntegerRange::CreateScaled(double doubleMinimum, double doubleMaximum,
                                                  std::int32_t integerMinimum, std::int32_t integerMaximum)
{
    FloatIntegerRange range(doubleMinimum, doubleMaximum, integerMinimum, integerMaximum);
    range.CalculateScaleFactor();
    return range;
}

void FloatIntegerRange::CalculateScaleFactor()
{
    const double doubleWidth = doubleMaximum_ - doubleMinimum_;
    if (doubleWidth == 0.0)
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 348,
                "Failed to calculate the scale factor because of invalid double range [" << doubleMinimum_ << ", "
                                                                                          << doubleMaximum_ << "].");
        return;
    }
    const std::int64_t integerWidth = Width(integerMinimum_, integerMaximum_);
    if (integerWidth == 0)
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 356,
                "Failed to calculate the scale factor because of invalid integer range [" << integerMinimum_ << ", "
                                                                                           << integerMaximum_ << "].");
        return;
    }
    scaleFactor_ = static_cast<double>(integerWidth) / doubleWidth;
    if (scaleFactor_ == 0.0)
    {
        scaleFactor_ = 1.0;
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 365,
                "Failed to calculate the scale factor because of invalid double range ["
                    << doubleMinimum_ << ", " << doubleMaximum_ << "] or because invalid integer range ["
                    << integerMinimum_ << ", " << integerMaximum_ << "].");
    }
}

bool FloatIntegerRange::Clamp(double& x) const
{
    if (x < doubleMinimum_)
    {
        x = doubleMinimum_;
        return false;
    }
    if (x > doubleMaximum_)
    {
        x = doubleMaximum_;
        return false;
    }
    return IsInRange(x);  // false for NaN, which stays as it is
}

std::int32_t FloatIntegerRange::MapDoubleToInteger(double x) const
{
    return RoundHalfAwayFromZero((x - doubleMinimum_) * scaleFactor_ + integerMinimum_);
}

double FloatIntegerRange::MapIntegerToDouble(std::int32_t i) const
{
    // The difference is a 32-bit one, wrapping like the bus-side integers do.
    const auto difference =
        static_cast<std::int32_t>(static_cast<std::uint32_t>(i) - static_cast<std::uint32_t>(integerMinimum_));
    return static_cast<double>(difference) / scaleFactor_ + doubleMinimum_;
}

bool FloatIntegerRange::operator==(const FloatIntegerRange& other) const
{
    return doubleMinimum_ == other.doubleMinimum_ && doubleMaximum_ == other.doubleMaximum_ &&
           integerMinimum_ == other.integerMinimum_ && integerMaximum_ == other.integerMaximum_ &&
           scaleFactor_ == other.scaleFactor_;
}

std::ostream& operator<<(std::ostream& out, const FloatIntegerRange& range)
{
    return out << "FloatIntegerRange(" << range.GetDoubleMinimum() << ", " << range.GetDoubleMaximum() << ", "
               << range.GetIntegerMinimum() << ", " << range.GetIntegerMaximum() << ")";
}
} // namespace Okaro
