// Converters of one to eight bits: 1.x, 2.x, 3.x, 4.x, 5.x, 6.x, 6.020, 17.001, 18.001, 26.001.
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
// Every test starts with a group value and an output value that a refusal must leave alone.
class SmallConverter : public ::testing::Test
{
protected:
    KnxStack::GroupValue Written(void (KnxStack::GroupValue::*setter)(unsigned char), unsigned char value)
    {
        KnxStack::GroupValue expected;
        (expected.*setter)(value);
        return expected;
    }

    LogCapture capture;
    const KnxStack::GroupValue untouched = MakeGroupValue({0xAA, 0xBB}, 16);
    KnxStack::GroupValue out = untouched;
    const OKAVALUE before = StringValue("before", ivtEmpty);
    OKAVALUE value = before;
};

class KnxConverterOneBit : public SmallConverter
{
};

class KnxConverterTwoBit : public SmallConverter
{
};

class KnxConverterUnsignedByte : public SmallConverter
{
};

class KnxConverterSignedByte : public SmallConverter
{
};
} // namespace

// --- 1.x ---------------------------------------------------------------------------------

TEST_F(KnxConverterOneBit, WritesTheBoolean)
{
    const KnxConverter1Bit converter{};
    const KNXDPT dpt{1, 1, 1};
    const OKAVALUE on = BoolValue(true);
    ASSERT_TRUE(converter.ToKnxValue(dpt, on, out));
    KnxStack::GroupValue expected;
    expected.SetAsBoolean(true);
    EXPECT_EQ(out, expected);
    EXPECT_THAT(capture.Lines(), ElementsAre(Trace(ToTraceText(dpt, on))));
}

TEST_F(KnxConverterOneBit, TraceLineText)
{
    const KnxConverter1Bit converter{};
    converter.ToKnxValue(KNXDPT{1, 1, 1}, BoolValue(true), out);
    EXPECT_THAT(capture.Lines(), ElementsAre(Trace("ToKnxValue - DPT is used. DPT = 1.1 ivt=2 val=Bool true")));
}

TEST_F(KnxConverterOneBit, RefusesAByteWithOnlyTheTraceLine)
{
    const KnxConverter1Bit converter{};
    const KNXDPT dpt{1, 1, 1};
    const OKAVALUE byte = ByteValue(1);
    EXPECT_FALSE(converter.ToKnxValue(dpt, byte, out));
    EXPECT_EQ(out, untouched);
    EXPECT_THAT(capture.Lines(), ElementsAre(Trace(ToTraceText(dpt, byte))));
}

TEST_F(KnxConverterOneBit, NeedsMainNumberOneAndABoolean)
{
    const KnxConverter1Bit converter{};
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{1, 2, 1}, BoolValue(true), out));
    EXPECT_EQ(out, untouched);
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL), IsEmpty());
}

