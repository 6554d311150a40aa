// Structured converters: 10.001 time of day, 11.001 date, 19.x date and time, 16.x string.
#include "KnxConverterTestSupport.h"
#include "support/LogCapture.h"

#include <TavObjectModel/KnxConverter.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Okaro;
using namespace TavTest;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{
class StructuredConverter : public ::testing::Test
{
protected:
    std::vector<LogLine> Refusals() const { return capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL); }

    LogCapture capture;
    const KnxStack::GroupValue untouched = Group({0xAA, 0xBB}, 16);
    KnxStack::GroupValue out = untouched;
    const OKAVALUE before = StringValue("before", ivtEmpty);
    OKAVALUE value = before;
};

std::string Text(const OKAVALUE& value)
{
    return std::string(value.text.c_str(), value.text.length());
}
} // namespace

// --- 10.001 ------------------------------------------------------------------------------

class TimeOfDayConverter : public StructuredConverter
{
protected:
    const KnxConverterTimeOfDay converter{};
    const KNXDPT dpt{24, 10, 1};
};

TEST_F(TimeOfDayConverter, SendsHourMinuteSecondAndWeekday)
{
    // OKATIME weekday 1 is Monday, KNX day 1.
    const OKAVALUE time = TimeValue(MakeTime(2000, 1, 1, 13, 45, 30, 1), ivtDayTime);
    ASSERT_TRUE(converter.ToKnxValue(dpt, time, out));
    KnxStack::GroupValue expected;
    expected.SetAsTimeOfDay(13, 45, 30, KnxStack::GroupValue::DayOfWeek::Monday);
    EXPECT_EQ(out, expected);
    EXPECT_THAT(Bytes(out), ElementsAre(0x2Du, 0x2Du, 0x1Eu));
    EXPECT_THAT(capture.Lines(), ElementsAre(Trace(ToTraceText(dpt, time))));
}

TEST_F(TimeOfDayConverter, SundayAndNoDay)
{
    ASSERT_TRUE(converter.ToKnxValue(dpt, TimeValue(MakeTime(2000, 1, 1, 1, 2, 3, 0), ivtDayTime), out));
    EXPECT_THAT(Bytes(out), ElementsAre(0xE1u, 0x02u, 0x03u));
    ASSERT_TRUE(converter.ToKnxValue(dpt, TimeValue(MakeTime(2000, 1, 1, 1, 2, 3, 7), ivtDayTime), out));
    EXPECT_THAT(Bytes(out), ElementsAre(0x01u, 0x02u, 0x03u));
}

TEST_F(TimeOfDayConverter, InvalidTimeListsAllElevenFields)
{
    OKATIME time = MakeTime(2000, 1, 1, 25, 0, 0, 7);
    time.kind = 1;
    time.localTime = true;
    EXPECT_FALSE(converter.ToKnxValue(dpt, TimeValue(time, ivtDayTime), out));
    EXPECT_EQ(out, untouched);
    EXPECT_THAT(Refusals(),
                ElementsAre(Error("ToKnxValue - Could not convert OKATIME 2000 1 1 25 0 0 0 7 1 1 0 to TimeOfDay")));
}

TEST_F(TimeOfDayConverter, AnyOneOfMainSubOrTypeSuffices)
{
    const OKATIME time = MakeTime(2000, 1, 1, 1, 2, 3);
    EXPECT_TRUE(converter.ToKnxValue(KNXDPT{24, 10, 5}, TimeValue(time, ivtTime), out));
    EXPECT_TRUE(converter.ToKnxValue(KNXDPT{24, 11, 1}, TimeValue(time, ivtDate), out));
    EXPECT_TRUE(converter.ToKnxValue(KNXDPT{24, 11, 2}, TimeValue(time, ivtDayTime), out));
    out = untouched;
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{24, 11, 2}, TimeValue(time, ivtDate), out));
    EXPECT_EQ(out, untouched);
    EXPECT_THAT(Refusals(),
                ElementsAre(Error("ToKnxValue - Wrong DPT main number (10.001) or oka value type (ivtDayTime)!")));
}

