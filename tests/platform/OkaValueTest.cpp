#include "support/LogCapture.h"

#include <platform/OkaValue.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <ostream>
#include <string>

namespace
{
bool UnionIsZero(const OKAVALUE& value)
{
    unsigned char bytes[sizeof(OkaNumeric)];
    std::memcpy(bytes, &value.numeric, sizeof bytes);
    for (unsigned char b : bytes)
    {
        if (b != 0)
        {
            return false;
        }
    }
    return true;
}

void FillUnion(OKAVALUE& value, unsigned char byte) { std::memset(&value.numeric, byte, sizeof value.numeric); }
} // namespace

TEST(OkaValue, DefaultIsEmptyWithZeroPayload)
{
    TavTest::LogCapture capture;
    const OKAVALUE value;
    EXPECT_EQ(value.type, ivtEmpty);
    EXPECT_EQ(static_cast<int>(value.type), 1);
    EXPECT_EQ(value.subType, OkaDP::istGeneric);
    EXPECT_TRUE(UnionIsZero(value));
    EXPECT_EQ(value.text.length(), 0u);
    EXPECT_EQ(value.ToString(), "Empty");
    EXPECT_TRUE(capture.Lines().empty());
}

TEST(OkaValue, TypedConstructorZeroesTheUnion)
{
    const OKAVALUE value(ivtFloat, OkaDP::istPhysicalQuantity);
    EXPECT_EQ(value.type, ivtFloat);
    EXPECT_EQ(value.subType, OkaDP::istPhysicalQuantity);
    EXPECT_TRUE(UnionIsZero(value));
}

TEST(OkaValue, ResetZeroesTheWholeUnionClearsTextAndSubType)
{
    OKAVALUE value(ivtString, OkaDP::istAsciiText);
    value.text.assign("some text");
    FillUnion(value, 0xAB);
    value.Reset(ivtByte);
    EXPECT_EQ(value.type, ivtByte);
    EXPECT_EQ(value.subType, OkaDP::istGeneric);
    EXPECT_EQ(value.text.length(), 0u);
    EXPECT_TRUE(UnionIsZero(value));

    // A narrow value reads the same through the wider members.
    value.numeric.byte = 200;
    EXPECT_EQ(value.numeric.integer, 200);
    EXPECT_EQ(value.numeric.dword, 200u);
    value.Reset(ivtWord);
    value.numeric.word = 0xBEEF;
    EXPECT_EQ(value.numeric.dword, 0xBEEFu);
}

TEST(OkaValue, CopyIsFull)
{
    OKAVALUE original(ivtString, OkaDP::istLatin1Text);
    original.text.assign("a text on the heap");
    OKAVALUE copy;
    copy = original;
    EXPECT_EQ(copy, original);
    EXPECT_NE(copy.text.c_str(), original.text.c_str());
    original.text.append('!');
    EXPECT_NE(copy, original);
}

TEST(OkaValue, EqualityComparesTypeSubTypeTextAndPayload)
{
    OKAVALUE a(ivtInteger);
    a.numeric.integer = -5;
    OKAVALUE b = a;
    EXPECT_EQ(a, b);
    b.numeric.integer = 5;
    EXPECT_NE(a, b);
    b = a;
    b.subType = OkaDP::istSignedCount;
    EXPECT_NE(a, b);
    b = a;
    b.type = ivtByte;
    EXPECT_NE(a, b);
    b = a;
    b.text.assign("x");
    EXPECT_NE(a, b);
}

TEST(OkaValue, EqualityLooksOnlyAtTheMemberOfTheType)
{
    OKAVALUE a(ivtByte);
    OKAVALUE b(ivtByte);
    FillUnion(b, 0xFF);
    b.numeric.byte = 0;
    EXPECT_EQ(a, b);

    OKAVALUE emptyA;
    OKAVALUE emptyB;
    FillUnion(emptyB, 0x11);
    EXPECT_EQ(emptyA, emptyB);

    // Types without a known meaning compare all 16 bytes.
    OKAVALUE rawA(static_cast<OkaValueType>(5));
    OKAVALUE rawB(static_cast<OkaValueType>(5));
    EXPECT_EQ(rawA, rawB);
    reinterpret_cast<unsigned char*>(&rawB.numeric)[15] = 1;
    EXPECT_NE(rawA, rawB);
}

