#include "support/LogCapture.h"
#include "support/Values.h"

#include <platform/OkaValue.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cfloat>
#include <clocale>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

using TavTest::DateTimeValue;
using TavTest::FloatValue;
using TavTest::StringValue;

namespace
{
std::string Serialized(const OKAVALUE& value, bool internal)
{
    oka_string out;
    value.Serialize(out, internal);
    return std::string(out.c_str(), out.length());
}

bool Read(const std::string& text, OKAVALUE& value) { return value.Deserialize(oka_string(text.data(), text.size())); }

bool SameBits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

// Every family with ordinary and extreme payloads.
std::vector<OKAVALUE> Samples()
{
    std::vector<OKAVALUE> samples;
    samples.emplace_back();
    samples.emplace_back(ivtEmpty, OkaDP::istDefaultValue);

    for (bool b : {false, true})
    {
        OKAVALUE value(ivtBool, OkaDP::istSwitch);
        value.numeric.boolean = b;
        samples.push_back(value);
    }

    const double reals[] = {0.0,
                            -0.0,
                            21.5,
                            0.1,
                            1.0 / 3.0,
                            -273.15,
                            1e100,
                            100000000.0,
                            DBL_MAX,
                            -DBL_MAX,
                            DBL_MIN,
                            std::numeric_limits<double>::denorm_min(),
                            -std::numeric_limits<double>::denorm_min(),
                            2.2250738585072009e-308,
                            std::numeric_limits<double>::infinity(),
                            -std::numeric_limits<double>::infinity(),
                            std::numeric_limits<double>::quiet_NaN()};
    for (double real : reals)
    {
        samples.push_back(FloatValue(real));
        samples.push_back(FloatValue(real, ivtFloat, OkaDP::istPhysicalQuantity));
        samples.push_back(FloatValue(real, static_cast<OkaValueType>(1039)));
    }
    for (int type : {1005, 1036, 1037})
    {
        samples.push_back(FloatValue(42.25, static_cast<OkaValueType>(type), OkaDP::istDefaultValue));
    }

    for (std::int32_t integer : {0, -1, 1, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()})
    {
        for (int type : {4, 14})
        {
            OKAVALUE value(static_cast<OkaValueType>(type), OkaDP::istSignedCount);
            value.numeric.integer = integer;
            samples.push_back(value);
        }
    }
    for (std::uint8_t byte : {0, 1, 255})
    {
        for (int type : {6, 1021})
        {
            OKAVALUE value(static_cast<OkaValueType>(type), OkaDP::istSceneNumber);
            value.numeric.byte = byte;
            samples.push_back(value);
        }
    }
    for (std::uint16_t word : {0, 1, 65535})
    {
        for (int type : {7, 20})
        {
            OKAVALUE value(static_cast<OkaValueType>(type));
            value.numeric.word = word;
            samples.push_back(value);
        }
    }
    for (std::uint32_t dword : {0u, 1u, 4294967295u})
    {
        OKAVALUE value(ivtDWord);
        value.numeric.dword = dword;
        samples.push_back(value);
    }

    samples.push_back(StringValue(""));
    samples.push_back(StringValue("abc"));
    samples.push_back(StringValue(std::string("zero\0byte", 9)));
    samples.push_back(StringValue("100% sure, 5:3 /x"));
    samples.push_back(StringValue("\x01\x1f\x7f\x80\xff"));
    samples.push_back(StringValue("Gr\xC3\xBC\xC3\x9F" "e \xE2\x82\xAC"));
    samples.push_back(StringValue("  leading and trailing  "));
    samples.push_back(StringValue("\"quoted\";w=1"));
    {
        std::string all;
        for (int c = 0; c < 256; ++c)
        {
            all += static_cast<char>(c);
        }
        samples.push_back(StringValue(all));
    }
    {
        OKAVALUE latin(ivtString, OkaDP::istLatin1Text);
        latin.text.assign("\xE9t\xE9");
        samples.push_back(latin);
    }

    for (int type : {11, 12, 13, 15, 102, 104, 105, 201})
    {
        samples.push_back(DateTimeValue(2024, 5, 1, 12, 34, 56, static_cast<OkaValueType>(type)));
    }
    samples.push_back(DateTimeValue(1900, 1, 1, 0, 0, 0, ivtDateTime));
    samples.push_back(DateTimeValue(0, 0, 0, 0, 0, 0, ivtDate));
    {
        OKAVALUE extreme(ivtDateTime, OkaDP::istDefaultValue);
        OKATIME& time = extreme.numeric.time;
        time.year = 65535;
        time.month = 255;
        time.day = 255;
        time.hour = 255;
        time.minute = 255;
        time.second = 255;
        time.hundredths = 255;
        time.weekday = 65535;
        time.kind = 65535;
        time.localTime = true;
        time.daylightSaving = true;
        samples.push_back(extreme);
    }
    samples.push_back(OKAVALUE::DefaultDayTime());

    for (int type : {0, 5, 9, 777, -3})
    {
        OKAVALUE raw(static_cast<OkaValueType>(type), static_cast<OkaDP::OkaValueSubType>(-7));
        for (std::size_t i = 0; i < sizeof raw.numeric; ++i)
        {
            reinterpret_cast<unsigned char*>(&raw.numeric)[i] = static_cast<unsigned char>(i * 17 + 3);
        }
        samples.push_back(raw);
        raw.text.assign(std::string("with, text:%\0", 13).c_str(), 13);
        samples.push_back(raw);
    }
    return samples;
}
} // namespace

