#include "support/LogCapture.h"
#include "support/Values.h"

#include <platform/OkaValue.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

using ::testing::ElementsAre;
using Bytes = std::vector<unsigned char>;
using TavTest::FloatValue;

namespace
{
// Encodes with `room` bytes of room; on failure returns nothing and checks that the
// length stayed as it was.
bool Encode(const OKAVALUE& value, unsigned int room, Bytes& out)
{
    unsigned char buffer[32] = {};
    unsigned int length = room;
    const bool ok = OkaValueToByteArray(value, buffer, length);
    if (!ok)
    {
        EXPECT_EQ(length, room);
        return false;
    }
    out.assign(buffer, buffer + length);
    return true;
}

Bytes Encoded(const OKAVALUE& value, unsigned int room = 16)
{
    Bytes out;
    EXPECT_TRUE(Encode(value, room, out)) << value.ToString();
    return out;
}
} // namespace

TEST(OkaByteCodec, BoolIsOneByte)
{
    OKAVALUE value(ivtBool);
    EXPECT_THAT(Encoded(value), ElementsAre(0));
    value.numeric.boolean = true;
    EXPECT_THAT(Encoded(value), ElementsAre(1));
}

TEST(OkaByteCodec, IntegersAreBigEndian)
{
    OKAVALUE value(static_cast<OkaValueType>(1021));
    value.numeric.byte = 0xAB;
    EXPECT_THAT(Encoded(value), ElementsAre(0xAB));
    value.Reset(ivtByte);
    value.numeric.byte = 7;
    EXPECT_THAT(Encoded(value, 1), ElementsAre(7));

    value.Reset(ivtWord);
    value.numeric.word = 0x1234;
    EXPECT_THAT(Encoded(value), ElementsAre(0x12, 0x34));
    value.Reset(static_cast<OkaValueType>(20));
    value.numeric.word = 0xFFFE;
    EXPECT_THAT(Encoded(value, 2), ElementsAre(0xFF, 0xFE));

    value.Reset(ivtInteger);
    value.numeric.integer = -2;
    EXPECT_THAT(Encoded(value), ElementsAre(0xFF, 0xFF, 0xFF, 0xFE));
    value.Reset(static_cast<OkaValueType>(14));
    value.numeric.integer = 0x01020304;
    EXPECT_THAT(Encoded(value, 4), ElementsAre(1, 2, 3, 4));

    value.Reset(ivtDWord);
    value.numeric.dword = 0xDEADBEEF;
    EXPECT_THAT(Encoded(value), ElementsAre(0xDE, 0xAD, 0xBE, 0xEF));
}

TEST(OkaByteCodec, TooLittleRoomFailsAndKeepsTheLength)
{
    Bytes out;
    OKAVALUE value(ivtBool);
    EXPECT_FALSE(Encode(value, 0, out));
    value.Reset(ivtWord);
    EXPECT_FALSE(Encode(value, 1, out));
    value.Reset(ivtInteger);
    EXPECT_FALSE(Encode(value, 3, out));
    value.Reset(ivtDWord);
    EXPECT_FALSE(Encode(value, 3, out));
    value.Reset(ivtDate);
    EXPECT_FALSE(Encode(value, 7, out));
    value.Reset(ivtString);
    value.text.assign("abcd");
    EXPECT_FALSE(Encode(value, 3, out));
    EXPECT_FALSE(Encode(FloatValue(1.0), 0, out));
}

TEST(OkaByteCodec, FloatIsASingleWithFourBytesOfRoom)
{
    EXPECT_THAT(Encoded(FloatValue(1.0)), ElementsAre(0x3F, 0x80, 0x00, 0x00));
    EXPECT_THAT(Encoded(FloatValue(-2.5, static_cast<OkaValueType>(1039)), 4), ElementsAre(0xC0, 0x20, 0x00, 0x00));
    EXPECT_THAT(Encoded(FloatValue(std::numeric_limits<double>::infinity(), static_cast<OkaValueType>(1005))),
                ElementsAre(0x7F, 0x80, 0x00, 0x00));
}

TEST(OkaByteCodec, FloatWithLessRoomIsRoundedAndClampedUnsigned)
{
    EXPECT_THAT(Encoded(FloatValue(127.5, static_cast<OkaValueType>(1036)), 1), ElementsAre(128));
    EXPECT_THAT(Encoded(FloatValue(127.4, static_cast<OkaValueType>(1036)), 1), ElementsAre(127));
    EXPECT_THAT(Encoded(FloatValue(300.0, static_cast<OkaValueType>(1036)), 1), ElementsAre(255));
    EXPECT_THAT(Encoded(FloatValue(-5.0, static_cast<OkaValueType>(1037)), 1), ElementsAre(0));
    EXPECT_THAT(Encoded(FloatValue(std::nan(""), static_cast<OkaValueType>(1037)), 1), ElementsAre(0));
    EXPECT_THAT(Encoded(FloatValue(4660.4), 2), ElementsAre(0x12, 0x34));
    EXPECT_THAT(Encoded(FloatValue(1e12), 2), ElementsAre(0xFF, 0xFF));
    EXPECT_THAT(Encoded(FloatValue(65536.0 * 256 - 0.4), 3), ElementsAre(0xFF, 0xFF, 0xFF));
    EXPECT_THAT(Encoded(FloatValue(std::numeric_limits<double>::infinity()), 3), ElementsAre(0xFF, 0xFF, 0xFF));
    EXPECT_THAT(Encoded(FloatValue(0x010203), 3), ElementsAre(1, 2, 3));
}

