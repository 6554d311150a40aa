#pragma once
// The KNX 2-octet float (DPT 9): value = 0.01 * M * 2^E, with M a 12-bit two's complement
// mantissa (sign at bit 15, low 11 bits at bits 0..10) and E a 4-bit exponent (bits 11..14).
#include <cstdint>
#include <limits>

namespace KnxStack
{
// The code that means "no valid value".
constexpr std::uint16_t KnxFloat16Invalid = 0x7FFF;
// The extremes of the valid codes: 670433.28 and -671088.64.
constexpr std::uint16_t KnxFloat16Max = 0x7FFE;
constexpr std::uint16_t KnxFloat16Min = 0xF800;

// Rounds to the nearest representable value with the smallest exponent. NaN and 32767.0
// give the invalid code; values beyond the range (infinities included) clamp to the
// largest or smallest valid code.
std::uint16_t EncodeKnxFloat16(double value);
// NaN for the invalid code. Inline: every received DPT 9 value comes through here.
inline double DecodeKnxFloat16(std::uint16_t code)
{
    if (code == KnxFloat16Invalid)
    {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const int exponent = (code >> 11) & 0x0F;
    int mantissa = code & 0x07FF;
    if ((code & 0x8000u) != 0)
    {
        mantissa -= 2048;
    }
    // M * 2^E is an exact integer, so one division gives the double nearest to the value.
    return static_cast<double>(mantissa * (1 << exponent)) / 100.0;
}
} // namespace KnxStack