TEST(OkaValueTextForm, EveryFamilyReadsBackInBothForms)
{
    TavTest::LogCapture capture;
    for (const OKAVALUE& original : Samples())
    {
        for (bool internal : {false, true})
        {
            const std::string text = Serialized(original, internal);
            OKAVALUE back;
            back.text.assign("old text");
            std::memset(&back.numeric, 0xEE, sizeof back.numeric);
            ASSERT_TRUE(Read(text, back)) << text;
            EXPECT_EQ(back, original) << text << " read as " << back.ToString();
            EXPECT_EQ(back.type, original.type) << text;
            EXPECT_EQ(back.subType, original.subType) << text;
        }
    }
    EXPECT_TRUE(capture.Lines().empty());
}

TEST(OkaValueTextForm, DoublesReadBackBitForBit)
{
    for (const OKAVALUE& original : Samples())
    {
        if (original.type != ivtFloat || std::isnan(original.numeric.real))
        {
            continue;
        }
        OKAVALUE back;
        ASSERT_TRUE(Read(Serialized(original, false), back));
        EXPECT_TRUE(SameBits(back.numeric.real, original.numeric.real)) << Serialized(original, false);
    }
}

TEST(OkaValueTextForm, DefaultFormWritesAPlainFloatBare)
{
    EXPECT_EQ(Serialized(FloatValue(21.5), false), "21.5");
    EXPECT_EQ(Serialized(FloatValue(std::numeric_limits<double>::quiet_NaN()), false), "nan");
    EXPECT_EQ(Serialized(FloatValue(-std::numeric_limits<double>::quiet_NaN()), false), "nan");
    EXPECT_EQ(Serialized(FloatValue(std::numeric_limits<double>::infinity()), false), "inf");
    EXPECT_EQ(Serialized(FloatValue(-std::numeric_limits<double>::infinity()), false), "-inf");
    EXPECT_EQ(Serialized(FloatValue(-0.0), false), "-0");
    EXPECT_EQ(Serialized(FloatValue(21.5, ivtFloat, OkaDP::istPhysicalQuantity), false), "3/3003:21.5");
    EXPECT_EQ(Serialized(FloatValue(21.5, static_cast<OkaValueType>(1039)), false), "1039:21.5");
}

TEST(OkaValueTextForm, InternalFormTagsEveryType)
{
    EXPECT_EQ(Serialized(FloatValue(std::numeric_limits<double>::quiet_NaN()), true), "3.7:nan");
    EXPECT_EQ(Serialized(FloatValue(21.5), true), "3.7:21.5");
    EXPECT_EQ(Serialized(FloatValue(21.5, ivtFloat, OkaDP::istPhysicalQuantity), true), "3.7/3003:21.5");
    EXPECT_EQ(Serialized(OKAVALUE(), true), "1.7:");
    EXPECT_EQ(Serialized(StringValue("abc"), true), "10.7:abc");
}

