#include "knx/GroupAddressFilter.h"
#include "knx/KnxAddress.h"
#include "knx/TextError.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
std::uint16_t GA(const char* text)
{
    return *TavKnx::ParseGroupAddress(text);
}

std::string ErrorOf(const std::string& pattern)
{
    TavKnx::GroupAddressFilter filter;
    try
    {
        filter.Add(pattern);
    }
    catch (const TavKnx::TextError& error)
    {
        return error.what();
    }
    return std::string();
}

TEST(GroupAddressFilterTest, WithoutPatternsEverythingPasses)
{
    const TavKnx::GroupAddressFilter filter;
    EXPECT_TRUE(filter.Empty());
    EXPECT_TRUE(filter.Matches(GA("31/7/255")));
}

TEST(GroupAddressFilterTest, MatchesAnAddressAMiddleGroupOrAMainGroup)
{
    TavKnx::GroupAddressFilter filter;
    filter.Add("1/2/3");
    filter.Add("2/3/*");
    filter.Add("4/*");
    EXPECT_TRUE(filter.Matches(GA("1/2/3")));
    EXPECT_FALSE(filter.Matches(GA("1/2/4")));
    EXPECT_TRUE(filter.Matches(GA("2/3/0")));
    EXPECT_TRUE(filter.Matches(GA("2/3/255")));
    EXPECT_FALSE(filter.Matches(GA("2/4/0")));
    EXPECT_FALSE(filter.Matches(GA("2/2/255")));
    EXPECT_TRUE(filter.Matches(GA("4/0/0")));
    EXPECT_TRUE(filter.Matches(GA("4/7/255")));
    EXPECT_FALSE(filter.Matches(GA("5/0/0")));
    EXPECT_FALSE(filter.Matches(GA("3/7/255")));
}

TEST(GroupAddressFilterTest, TakesTwoLevelAddressesAndTheWildcard)
{
    TavKnx::GroupAddressFilter filter;
    filter.Add("4/1024");
    EXPECT_TRUE(filter.Matches(GA("4/4/0")));
    EXPECT_FALSE(filter.Matches(GA("4/4/1")));
    filter.Add("*");
    EXPECT_TRUE(filter.Matches(GA("0/0/0")));
}

TEST(GroupAddressFilterTest, RefusesAnythingElseNamingTheForms)
{
    const std::string forms =
        "--filter: expected a group address (1/2/3, 1/1024), a middle group (1/2/*), a main group (1/*) or *, got ";
    EXPECT_EQ(ErrorOf("32/*"), forms + "'32/*'");
    EXPECT_EQ(ErrorOf("1/8/*"), forms + "'1/8/*'");
    EXPECT_EQ(ErrorOf("1/*/3"), forms + "'1/*/3'");
    EXPECT_EQ(ErrorOf("*/1"), forms + "'*/1'");
    EXPECT_EQ(ErrorOf(""), forms + "''");
    EXPECT_EQ(ErrorOf("1/2/3/*"), forms + "'1/2/3/*'");
    EXPECT_EQ(ErrorOf("99999999999999/*"), forms + "'99999999999999/*'");
}
} // namespace