TEST_F(KnxConverterOneBit, FromKnxSetsTheBooleanOnlyAndWritesNoTrace)
{
    const KnxConverter1Bit converter{};
    ASSERT_TRUE(converter.FromKnxValue(KNXDPT{1, 1, 1}, MakeGroupValue({0x01}, 1), value));
    EXPECT_TRUE(value.numeric.boolean);
    EXPECT_EQ(value.type, ivtEmpty);  // the type is left to the caller
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST_F(KnxConverterOneBit, FromKnxRefusesSilently)
{
    const KnxConverter1Bit converter{};
    EXPECT_FALSE(converter.FromKnxValue(KNXDPT{1, 5, 1}, MakeGroupValue({0x01}, 1), value));
    EXPECT_EQ(value, before);
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

// --- 2.x ---------------------------------------------------------------------------------

TEST_F(KnxConverterTwoBit, WritesTheByteUnchecked)
{
    const KnxConverter2Bit converter{};
    const KNXDPT dpt{2, 2, 1};
    ASSERT_TRUE(converter.ToKnxValue(dpt, ByteValue(3), out));
    EXPECT_EQ(out, Written(&KnxStack::GroupValue::SetAsUnsigned2, 3));
    EXPECT_TRUE(converter.ToKnxValue(dpt, ByteValue(200), out));
    EXPECT_EQ(out, Written(&KnxStack::GroupValue::SetAsUnsigned2, 200));
    EXPECT_THAT(capture.Lines(), ElementsAre(Trace(ToTraceText(dpt, ByteValue(3))), Trace(ToTraceText(dpt, ByteValue(200)))));
}

TEST_F(KnxConverterTwoBit, NeedsMainNumberAndByte)
{
    const KnxConverter2Bit converter{};
    const KNXDPT dpt{2, 2, 1};
    EXPECT_FALSE(converter.ToKnxValue(dpt, BoolValue(true), out));
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{2, 3, 1}, ByteValue(1), out));
    EXPECT_EQ(out, untouched);
    EXPECT_THAT(capture.Lines(),
                ElementsAre(Trace(ToTraceText(dpt, BoolValue(true))),
                            Error("ToKnxValue - Wrong oka value type (ivtByte) or DPT main number (2.x)!"),
                            Trace(ToTraceText(KNXDPT{2, 3, 1}, ByteValue(1))),
                            Error("ToKnxValue - Wrong oka value type (ivtByte) or DPT main number (2.x)!")));
}

TEST_F(KnxConverterTwoBit, FromKnx)
{
    const KnxConverter2Bit converter{};
    const KNXDPT dpt{2, 2, 1};
    const KnxStack::GroupValue group = MakeGroupValue({0x02}, 2);
    ASSERT_TRUE(converter.FromKnxValue(dpt, group, value));
    EXPECT_EQ(value.type, ivtByte);
    EXPECT_EQ(value.numeric.byte, 2);
    EXPECT_THAT(capture.Lines(), ElementsAre(Trace(FromTraceText(dpt, group))));
}

TEST_F(KnxConverterTwoBit, FromKnxTraceLineText)
{
    const KnxConverter2Bit converter{};
    converter.FromKnxValue(KNXDPT{2, 2, 1}, MakeGroupValue({0x02}, 6), value);
    EXPECT_THAT(capture.Lines(), ElementsAre(Trace("FromKnxValue - DPT is used. DPT = 2.1 grp.size=6 grp.val=02")));
}

TEST_F(KnxConverterTwoBit, FromKnxRefusesOtherMainNumbers)
{
    const KnxConverter2Bit converter{};
    EXPECT_FALSE(converter.FromKnxValue(KNXDPT{2, 1, 1}, MakeGroupValue({0x02}, 2), value));
    EXPECT_EQ(value, before);
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL),
                ElementsAre(Error("FromKnxValue - Wrong DPT main number (2.x)!")));
}

// --- 3.x ---------------------------------------------------------------------------------

class KnxConverterFourBit : public SmallConverter
{
protected:
    const KnxConverter4Bit converter{FloatIntegerRange::CreateScaled(-100.0, 100.0, 0, 15)};
};

TEST_F(KnxConverterFourBit, WritesBytesBelowSixteen)
{
    ASSERT_TRUE(converter.ToKnxValue(KNXDPT{4, 3, 7}, ByteValue(11), out));
    EXPECT_EQ(out, Written(&KnxStack::GroupValue::SetAsUnsigned4, 11));
    EXPECT_EQ(out.GetAsUnsigned4(), 11);
}

TEST_F(KnxConverterFourBit, RefusesSixteen)
{
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{4, 3, 7}, ByteValue(16), out));
    EXPECT_EQ(out, untouched);
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL),
                ElementsAre(Error("ToKnxValue - Value out of raw range [0..15]: 16")));
}

TEST_F(KnxConverterFourBit, NeedsMainNumberAndByte)
{
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{4, 3, 7}, FloatValue(50.0), out));
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{4, 2, 7}, ByteValue(1), out));
    EXPECT_EQ(out, untouched);
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL),
                ElementsAre(Error("ToKnxValue - Wrong oka value type (ivtByte) or DPT main number (3.x)!"),
                            Error("ToKnxValue - Wrong oka value type (ivtByte) or DPT main number (3.x)!")));
}

