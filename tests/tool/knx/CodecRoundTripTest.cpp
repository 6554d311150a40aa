#include "knx/CodecRoundTrip.h"
#include "knx/DptText.h"

#include <TavObjectModel/GroupValueOkaValue.h>

#include <log4cplus/logger.h>

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace
{
// "unchanged", "invalid code", "unreadable" or "changed to TEXT" for `value` encoded on `dpt`.
std::string Check(const char* dpt, const OKAVALUE& value)
{
    const std::uint32_t packed = TavKnx::PackDpt(TavKnx::ParseDpt(dpt));
    const boost::optional<KnxStack::GroupValue> written = Okaro::OkaValueToGroupValue(value, packed);
    if (!written)
    {
        return "refused";
    }
    const boost::optional<TavKnx::CodecChange> change = TavKnx::FindCodecChange(value, *written, packed);
    if (!change)
    {
        return "unchanged";
    }
    switch (change->kind)
    {
    case TavKnx::CodecChange::InvalidCode:
        return "invalid code";
    case TavKnx::CodecChange::Unreadable:
        return "unreadable";
    case TavKnx::CodecChange::Changed:
        break;
    }
    return "changed to " + change->readBack;
}

OKAVALUE Float(double number)
{
    OKAVALUE value(ivtFloat);
    value.numeric.real = number;
    return value;
}

OKAVALUE Integer(std::int32_t number)
{
    OKAVALUE value(ivtInteger);
    value.numeric.integer = number;
    return value;
}

TEST(CodecRoundTripTest, FindsClampingAndTheInvalidCode)
{
    EXPECT_EQ(Check("9.001", Float(700000)), "changed to 670433.28");
    EXPECT_EQ(Check("9.001", Float(32767)), "invalid code");
    EXPECT_EQ(Check("9.001", Float(-300)), "unreadable");
    EXPECT_EQ(Check("8.001", Integer(100000)), "changed to 32767");
}

TEST(CodecRoundTripTest, RoundingWithinTheResolutionAndNanAreNoChange)
{
    EXPECT_EQ(Check("9.001", Float(21.555)), "unchanged");
    EXPECT_EQ(Check("9.001", Float(0.004)), "unchanged");
    EXPECT_EQ(Check("9.001", Float(670760)), "unchanged");
    EXPECT_EQ(Check("9.001", Float(std::numeric_limits<double>::quiet_NaN())), "unchanged");
    EXPECT_EQ(Check("14.068", Float(21.5)), "unchanged");
    EXPECT_EQ(Check("8.001", Integer(-32768)), "unchanged");
}

TEST(CodecRoundTripTest, LeavesTheLogLevelAsItWas)
{
    log4cplus::Logger root = log4cplus::Logger::getRoot();
    const log4cplus::LogLevel before = root.getLogLevel();
    root.setLogLevel(log4cplus::INFO_LOG_LEVEL);
    Check("9.001", Float(-300));
    EXPECT_EQ(root.getLogLevel(), log4cplus::INFO_LOG_LEVEL);
    root.setLogLevel(before);
}
} // namespace
