#include <platform/KnxFloat16.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

using KnxStack::DecodeKnxFloat16;
using KnxStack::EncodeKnxFloat16;

// Working: value = 0.01 * M * 2^E; M is 12-bit two's complement, its sign bit at bit 15 and
// its low 11 bits at bits 0..10; E sits at bits 11..14. The encoder takes the smallest E
// whose rounded mantissa fits in [-2048, 2047].

TEST(KnxFloat16, EncodesWithTheSmallestExponent)
{
    // 21.5 -> 2150 hundredths; E=0: 2150 > 2047; E=1: 1075 = 0x433 -> 0x0800 | 0x0433.
    EXPECT_EQ(EncodeKnxFloat16(21.5), 0x0C33);
    // 20.47 -> 2047, E=0 -> 0x07FF.
    EXPECT_EQ(EncodeKnxFloat16(20.47), 0x07FF);
    // 20.48 -> 2048 does not fit with E=0; E=1: 1024 = 0x400 -> 0x0C00.
    EXPECT_EQ(EncodeKnxFloat16(20.48), 0x0C00);
    EXPECT_EQ(EncodeKnxFloat16(0.0), 0x0000);
    EXPECT_EQ(EncodeKnxFloat16(-0.0), 0x0000);
    EXPECT_EQ(EncodeKnxFloat16(0.01), 0x0001);
}

TEST(KnxFloat16, EncodesNegativeValuesInTwosComplement)
{
    // -0.01 -> M = -1 = 0xFFF: sign -> 0x8000, low bits 0x7FF -> 0x87FF.
    EXPECT_EQ(EncodeKnxFloat16(-0.01), 0x87FF);
    // -20.48 -> M = -2048 = 0x800: sign only -> 0x8000.
    EXPECT_EQ(EncodeKnxFloat16(-20.48), 0x8000);
    // -30 -> -3000; E=1: -1500 = 0xA24 -> 0x8000 | 0x0800 | 0x0224 = 0x8A24.
    EXPECT_EQ(EncodeKnxFloat16(-30.0), 0x8A24);
}

TEST(KnxFloat16, RoundsToTheNearestRepresentableValue)
{
    // 0.004 -> 0.4 hundredths -> 0; 0.006 -> 0.6 -> 1.
    EXPECT_EQ(EncodeKnxFloat16(0.004), 0x0000);
    EXPECT_EQ(EncodeKnxFloat16(0.006), 0x0001);
    // 21.513 -> 2151.3; E=1: 1075.65 -> 1076 = 0x434 -> 0x0C34 (21.52).
    EXPECT_EQ(EncodeKnxFloat16(21.513), 0x0C34);
    // -0.006 -> -0.6 -> -1 -> 0x87FF.
    EXPECT_EQ(EncodeKnxFloat16(-0.006), 0x87FF);
}

TEST(KnxFloat16, RenormalisesWhenRoundingOverflowsTheMantissa)
{
    // 40.955 -> 4095.5; E=1: 2047.75 rounds to 2048, which does not fit;
    // E=2: 1023.875 -> 1024 = 0x400 -> 0x1000 | 0x0400 = 0x1400 (40.96).
    EXPECT_EQ(EncodeKnxFloat16(40.955), 0x1400);
    EXPECT_DOUBLE_EQ(DecodeKnxFloat16(0x1400), 40.96);
    // 20.4751 -> 2047.51; E=0 rounds to 2048; E=1: 1023.755 -> 1024 -> 0x0C00 (20.48).
    EXPECT_EQ(EncodeKnxFloat16(20.4751), 0x0C00);
}

TEST(KnxFloat16, Decodes)
{
    // 0x0C1A: E=1, M=0x41A=1050 -> 2100 hundredths.
    EXPECT_EQ(DecodeKnxFloat16(0x0C1A), 21.0);
    EXPECT_EQ(DecodeKnxFloat16(0x0C33), 21.5);
    EXPECT_EQ(DecodeKnxFloat16(0x87FF), -0.01);
    EXPECT_EQ(DecodeKnxFloat16(0x8A24), -30.0);
    EXPECT_EQ(DecodeKnxFloat16(0x0000), 0.0);
    // 0x8000: M = -2048, E = 0.
    EXPECT_EQ(DecodeKnxFloat16(0x8000), -20.48);
}

TEST(KnxFloat16, EveryHundredthOfTheSmallestExponentRoundTrips)
{
    for (int hundredths = -2048; hundredths <= 2047; ++hundredths)
    {
        const double value = hundredths / 100.0;
        const std::uint16_t expected =
            hundredths >= 0 ? static_cast<std::uint16_t>(hundredths) : static_cast<std::uint16_t>(0x8000 | (hundredths + 2048));
        const std::uint16_t code = EncodeKnxFloat16(value);
        ASSERT_EQ(code, expected) << "value " << value;
        ASSERT_NEAR(DecodeKnxFloat16(code), value, 1e-9 * 0.01) << "value " << value;
    }
}

