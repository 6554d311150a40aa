#include "knx/DptText.h"
#include "knx/HexText.h"
#include "knx/NumberText.h"
#include "knx/TextError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using TavKnx::TextError;

// The message of the TextError that `parse` throws; "" when it throws none.
template <typename Parse>
std::string ErrorOf(Parse parse)
{
    try
    {
        parse();
    }
    catch (const TextError& error)
    {
        return error.what();
    }
    return std::string();
}

TEST(ParseHexTest, ReadsTwoDigitsPerByteInEitherCase)
{
    EXPECT_THAT(TavKnx::ParseHex("0c1A"), ElementsAre(0x0C, 0x1A));
    EXPECT_THAT(TavKnx::ParseHex("fF00"), ElementsAre(0xFF, 0x00));
    EXPECT_THAT(TavKnx::ParseHex(""), IsEmpty());
}

TEST(ParseHexTest, ReadsTheFormsMonitorsAndLogLinesPrint)
{
    for (const char* text : {"0c1a", "0C 1A", "0c:1a", "0x0c1a", "0X0C1A", " 0c1a ", "0c  1a", "0x0c 1a", "0c1a\t"})
    {
        EXPECT_THAT(TavKnx::ParseHex(text), ElementsAre(0x0C, 0x1A)) << text;
    }
    EXPECT_THAT(TavKnx::ParseHex("0x"), IsEmpty());
    EXPECT_THAT(TavKnx::ParseHex("  "), IsEmpty());
}

TEST(ParseHexTest, RefusesAnOddNumberOfDigitsCountingDigitsOnly)
{
    EXPECT_EQ(ErrorOf([] { TavKnx::ParseHex("0c1"); }),
              "HEX: expected an even number of hex digits (two per byte, for example 0c1a), got 3 digits '0c1'");
    EXPECT_EQ(ErrorOf([] { TavKnx::ParseHex("0C 1A 0"); }),
              "HEX: expected an even number of hex digits (two per byte, for example 0c1a), got 5 digits '0C 1A 0'");
    EXPECT_EQ(ErrorOf([] { TavKnx::ParseHex(" 1"); }),
              "HEX: expected an even number of hex digits (two per byte, for example 0c1a), got 1 digit ' 1'");
    EXPECT_EQ(ErrorOf([] { TavKnx::ParseHex("0 c1a"); }),
              "HEX: expected two hex digits per byte between separators (for example 0c 1a), got '0 c1a'");
}

TEST(ParseHexTest, RefusesCharactersThatAreNoHexDigits)
{
    EXPECT_EQ(ErrorOf([] { TavKnx::ParseHex("0g", "BYTES"); }),
              "BYTES: expected hex digits 0-9 a-f (bytes may be separated by blanks or ':', 0x in front), got '0g'");
    EXPECT_EQ(ErrorOf([] { TavKnx::ParseHex("0c-1a"); }),
              "HEX: expected hex digits 0-9 a-f (bytes may be separated by blanks or ':', 0x in front), got '0c-1a'");
    EXPECT_EQ(ErrorOf([] { TavKnx::ParseHex("0x0x0c"); }),
              "HEX: expected hex digits 0-9 a-f (bytes may be separated by blanks or ':', 0x in front), got '0x0x0c'");
}

TEST(FormatHexTest, WritesLowerCase)
{
    EXPECT_EQ(TavKnx::FormatHex({0x0C, 0x1A, 0xFF}), "0c1aff");
    EXPECT_EQ(TavKnx::FormatHex({}), "");
}

TEST(ParseDptTest, ReadsMainAndSubInDecimal)
{
    const KNXDPT dpt = TavKnx::ParseDpt("9.001");
    EXPECT_EQ(dpt.main, 9);
    EXPECT_EQ(dpt.sub, 1);
    EXPECT_EQ(dpt.size, 0);
    EXPECT_EQ(TavKnx::FormatDpt(TavKnx::ParseDpt("9")), "9.0");
    EXPECT_EQ(TavKnx::PackDpt(TavKnx::ParseDpt("232.600")), (232u << 16) | 600u);
}