TEST_F(KnxConverterFourBit, FromKnxSetsTheByteOnly)
{
    const KnxStack::GroupValue group = MakeGroupValue({0x0B}, 4);
    ASSERT_TRUE(converter.FromKnxValue(KNXDPT{4, 3, 7}, group, value));
    EXPECT_EQ(value.numeric.byte, 11);
    EXPECT_EQ(value.type, ivtEmpty);
    EXPECT_THAT(capture.Lines(), ElementsAre(Trace(FromTraceText(KNXDPT{4, 3, 7}, group))));
}

TEST_F(KnxConverterFourBit, FromKnxRefusesOtherMainNumbers)
{
    EXPECT_FALSE(converter.FromKnxValue(KNXDPT{4, 2, 7}, MakeGroupValue({0x0B}, 4), value));
    EXPECT_EQ(value, before);
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL),
                ElementsAre(Error("FromKnxValue - Wrong DPT main number (3.x)!")));
}

// --- 4.x ---------------------------------------------------------------------------------

class KnxConverterCharacter : public SmallConverter
{
protected:
    const KnxConverter8BitString ascii{IntegerRange::CreateScaled(0, 127, 0, 127)};
    const KnxConverter8BitString latin1{IntegerRange::CreateScaled(0, 255, 0, 255)};
    const KNXDPT dpt4001{8, 4, 1};
    const KNXDPT dpt4002{8, 4, 2};
    const std::string eAcute = "\xC3\xA9";
};

TEST_F(KnxConverterCharacter, WritesTheFirstCharacter)
{
    ASSERT_TRUE(ascii.ToKnxValue(dpt4001, StringValue("Abc"), out));
    KnxStack::GroupValue expected;
    expected.SetAsChar('A');
    EXPECT_EQ(out, expected);
    EXPECT_THAT(capture.Lines(), ElementsAre(Trace(ToTraceText(dpt4001, StringValue("Abc")))));
}

TEST_F(KnxConverterCharacter, EmptyTextWritesAZeroByte)
{
    ASSERT_TRUE(ascii.ToKnxValue(dpt4001, StringValue(""), out));
    KnxStack::GroupValue expected;
    expected.SetAsChar('\0');
    EXPECT_EQ(out, expected);
}

TEST_F(KnxConverterCharacter, AsciiRefusesEAcuteAfterLatin1Conversion)
{
    EXPECT_FALSE(ascii.ToKnxValue(dpt4001, StringValue(eAcute), out));
    EXPECT_EQ(out, untouched);
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL),
                ElementsAre(Error("ToKnxValue - Value out of raw range [0..127] for DPT 4.001: -23")));
}

TEST_F(KnxConverterCharacter, Latin1WritesEAcuteAsOneByte)
{
    ASSERT_TRUE(latin1.ToKnxValue(dpt4002, StringValue(eAcute + "xyz"), out));
    EXPECT_THAT(BytesOf(out), ElementsAre(0xE9u));
    EXPECT_EQ(out.GetDefinedSize(), 8u);
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL), IsEmpty());
}

TEST_F(KnxConverterCharacter, NeedsMainNumberAndString)
{
    EXPECT_FALSE(ascii.ToKnxValue(dpt4001, ByteValue(0x41), out));
    EXPECT_FALSE(ascii.ToKnxValue(KNXDPT{8, 5, 1}, StringValue("A"), out));
    EXPECT_EQ(out, untouched);
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL),
                ElementsAre(Error("ToKnxValue - Wrong oka value type (ivtString) or DPT main number (4.x)!"),
                            Error("ToKnxValue - Wrong oka value type (ivtString) or DPT main number (4.x)!")));
}