TEST(OkaValueTextForm, ShortestRoundTripDecimal)
{
    EXPECT_EQ(Serialized(FloatValue(0.1), false), "0.1");
    EXPECT_EQ(Serialized(FloatValue(1.0 / 3.0), false), "0.3333333333333333");
    EXPECT_EQ(Serialized(FloatValue(1e100), false), "1e+100");
    EXPECT_EQ(Serialized(FloatValue(100000000.0), false), "1e+08");
    EXPECT_EQ(Serialized(FloatValue(-273.15), false), "-273.15");
    EXPECT_EQ(Serialized(FloatValue(DBL_MAX), false), "1.7976931348623157e+308");
    EXPECT_EQ(Serialized(FloatValue(std::numeric_limits<double>::denorm_min()), false), "5e-324");
    EXPECT_EQ(Serialized(FloatValue(2.2250738585072009e-308), false), "2.225073858507201e-308");
    EXPECT_EQ(Serialized(FloatValue(0.1 + 0.2), false), "0.30000000000000004");
}

TEST(OkaValueTextForm, PayloadOfEachFamily)
{
    EXPECT_EQ(Serialized(OKAVALUE(), false), "1:");
    OKAVALUE value(ivtBool);
    value.numeric.boolean = true;
    EXPECT_EQ(Serialized(value, false), "2:true");
    value.Reset(ivtBool);
    EXPECT_EQ(Serialized(value, false), "2:false");
    value.Reset(ivtInteger);
    value.numeric.integer = std::numeric_limits<std::int32_t>::min();
    EXPECT_EQ(Serialized(value, false), "4:-2147483648");
    value.Reset(static_cast<OkaValueType>(1021));
    value.numeric.byte = 255;
    EXPECT_EQ(Serialized(value, false), "1021:255");
    value.Reset(static_cast<OkaValueType>(20));
    value.numeric.word = 65535;
    EXPECT_EQ(Serialized(value, false), "20:65535");
    value.Reset(ivtDWord);
    value.numeric.dword = 4294967295u;
    EXPECT_EQ(Serialized(value, false), "8:4294967295");
    EXPECT_EQ(Serialized(StringValue(std::string("a%b\0c\x7f\xc3\xa9", 8)), false), "10:a%25b%00c%7F\xc3\xa9");
    EXPECT_EQ(Serialized(DateTimeValue(2024, 5, 1, 0, 0, 0, ivtDate), false), "11:2024-05-01T00:00:00.00;w=3;k=0;l=1;d=0");
    EXPECT_EQ(Serialized(DateTimeValue(5, 1, 2, 3, 4, 5, ivtDate), false), "11:0005-01-02T03:04:05.00;w=0;k=0;l=1;d=0");
    EXPECT_EQ(Serialized(OKAVALUE::DefaultDayTime(), false), "15/2:2000-01-01T00:00:00.00;w=7;k=1;l=0;d=0");

    OKAVALUE raw(static_cast<OkaValueType>(9));
    raw.numeric.dword = 0x04030201;
    EXPECT_EQ(Serialized(raw, false), "9:x01020304000000000000000000000000");
    raw.text.assign("a,%");
    EXPECT_EQ(Serialized(raw, true), "9.7:x01020304000000000000000000000000,a,%25");
}

TEST(OkaValueTextForm, ReadsHandWrittenTexts)
{
    OKAVALUE value;
    ASSERT_TRUE(Read("21.5", value));
    EXPECT_EQ(value, FloatValue(21.5));
    ASSERT_TRUE(Read("-1e-3", value));
    EXPECT_EQ(value, FloatValue(-0.001));
    ASSERT_TRUE(Read("3.7:nan", value));
    EXPECT_EQ(value.type, ivtFloat);
    EXPECT_TRUE(std::isnan(value.numeric.real));
    ASSERT_TRUE(Read("-inf", value));
    EXPECT_EQ(value, FloatValue(-std::numeric_limits<double>::infinity()));
    ASSERT_TRUE(Read("2:1", value));
    EXPECT_TRUE(value.numeric.boolean);
    ASSERT_TRUE(Read("2.7/2001:0", value));
    EXPECT_EQ(value.type, ivtBool);
    EXPECT_EQ(value.subType, OkaDP::istSwitch);
    EXPECT_FALSE(value.numeric.boolean);
    ASSERT_TRUE(Read("10:%c3%A9", value));
    EXPECT_STREQ(value.text.c_str(), "\xc3\xa9");
    ASSERT_TRUE(Read("12:1-2-3T4:5:6.7;w=1;k=0;l=0;d=1", value));
    EXPECT_EQ(value.numeric.time.year, 1);
    EXPECT_EQ(value.numeric.time.hundredths, 7);
    EXPECT_TRUE(value.numeric.time.daylightSaving);
    ASSERT_TRUE(Read("5:xFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF", value));
    EXPECT_EQ(value.numeric.dword, 0xFFFFFFFFu);
}

