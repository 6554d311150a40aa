#include <platform/KnxFloat16.h>

#include <cmath>
#include <limits>

namespace KnxStack
{
namespace
{
constexpr int MantissaMin = -2048;
constexpr int MantissaMax = 2047;
constexpr int ExponentMax = 15;

// 2^-exponent: multiplying by it is exact, like ldexp, without a library call per step.
constexpr double InversePowerOfTwo[ExponentMax + 1] = {
    1.0,          0.5,           0.25,          0.125,          0.0625,         0.03125,
    0.015625,     0.0078125,     0.00390625,    0.001953125,    0.0009765625,   0.00048828125,
    0.000244140625, 0.0001220703125, 0.00006103515625, 0.000030517578125};

// std::round (half away from zero) for |x| below 2^31: the fraction x - trunc(x) of a double
// is exact, so this rounds exactly as the library does, without its call.
double RoundHalfAwayFromZero(double x)
{
    const double whole = static_cast<double>(static_cast<std::int32_t>(x));
    const double fraction = x - whole;
    if (fraction >= 0.5)
    {
        return whole + 1.0;
    }
    if (fraction <= -0.5)
    {
        return whole - 1.0;
    }
    return whole;
}

std::uint16_t Pack(int mantissa, int exponent)
{
    const auto bits = static_cast<std::uint16_t>(mantissa) & 0x0FFFu;  // 12-bit two's complement
    const std::uint16_t sign = (bits & 0x0800u) != 0 ? 0x8000u : 0u;
    return static_cast<std::uint16_t>(sign | (static_cast<unsigned>(exponent) << 11) | (bits & 0x07FFu));
}
} // namespace

std::uint16_t EncodeKnxFloat16(double value)
{
    // 32767.0 is how the converters hand over an invalid value.
    if (std::isnan(value) || value == 32767.0)
    {
        return KnxFloat16Invalid;
    }
    const double hundredths = value * 100.0;
    for (int exponent = 0; exponent <= ExponentMax; ++exponent)
    {
        const double scaled = hundredths * InversePowerOfTwo[exponent];
        // Rounds outside 12 bits for sure: the rounding below would only refuse it.
        if (std::fabs(scaled) >= MantissaMax + 1.5)
        {
            continue;
        }
        // Rounding may carry into a 12th bit (2047.5 -> 2048): then the next exponent takes it.
        const double mantissa = RoundHalfAwayFromZero(scaled);
        if (mantissa >= MantissaMin && mantissa <= MantissaMax)
        {
            const std::uint16_t code = Pack(static_cast<int>(mantissa), exponent);
            // 2047 * 2^15 is the invalid code, not a value.
            return code == KnxFloat16Invalid ? KnxFloat16Max : code;
        }
    }
    return value > 0 ? KnxFloat16Max : KnxFloat16Min;
}
} // namespace KnxStack