TEST(OkaValue, FloatEqualityComparesBitsButNanEqualsNan)
{
    OKAVALUE a(ivtFloat);
    OKAVALUE b(ivtFloat);
    a.numeric.real = 0.0;
    b.numeric.real = -0.0;
    EXPECT_NE(a, b);
    a.numeric.real = std::numeric_limits<double>::quiet_NaN();
    b.numeric.real = -std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(a, b);
    b.numeric.real = 1.0;
    EXPECT_NE(a, b);
}

TEST(OkaValue, BoolEqualityLooksAtTruth)
{
    OKAVALUE a(ivtBool);
    OKAVALUE b(ivtBool);
    a.numeric.byte = 1;
    b.numeric.byte = 2;
    EXPECT_EQ(a, b);
    b.numeric.byte = 0;
    EXPECT_NE(a, b);
}

TEST(OkaValue, TimeEqualityComparesAllTimeFields)
{
    OKAVALUE a(ivtDate);
    a.numeric.time.Clear(true);
    a.numeric.time.SetDate(2024, 5, 1, true);
    OKAVALUE b = a;
    EXPECT_EQ(a, b);
    b.numeric.time.daylightSaving = true;
    EXPECT_NE(a, b);
}

TEST(OkaValue, DefaultDayTime)
{
    const OKAVALUE value = OKAVALUE::DefaultDayTime();
    EXPECT_EQ(value.type, ivtDayTime);
    EXPECT_EQ(value.subType, OkaDP::istDefaultValue);
    EXPECT_EQ(static_cast<int>(value.subType), 2);
    const OKATIME& time = value.numeric.time;
    EXPECT_EQ(time.year, 2000);
    EXPECT_EQ(time.month, 1);
    EXPECT_EQ(time.day, 1);
    EXPECT_EQ(time.hour, 0);
    EXPECT_EQ(time.minute, 0);
    EXPECT_EQ(time.second, 0);
    EXPECT_EQ(time.hundredths, 0);
    EXPECT_EQ(time.weekday, 7);
    EXPECT_EQ(time.kind, 1);
    EXPECT_FALSE(time.localTime);
    EXPECT_FALSE(time.daylightSaving);
    EXPECT_EQ(value.text.length(), 0u);
    EXPECT_EQ(value.ToString(), "DayTime 2000-01-01T00:00:00.00;w=7;k=1;l=0;d=0");
}

namespace
{
// A value type or sub-type number and the name it has.
struct NumberedName
{
    int number;
    const char* name;
};

void PrintTo(const NumberedName& entry, std::ostream* out) { *out << entry.number << " " << entry.name; }

std::string NameOf(const ::testing::TestParamInfo<NumberedName>& info) { return info.param.name; }

class OkaValueTypeName : public ::testing::TestWithParam<NumberedName>
{
};

class OkaValueSubTypeName : public ::testing::TestWithParam<NumberedName>
{
};
} // namespace

TEST_P(OkaValueTypeName, IsGivenForItsNumber)
{
    const NumberedName& entry = GetParam();
    EXPECT_STREQ(OKAVALUE::GetNameFromValueType(static_cast<OkaValueType>(entry.number)), entry.name)
        << entry.number;
}

INSTANTIATE_TEST_SUITE_P(
    EveryType, OkaValueTypeName,
    ::testing::Values(NumberedName{0, "Invalid"}, NumberedName{1, "Empty"}, NumberedName{2, "Bool"},
                      NumberedName{3, "Float"}, NumberedName{4, "Integer"}, NumberedName{5, "Char"},
                      NumberedName{6, "Byte"}, NumberedName{7, "Word"}, NumberedName{8, "DWord"},
                      NumberedName{9, "Data40"}, NumberedName{10, "String"}, NumberedName{11, "Date"},
                      NumberedName{12, "Time"}, NumberedName{13, "DateTime"}, NumberedName{14, "ScaledInteger"},
                      NumberedName{15, "DayTime"}, NumberedName{20, "Enumeration"}, NumberedName{102, "TimeStamp"},
                      NumberedName{104, "TimeSpan"}, NumberedName{105, "DateSpan"},
                      NumberedName{201, "DateTimeStamp"}, NumberedName{1005, "Percent"},
                      NumberedName{1021, "Counter8"}, NumberedName{1036, "Percent8"},
                      NumberedName{1037, "DimmingStep"}, NumberedName{1039, "Temperature"}),
    NameOf);