TEST(ParseDptTest, ReadsTheFormsIntegratorsPaste)
{
    for (const char* text : {"9.001", "9.1", "9,001", "DPST-9-1", "dpst-9-1", "DPT9.001", "DPT-9.001", "dpt 9.1", "DPT_9.001"})
    {
        EXPECT_EQ(TavKnx::FormatDpt(TavKnx::ParseDpt(text)), "9.1") << text;
        EXPECT_EQ(TavKnx::FormatDpt(*TavKnx::TryParseDpt(text)), "9.1") << text;
    }
    for (const char* text : {"9", "DPT-9", "DPT9", "dpt-9"})
    {
        EXPECT_EQ(TavKnx::FormatDpt(TavKnx::ParseDpt(text)), "9.0") << text;
    }
    for (const char* text : {"", "DPT", "DPST-9", "DPST-9.1", "DPT-9-1", "9.1.1", "9,1,1", "9 .1", "65536", "9.000065536"})
    {
        EXPECT_FALSE(TavKnx::TryParseDpt(text)) << text;
    }
    EXPECT_EQ(TavKnx::FormatDpt(*TavKnx::TryParseDpt("0009.000001")), "9.1");
}

TEST(FormatKnxDptTest, WritesTheSubNumberInThreeDigits)
{
    EXPECT_EQ(TavKnx::FormatKnxDpt(TavKnx::ParseDpt("9.1")), "9.001");
    EXPECT_EQ(TavKnx::FormatKnxDpt(TavKnx::ParseDpt("232.600")), "232.600");
    EXPECT_EQ(TavKnx::FormatKnxDpt(TavKnx::ParseDpt("1")), "1.000");
    EXPECT_EQ(TavKnx::FormatKnxDpt(TavKnx::ParseDpt("1.65535")), "1.65535");
}

TEST(ParseDptTest, RefusesOtherSpellingsAndNamesTheNumberOutOfRange)
{
    EXPECT_EQ(ErrorOf([] { TavKnx::ParseDpt("x.1"); }),
              "DPT: expected MAIN.SUB in decimal (9.001, 9.1, 9, 9,001, DPST-9-1, DPT-9 or DPT9.001), got 'x.1'");
    EXPECT_EQ(ErrorOf([] { TavKnx::ParseDpt("65536.1"); }),
              "DPT main number: expected a whole number from 0 to 65535, got '65536'");
    EXPECT_EQ(ErrorOf([] { TavKnx::ParseDpt("9.65536", "--dpt"); }),
              "--dpt sub number: expected a whole number from 0 to 65535, got '65536'");
}

TEST(ParseBitsTest, TakesZeroTo255)
{
    EXPECT_EQ(TavKnx::ParseBits("255"), 255u);
    EXPECT_EQ(ErrorOf([] { TavKnx::ParseBits("256"); }), "--bits: expected a whole number from 0 to 255, got '256'");
}

TEST(DefaultBitsTest, UsesTheExpectedSizeOnlyForOneByteOfASubByteDpt)
{
    EXPECT_EQ(TavKnx::DefaultBits(1, 1), 1u);
    EXPECT_EQ(TavKnx::DefaultBits(1, 2), 16u);
    EXPECT_EQ(TavKnx::DefaultBits(9, 2), 16u);
}

TEST(ParseSignedTest, TakesOneLeadingMinusAndNothingElse)
{
    EXPECT_EQ(TavKnx::ParseSigned("-5", -10, 10, "N"), -5);
    EXPECT_EQ(ErrorOf([] { TavKnx::ParseSigned("+5", -10, 10, "N"); }),
              "N: expected a whole number from -10 to 10, got '+5'");
    EXPECT_EQ(ErrorOf([] { TavKnx::ParseUnsigned("-0", 10, "N"); }), "N: expected a whole number from 0 to 10, got '-0'");
}

TEST(QuoteTest, CutsAt40CharactersAndHidesControlBytes)
{
    EXPECT_EQ(TavKnx::Quote("a\tb"), "'a?b'");
    EXPECT_EQ(TavKnx::Quote(std::string(41, 'x')), "'" + std::string(40, 'x') + "...'");
}
} // namespace