TEST_F(KnxConverterCharacter, FromKnxAscii)
{
    const KnxStack::GroupValue group = MakeGroupValue({0x41}, 8);
    ASSERT_TRUE(ascii.FromKnxValue(dpt4001, group, value));
    EXPECT_EQ(value.type, ivtString);
    EXPECT_STREQ(value.text.c_str(), "A");
    EXPECT_THAT(capture.Lines(), ElementsAre(Trace(FromTraceText(dpt4001, group))));
}

TEST_F(KnxConverterCharacter, FromKnxAsciiRefusesTheHighBit)
{
    EXPECT_FALSE(ascii.FromKnxValue(dpt4001, MakeGroupValue({0xE9}, 8), value));
    EXPECT_EQ(value, before);
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL),
                ElementsAre(Error("FromKnxValue - Value out of raw range [0..127] for DPT 4.001: 233")));
}

TEST_F(KnxConverterCharacter, FromKnxLatin1GivesTheTwoByteUtf8Form)
{
    ASSERT_TRUE(latin1.FromKnxValue(dpt4002, MakeGroupValue({0xE9}, 8), value));
    EXPECT_EQ(value.type, ivtString);
    EXPECT_EQ(std::string(value.text.c_str(), value.text.length()), eAcute);

    ASSERT_TRUE(latin1.FromKnxValue(dpt4002, MakeGroupValue({0x41}, 8), value));
    EXPECT_STREQ(value.text.c_str(), "A");
}

TEST_F(KnxConverterCharacter, FromKnxRefusesOtherMainNumbers)
{
    EXPECT_FALSE(ascii.FromKnxValue(KNXDPT{8, 5, 1}, MakeGroupValue({0x41}, 8), value));
    EXPECT_EQ(value, before);
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL),
                ElementsAre(Error("FromKnxValue - Wrong DPT main number (4.x)!")));
}

// --- 5.x ---------------------------------------------------------------------------------

TEST_F(KnxConverterUnsignedByte, ToKnxRefusesInsideTheRangeAndWritesOutside)
{
    const KnxConverterByte8BitUnsigned converter(IntegerRange(255, 255, 255, 255));
    const KNXDPT dpt{8, 5, 1};
    ASSERT_TRUE(converter.ToKnxValue(dpt, ByteValue(254), out));
    EXPECT_EQ(out, Written(&KnxStack::GroupValue::SetAsUnsigned8, 254));

    out = untouched;
    EXPECT_FALSE(converter.ToKnxValue(dpt, ByteValue(255), out));
    EXPECT_EQ(out, untouched);
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL),
                ElementsAre(Error("ToKnxValue - Value out of raw range [0..254] for DPT 5.006: 255")));
}

TEST_F(KnxConverterUnsignedByte, FromKnxAcceptsOnlyInsideTheRange)
{
    const KnxConverterByte8BitUnsigned converter(IntegerRange(255, 255, 255, 255));
    const KNXDPT dpt{8, 5, 1};
    ASSERT_TRUE(converter.FromKnxValue(dpt, MakeGroupValue({0xFF}, 8), value));
    EXPECT_EQ(value.type, ivtByte);
    EXPECT_EQ(value.numeric.byte, 255);

    value = before;
    EXPECT_FALSE(converter.FromKnxValue(dpt, MakeGroupValue({0xFE}, 8), value));
    EXPECT_EQ(value, before);
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL),
                ElementsAre(Error("FromKnxValue - Value out of raw range IntegerRange(255, 255, 255, 255) for DPT "
                                  "5.1; value was 254")));
}

TEST_F(KnxConverterUnsignedByte, WithTheFullRangeRefusesEveryByteToKnx)
{
    const KnxConverterByte8BitUnsigned converter(IntegerRange::CreateScaled(0, 255, 0, 255));
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{8, 5, 1}, ByteValue(100), out));
    EXPECT_EQ(out, untouched);
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL),
                ElementsAre(Error("ToKnxValue - Value out of raw range [0..254] for DPT 5.006: 100")));
}

