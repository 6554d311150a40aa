#include "support/GroupValues.h"
#include "support/LogCapture.h"
#include "support/Values.h"

#include <TavObjectModel/TavKnxValueConverter.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace Okaro;
using namespace TavTest;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{

std::string SerializedText(const OKAVALUE& value, bool internalForm)
{
    oka_string text;
    value.Serialize(text, internalForm);
    return std::string(text.c_str(), text.length());
}

const char* const kUnreadable = "this is no serialised value";

std::vector<LogLine> Errors(const LogCapture& capture) { return capture.LinesAtOrAbove(log4cplus::ERROR_LOG_LEVEL); }
} // namespace

TEST(TavKnxValueConverter, InitAndTheValueOverloadsBehaveAsTheBase)
{
    TavKnxValueConverter converter;
    EXPECT_TRUE(converter.Init());
    EXPECT_EQ(converter.GetDptValueMap().GetEntryCount(), 53u);
    KnxStack::GroupValue groupValue;
    EXPECT_TRUE(converter.ToKnxValue(KNXDPT{16, 9, 1}, FloatValue(21.0), groupValue));
    EXPECT_EQ(BytesOf(groupValue), Bytes({0x0C, 0x1A}));
    OKAVALUE value;
    EXPECT_TRUE(converter.FromKnxValue(KNXDPT{16, 9, 1}, groupValue, value));
    EXPECT_EQ(value.type, ivtFloat);
    EXPECT_DOUBLE_EQ(value.numeric.real, 21.0);
}

TEST(TavKnxValueConverter, OneBitGroupValueGivesTheTextOfABool)
{
    TavKnxValueConverter converter;
    for (bool internalForm : {false, true})
    {
        std::string text = "old";
        LogCapture capture;
        EXPECT_TRUE(converter.FromKnxValue(MakeGroupValue({0x01}, 1), text, internalForm));
        EXPECT_EQ(text, SerializedText(BoolValue(true), internalForm));
        EXPECT_THAT(Errors(capture), IsEmpty());
    }
}

TEST(TavKnxValueConverter, ShortTelegramSizeHasNoDefaultDptAndLeavesTheText)
{
    TavKnxValueConverter converter;
    std::string text = "old";
    LogCapture capture;
    EXPECT_FALSE(converter.FromKnxValue(MakeGroupValue({0x01}, 6), text, false));
    EXPECT_EQ(text, "old");
    EXPECT_THAT(capture.Lines(),
                ElementsAre(Error("FromKnxValue - Convert from KNX value failed. Missing DPT. GroupValue = 01")));
}

TEST(TavKnxValueConverter, SixteenBitsAreAlwaysReadAsAFloat)
{
    TavKnxValueConverter converter;
    std::string text;
    // 0x0C1A would be 3098 as DPT 7 or 8.
    EXPECT_TRUE(converter.FromKnxValue(MakeGroupValue({0x0C, 0x1A}, 16), text, false));
    EXPECT_EQ(text, SerializedText(FloatValue(21.0), false));
}

TEST(TavKnxValueConverter, FailedConversionLeavesTheText)
{
    TavKnxValueConverter converter;
    std::string text = "old";
    LogCapture capture;
    EXPECT_FALSE(converter.FromKnxValue(MakeGroupValue({0x0C}, 16), text, false));
    EXPECT_EQ(text, "old");
    EXPECT_FALSE(Errors(capture).empty());
}

TEST(TavKnxValueConverter, StringWithEightBitsBecomesFourOne)
{
    TavKnxValueConverter converter;
    KnxStack::GroupValue groupValue;
    LogCapture capture;
    EXPECT_TRUE(converter.ToKnxValue(SerializedText(StringValue("AB"), false), 8, groupValue));
    EXPECT_EQ(BytesOf(groupValue), Bytes({0x41}));
    EXPECT_EQ(groupValue.GetDefinedSize(), 8u);
    EXPECT_THAT(Errors(capture), IsEmpty());
}