TEST_F(TimeOfDayConverter, ReceivedTimeOnThePlaceholderDate)
{
    const KnxStack::GroupValue group = Group({0x2D, 0x2D, 0x1E}, 24);
    ASSERT_TRUE(converter.FromKnxValue(dpt, group, value));
    EXPECT_EQ(value.type, ivtDayTime);
    OKATIME expected{};
    expected.year = 2000;
    expected.month = 1;
    expected.day = 1;
    expected.kind = 1;
    expected.hour = 13;
    expected.minute = 45;
    expected.second = 30;
    expected.weekday = 1;
    EXPECT_EQ(value.numeric.time, expected);
    EXPECT_FALSE(value.numeric.time.localTime);
    EXPECT_THAT(capture.Lines(), ElementsAre(Trace(FromTraceText(dpt, group))));
}

TEST_F(TimeOfDayConverter, ReceivedSundayBecomesWeekdayZero)
{
    ASSERT_TRUE(converter.FromKnxValue(dpt, Group({0xE1, 0x02, 0x03}, 24), value));
    EXPECT_EQ(value.numeric.time.weekday, 0);
}

TEST_F(TimeOfDayConverter, ReservedMinuteOrSecondBitsAreRefused)
{
    EXPECT_FALSE(converter.FromKnxValue(dpt, Group({0x0D, 0x40, 0x00}, 24), value));
    EXPECT_FALSE(converter.FromKnxValue(dpt, Group({0x0D, 0x00, 0x80}, 24), value));
    EXPECT_EQ(value, before);
    EXPECT_THAT(Refusals(), ElementsAre(Error("FromKnxValue - No valid TimeOfDay datagram, reserved fields ar not zero!"),
                                        Error("FromKnxValue - No valid TimeOfDay datagram, reserved fields ar not zero!")));
}

TEST_F(TimeOfDayConverter, HourTwentyFiveIsRefused)
{
    EXPECT_FALSE(converter.FromKnxValue(dpt, Group({0x19, 0x00, 0x00}, 24), value));
    EXPECT_EQ(value, before);
    EXPECT_THAT(Refusals(), ElementsAre(Error("FromKnxValue - No valid TimeOfDay (10.001)!")));
}

TEST_F(TimeOfDayConverter, FromKnxAcceptsMainOrSub)
{
    EXPECT_TRUE(converter.FromKnxValue(KNXDPT{24, 11, 1}, Group({1, 2, 3}, 24), value));
    value = before;
    EXPECT_FALSE(converter.FromKnxValue(KNXDPT{24, 11, 2}, Group({1, 2, 3}, 24), value));
    EXPECT_EQ(value, before);
    EXPECT_THAT(Refusals(), ElementsAre(Error("FromKnxValue - Wrong DPT main number (10.001)!")));
}

// --- 11.001 ------------------------------------------------------------------------------

class DateConverter : public StructuredConverter
{
protected:
    const KnxConverterDate converter;
    const KNXDPT dpt{24, 11, 1};
};

TEST_F(DateConverter, SendsDayMonthAndTwoDigitYear)
{
    const OKAVALUE date = TimeValue(MakeTime(2089, 12, 31), ivtDate);
    ASSERT_TRUE(converter.ToKnxValue(dpt, date, out));
    KnxStack::GroupValue expected;
    expected.SetAsDate(31, 12, 2089);
    EXPECT_EQ(out, expected);
    EXPECT_THAT(Bytes(out), ElementsAre(31u, 12u, 89u));
    EXPECT_THAT(capture.Lines(), ElementsAre(Trace(ToTraceText(dpt, date))));
}

