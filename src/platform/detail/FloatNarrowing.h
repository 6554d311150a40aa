#pragma once
// Narrowing a double to an IEEE single as the hardware does (round to nearest, ties to even),
// with no undefined conversion on the way. DPT 14 is written from the value model's double by
// both conversion paths, which must put the same bytes on the bus, and the byte codec writes
// singles too: all of them narrow here.
#include <cmath>
#include <limits>

namespace Okaro
{
// A finite double beyond the single range would make a plain conversion undefined. Up to half a
// unit in the last place above the largest float it still rounds down to that float; from there
// on (the tie included: its even neighbour is the infinity) it becomes the infinity of its sign.
inline float NarrowToFloat(double number)
{
    static_assert(std::numeric_limits<float>::is_iec559, "IEEE single expected");
    constexpr double kLargest = static_cast<double>(std::numeric_limits<float>::max());
    constexpr double kRoundsToInfinity = kLargest + 0x1p103;
    const double magnitude = std::fabs(number);
    if (std::isfinite(number) && magnitude > kLargest)
    {
        const float bound = magnitude < kRoundsToInfinity ? std::numeric_limits<float>::max()
                                                          : std::numeric_limits<float>::infinity();
        return std::signbit(number) ? -bound : bound;
    }
    // In range, an infinity or a NaN: defined, and rounded to nearest.
    return static_cast<float>(number);
}
} // namespace Okaro