TEST(KnxFloat16, Extremes)
{
    // Largest valid: M=2046, E=15 -> 0x7800 | 0x7FE = 0x7FFE; 2046 * 32768 / 100 = 670433.28.
    EXPECT_EQ(EncodeKnxFloat16(670433.28), 0x7FFE);
    EXPECT_EQ(DecodeKnxFloat16(0x7FFE), 670433.28);
    // Smallest: M=-2048, E=15 -> 0x8000 | 0x7800 = 0xF800; -2048 * 32768 / 100 = -671088.64.
    EXPECT_EQ(EncodeKnxFloat16(-671088.64), 0xF800);
    EXPECT_EQ(DecodeKnxFloat16(0xF800), -671088.64);
}

TEST(KnxFloat16, ValuesBeyondTheRangeClamp)
{
    // 670600 -> 2046.5088 * 2^15 rounds to M=2047, E=15, which would be the invalid code.
    EXPECT_EQ(EncodeKnxFloat16(670600.0), 0x7FFE);
    EXPECT_EQ(EncodeKnxFloat16(670760.96), 0x7FFE);
    EXPECT_EQ(EncodeKnxFloat16(1e9), 0x7FFE);
    EXPECT_EQ(EncodeKnxFloat16(std::numeric_limits<double>::max()), 0x7FFE);
    EXPECT_EQ(EncodeKnxFloat16(std::numeric_limits<double>::infinity()), 0x7FFE);
    // -671088.65 rounds to M=-2048 at E=15 anyway; -680000 needs M=-2075.
    EXPECT_EQ(EncodeKnxFloat16(-671088.65), 0xF800);
    EXPECT_EQ(EncodeKnxFloat16(-680000.0), 0xF800);
    EXPECT_EQ(EncodeKnxFloat16(-std::numeric_limits<double>::max()), 0xF800);
    EXPECT_EQ(EncodeKnxFloat16(-std::numeric_limits<double>::infinity()), 0xF800);
}

TEST(KnxFloat16, NaNAnd32767AreTheInvalidCode)
{
    EXPECT_EQ(EncodeKnxFloat16(std::numeric_limits<double>::quiet_NaN()), 0x7FFF);
    EXPECT_EQ(EncodeKnxFloat16(32767.0), 0x7FFF);
    EXPECT_TRUE(std::isnan(DecodeKnxFloat16(0x7FFF)));
}

TEST(KnxFloat16, OnlyExactly32767IsInvalid)
{
    // 32767.01 -> 3276701; E=11: 1599.95 -> 1600 = 0x640 -> 0x5800 | 0x0640 = 0x5E40 (32768).
    EXPECT_EQ(EncodeKnxFloat16(32767.01), 0x5E40);
    EXPECT_EQ(EncodeKnxFloat16(32766.0), 0x5E40);
    EXPECT_EQ(DecodeKnxFloat16(0x5E40), 32768.0);
}

TEST(KnxFloat16, EncodingMatchesTheLdexpWorkingForEveryCodeAndTheValuesBetween)
{
    // The working written with ldexp, as a reference for the encoder's power-of-two table.
    const auto reference = [](double value) -> std::uint16_t {
        const double hundredths = value * 100.0;
        for (int exponent = 0; exponent <= 15; ++exponent)
        {
            const double mantissa = std::round(std::ldexp(hundredths, -exponent));
            if (mantissa >= -2048 && mantissa <= 2047)
            {
                const auto bits = static_cast<std::uint16_t>(static_cast<int>(mantissa)) & 0x0FFFu;
                const auto code = static_cast<std::uint16_t>(((bits & 0x0800u) != 0 ? 0x8000u : 0u) |
                                                             (static_cast<unsigned>(exponent) << 11) | (bits & 0x07FFu));
                return code == 0x7FFF ? 0x7FFE : code;
            }
        }
        return value > 0 ? 0x7FFE : 0xF800;
    };
    for (std::uint32_t code = 0; code <= 0xFFFFu; ++code)
    {
        if (code == 0x7FFFu)
            continue;
        const double value = DecodeKnxFloat16(static_cast<std::uint16_t>(code));
        for (const double probe : {value, std::nextafter(value, 1e9), std::nextafter(value, -1e9), value + 0.005,
                                   value - 0.005, value * 1.0001})
        {
            if (probe == 32767.0)
                continue;
            ASSERT_EQ(EncodeKnxFloat16(probe), reference(probe)) << probe;
        }
    }
}