TEST_F(KnxConverterUnsignedByte, NeedsMainNumberFiveAndByte)
{
    const KnxConverterByte8BitUnsigned converter(IntegerRange::CreateScaled(0, 4, 0, 4));
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{8, 20, 102}, ByteValue(9), out));
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{8, 5, 1}, IntegerValue(9), out));
    EXPECT_EQ(out, untouched);
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL),
                ElementsAre(Error("ToKnxValue - Wrong oka value type (ivtByte) or DPT main number (5.x)!"),
                            Error("ToKnxValue - Wrong oka value type (ivtByte) or DPT main number (5.x)!")));
}

TEST_F(KnxConverterUnsignedByte, FromKnxHasNoDptTest)
{
    const KnxConverterByte8BitUnsigned converter(IntegerRange::CreateScaled(0, 4, 0, 4));
    const KnxStack::GroupValue group = MakeGroupValue({0x03}, 8);
    ASSERT_TRUE(converter.FromKnxValue(KNXDPT{8, 20, 102}, group, value));
    EXPECT_EQ(value.type, ivtByte);
    EXPECT_EQ(value.numeric.byte, 3);
    EXPECT_THAT(capture.Lines(), ElementsAre(Trace(FromTraceText(KNXDPT{8, 20, 102}, group))));
}

// --- 6.x ---------------------------------------------------------------------------------

TEST_F(KnxConverterSignedByte, CutsTheIntegerToEightBits)
{
    const KnxConverterInteger8BitSigned converter(IntegerRange::CreateScaled(-128, 127, -128, 127));
    ASSERT_TRUE(converter.ToKnxValue(KNXDPT{8, 6, 1}, IntegerValue(-1), out));
    EXPECT_THAT(BytesOf(out), ElementsAre(0xFFu));
    ASSERT_TRUE(converter.ToKnxValue(KNXDPT{8, 6, 1}, IntegerValue(300), out));
    EXPECT_THAT(BytesOf(out), ElementsAre(0x2Cu));
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL), IsEmpty());
}

TEST_F(KnxConverterSignedByte, NeedsMainNumberAndInteger)
{
    const KnxConverterInteger8BitSigned converter(IntegerRange::CreateScaled(-128, 127, -128, 127));
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{8, 6, 1}, ByteValue(1), out));
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{8, 8, 1}, IntegerValue(1), out));
    EXPECT_EQ(out, untouched);
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL),
                ElementsAre(Error("ToKnxValue - Wrong oka value type (ivtInteger) or DPT main number (6.x)!"),
                            Error("ToKnxValue - Wrong oka value type (ivtInteger) or DPT main number (6.x)!")));
}

TEST_F(KnxConverterSignedByte, FromKnxSignExtendsWithoutDptTest)
{
    const KnxConverterInteger8BitSigned converter(IntegerRange::CreateScaled(-128, 127, -128, 127));
    const KnxStack::GroupValue group = MakeGroupValue({0xFF}, 8);
    ASSERT_TRUE(converter.FromKnxValue(KNXDPT{8, 99, 1}, group, value));
    EXPECT_EQ(value.type, ivtInteger);
    EXPECT_EQ(value.numeric.integer, -1);
    EXPECT_THAT(capture.Lines(), ElementsAre(Trace(FromTraceText(KNXDPT{8, 99, 1}, group))));
}

// --- 6.020 -------------------------------------------------------------------------------

class KnxConverterStatusWithMode : public SmallConverter
{
protected:
    const KnxConverterStatus8Bit converter{IntegerRange::CreateScaled(0, 255, 0, 255)};
    const KNXDPT dpt{8, 6, 20};
};

TEST_F(KnxConverterStatusWithMode, ModeOneConvertsBothWays)
{
    ASSERT_TRUE(converter.ToKnxValue(dpt, ByteValue(0x21), out));
    EXPECT_THAT(BytesOf(out), ElementsAre(0x21u));
    ASSERT_TRUE(converter.FromKnxValue(dpt, MakeGroupValue({0x21}, 8), value));
    EXPECT_EQ(value.type, ivtByte);
    EXPECT_EQ(value.numeric.byte, 0x21);
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL), IsEmpty());
}