TEST_F(DateConverter, YearsOutsideNinetyToEightyNineAreRefusedWithRawMonthAndDay)
{
    EXPECT_FALSE(converter.ToKnxValue(dpt, TimeValue(MakeTime(2090, 5, 17), ivtDate), out));
    EXPECT_FALSE(converter.ToKnxValue(dpt, TimeValue(MakeTime(1989, 'A', 'B'), ivtDate), out));
    EXPECT_FALSE(converter.ToKnxValue(dpt, TimeValue(MakeTime(0, 1, 1), ivtDate), out));
    EXPECT_EQ(out, untouched);
    EXPECT_THAT(
        Refusals(),
        ElementsAre(
            Error("ToKnxValue - Cannot convert the date outside of the range [1990...2089]: year=2090, month=\x05, "
                  "day=\x11"),
            Error("ToKnxValue - Cannot convert the date outside of the range [1990...2089]: year=1989, month=A, day=B"),
            Error("ToKnxValue - Cannot convert the date outside of the range [1990...2089]: year=0, month=\x01, "
                  "day=\x01")));
}

TEST_F(DateConverter, NineteenNinetyPasses)
{
    ASSERT_TRUE(converter.ToKnxValue(dpt, TimeValue(MakeTime(1990, 1, 1), ivtDate), out));
    EXPECT_THAT(Bytes(out), ElementsAre(1u, 1u, 90u));
}

TEST_F(DateConverter, WrongDptUsesTheTimeOfDayText)
{
    EXPECT_TRUE(converter.ToKnxValue(KNXDPT{24, 19, 1}, TimeValue(MakeTime(2024, 2, 29), ivtDateTime), out));
    EXPECT_TRUE(converter.ToKnxValue(KNXDPT{24, 11, 3}, TimeValue(MakeTime(2024, 2, 29), ivtDateTime), out));
    out = untouched;
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{24, 10, 2}, TimeValue(MakeTime(2024, 2, 29), ivtDayTime), out));
    EXPECT_EQ(out, untouched);
    EXPECT_THAT(Refusals(),
                ElementsAre(Error("ToKnxValue - Wrong DPT main number (10.001) or oka value type (ivtDayTime)!")));
}

TEST_F(DateConverter, ReceivedDate)
{
    const KnxStack::GroupValue group = Group({31, 12, 89}, 24);
    ASSERT_TRUE(converter.FromKnxValue(dpt, group, value));
    EXPECT_EQ(value.type, ivtDate);
    OKATIME expected{};
    expected.Clear(true);
    expected.SetDate(2089, 12, 31, true);
    EXPECT_EQ(value.numeric.time, expected);
    EXPECT_THAT(capture.Lines(), ElementsAre(Trace(FromTraceText(dpt, group))));
}

TEST_F(DateConverter, ReservedBitsAreRefused)
{
    EXPECT_FALSE(converter.FromKnxValue(dpt, Group({0x21, 1, 24}, 24), value));  // day
    EXPECT_FALSE(converter.FromKnxValue(dpt, Group({1, 0x11, 24}, 24), value));  // month
    EXPECT_FALSE(converter.FromKnxValue(dpt, Group({1, 1, 0x80}, 24), value));   // year
    EXPECT_EQ(value, before);
    EXPECT_THAT(Refusals(), ElementsAre(Error("FromKnxValue - No valid Date datagram, reserved fields ar not zero!"),
                                        Error("FromKnxValue - No valid Date datagram, reserved fields ar not zero!"),
                                        Error("FromKnxValue - No valid Date datagram, reserved fields ar not zero!")));
}

TEST_F(DateConverter, ThirtyFirstOfFebruaryIsRefused)
{
    EXPECT_FALSE(converter.FromKnxValue(dpt, Group({31, 2, 24}, 24), value));
    EXPECT_EQ(value, before);
    EXPECT_THAT(Refusals(), ElementsAre(Error("FromKnxValue - Cannot convert invalid date: year=2024, month=2, day=31")));
}

TEST_F(DateConverter, FromKnxAcceptsMainOrSub)
{
    EXPECT_TRUE(converter.FromKnxValue(KNXDPT{24, 10, 1}, Group({1, 1, 24}, 24), value));
    value = before;
    EXPECT_FALSE(converter.FromKnxValue(KNXDPT{24, 10, 2}, Group({1, 1, 24}, 24), value));
    EXPECT_EQ(value, before);
    EXPECT_THAT(Refusals(), ElementsAre(Error("FromKnxValue - Wrong DPT main number (11.001)!")));
}

