#include "bridge/BridgeTopics.h"

#include "knx/TextError.h"

#include <gtest/gtest.h>

using TavKnx::BridgeTopics;
using TavKnx::CommandKind;

namespace
{
constexpr std::uint16_t GA(unsigned main, unsigned middle, unsigned sub)
{
    return static_cast<std::uint16_t>(main << 11 | middle << 8 | sub);
}
} // namespace

TEST(BridgeTopics, NamesTheGroupAddressAsThreeLevels)
{
    const BridgeTopics topics("knx");
    EXPECT_EQ(topics.State(GA(1, 2, 3)), "knx/1/2/3/state");
    EXPECT_EQ(topics.Set(GA(31, 7, 255)), "knx/31/7/255/set");
    EXPECT_EQ(topics.Read(GA(0, 0, 1)), "knx/0/0/1/read");
    EXPECT_EQ(topics.Error(GA(1, 2, 3)), "knx/1/2/3/error");
    EXPECT_EQ(topics.Raw(GA(1, 2, 3)), "knx/raw/1/2/3");
    EXPECT_EQ(topics.Status(), "knx/status");
    EXPECT_EQ(topics.SetFilter(), "knx/+/+/+/set");
    EXPECT_EQ(topics.ReadFilter(), "knx/+/+/+/read");
}

TEST(BridgeTopics, ParsesSetAndReadUnderItsPrefix)
{
    const BridgeTopics topics("site/knx");
    const auto set = topics.ParseCommand("site/knx/1/2/3/set");
    ASSERT_TRUE(set);
    EXPECT_EQ(set->groupAddress, GA(1, 2, 3));
    EXPECT_EQ(set->kind, CommandKind::Set);
    const auto read = topics.ParseCommand("site/knx/31/7/255/read");
    ASSERT_TRUE(read);
    EXPECT_EQ(read->groupAddress, GA(31, 7, 255));
    EXPECT_EQ(read->kind, CommandKind::Read);
}

TEST(BridgeTopics, RefusesEveryOtherTopic)
{
    const BridgeTopics topics("knx");
    for (const char* topic : {"knx/1/2/3/state", "knx/1/2/3/error", "knx/1/2/set", "knx/1/2/3/4/set", "knx/32/0/0/set",
                              "knx/1/8/0/set", "knx/1/2/256/set", "knx/a/b/c/set", "knx/1//3/set", "knxx/1/2/3/set",
                              "other/1/2/3/set", "knx/set", "knx", "", "knx/raw/1/2/3", "knx/1/2/3/set/"})
    {
        EXPECT_FALSE(topics.ParseCommand(topic)) << topic;
    }
}

TEST(BridgeTopics, ChecksPrefixes)
{
    EXPECT_EQ(TavKnx::CheckTopicPrefix("knx", "--prefix"), "knx");
    EXPECT_EQ(TavKnx::CheckTopicPrefix("home/knx", "--prefix"), "home/knx");
    for (const char* prefix : {"", "/knx", "knx/", "a//b", "knx/#", "knx/+"})
    {
        EXPECT_THROW(TavKnx::CheckTopicPrefix(prefix, "--prefix"), TavKnx::TextError) << prefix;
    }
    try
    {
        TavKnx::CheckTopicPrefix("knx/#", "--discovery");
        FAIL();
    }
    catch (const TavKnx::TextError& error)
    {
        EXPECT_STREQ(error.what(),
                     "--discovery: expected topic levels without wildcards or empty levels (for example knx), got 'knx/#'");
    }
}