TEST_F(KnxConverterStatusWithMode, ModeThreeIsRefusedButAlreadyWrittenToKnx)
{
    EXPECT_FALSE(converter.ToKnxValue(dpt, ByteValue(0x23), out));
    EXPECT_THAT(BytesOf(out), ElementsAre(0x23u));
    EXPECT_THAT(capture.Lines(),
                ElementsAre(Trace(ToTraceText(dpt, ByteValue(0x23))),
                            Error("ToKnxValue - The internal value of DPT=6.20, f=\x03 is out of the allowed range.")));
}

TEST_F(KnxConverterStatusWithMode, ModeThreeIsRefusedFromKnx)
{
    EXPECT_FALSE(converter.FromKnxValue(dpt, MakeGroupValue({0x23}, 8), value));
    EXPECT_EQ(value, before);
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL),
                ElementsAre(Error("FromKnxValue - The internal value of DPT=6.20, f=\x03 is out of the allowed range.")));
}

TEST_F(KnxConverterStatusWithMode, ModeZeroIsPrintedAsARawZeroByte)
{
    EXPECT_FALSE(converter.ToKnxValue(dpt, ByteValue(0x80), out));
    const std::string expected = std::string("ToKnxValue - The internal value of DPT=6.20, f=") + '\0' +
                                 " is out of the allowed range.";
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL), ElementsAre(Error(expected)));
}

TEST_F(KnxConverterStatusWithMode, AnyOneOfMainSubOrTypeSuffices)
{
    // Sub number 20 alone, with a word value.
    EXPECT_TRUE(converter.ToKnxValue(KNXDPT{16, 7, 20}, WordValue(0x22), out));
    EXPECT_THAT(BytesOf(out), ElementsAre(0x22u));
    EXPECT_TRUE(converter.ToKnxValue(KNXDPT{8, 6, 1}, IntegerValue(0x24), out));
    EXPECT_TRUE(converter.ToKnxValue(KNXDPT{8, 5, 1}, ByteValue(0x21), out));
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL), IsEmpty());
}

TEST_F(KnxConverterStatusWithMode, RefusedWhenNoneMatches)
{
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{16, 7, 5}, WordValue(0x21), out));
    EXPECT_EQ(out, untouched);
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL),
                ElementsAre(Error("ToKnxValue - Wrong oka value type (ivtByte) or DPT main number (6.020)!")));
}

TEST_F(KnxConverterStatusWithMode, FromKnxAcceptsMainOrSub)
{
    EXPECT_TRUE(converter.FromKnxValue(KNXDPT{8, 7, 20}, MakeGroupValue({0x22}, 8), value));
    EXPECT_TRUE(converter.FromKnxValue(KNXDPT{8, 6, 1}, MakeGroupValue({0x24}, 8), value));
    EXPECT_EQ(value.numeric.byte, 0x24);
    value = before;
    EXPECT_FALSE(converter.FromKnxValue(KNXDPT{8, 7, 5}, MakeGroupValue({0x21}, 8), value));
    EXPECT_EQ(value, before);
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL),
                ElementsAre(Error("FromKnxValue - Wrong DPT main number (6.020)!")));
}

// --- 17.001 ------------------------------------------------------------------------------

// A fixture bears the name of the converter it tests; declared in an anonymous namespace it
// hides the class, which is then written Okaro::<Name>.
namespace
{
class KnxConverterSceneNumber : public SmallConverter
{
protected:
    const Okaro::KnxConverterSceneNumber converter{IntegerRange::CreateScaled(0, 63, 0, 63)};
    const KNXDPT dpt{8, 17, 1};
};

TEST_F(KnxConverterSceneNumber, WritesScenesInRange)
{
    ASSERT_TRUE(converter.ToKnxValue(dpt, IntegerValue(63), out));
    EXPECT_THAT(BytesOf(out), ElementsAre(63u));
}

TEST_F(KnxConverterSceneNumber, SixtyFourIsRefusedToKnx)
{
    EXPECT_FALSE(converter.ToKnxValue(dpt, IntegerValue(64), out));
    EXPECT_FALSE(converter.ToKnxValue(dpt, IntegerValue(-1), out));
    EXPECT_EQ(out, untouched);
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL),
                ElementsAre(Error("ToKnxValue - Scene number is out of range (>63) for SceneNumber: 64"),
                            Error("ToKnxValue - Scene number is out of range (>63) for SceneNumber: -1")));
}