// --- 19.x --------------------------------------------------------------------------------

class DateTimeConverter : public StructuredConverter
{
protected:
    const KnxConverterDateTime converter;
    const KNXDPT dpt{64, 19, 1};
};

TEST_F(DateTimeConverter, YearIsSentAsItsLowByteAndReadBackFrom1900)
{
    ASSERT_TRUE(converter.ToKnxValue(dpt, TimeValue(MakeTime(2024, 5, 17, 13, 45, 30), ivtDateTime), out));
    EXPECT_THAT(Bytes(out), ElementsAre(0xE8u, 5u, 17u, 13u, 45u, 30u, 0x20u, 0u));
    EXPECT_EQ(out.GetDefinedSize(), 64u);

    ASSERT_TRUE(converter.FromKnxValue(dpt, out, value));
    OKATIME expected{};
    expected.Clear(true);
    expected.SetDateTime(2132, 5, 17, 13, 45, 30, true);
    EXPECT_EQ(value.numeric.time, expected);
    EXPECT_EQ(value.numeric.time.year, 2132);
    EXPECT_EQ(value.type, ivtEmpty);  // the type is left to the caller
    EXPECT_THAT(capture.Lines(), IsEmpty());  // no trace lines either way
}

TEST_F(DateTimeConverter, YearsOutside1900To2155AreRefusedWithTheNarrowerText)
{
    EXPECT_FALSE(converter.ToKnxValue(dpt, TimeValue(MakeTime(1899, 12, 31), ivtDateTime), out));
    EXPECT_FALSE(converter.ToKnxValue(dpt, TimeValue(MakeTime(2156, 1, 1), ivtDateTime), out));
    EXPECT_EQ(out, untouched);
    EXPECT_THAT(capture.Lines(),
                ElementsAre(Error("ToKnxValue - Cannot convert the date outside of the range [1990...2089]: year=1899"),
                            Error("ToKnxValue - Cannot convert the date outside of the range [1990...2089]: year=2156")));
}

TEST_F(DateTimeConverter, BoundaryYearsPass)
{
    ASSERT_TRUE(converter.ToKnxValue(dpt, TimeValue(MakeTime(1900, 1, 1), ivtDateTime), out));
    EXPECT_EQ(Bytes(out)[0], 0x6Cu);  // 1900 & 0xFF
    ASSERT_TRUE(converter.ToKnxValue(dpt, TimeValue(MakeTime(2155, 1, 1), ivtDateTime), out));
    EXPECT_EQ(Bytes(out)[0], 0x6Bu);  // 2155 & 0xFF
}

TEST_F(DateTimeConverter, NoDptOrTypeTest)
{
    EXPECT_TRUE(converter.ToKnxValue(KNXDPT{1, 1, 1}, TimeValue(MakeTime(2024, 1, 2), ivtBool), out));
    EXPECT_TRUE(converter.FromKnxValue(KNXDPT{1, 1, 1}, out, value));
}

TEST_F(DateTimeConverter, ReceivedFieldsAreMaskedAndBytesSixAndSevenIgnored)
{
    ASSERT_TRUE(converter.FromKnxValue(dpt, Group({124, 0xF3, 0xE4, 0xE5, 0xC6, 0xC7, 0xFF, 0xFF}, 64), value));
    EXPECT_EQ(value.numeric.time.year, 2024);
    EXPECT_EQ(value.numeric.time.month, 3);
    EXPECT_EQ(value.numeric.time.day, 4);
    EXPECT_EQ(value.numeric.time.hour, 5);
    EXPECT_EQ(value.numeric.time.minute, 6);
    EXPECT_EQ(value.numeric.time.second, 7);
}

