#include "knx/GroupTelegram.h"

#include "support/GroupValues.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using TavKnx::GroupTelegram;
using TavKnx::ParseGroupTelegram;
using TavKnx::TelegramKind;
using TavTest::Bytes;
using TavTest::BytesOf;
using TavTest::MakeGroupValue;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{
GroupTelegram Parse(const Bytes& apdu)
{
    return ParseGroupTelegram(0x1105, 0x0A03, apdu.data(), apdu.size());
}
} // namespace

TEST(GroupTelegram, ShortWriteCarriesTheLowSixBitsWithDefinedSizeSix)
{
    const GroupTelegram telegram = Parse({0x00, 0x81});
    EXPECT_EQ(telegram.kind, TelegramKind::Write);
    EXPECT_EQ(telegram.source, 0x1105);
    EXPECT_EQ(telegram.destination, 0x0A03);
    EXPECT_THAT(BytesOf(telegram.value), ElementsAre(0x01));
    EXPECT_EQ(telegram.value.GetDefinedSize(), 6u);
    EXPECT_THAT(telegram.apdu, ElementsAre(0x00, 0x81));
    EXPECT_TRUE(telegram.HasValue());
}

TEST(GroupTelegram, ShortValueKeepsAllSixBits)
{
    const GroupTelegram telegram = Parse({0x00, 0xBF});
    EXPECT_THAT(BytesOf(telegram.value), ElementsAre(0x3F));
}

TEST(GroupTelegram, LongWriteCarriesTheBytesAfterTheApciEightBitsEach)
{
    const GroupTelegram telegram = Parse({0x00, 0x80, 0x0C, 0x1A});
    EXPECT_EQ(telegram.kind, TelegramKind::Write);
    EXPECT_THAT(BytesOf(telegram.value), ElementsAre(0x0C, 0x1A));
    EXPECT_EQ(telegram.value.GetDefinedSize(), 16u);
}

TEST(GroupTelegram, ResponseIsDecodedLikeAWrite)
{
    const GroupTelegram shortForm = Parse({0x00, 0x41});
    EXPECT_EQ(shortForm.kind, TelegramKind::Response);
    EXPECT_THAT(BytesOf(shortForm.value), ElementsAre(0x01));
    EXPECT_EQ(shortForm.value.GetDefinedSize(), 6u);
    const GroupTelegram longForm = Parse({0x00, 0x40, 0x80});
    EXPECT_EQ(longForm.kind, TelegramKind::Response);
    EXPECT_THAT(BytesOf(longForm.value), ElementsAre(0x80));
    EXPECT_EQ(longForm.value.GetDefinedSize(), 8u);
}

TEST(GroupTelegram, ReadHasNoValue)
{
    const GroupTelegram telegram = Parse({0x00, 0x00});
    EXPECT_EQ(telegram.kind, TelegramKind::Read);
    EXPECT_FALSE(telegram.HasValue());
    EXPECT_THAT(BytesOf(telegram.value), IsEmpty());
    EXPECT_EQ(telegram.value.GetDefinedSize(), 0u);
}

TEST(GroupTelegram, OtherServicesAreKeptButNotDecoded)
{
    const GroupTelegram telegram = Parse({0x03, 0x00});  // APCI 12
    EXPECT_EQ(telegram.kind, TelegramKind::Other);
    EXPECT_FALSE(telegram.HasValue());
    EXPECT_THAT(telegram.apdu, ElementsAre(0x03, 0x00));
    EXPECT_EQ(Parse({0x00, 0xC1}).kind, TelegramKind::Other);  // APCI 3
}

TEST(GroupTelegram, FewerThanTwoBytesAreInvalid)
{
    EXPECT_EQ(Parse({}).kind, TelegramKind::Invalid);
    const GroupTelegram one = Parse({0x00});
    EXPECT_EQ(one.kind, TelegramKind::Invalid);
    EXPECT_THAT(one.apdu, ElementsAre(0x00));
    EXPECT_FALSE(one.HasValue());
    EXPECT_EQ(ParseGroupTelegram(1, 2, nullptr, 5).kind, TelegramKind::Invalid);
}

TEST(GroupTelegram, KindNames)
{
    EXPECT_STREQ(TavKnx::KindName(TelegramKind::Read), "read");
    EXPECT_STREQ(TavKnx::KindName(TelegramKind::Response), "response");
    EXPECT_STREQ(TavKnx::KindName(TelegramKind::Write), "write");
    EXPECT_STREQ(TavKnx::KindName(TelegramKind::Other), "other");
    EXPECT_STREQ(TavKnx::KindName(TelegramKind::Invalid), "invalid");
}

TEST(GroupTelegram, WriteOfUpToSixBitsUsesTheShortForm)
{
    EXPECT_THAT(TavKnx::MakeWriteApdu(MakeGroupValue({0x01}, 1)), ElementsAre(0x00, 0x81));
    EXPECT_THAT(TavKnx::MakeWriteApdu(MakeGroupValue({0x0B}, 4)), ElementsAre(0x00, 0x8B));
    // Bits above the sixth never leak into the APCI.
    EXPECT_THAT(TavKnx::MakeWriteApdu(MakeGroupValue({0xFF}, 6)), ElementsAre(0x00, 0xBF));
    EXPECT_THAT(TavKnx::MakeWriteApdu(MakeGroupValue({}, 0)), ElementsAre(0x00, 0x80));
}

TEST(GroupTelegram, WriteOfMoreThanSixBitsAppendsTheBytes)
{
    EXPECT_THAT(TavKnx::MakeWriteApdu(MakeGroupValue({0x80}, 8)), ElementsAre(0x00, 0x80, 0x80));
    EXPECT_THAT(TavKnx::MakeWriteApdu(MakeGroupValue({0x0C, 0x33}, 16)), ElementsAre(0x00, 0x80, 0x0C, 0x33));
}

TEST(GroupTelegram, ReadRequest)
{
    EXPECT_THAT(TavKnx::MakeReadApdu(), ElementsAre(0x00, 0x00));
}

TEST(GroupTelegram, WrittenApduReadsBackAsTheSameValue)
{
    const Bytes apdu = TavKnx::MakeWriteApdu(MakeGroupValue({0x0C, 0x1A}, 16));
    const GroupTelegram telegram = Parse(apdu);
    EXPECT_EQ(telegram.kind, TelegramKind::Write);
    EXPECT_THAT(BytesOf(telegram.value), ElementsAre(0x0C, 0x1A));
    EXPECT_EQ(telegram.value.GetDefinedSize(), 16u);
}