TEST(TavKnxValueConverter, BitSize300IsReadAs44WhichHasNoDefault)
{
    TavKnxValueConverter converter;
    KnxStack::GroupValue groupValue;
    LogCapture capture;
    // A string's default depends on the size; 44 has none, and neither has the size itself.
    EXPECT_FALSE(converter.ToKnxValue(SerializedText(StringValue("AB"), false), 300, groupValue));
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("ToKnxValue - Convert to KNX value failed. Missing DPT. val = " +
                                                   StringValue("AB").ToString())));
    // A bool's default ignores the size.
    capture.Clear();
    EXPECT_TRUE(converter.ToKnxValue(SerializedText(BoolValue(true), false), 300, groupValue));
    EXPECT_EQ(BytesOf(groupValue), Bytes({0x01}));
    EXPECT_EQ(groupValue.GetDefinedSize(), 1u);
    EXPECT_THAT(Errors(capture), IsEmpty());
}

TEST(TavKnxValueConverter, TextWithDptWritesTheChosenDefaultIntoTheCallersDpt)
{
    TavKnxValueConverter converter;
    KNXDPT dpt{32, 0, 0};
    KnxStack::GroupValue groupValue;
    EXPECT_TRUE(converter.ToKnxValue(dpt, SerializedText(FloatValue(21.5), true), groupValue));
    EXPECT_EQ(dpt.size, 16);
    EXPECT_EQ(dpt.main, 14);
    EXPECT_EQ(dpt.sub, 0);
    EXPECT_EQ(BytesOf(groupValue), Bytes({0x41, 0xAC, 0x00, 0x00}));
}

TEST(TavKnxValueConverter, TextEndsAtItsFirstZeroByte)
{
    TavKnxValueConverter converter;
    std::string text = SerializedText(FloatValue(21.0), false);
    text.push_back('\0');
    text += "trailing garbage";
    KnxStack::GroupValue groupValue;
    EXPECT_TRUE(converter.ToKnxValue(KNXDPT{16, 9, 1}, text, groupValue));
    EXPECT_EQ(BytesOf(groupValue), Bytes({0x0C, 0x1A}));
}

TEST(TavKnxValueConverter, UnreadableTextWithAMappedDptIsAnInvalidType)
{
    TavKnxValueConverter converter;
    KnxStack::GroupValue groupValue;
    LogCapture capture;
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{16, 9, 1}, kUnreadable, groupValue));
    EXPECT_NO_THROW(converter.ToKnxValue(KNXDPT{16, 9, 1}, std::string(), groupValue));
    EXPECT_EQ(groupValue, KnxStack::GroupValue());
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("ToKnxValue - Invalid value type found for DPT = 9.1 val.ivt=1"),
                                             Error("ToKnxValue - Invalid value type found for DPT = 9.1 val.ivt=1")));
}

TEST(TavKnxValueConverter, UnreadableTextWithASizeThatHasADefaultIsAnInvalidType)
{
    TavKnxValueConverter converter;
    KnxStack::GroupValue groupValue;
    LogCapture capture;
    EXPECT_FALSE(converter.ToKnxValue(kUnreadable, 16, groupValue));
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("ToKnxValue - Invalid value type found for DPT = 9.0 val.ivt=1")));
}

TEST(TavKnxValueConverter, UnreadableTextWithoutAnyDefaultIsAMissingDpt)
{
    TavKnxValueConverter converter;
    const std::string missing = "ToKnxValue - Convert to KNX value failed. Missing DPT. val = " + OKAVALUE().ToString();
    for (unsigned long bitSize : {0ul, 300ul})
    {
        KnxStack::GroupValue groupValue;
        LogCapture capture;
        EXPECT_FALSE(converter.ToKnxValue(kUnreadable, bitSize, groupValue));
        EXPECT_EQ(groupValue, KnxStack::GroupValue());
        EXPECT_THAT(capture.Lines(), ElementsAre(Error(missing))) << bitSize;
    }
}