TEST_F(DateTimeConverter, InvalidDateOrTimeIsRefused)
{
    EXPECT_FALSE(converter.FromKnxValue(dpt, Group({124, 13, 1, 0, 0, 0, 0, 0}, 64), value));
    EXPECT_FALSE(converter.FromKnxValue(dpt, Group({124, 1, 1, 24, 0, 0, 0, 0}, 64), value));
    EXPECT_EQ(value, before);
    EXPECT_THAT(capture.Lines(),
                ElementsAre(Error("FromKnxValue - Cannot convert invalid date and time: year=2024, month=13, day=1, "
                                  "hour=0, minute=0, second=0"),
                            Error("FromKnxValue - Cannot convert invalid date and time: year=2024, month=1, day=1, "
                                  "hour=24, minute=0, second=0")));
}

// --- 16.x --------------------------------------------------------------------------------

class StringConverter : public StructuredConverter
{
protected:
    const KnxConverter14ByteString printable{IntegerRange::CreateScaled(32, 126, 32, 126)};
    const KnxConverter14ByteString latin1{IntegerRange::CreateScaled(0, 255, 0, 255)};
    const KNXDPT dpt{112, 16, 0};
};

TEST_F(StringConverter, CharactersOutsideTheRangeAreSentAsUnderscores)
{
    const OKAVALUE text = StringValue("Gr\xC3\xBC\xC3\x9F" "e");  // u-umlaut, sharp s
    ASSERT_TRUE(printable.ToKnxValue(dpt, text, out));
    KnxStack::GroupValue expected;
    expected.SetAsString14("Gr__e");
    EXPECT_EQ(out, expected);
    EXPECT_THAT(capture.Lines(), ElementsAre(Trace(ToTraceText(dpt, text))));
}

TEST_F(StringConverter, Latin1RangeSendsLatin1Bytes)
{
    ASSERT_TRUE(latin1.ToKnxValue(KNXDPT{112, 16, 1}, StringValue("\xC3\xBC"), out));
    EXPECT_EQ(Bytes(out)[0], 0xFCu);
}

TEST_F(StringConverter, ReceivedBytesOutsideTheRangeAreDroppedWithOneInfoLine)
{
    const KnxStack::GroupValue group = Group({'a', 0xFC, 'b', 0x01, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 112);
    ASSERT_TRUE(printable.FromKnxValue(dpt, group, value));
    EXPECT_EQ(value.type, ivtString);
    EXPECT_EQ(Text(value), "ab");
    EXPECT_THAT(capture.Lines(),
                ElementsAre(Trace(FromTraceText(dpt, group)),
                            Info("FromKnxValue - Invalid characters for DPT 16.0 has been replaced with _.")));
}

TEST_F(StringConverter, CleanTextIsReceivedWithoutInfoLine)
{
    ASSERT_TRUE(printable.FromKnxValue(dpt, Group({'H', 'e', 'l', 'l', 'o', 0, 0, 0, 0, 0, 0, 0, 0, 0}, 112), value));
    EXPECT_EQ(Text(value), "Hello");
    ASSERT_TRUE(latin1.FromKnxValue(KNXDPT{112, 16, 1}, Group({0xFC, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 112),
                                    value));
    EXPECT_EQ(Text(value), "\xC3\xBC");
    EXPECT_THAT(Refusals(), IsEmpty());
}

TEST_F(StringConverter, Refusals)
{
    EXPECT_TRUE(printable.ToKnxValue(KNXDPT{8, 4, 1}, StringValue("x"), out));  // the type suffices
    EXPECT_TRUE(printable.ToKnxValue(dpt, ByteValue(0), out));                   // the main number suffices
    out = untouched;
    EXPECT_FALSE(printable.ToKnxValue(KNXDPT{8, 4, 1}, ByteValue(0), out));
    EXPECT_EQ(out, untouched);
    EXPECT_FALSE(printable.FromKnxValue(KNXDPT{8, 4, 1}, Group({'x'}, 8), value));
    EXPECT_EQ(value, before);
    EXPECT_THAT(Refusals(), ElementsAre(Error("ToKnxValue - Wrong DPT main number (16.x) or oka value type (ivtString)!"),
                                        Error("FromKnxValue - Wrong DPT main number (16.x)!")));
}