TEST_F(KnxConverterSceneNumber, SixtyFourIsRefusedFromKnxButStored)
{
    EXPECT_FALSE(converter.FromKnxValue(dpt, MakeGroupValue({64}, 8), value));
    EXPECT_EQ(value.numeric.integer, 64);
    EXPECT_EQ(value.type, ivtEmpty);
    EXPECT_STREQ(value.text.c_str(), "before");
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL),
                ElementsAre(Error("FromKnxValue - Scene number is out of range (>63) for SceneNumber: 64")));
}

TEST_F(KnxConverterSceneNumber, FromKnxSetsByteType)
{
    const KnxStack::GroupValue group = MakeGroupValue({5}, 8);
    ASSERT_TRUE(converter.FromKnxValue(dpt, group, value));
    EXPECT_EQ(value.type, ivtByte);
    EXPECT_EQ(value.numeric.integer, 5);
    EXPECT_THAT(capture.Lines(), ElementsAre(Trace(FromTraceText(dpt, group))));
}

TEST_F(KnxConverterSceneNumber, AnyOneOfMainSubOrTypeSuffices)
{
    EXPECT_TRUE(converter.ToKnxValue(KNXDPT{8, 17, 5}, IntegerValue(5), out));  // main 17
    EXPECT_TRUE(converter.ToKnxValue(KNXDPT{16, 9, 1}, FloatValue(0.0), out));  // sub 1
    EXPECT_TRUE(converter.ToKnxValue(KNXDPT{8, 5, 2}, ByteValue(7), out));     // ivtByte
    EXPECT_THAT(BytesOf(out), ElementsAre(7u));
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{16, 9, 2}, FloatValue(0.0), out));
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL),
                ElementsAre(Error("ToKnxValue - Wrong DPT main number (17.001) or oka value type (ivtByte)!")));
}

TEST_F(KnxConverterSceneNumber, FromKnxAcceptsMainOrSub)
{
    EXPECT_TRUE(converter.FromKnxValue(KNXDPT{8, 5, 1}, MakeGroupValue({5}, 8), value));
    value = before;
    EXPECT_FALSE(converter.FromKnxValue(KNXDPT{8, 5, 2}, MakeGroupValue({5}, 8), value));
    EXPECT_EQ(value, before);
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL),
                ElementsAre(Error("FromKnxValue - Wrong DPT main number (17.001)!")));
}
} // namespace

// --- 18.001 ------------------------------------------------------------------------------

namespace
{
class KnxConverterSceneControl : public SmallConverter
{
protected:
    const Okaro::KnxConverterSceneControl converter{IntegerRange::CreateScaled(0, 63, 0, 63)};
    const KNXDPT dpt{8, 18, 1};
};

TEST_F(KnxConverterSceneControl, LearnFlagPassesThrough)
{
    ASSERT_TRUE(converter.ToKnxValue(dpt, ByteValue(0x85), out));
    EXPECT_THAT(BytesOf(out), ElementsAre(0x85u));
    ASSERT_TRUE(converter.FromKnxValue(dpt, MakeGroupValue({0x85}, 8), value));
    EXPECT_EQ(value.numeric.byte, 0x85);
    EXPECT_EQ(value.type, ivtEmpty);
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL), IsEmpty());
}

TEST_F(KnxConverterSceneControl, ReservedBitSixIsRefusedToKnxWithTheSceneAsARawCharacter)
{
    // 0x45 & 0x7F is 69, printed as the character 'E'.
    EXPECT_FALSE(converter.ToKnxValue(dpt, ByteValue(0x45), out));
    EXPECT_EQ(out, untouched);
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL),
                ElementsAre(Error("ToKnxValue - Scene number is out of range (>63) for SceneControl: E")));
}

