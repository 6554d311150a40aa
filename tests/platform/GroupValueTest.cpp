#include "support/GroupValues.h"

#include <platform/GroupValue.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

using KnxStack::BinaryData;
using KnxStack::GroupValue;
using KnxStack::GroupValueException;
using TavTest::MakeBinaryData;
using TavTest::MakeGroupValue;
using DayOfWeek = KnxStack::GroupValue::DayOfWeek;

namespace
{
std::string Hex(const GroupValue& value) { return value.GetRawData().ToString(); }

std::string ExceptionText(const std::function<void()>& call)
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

TEST(GroupValue, DefaultHasNoBytesAndSizeZero)
{
    const GroupValue value;
    EXPECT_EQ(value.GetDefinedSize(), 0u);
    EXPECT_EQ(value.GetRawData().GetSize(), 0u);
}

TEST(GroupValue, ConstructionKeepsEveryByteAndTheGivenSize)
{
    const GroupValue value = MakeGroupValue({0x01, 0x02, 0x03}, 6);
    EXPECT_EQ(value.GetDefinedSize(), 6u);
    EXPECT_EQ(Hex(value), "01 02 03");
}

TEST(GroupValue, SetRawDataTakesEightBitsAByte)
{
    GroupValue value = MakeGroupValue({0x01}, 1);
    value.SetRawData(MakeBinaryData({0x0c, 0x1a, 0x00}));
    EXPECT_EQ(value.GetDefinedSize(), 24u);
    EXPECT_EQ(Hex(value), "0c 1a 00");
    value.SetRawData(BinaryData());
    EXPECT_EQ(value.GetDefinedSize(), 0u);
}

TEST(GroupValue, EqualityComparesBytesAndSize)
{
    EXPECT_EQ(MakeGroupValue({0x01}, 1), MakeGroupValue({0x01}, 1));
    EXPECT_NE(MakeGroupValue({0x01}, 1), MakeGroupValue({0x01}, 8));
    EXPECT_NE(MakeGroupValue({0x01}, 8), MakeGroupValue({0x02}, 8));
}

TEST(GroupValue, Boolean)
{
    GroupValue value;
    value.SetAsBoolean(true);
    EXPECT_EQ(Hex(value), "01");
    EXPECT_EQ(value.GetDefinedSize(), 1u);
    EXPECT_TRUE(value.GetAsBoolean());
    value.SetAsBoolean(false);
    EXPECT_EQ(Hex(value), "00");
    EXPECT_FALSE(value.GetAsBoolean());
    // Only bit 0 counts.
    EXPECT_FALSE(MakeGroupValue({0xfe}, 8).GetAsBoolean());
    EXPECT_TRUE(MakeGroupValue({0x03}, 8).GetAsBoolean());
}

TEST(GroupValue, Unsigned2PlainForm)
{
    // Bit 1 control, bit 0 value: 0..3 go on the wire unchanged.
    for (unsigned char plain = 0; plain <= 3; ++plain)
    {
        GroupValue value;
        value.SetAsUnsigned2(plain);
        EXPECT_EQ(value.GetRawData().GetUInt8Value(0), plain);
        EXPECT_EQ(value.GetDefinedSize(), 2u);
        EXPECT_EQ(value.GetAsUnsigned2(), plain);
    }
}

TEST(GroupValue, Unsigned2ControlNibbleForm)
{
    // 16 = control 1, value 0 -> 0b10; 17 = control 1, value 1 -> 0b11.
    GroupValue value;
    value.SetAsUnsigned2(16);
    EXPECT_EQ(Hex(value), "02");
    EXPECT_EQ(value.GetDefinedSize(), 2u);
    EXPECT_EQ(value.GetAsUnsigned2(), 2);
    value.SetAsUnsigned2(17);
    EXPECT_EQ(Hex(value), "03");
    EXPECT_EQ(value.GetAsUnsigned2(), 3);
}

TEST(GroupValue, Unsigned2MasksOtherBits)
{
    GroupValue value;
    value.SetAsUnsigned2(0x0d);  // 1101: bit 1 clear, bit 0 set
    EXPECT_EQ(Hex(value), "01");
    EXPECT_EQ(MakeGroupValue({0xff}, 8).GetAsUnsigned2(), 3);
    EXPECT_EQ(MakeGroupValue({0xfd}, 8).GetAsUnsigned2(), 1);
}

TEST(GroupValue, Unsigned3ReadsTheLowThreeBits)
{
    EXPECT_EQ(MakeGroupValue({0x0d}, 4).GetAsUnsigned3(), 5);
    EXPECT_EQ(MakeGroupValue({0xff}, 8).GetAsUnsigned3(), 7);
    EXPECT_EQ(MakeGroupValue({0x08}, 8).GetAsUnsigned3(), 0);
}

TEST(GroupValue, Unsigned4)
{
    GroupValue value;
    value.SetAsUnsigned4(0x0b);  // up, step 3
    EXPECT_EQ(Hex(value), "0b");
    EXPECT_EQ(value.GetDefinedSize(), 4u);
    EXPECT_EQ(value.GetAsUnsigned4(), 0x0b);
    value.SetAsUnsigned4(0xf0 | 0x07);
    EXPECT_EQ(Hex(value), "07");
    value.SetAsUnsigned4(0x0f);
    EXPECT_EQ(value.GetAsUnsigned4(), 0x0f);
    EXPECT_EQ(MakeGroupValue({0xf9}, 8).GetAsUnsigned4(), 9);
}

TEST(GroupValue, ShortValuesFromTheBusReadWithSizeSix)
{
    const GroupValue value = MakeGroupValue({0x05}, 6);
    EXPECT_TRUE(value.GetAsBoolean());
    EXPECT_EQ(value.GetAsUnsigned2(), 1);
    EXPECT_EQ(value.GetAsUnsigned3(), 5);
    EXPECT_EQ(value.GetAsUnsigned4(), 5);
}

TEST(GroupValue, Unsigned8)
{
    GroupValue value;
    value.SetAsUnsigned8(0);
    EXPECT_EQ(Hex(value), "00");
    EXPECT_EQ(value.GetDefinedSize(), 8u);
    value.SetAsUnsigned8(255);
    EXPECT_EQ(Hex(value), "ff");
    EXPECT_EQ(value.GetAsUnsigned8(), 255);
    EXPECT_EQ(MakeGroupValue({0x80}, 8).GetAsUnsigned8(), 0x80);
}

TEST(GroupValue, Signed8)
{
    GroupValue value;
    value.SetAsSigned8(-128);
    EXPECT_EQ(Hex(value), "80");
    EXPECT_EQ(value.GetDefinedSize(), 8u);
    EXPECT_EQ(value.GetAsSigned8(), -128);
    value.SetAsSigned8(127);
    EXPECT_EQ(Hex(value), "7f");
    EXPECT_EQ(value.GetAsSigned8(), 127);
    value.SetAsSigned8(-1);
    EXPECT_EQ(Hex(value), "ff");
    EXPECT_EQ(value.GetAsSigned8(), -1);
    // Sign extension from any 8-bit value, whatever produced it.
    EXPECT_EQ(MakeGroupValue({0xfe}, 8).GetAsSigned8(), -2);
    EXPECT_EQ(MakeGroupValue({0x00}, 8).GetAsSigned8(), 0);
}

TEST(GroupValue, Char)
{
    GroupValue value;
    value.SetAsChar('A');
    EXPECT_EQ(Hex(value), "41");
    EXPECT_EQ(value.GetDefinedSize(), 8u);
    value.SetAsChar('\xe9');  // Latin-1 e-acute
    EXPECT_EQ(Hex(value), "e9");
    EXPECT_EQ(value.GetAsUnsigned8(), 0xe9);
}

TEST(GroupValue, Unsigned16IsBigEndian)
{
    GroupValue value;
    value.SetAsUnsigned16(0xabcd);
    EXPECT_EQ(Hex(value), "ab cd");
    EXPECT_EQ(value.GetDefinedSize(), 16u);
    EXPECT_EQ(value.GetAsUnsigned16(), 0xabcd);
    value.SetAsUnsigned16(0);
    EXPECT_EQ(Hex(value), "00 00");
    value.SetAsUnsigned16(65535);
    EXPECT_EQ(Hex(value), "ff ff");
    EXPECT_EQ(value.GetAsUnsigned16(), 65535);
}

TEST(GroupValue, Signed16IsBigEndianTwosComplement)
{
    GroupValue value;
    value.SetAsSigned16(-32768);
    EXPECT_EQ(Hex(value), "80 00");
    EXPECT_EQ(value.GetDefinedSize(), 16u);
    EXPECT_EQ(value.GetAsSigned16(), -32768);
    value.SetAsSigned16(32767);
    EXPECT_EQ(Hex(value), "7f ff");
    EXPECT_EQ(value.GetAsSigned16(), 32767);
    value.SetAsSigned16(-2);
    EXPECT_EQ(Hex(value), "ff fe");
    EXPECT_EQ(value.GetAsSigned16(), -2);
}

TEST(GroupValue, Unsigned32IsBigEndian)
{
    GroupValue value;
    value.SetAsUnsigned32(0x12345678u);
    EXPECT_EQ(Hex(value), "12 34 56 78");
    EXPECT_EQ(value.GetDefinedSize(), 32u);
    EXPECT_EQ(value.GetAsUnsigned32(), 0x12345678u);
    value.SetAsUnsigned32(0xffffffffu);
    EXPECT_EQ(Hex(value), "ff ff ff ff");
    EXPECT_EQ(value.GetAsUnsigned32(), 0xffffffffu);
    value.SetAsUnsigned32(0);
    EXPECT_EQ(Hex(value), "00 00 00 00");
}

TEST(GroupValue, Signed32IsBigEndianTwosComplement)
{
    GroupValue value;
    value.SetAsSigned32(std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(Hex(value), "80 00 00 00");
    EXPECT_EQ(value.GetDefinedSize(), 32u);
    EXPECT_EQ(value.GetAsSigned32(), std::numeric_limits<std::int32_t>::min());
    value.SetAsSigned32(std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(Hex(value), "7f ff ff ff");
    EXPECT_EQ(value.GetAsSigned32(), std::numeric_limits<std::int32_t>::max());
    value.SetAsSigned32(-2);
    EXPECT_EQ(Hex(value), "ff ff ff fe");
    EXPECT_EQ(value.GetAsSigned32(), -2);
}

TEST(GroupValue, Float16)
{
    GroupValue value;
    // 21.5 -> 2150 hundredths = 1075 * 2^1 -> E=1, M=0x433 -> 0x0C33.
    value.SetAsFloat16(21.5);
    EXPECT_EQ(Hex(value), "0c 33");
    EXPECT_EQ(value.GetDefinedSize(), 16u);
    EXPECT_EQ(value.GetAsFloat16(), 21.5);
    // 0x0C1A: E=1, M=1050 -> 21.00.
    EXPECT_EQ(MakeGroupValue({0x0c, 0x1a}, 16).GetAsFloat16(), 21.0);
    // -30 -> -1500 * 2^1: M=0xA24 -> 0x8A24.
    value.SetAsFloat16(-30.0);
    EXPECT_EQ(Hex(value), "8a 24");
    EXPECT_EQ(value.GetAsFloat16(), -30.0);
}

TEST(GroupValue, Float16Extremes)
{
    GroupValue value;
    value.SetAsFloat16(670433.28);  // M=2046, E=15
    EXPECT_EQ(Hex(value), "7f fe");
    EXPECT_EQ(value.GetAsFloat16(), 670433.28);
    value.SetAsFloat16(-671088.64);  // M=-2048, E=15
    EXPECT_EQ(Hex(value), "f8 00");
    EXPECT_EQ(value.GetAsFloat16(), -671088.64);
    value.SetAsFloat16(1e7);
    EXPECT_EQ(Hex(value), "7f fe");
    value.SetAsFloat16(-1e7);
    EXPECT_EQ(Hex(value), "f8 00");
    value.SetAsFloat16(std::numeric_limits<double>::infinity());
    EXPECT_EQ(Hex(value), "7f fe");
    value.SetAsFloat16(-std::numeric_limits<double>::infinity());
    EXPECT_EQ(Hex(value), "f8 00");
}

TEST(GroupValue, Float16InvalidCode)
{
    GroupValue value;
    value.SetAsFloat16(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(Hex(value), "7f ff");
    EXPECT_EQ(value.GetDefinedSize(), 16u);
    value.SetAsFloat16(32767.0);
    EXPECT_EQ(Hex(value), "7f ff");
    double decoded = 0;
    EXPECT_NO_THROW(decoded = value.GetAsFloat16());
    EXPECT_TRUE(std::isnan(decoded));
}

TEST(GroupValue, Float32IsIeeeSingleBigEndian)
{
    GroupValue value;
    value.SetAsFloat32(1.0f);  // sign 0, exponent 127, fraction 0
    EXPECT_EQ(Hex(value), "3f 80 00 00");
    EXPECT_EQ(value.GetDefinedSize(), 32u);
    EXPECT_EQ(value.GetAsFloat32(), 1.0f);
    value.SetAsFloat32(-2.5f);  // sign 1, exponent 128, fraction 0.25 -> 0xC0200000
    EXPECT_EQ(Hex(value), "c0 20 00 00");
    EXPECT_EQ(value.GetAsFloat32(), -2.5f);
    value.SetAsFloat32(std::numeric_limits<float>::max());
    EXPECT_EQ(Hex(value), "7f 7f ff ff");
    EXPECT_EQ(value.GetAsFloat32(), std::numeric_limits<float>::max());
    value.SetAsFloat32(std::numeric_limits<float>::lowest());
    EXPECT_EQ(Hex(value), "ff 7f ff ff");
    value.SetAsFloat32(std::numeric_limits<float>::infinity());
    EXPECT_EQ(Hex(value), "7f 80 00 00");
    EXPECT_TRUE(std::isnan(MakeGroupValue({0x7f, 0xc0, 0x00, 0x00}, 32).GetAsFloat32()));
}

TEST(GroupValue, TimeOfDay)
{
    GroupValue value;
    // Monday 13:45:30 -> byte 0 = 1 << 5 | 13 = 0x2D, 45 = 0x2D, 30 = 0x1E.
    value.SetAsTimeOfDay(13, 45, 30, DayOfWeek::Monday);
    EXPECT_EQ(Hex(value), "2d 2d 1e");
    EXPECT_EQ(value.GetDefinedSize(), 24u);
    int hour = -1, minute = -1, second = -1;
    DayOfWeek day = DayOfWeek::NoDay;
    value.GetAsTimeOfDay(&hour, &minute, &second, &day);
    EXPECT_EQ(hour, 13);
    EXPECT_EQ(minute, 45);
    EXPECT_EQ(second, 30);
    EXPECT_EQ(day, DayOfWeek::Monday);
    // Sunday 23:59:59 -> 7 << 5 | 23 = 0xF7, 59 = 0x3B.
    value.SetAsTimeOfDay(23, 59, 59, DayOfWeek::Sunday);
    EXPECT_EQ(Hex(value), "f7 3b 3b");
    value.SetAsTimeOfDay(0, 0, 0, DayOfWeek::NoDay);
    EXPECT_EQ(Hex(value), "00 00 00");
}

TEST(GroupValue, TimeOfDayMasksItsFields)
{
    GroupValue value;
    // 33 & 0x1F = 1, 64 & 0x3F = 0, 65 & 0x3F = 1.
    value.SetAsTimeOfDay(33, 64, 65, DayOfWeek::Friday);
    EXPECT_EQ(Hex(value), "a1 00 01");
    int hour = -1, minute = -1, second = -1;
    DayOfWeek day = DayOfWeek::NoDay;
    MakeGroupValue({0xff, 0xff, 0xff}, 24).GetAsTimeOfDay(&hour, &minute, &second, &day);
    EXPECT_EQ(hour, 31);
    EXPECT_EQ(minute, 63);
    EXPECT_EQ(second, 63);
    EXPECT_EQ(day, DayOfWeek::Sunday);
}

TEST(GroupValue, Date)
{
    GroupValue value;
    // 24.12.2023 -> 24 = 0x18, 12 = 0x0C, 23 = 0x17.
    value.SetAsDate(24, 12, 2023);
    EXPECT_EQ(Hex(value), "18 0c 17");
    EXPECT_EQ(value.GetDefinedSize(), 24u);
    int day = 0, month = 0, year = 0;
    value.GetAsDate(&day, &month, &year);
    EXPECT_EQ(day, 24);
    EXPECT_EQ(month, 12);
    EXPECT_EQ(year, 2023);
    value.SetAsDate(31, 1, 1999);
    EXPECT_EQ(Hex(value), "1f 01 63");
    value.GetAsDate(&day, &month, &year);
    EXPECT_EQ(year, 1999);
}

TEST(GroupValue, DateWritesTheYearModulo100AndMasks)
{
    GroupValue value;
    value.SetAsDate(1, 1, 2100);
    EXPECT_EQ(Hex(value), "01 01 00");
    value.SetAsDate(1, 1, 1990);
    EXPECT_EQ(Hex(value), "01 01 5a");
    value.SetAsDate(33, 17, -1);  // 33 & 0x1F = 1, 17 & 0x0F = 1, -1 mod 100 = 99
    EXPECT_EQ(Hex(value), "01 01 63");
}

TEST(GroupValue, DateYearByteMapping)
{
    const auto yearOf = [](unsigned char yearByte) {
        int day = 0, month = 0, year = 0;
        MakeGroupValue({0x01, 0x01, yearByte}, 24).GetAsDate(&day, &month, &year);
        return year;
    };
    EXPECT_EQ(yearOf(0), 2000);
    EXPECT_EQ(yearOf(89), 2089);
    EXPECT_EQ(yearOf(90), 1990);
    EXPECT_EQ(yearOf(95), 1995);
    EXPECT_EQ(yearOf(99), 1999);
    EXPECT_EQ(yearOf(100), 2000);
    EXPECT_EQ(yearOf(255), 2155);
}

TEST(GroupValue, DateReadsOnlyTheFirstThreeBytesWithMasks)
{
    int day = 0, month = 0, year = 0;
    MakeGroupValue({0xff, 0xff, 0x05, 0x42}, 32).GetAsDate(&day, &month, &year);
    EXPECT_EQ(day, 31);
    EXPECT_EQ(month, 15);
    EXPECT_EQ(year, 2005);
}

TEST(GroupValue, String14PadsWithZeros)
{
    GroupValue value;
    value.SetAsString14("Hello");
    EXPECT_EQ(Hex(value), "48 65 6c 6c 6f 00 00 00 00 00 00 00 00 00");
    EXPECT_EQ(value.GetDefinedSize(), 112u);
    EXPECT_EQ(value.GetAsString14(), "Hello");
    value.SetAsString14("");
    EXPECT_EQ(Hex(value), "00 00 00 00 00 00 00 00 00 00 00 00 00 00");
    EXPECT_EQ(value.GetAsString14(), "");
}

TEST(GroupValue, String14CutsAtFourteenBytes)
{
    GroupValue value;
    value.SetAsString14("ABCDEFGHIJKLMNOPQRST");
    EXPECT_EQ(value.GetRawData().GetSize(), 14u);
    EXPECT_EQ(value.GetAsString14(), "ABCDEFGHIJKLMN");
    value.SetAsString14("caf\xe9");  // Latin-1 bytes pass unchanged
    EXPECT_EQ(Hex(value), "63 61 66 e9 00 00 00 00 00 00 00 00 00 00");
}

TEST(GroupValue, String14ReadsAtMostFourteenBytesUpToTheFirstZero)
{
    std::vector<unsigned char> bytes(16, 'x');
    EXPECT_EQ(MakeGroupValue(bytes, 128).GetAsString14(), "xxxxxxxxxxxxxx");
    bytes[3] = 0;
    EXPECT_EQ(MakeGroupValue(bytes, 128).GetAsString14(), "xxx");
}

TEST(GroupValue, GettersThrowOnTruncatedData)
{
    const GroupValue empty;
    EXPECT_EQ(ExceptionText([&] { empty.GetAsBoolean(); }), "GetAsBoolean: needs 1 bytes, has 0");
    EXPECT_EQ(ExceptionText([&] { empty.GetAsUnsigned2(); }), "GetAsUnsigned2: needs 1 bytes, has 0");
    EXPECT_EQ(ExceptionText([&] { empty.GetAsUnsigned3(); }), "GetAsUnsigned3: needs 1 bytes, has 0");
    EXPECT_EQ(ExceptionText([&] { empty.GetAsUnsigned4(); }), "GetAsUnsigned4: needs 1 bytes, has 0");
    EXPECT_EQ(ExceptionText([&] { empty.GetAsUnsigned8(); }), "GetAsUnsigned8: needs 1 bytes, has 0");
    EXPECT_EQ(ExceptionText([&] { empty.GetAsSigned8(); }), "GetAsSigned8: needs 1 bytes, has 0");

    const GroupValue one = MakeGroupValue({0x0c}, 16);
    EXPECT_EQ(ExceptionText([&] { one.GetAsUnsigned16(); }), "GetAsUnsigned16: needs 2 bytes, has 1");
    EXPECT_EQ(ExceptionText([&] { one.GetAsSigned16(); }), "GetAsSigned16: needs 2 bytes, has 1");
    EXPECT_EQ(ExceptionText([&] { one.GetAsFloat16(); }), "GetAsFloat16: needs 2 bytes, has 1");

    const GroupValue three = MakeGroupValue({0x01, 0x02, 0x03}, 32);
    EXPECT_EQ(ExceptionText([&] { three.GetAsUnsigned32(); }), "GetAsUnsigned32: needs 4 bytes, has 3");
    EXPECT_EQ(ExceptionText([&] { three.GetAsSigned32(); }), "GetAsSigned32: needs 4 bytes, has 3");
    EXPECT_EQ(ExceptionText([&] { three.GetAsFloat32(); }), "GetAsFloat32: needs 4 bytes, has 3");

    const GroupValue two = MakeGroupValue({0x01, 0x02}, 24);
    int a = 0, b = 0, c = 0;
    DayOfWeek day = DayOfWeek::NoDay;
    EXPECT_EQ(ExceptionText([&] { two.GetAsDate(&a, &b, &c); }), "GetAsDate: needs 3 bytes, has 2");
    EXPECT_EQ(ExceptionText([&] { two.GetAsTimeOfDay(&a, &b, &c, &day); }), "GetAsTimeOfDay: needs 3 bytes, has 2");

    const GroupValue thirteen = MakeGroupValue(std::vector<unsigned char>(13, 'a'), 104);
    EXPECT_EQ(ExceptionText([&] { thirteen.GetAsString14(); }), "GetAsString14: needs 14 bytes, has 13");
}

TEST(GroupValue, GettersIgnoreTheDefinedSize)
{
    // The bytes decide, not the declared bits: a value claiming 8 bits with more bytes
    // still reads its wider encodings, and an 8-bit value reads the narrow ones.
    const GroupValue value = MakeGroupValue({0x0c, 0x33, 0x00, 0x01}, 8);
    EXPECT_EQ(value.GetAsUnsigned16(), 0x0c33);
    EXPECT_EQ(value.GetAsFloat16(), 21.5);
    EXPECT_EQ(value.GetAsUnsigned32(), 0x0c330001u);
    EXPECT_EQ(MakeGroupValue({0x0e}, 8).GetAsUnsigned2(), 2);
    EXPECT_EQ(MakeGroupValue({0x0e}, 8).GetAsUnsigned3(), 6);
    EXPECT_EQ(MakeGroupValue({0x81}, 1).GetAsSigned8(), -127);
}

TEST(GroupValue, SettersReplaceEarlierBytes)
{
    GroupValue value;
    value.SetAsString14("long text");
    value.SetAsBoolean(true);
    EXPECT_EQ(Hex(value), "01");
    EXPECT_EQ(value.GetDefinedSize(), 1u);
}
