#include <TavObjectModel/BoundedInt.h>

#include <gtest/gtest.h>

#include <stdexcept>

using Okaro::LogicalDeviceId;

TEST(BoundedInt, AcceptsBothLogicalDevices)
{
    EXPECT_EQ(LogicalDeviceId(1).Get(), 1);
    EXPECT_EQ(LogicalDeviceId(2).Get(), 2);
}

TEST(BoundedInt, RefusesValuesOutsideTheRange)
{
    EXPECT_THROW(LogicalDeviceId(0), std::out_of_range);
    EXPECT_THROW(LogicalDeviceId(3), std::out_of_range);
    EXPECT_THROW(LogicalDeviceId(-1), std::out_of_range);
}

TEST(BoundedInt, ComparesByValue)
{
    EXPECT_EQ(LogicalDeviceId(1), LogicalDeviceId(1));
    EXPECT_NE(LogicalDeviceId(1), LogicalDeviceId(2));
}

TEST(BoundedInt, OtherRangesUseTheirOwnBounds)
{
    struct PercentTag
    {
    };
    using Percent = Okaro::BoundedInt<unsigned, 0u, 100u, PercentTag>;
    EXPECT_EQ(Percent(0u).Get(), 0u);
    EXPECT_EQ(Percent(100u).Get(), 100u);
    EXPECT_THROW(Percent(101u), std::out_of_range);
}