TEST_F(KnxConverterSceneControl, ReservedBitSixIsRefusedFromKnx)
{
    EXPECT_FALSE(converter.FromKnxValue(dpt, MakeGroupValue({0x45}, 8), value));
    EXPECT_EQ(value, before);
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL),
                ElementsAre(Error("FromKnxValue - Reserved bit is used for scene number in DPT scene control!")));
}

TEST_F(KnxConverterSceneControl, NeedsMainSubAndByte)
{
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{8, 18, 2}, ByteValue(1), out));
    EXPECT_FALSE(converter.ToKnxValue(dpt, IntegerValue(1), out));
    EXPECT_EQ(out, untouched);
    EXPECT_FALSE(converter.FromKnxValue(KNXDPT{8, 17, 1}, MakeGroupValue({1}, 8), value));
    EXPECT_EQ(value, before);
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL),
                ElementsAre(Error("ToKnxValue - Wrong DPT for Scene number (18.001) or oka value type (ivtByte)."),
                            Error("ToKnxValue - Wrong DPT for Scene number (18.001) or oka value type (ivtByte)."),
                            Error("FromKnxValue - Wrong DPT for Scene number, only 18.001 is valid.")));
}
} // namespace

// --- 26.001 ------------------------------------------------------------------------------

namespace
{
class KnxConverterSceneInfo : public SmallConverter
{
protected:
    const Okaro::KnxConverterSceneInfo converter{IntegerRange::CreateScaled(-64, 64, 0, 255)};
    const KNXDPT dpt{8, 26, 1};
};

TEST_F(KnxConverterSceneInfo, ThreeFPasses)
{
    ASSERT_TRUE(converter.ToKnxValue(dpt, ByteValue(0x3F), out));
    EXPECT_THAT(BytesOf(out), ElementsAre(0x3Fu));
    ASSERT_TRUE(converter.FromKnxValue(dpt, MakeGroupValue({0x3F}, 8), value));
    EXPECT_EQ(value.numeric.byte, 0x3F);
    EXPECT_EQ(value.type, ivtEmpty);
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL), IsEmpty());
}

TEST_F(KnxConverterSceneInfo, ReservedBitEightIsRefusedBothWays)
{
    EXPECT_FALSE(converter.ToKnxValue(dpt, ByteValue(0x80), out));
    EXPECT_EQ(out, untouched);
    EXPECT_FALSE(converter.FromKnxValue(dpt, MakeGroupValue({0x80}, 8), value));
    EXPECT_EQ(value, before);
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL),
                ElementsAre(Error("ToKnxValue - Reserved bit 8 is set for SceneInfo; skipped."),
                            Error("FromKnxValue - Reserved bit is used for scene number in DPT scene control!")));
}

TEST_F(KnxConverterSceneInfo, NeedsMainSubAndByte)
{
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{8, 26, 2}, ByteValue(1), out));
    EXPECT_FALSE(converter.ToKnxValue(dpt, WordValue(1), out));
    EXPECT_EQ(out, untouched);
    EXPECT_FALSE(converter.FromKnxValue(KNXDPT{8, 26, 2}, MakeGroupValue({1}, 8), value));
    EXPECT_EQ(value, before);
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::INFO_LOG_LEVEL),
                ElementsAre(Error("ToKnxValue - Wrong DPT for Scene number (26.001) or oka value type (ivtByte)."),
                            Error("ToKnxValue - Wrong DPT for Scene number (26.001) or oka value type (ivtByte)."),
                            Error("FromKnxValue - Wrong DPT for Scene number, only 26.001 is valid.")));
}

TEST_F(KnxConverterSceneInfo, MessagesNameTheConverterSource)
{
    converter.ToKnxValue(dpt, ByteValue(0x80), out);
    const auto lines = capture.Lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].file, "KnxConverter.cpp");
    EXPECT_EQ(lines[1].file, "KnxConverter.cpp");
}
} // namespace