TEST(OkaValueTextForm, ReadingZeroesTheWholeUnion)
{
    OKAVALUE value(ivtDWord);
    value.numeric.dword = 0xFFFFFFFF;
    ASSERT_TRUE(Read("6:200", value));
    EXPECT_EQ(value.type, ivtByte);
    EXPECT_EQ(value.numeric.integer, 200);
    ASSERT_TRUE(Read("7:65535", value));
    EXPECT_EQ(value.numeric.dword, 65535u);
}

TEST(OkaValueTextForm, UnreadableTextLeavesTheValueAsItWas)
{
    TavTest::LogCapture capture;
    const char* const unreadable[] = {
        "",
        ":",
        "abc",
        "21.5 ",
        " 21.5",
        "+1",
        "1e",
        "0x10",
        "1e999",
        "-1e999",
        "-nan",
        "infinity",
        "NaN",
        "3:",
        "3:abc",
        "3:1.5x",
        "3:inf ",
        ":21.5",
        "x:1",
        "3.8:1",
        "3.:1",
        "3.7.7:1",
        "3.77:1",
        "3/:1",
        "3/x:1",
        "3/1/2:1",
        "3 :1",
        "99999999999:1",
        "1:x",
        "2:yes",
        "2:2",
        "2:",
        "4:2147483648",
        "4:-2147483649",
        "4:1.0",
        "4:",
        "4:+1",
        "6:256",
        "6:-1",
        "1021:300",
        "7:65536",
        "20:-1",
        "8:4294967296",
        "8:-1",
        "8:18446744073709551616",
        "10:%",
        "10:%4",
        "10:%zz",
        "11:",
        "11:2024-05-01",
        "11:2024-05-01T00:00:00.00;w=3;k=0;l=1",
        "11:2024-05-01T00:00:00.00;w=3;k=0;l=2;d=0",
        "11:2024-05-01T00:00:00.00;w=3;k=0;l=1;d=0;",
        "11:65536-05-01T00:00:00.00;w=3;k=0;l=1;d=0",
        "11:2024-256-01T00:00:00.00;w=3;k=0;l=1;d=0",
        "11:2024-05-01T00:00:00.00;w=65536;k=0;l=1;d=0",
        "11:-2024-05-01T00:00:00.00;w=3;k=0;l=1;d=0",
        "0:",
        "0:x0102",
        "0:x0000000000000000000000000000000g",
        "0:x00000000000000000000000000000000;text",
        "0:x00000000000000000000000000000000,%",
        "5:00000000000000000000000000000000",
    };
    for (const char* text : unreadable)
    {
        OKAVALUE value(ivtString, OkaDP::istAsciiText);
        value.text.assign("kept text");
        const OKAVALUE before = value;
        EXPECT_FALSE(Read(text, value)) << '"' << text << '"';
        EXPECT_EQ(value, before) << text;
    }

    OKAVALUE defaultValue;
    EXPECT_FALSE(Read("garbage", defaultValue));
    EXPECT_EQ(defaultValue.type, ivtEmpty);
    EXPECT_EQ(defaultValue, OKAVALUE());
    EXPECT_TRUE(capture.Lines().empty());
}

TEST(OkaValueTextForm, ZeroByteInsideANumberIsUnreadable)
{
    OKAVALUE value;
    EXPECT_FALSE(value.Deserialize(oka_string("4:1\0" "2", 5)));
    EXPECT_EQ(value, OKAVALUE());
}

TEST(OkaValueTextForm, DoesNotDependOnTheProcessLocale)
{
    const char* const commaLocales[] = {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "de_DE"};
    const std::string previous = std::setlocale(LC_NUMERIC, nullptr);
    const char* selected = nullptr;
    for (const char* name : commaLocales)
    {
        if (std::setlocale(LC_NUMERIC, name) != nullptr)
        {
            selected = name;
            break;
        }
    }
    if (selected == nullptr)
    {
        GTEST_SKIP() << "no locale with a decimal comma installed";
    }
    const std::string text = Serialized(FloatValue(21.5), false);
    OKAVALUE back;
    const bool read = Read("-273.15", back);
    std::setlocale(LC_NUMERIC, previous.c_str());
    EXPECT_EQ(text, "21.5");
    ASSERT_TRUE(read);
    EXPECT_EQ(back, FloatValue(-273.15));
}
