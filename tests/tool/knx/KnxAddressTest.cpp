#include "knx/KnxAddress.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
using TavKnx::FormatGroupAddress;
using TavKnx::FormatIndividualAddress;
using TavKnx::ParseGroupAddress;

// The address as a number, -1 when refused (a printable result for the comparisons).
long Parsed(const std::string& text)
{
    const auto address = ParseGroupAddress(text);
    return address ? static_cast<long>(*address) : -1L;
}

TEST(FormatGroupAddressTest, WritesThreeLevels)
{
    EXPECT_EQ(FormatGroupAddress(0x0000), "0/0/0");
    EXPECT_EQ(FormatGroupAddress(0x0A03), "1/2/3");
    EXPECT_EQ(FormatGroupAddress(0xFFFF), "31/7/255");
    EXPECT_EQ(FormatGroupAddress(0x1003), "2/0/3");
}

TEST(FormatIndividualAddressTest, WritesAreaLineDevice)
{
    EXPECT_EQ(FormatIndividualAddress(0x1105), "1.1.5");
    EXPECT_EQ(FormatIndividualAddress(0xFFFF), "15.15.255");
    EXPECT_EQ(FormatIndividualAddress(0x0000), "0.0.0");
}

TEST(ParseGroupAddressTest, ReadsThreeLevels)
{
    EXPECT_EQ(Parsed("0/0/0"), 0x0000);
    EXPECT_EQ(Parsed("1/2/3"), 0x0A03);
    EXPECT_EQ(Parsed("31/7/255"), 0xFFFF);
    EXPECT_EQ(Parsed("2/0/3"), 0x1003);
}

TEST(ParseGroupAddressTest, ReadsTwoLevels)
{
    EXPECT_EQ(Parsed("1/515"), 0x0A03);
    EXPECT_EQ(Parsed("0/0"), 0x0000);
    EXPECT_EQ(Parsed("31/2047"), 0xFFFF);
}

TEST(ParseGroupAddressTest, TakesLeadingZerosUpToFiveDigits)
{
    EXPECT_EQ(Parsed("01/02/003"), 0x0A03);
    EXPECT_EQ(Parsed("00031/00007/00255"), 0xFFFF);
    EXPECT_EQ(Parsed("1/02047"), 0x0FFF);
    EXPECT_FALSE(ParseGroupAddress("000001/2/3"));
    EXPECT_FALSE(ParseGroupAddress("1/2/000003"));
    EXPECT_FALSE(ParseGroupAddress("1/000002047"));
}

TEST(ParseGroupAddressTest, RefusesLevelsOutOfRange)
{
    EXPECT_FALSE(ParseGroupAddress("32/0/0"));
    EXPECT_FALSE(ParseGroupAddress("1/8/0"));
    EXPECT_FALSE(ParseGroupAddress("1/2/256"));
    EXPECT_FALSE(ParseGroupAddress("32/0"));
    EXPECT_FALSE(ParseGroupAddress("1/2048"));
    EXPECT_FALSE(ParseGroupAddress("99999/0/0"));
}

TEST(ParseGroupAddressTest, RefusesWrongShapes)
{
    for (const std::string text : {"", "1", "1/2/3/4", "1//3", "/2/3", "1/2/", "1/-/-", "1/2/-", "1/-",
                                   " 1/2/3", "1/2/3 ", "1 /2/3", "+1/2/3", "-1/2/3", "1/2/+3", "1.2.3",
                                   "1/2/3\n", "a/b/c", "0x1/2/3", "1/2/3a", "/", "//"})
    {
        EXPECT_FALSE(ParseGroupAddress(text)) << "'" << text << "'";
    }
}

TEST(ParseGroupAddressTest, RefusesNulAndHugeText)
{
    EXPECT_FALSE(ParseGroupAddress(std::string("1/2/3\0", 6)));
    EXPECT_FALSE(ParseGroupAddress(std::string("1/\0/3", 5)));
    EXPECT_FALSE(ParseGroupAddress(std::string(10 * 1024 * 1024, '7')));
    EXPECT_FALSE(ParseGroupAddress("1/2/" + std::string(10 * 1024 * 1024, '0') + "3"));
    EXPECT_FALSE(ParseGroupAddress(std::string(10 * 1024 * 1024, '/')));
}

TEST(ParseGroupAddressTest, ReadsBackWhatFormatWrites)
{
    for (std::uint32_t address = 0; address <= 0xFFFF; ++address)
    {
        const auto parsed = ParseGroupAddress(FormatGroupAddress(static_cast<std::uint16_t>(address)));
        ASSERT_TRUE(parsed) << address;
        ASSERT_EQ(*parsed, address);
    }
}
} // namespace

namespace
{
TEST(FormatGroupAddressLikeTest, EchoesTwoLevelAddressesInTwoLevels)
{
    EXPECT_EQ(TavKnx::FormatTwoLevelGroupAddress(*TavKnx::ParseGroupAddress("4/1024")), "4/1024");
    EXPECT_EQ(TavKnx::FormatGroupAddressLike(*TavKnx::ParseGroupAddress("4/1024"), "4/1024"), "4/1024");
    EXPECT_EQ(TavKnx::FormatGroupAddressLike(*TavKnx::ParseGroupAddress("4/4/0"), "4/4/0"), "4/4/0");
    EXPECT_EQ(TavKnx::FormatGroupAddressLike(*TavKnx::ParseGroupAddress("31/2047"), "31/2047"), "31/2047");
}
} // namespace
