#include "support/GroupValues.h"

#include <platform/BinaryData.h>
#include <platform/GroupValue.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using KnxStack::BinaryData;
using KnxStack::GroupValueException;
using TavTest::MakeBinaryData;

namespace
{
template <typename Call>
std::string ExceptionText(Call call)
{
    try
    {
        call();
    }
    catch (const GroupValueException& exception)
    {
        return exception.what();
    }
    return "no exception";
}
} // namespace

TEST(BinaryData, DefaultIsEmpty)
{
    const BinaryData data;
    EXPECT_EQ(data.GetSize(), 0u);
    EXPECT_EQ(data.ToString(), "");
}

TEST(BinaryData, ConstructionCopiesTheBytes)
{
    const unsigned char bytes[] = {0x0c, 0x1a, 0xff};
    const BinaryData data(bytes, 3);
    ASSERT_EQ(data.GetSize(), 3u);
    EXPECT_EQ(data.GetUInt8Value(0), 0x0c);
    EXPECT_EQ(data.GetUInt8Value(1), 0x1a);
    EXPECT_EQ(data.GetUInt8Value(2), 0xff);
}

TEST(BinaryData, ToStringIsLowerCaseHexPairsSeparatedByBlanks)
{
    EXPECT_EQ(MakeBinaryData({0x0c, 0x1a}).ToString(), "0c 1a");
    EXPECT_EQ(MakeBinaryData({0x00}).ToString(), "00");
    EXPECT_EQ(MakeBinaryData({0xAB, 0xcd, 0xEF, 0x09}).ToString(), "ab cd ef 09");
}

TEST(BinaryData, MultiByteReadsAreMostSignificantByteFirst)
{
    const BinaryData data = MakeBinaryData({0x01, 0x02, 0x03, 0x04, 0x05});
    EXPECT_EQ(data.GetUInt24Value(0), 0x010203u);
    EXPECT_EQ(data.GetUInt24Value(2), 0x030405u);
    EXPECT_EQ(data.GetUInt32Value(0), 0x01020304u);
    EXPECT_EQ(data.GetUInt32Value(1), 0x02030405u);
    EXPECT_EQ(MakeBinaryData({0xff, 0xff, 0xff, 0xff}).GetUInt32Value(0), 0xffffffffu);
}

TEST(BinaryData, ReadsPastTheEndThrowWithAccessorAndByteCounts)
{
    const BinaryData data = MakeBinaryData({0x01, 0x02, 0x03});
    EXPECT_EQ(ExceptionText([&] { data.GetUInt8Value(3); }), "GetUInt8Value: needs 4 bytes, has 3");
    EXPECT_EQ(ExceptionText([&] { data.GetUInt24Value(1); }), "GetUInt24Value: needs 4 bytes, has 3");
    EXPECT_EQ(ExceptionText([&] { data.GetUInt32Value(0); }), "GetUInt32Value: needs 4 bytes, has 3");
    EXPECT_EQ(ExceptionText([] { BinaryData().GetUInt8Value(0); }), "GetUInt8Value: needs 1 bytes, has 0");
}

TEST(BinaryData, AnOffsetNearTheTopOfTheRangeDoesNotWrapAround)
{
    const BinaryData data = MakeBinaryData({0x01, 0x02, 0x03});
    EXPECT_EQ(ExceptionText([&] { data.GetUInt32Value(0xffffffffu); }),
              "GetUInt32Value: needs 4294967299 bytes, has 3");
}

TEST(BinaryData, SetUInt8ValueOverwritesOrGrowsWithZeros)
{
    BinaryData data = MakeBinaryData({0x01, 0x02});
    data.SetUInt8Value(1, 0x7f);
    EXPECT_EQ(data.ToString(), "01 7f");
    data.SetUInt8Value(4, 0x80);
    EXPECT_EQ(data.ToString(), "01 7f 00 00 80");
}

TEST(BinaryData, ResizeAddsZerosOrCuts)
{
    BinaryData data = MakeBinaryData({0x01, 0x02});
    data.Resize(3);
    EXPECT_EQ(data.ToString(), "01 02 00");
    data.Resize(1);
    EXPECT_EQ(data.ToString(), "01");
}

TEST(BinaryData, EqualityComparesTheBytes)
{
    EXPECT_EQ(MakeBinaryData({0x01, 0x02}), MakeBinaryData({0x01, 0x02}));
    EXPECT_NE(MakeBinaryData({0x01, 0x02}), MakeBinaryData({0x01}));
    EXPECT_NE(MakeBinaryData({0x01, 0x02}), MakeBinaryData({0x01, 0x03}));
}

TEST(BinaryData, AssignReplacesTheBytesWhetherShorterOrLonger)
{
    BinaryData data;
    const unsigned char three[] = {0x01, 0x02, 0x03};
    const unsigned char one[] = {0xAB};
    data.Assign(three, 3);
    ASSERT_EQ(data.GetSize(), 3u);
    EXPECT_EQ(data.GetUInt8Value(2), 0x03);
    data.Assign(one, 1);
    ASSERT_EQ(data.GetSize(), 1u);
    EXPECT_EQ(data.GetUInt8Value(0), 0xAB);
    data.Assign(three, 0);
    EXPECT_EQ(data.GetSize(), 0u);
}