TEST(OkaByteCodec, StringIsItsBytesWithoutTerminator)
{
    OKAVALUE value(ivtString);
    value.text.assign("ab\0c", 4);
    EXPECT_THAT(Encoded(value, 4), ElementsAre('a', 'b', 0, 'c'));
    value.text.clear();
    EXPECT_TRUE(Encoded(value, 0).empty());
}

TEST(OkaByteCodec, TimeIsEightBytes)
{
    OKAVALUE value(ivtDateTime);
    value.numeric.time.Clear(true);
    value.numeric.time.SetDateTime(2024, 5, 1, 13, 14, 15, true);
    EXPECT_THAT(Encoded(value, 8), ElementsAre(0x07, 0xE8, 5, 1, 13, 14, 15, 3));
    value.type = static_cast<OkaValueType>(201);
    EXPECT_THAT(Encoded(value), ElementsAre(0x07, 0xE8, 5, 1, 13, 14, 15, 3));
}

TEST(OkaByteCodec, EmptyAndUnknownTypesHaveNoByteForm)
{
    TavTest::LogCapture capture;
    Bytes out;
    EXPECT_FALSE(Encode(OKAVALUE(), 16, out));
    for (int type : {0, 5, 9, 777})
    {
        EXPECT_FALSE(Encode(OKAVALUE(static_cast<OkaValueType>(type)), 16, out)) << type;
    }
    EXPECT_TRUE(capture.Lines().empty());
}

TEST(OkaByteCodec, BytesToValueBySize)
{
    const unsigned char bytes[] = {0x12, 0x34, 0x56, 0x78, 0x9A};
    OKAVALUE value(ivtString, OkaDP::istAsciiText);
    value.text.assign("old");
    ASSERT_TRUE(ByteArrayToOkaValue(bytes, 1, value, false));
    EXPECT_EQ(value.type, ivtByte);
    EXPECT_EQ(value.subType, OkaDP::istGeneric);
    EXPECT_EQ(value.text.length(), 0u);
    EXPECT_EQ(value.numeric.integer, 0x12);

    ASSERT_TRUE(ByteArrayToOkaValue(bytes, 2, value, false));
    EXPECT_EQ(value.type, ivtWord);
    EXPECT_EQ(value.numeric.dword, 0x1234u);

    ASSERT_TRUE(ByteArrayToOkaValue(bytes, 3, value, false));
    EXPECT_EQ(value.type, ivtDWord);
    EXPECT_EQ(value.numeric.dword, 0x123456u);

    ASSERT_TRUE(ByteArrayToOkaValue(bytes, 4, value, false));
    EXPECT_EQ(value.type, ivtDWord);
    EXPECT_EQ(value.numeric.dword, 0x12345678u);
}

TEST(OkaByteCodec, BytesOfNoNumberSizeLeaveTheValueUntouched)
{
    const unsigned char bytes[] = {1, 2, 3, 4, 5};
    OKAVALUE value(ivtInteger, OkaDP::istSignedCount);
    value.numeric.integer = -9;
    const OKAVALUE before = value;
    EXPECT_FALSE(ByteArrayToOkaValue(bytes, 0, value, false));
    EXPECT_EQ(value, before);
    EXPECT_FALSE(ByteArrayToOkaValue(bytes, 5, value, false));
    EXPECT_EQ(value, before);
}

TEST(OkaByteCodec, BytesAsText)
{
    const unsigned char bytes[] = {'a', 0, 0xE9, 'b', 'c', 'd'};
    OKAVALUE value;
    ASSERT_TRUE(ByteArrayToOkaValue(bytes, sizeof bytes, value, true));
    EXPECT_EQ(value.type, ivtString);
    EXPECT_EQ(value.subType, OkaDP::istGeneric);
    ASSERT_EQ(value.text.length(), sizeof bytes);
    EXPECT_EQ(std::string(value.text.c_str(), value.text.length()), std::string(reinterpret_cast<const char*>(bytes), 6));

    ASSERT_TRUE(ByteArrayToOkaValue(bytes, 0, value, true));
    EXPECT_EQ(value.type, ivtString);
    EXPECT_EQ(value.text.length(), 0u);
}

TEST(OkaByteCodec, NumbersGoBothWays)
{
    OKAVALUE word(ivtWord);
    word.numeric.word = 0xA55A;
    const Bytes bytes = Encoded(word);
    OKAVALUE back;
    ASSERT_TRUE(ByteArrayToOkaValue(bytes.data(), static_cast<unsigned int>(bytes.size()), back, false));
    EXPECT_EQ(back, word);
}