TEST(OkaValueNames, UnknownTypeIsNamedEmpty)
{
    for (int type : {-1, 16, 19, 21, 100, 103, 1000, 1038, 99999})
    {
        EXPECT_STREQ(OKAVALUE::GetNameFromValueType(static_cast<OkaValueType>(type)), "Empty") << type;
    }
}

TEST_P(OkaValueSubTypeName, IsGivenForItsNumber)
{
    const NumberedName& entry = GetParam();
    EXPECT_STREQ(OkaDP::GetNameFromValueSubType(static_cast<OkaDP::OkaValueSubType>(entry.number)), entry.name)
        << entry.number;
}

INSTANTIATE_TEST_SUITE_P(
    EverySubType, OkaValueSubTypeName,
    ::testing::Values(NumberedName{0, "Generic"}, NumberedName{2, "Default"}, NumberedName{9, "SignedRelative"},
                      NumberedName{12, "SignedCount"}, NumberedName{2001, "Switch"},
                      NumberedName{3001, "StatusWithMode"}, NumberedName{3002, "StepControl"},
                      NumberedName{3003, "PhysicalQuantity"}, NumberedName{4001, "SceneNumber"},
                      NumberedName{8001, "AsciiText"}, NumberedName{8002, "Latin1Text"}),
    NameOf);

TEST(OkaValueNames, UnknownSubTypeIsNamedUnknown)
{
    for (int subType : {-1, 1, 3, 3000, 8003})
    {
        EXPECT_STREQ(OkaDP::GetNameFromValueSubType(static_cast<OkaDP::OkaValueSubType>(subType)), "Unknown");
    }
}

TEST(OkaValueToString, OneExamplePerFamily)
{
    OKAVALUE value(ivtFloat);
    value.numeric.real = 21.5;
    EXPECT_EQ(value.ToString(), "Float 21.5");

    value.Reset(ivtString);
    value.text.assign("abc");
    EXPECT_EQ(value.ToString(), "String \"abc\"");
    value.text.assign("a\nb%");
    EXPECT_EQ(value.ToString(), "String \"a%0Ab%25\"");

    value.Reset(ivtBool);
    value.numeric.boolean = true;
    EXPECT_EQ(value.ToString(), "Bool true");

    value.Reset(ivtInteger);
    value.numeric.integer = -42;
    EXPECT_EQ(value.ToString(), "Integer -42");

    value.Reset(ivtWord);
    value.numeric.word = 65535;
    EXPECT_EQ(value.ToString(), "Word 65535");

    value.Reset(ivtDate);
    value.numeric.time.Clear(true);
    value.numeric.time.SetDate(2024, 5, 1, true);
    EXPECT_EQ(value.ToString(), "Date 2024-05-01T00:00:00.00;w=3;k=0;l=1;d=0");

    value.Reset(static_cast<OkaValueType>(0));
    EXPECT_EQ(value.ToString(), "Invalid x00000000000000000000000000000000");

    value.Reset(static_cast<OkaValueType>(777));
    EXPECT_EQ(value.ToString(), "Empty x00000000000000000000000000000000");
}

TEST(OkaValueToString, NeverFailsOnOddContent)
{
    OKAVALUE value(ivtBool);
    value.numeric.byte = 0x7F;
    EXPECT_EQ(value.ToString(), "Bool true");
    value.Reset(ivtFloat);
    value.numeric.real = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(value.ToString(), "Float nan");
    value.Reset(ivtTime);
    FillUnion(value, 0xFF);
    value.numeric.time.localTime = true;
    value.numeric.time.daylightSaving = false;
    EXPECT_EQ(value.ToString(), "Time 65535-255-255T255:255:255.255;w=65535;k=65535;l=1;d=0");
}
