// Range classes, the default converter, cloning and sharing of converters.
#include "KnxConverterTestSupport.h"
#include "support/LogCapture.h"

#include <TavObjectModel/KnxConverter.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <sstream>
#include <thread>
#include <typeinfo>
#include <type_traits>

using namespace Okaro;
using namespace TavTest;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{
template <typename T>
std::string Printed(const T& range)
{
    std::ostringstream out;
    out << range;
    return out.str();
}
} // namespace

// --- IntegerRange ------------------------------------------------------------------------

TEST(IntegerRange, ConstructionLeavesScaleAtOne)
{
    const IntegerRange range(0, 255, 0, 100);
    EXPECT_EQ(range.GetScaleFactor(), 1.0);
}

TEST(IntegerRange, ScaleIsExternalWidthOverInternalWidth)
{
    LogCapture capture;
    IntegerRange range(0, 255, 0, 100);
    range.CalculateScaleFactor();
    EXPECT_EQ(range.GetScaleFactor(), 100.0 / 255.0);
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST(IntegerRange, EmptyInternalRangeKeepsScaleOneAndLogs)
{
    LogCapture capture;
    IntegerRange range(5, 5, 0, 100);
    range.CalculateScaleFactor();
    EXPECT_EQ(range.GetScaleFactor(), 1.0);
    const auto lines = capture.Lines();
    ASSERT_THAT(lines, ElementsAre(Error("CalculateScaleFactor - Failed to calculate the scale factor because of "
                                         "invalid internal range [5, 5].")));
    EXPECT_EQ(lines[0].file, "KnxConverter.cpp");
}

TEST(IntegerRange, EmptyExternalRangeKeepsScaleOneAndLogs)
{
    LogCapture capture;
    IntegerRange range(0, 10, 3, 3);
    range.CalculateScaleFactor();
    EXPECT_EQ(range.GetScaleFactor(), 1.0);
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("CalculateScaleFactor - Failed to calculate the scale factor "
                                                   "because of invalid external range [3, 3].")));
}

TEST(IntegerRange, HighToLowBoundsGiveANegativeScale)
{
    IntegerRange range(255, 0, 0, 100);
    range.CalculateScaleFactor();
    EXPECT_EQ(range.GetScaleFactor(), 100.0 / -255.0);
}

TEST(IntegerRange, SceneInformationRangeScalesBy255Over128)
{
    const IntegerRange range = IntegerRange::CreateScaled(-64, 64, 0, 255);
    EXPECT_EQ(range.GetScaleFactor(), 255.0 / 128.0);
}

TEST(IntegerRange, FullSigned32BitRangeHasScaleOne)
{
    LogCapture capture;
    const IntegerRange range = IntegerRange::CreateScaled(-2147483647 - 1, 2147483647, -2147483647 - 1, 2147483647);
    EXPECT_EQ(range.GetScaleFactor(), 1.0);
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST(IntegerRange, SixtyFourBitBoundsHoldTheUnsigned32BitMaximum)
{
    const IntegerRange64 range = IntegerRange64::CreateScaled(0, 4294967295LL, 0, 4294967295LL);
    EXPECT_EQ(range.GetScaleFactor(), 1.0);
    EXPECT_TRUE(range.IsInRange(4294967295LL));
    EXPECT_FALSE(range.IsInRange(4294967296LL));
    EXPECT_EQ(Printed(range), "IntegerRange(0, 4294967295, 0, 4294967295)");
}

TEST(IntegerRange, SixtyFourBitEmptyRangeMessage)
{
    LogCapture capture;
    IntegerRange64 range(4294967295LL, 4294967295LL, 0, 1);
    range.CalculateScaleFactor();
    EXPECT_EQ(range.GetScaleFactor(), 1.0);
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("CalculateScaleFactor - Failed to calculate the scale factor "
                                                   "because of invalid internal range [4294967295, 4294967295].")));
}

TEST(IntegerRange, InRangeIncludesBothEnds)
{
    const IntegerRange range(0, 63, 0, 63);
    EXPECT_TRUE(range.IsInRange(0));
    EXPECT_TRUE(range.IsInRange(63));
    EXPECT_FALSE(range.IsInRange(-1));
    EXPECT_FALSE(range.IsInRange(64));
}

TEST(IntegerRange, ClampMovesToTheNearerBound)
{
    const IntegerRange range(0, 63, 0, 63);
    std::int32_t x = 10;
    EXPECT_TRUE(range.Clamp(x));
    EXPECT_EQ(x, 10);
    x = 70;
    EXPECT_FALSE(range.Clamp(x));
    EXPECT_EQ(x, 63);
    x = -5;
    EXPECT_FALSE(range.Clamp(x));
    EXPECT_EQ(x, 0);
}

TEST(IntegerRange, PrintedForm)
{
    EXPECT_EQ(Printed(IntegerRange(-64, 64, 0, 255)), "IntegerRange(-64, 64, 0, 255)");
}

// --- FloatRange --------------------------------------------------------------------------

TEST(FloatRange, HighToLowBoundsStillGiveAPositiveScale)
{
    FloatRange range(255.0, 0.0, 0.0, 100.0);
    range.CalculateScaleFactor();
    EXPECT_EQ(range.GetScaleFactor(), 100.0 / 255.0);
}

TEST(FloatRange, EmptyInnerRangeKeepsScaleAndLogs)
{
    LogCapture capture;
    FloatRange range(2.5, 2.5, 0.0, 1.0);
    range.CalculateScaleFactor();
    EXPECT_EQ(range.GetScaleFactor(), 1.0);
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("CalculateScaleFactor - Failed to calculate the scale factor "
                                                   "because of invalid double range [2.5, 2.5].")));
}

TEST(FloatRange, EmptyOuterRangeKeepsScaleAndLogs)
{
    LogCapture capture;
    FloatRange range(0.0, 10.0, 1.0, 1.0);
    range.CalculateScaleFactor();
    EXPECT_EQ(range.GetScaleFactor(), 1.0);
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("CalculateScaleFactor - Failed to calculate the scale factor "
                                                   "because of invalid external range [1, 1].")));
}

TEST(FloatRange, UnderflowingScaleBecomesOneAndLogsBothRanges)
{
    LogCapture capture;
    FloatRange range(0.0, 1e300, 1e-300, 0.0);
    range.CalculateScaleFactor();
    EXPECT_EQ(range.GetScaleFactor(), 1.0);
    EXPECT_THAT(capture.Lines(),
                ElementsAre(Error("CalculateScaleFactor - Failed to calculate the scale factor because of invalid "
                                  "double range [0, 1e+300] or because invalid external range [1e-300, 0].")));
}

TEST(FloatRange, MapInnerToOuterDoesNotRound)
{
    const FloatRange range = FloatRange::CreateScaled(0.0, 100.0, 0.0, 1000.0);
    EXPECT_EQ(range.GetScaleFactor(), 10.0);
    EXPECT_EQ(range.MapInnerToOuter(25.0), 250.0);
    EXPECT_EQ(range.MapInnerToOuter(0.05), 0.5);
}

TEST(FloatRange, InRangeAndClamp)
{
    const FloatRange range(-273.0, 670760.0, -273.0, 670760.0);
    EXPECT_TRUE(range.IsInRange(-273.0));
    EXPECT_TRUE(range.IsInRange(670760.0));
    EXPECT_FALSE(range.IsInRange(-273.01));
    double x = -300.0;
    EXPECT_FALSE(range.Clamp(x));
    EXPECT_EQ(x, -273.0);
    x = 700000.0;
    EXPECT_FALSE(range.Clamp(x));
    EXPECT_EQ(x, 670760.0);
    x = 21.5;
    EXPECT_TRUE(range.Clamp(x));
    EXPECT_EQ(x, 21.5);
}

TEST(FloatRange, PrintedFormUsesDefaultStreamFormatting)
{
    EXPECT_EQ(Printed(FloatRange(-273.0, 670760.0, -459.6, 670760.96)),
              "FloatRange(-273, 670760, -459.6, 670761)");
}

// --- FloatIntegerRange -------------------------------------------------------------------

TEST(FloatIntegerRange, DimmingRangeScale)
{
    const FloatIntegerRange range = FloatIntegerRange::CreateScaled(-100.0, 100.0, 0, 15);
    EXPECT_EQ(range.GetScaleFactor(), 15.0 / 200.0);
}

TEST(FloatIntegerRange, FiftyOnAByteScaleGives127InIeeeDoubles)
{
    const FloatIntegerRange range = FloatIntegerRange::CreateScaled(0.0, 100.0, 0, 255);
    // 2.55 is not exact: 50 * 2.55 is just below 127.5.
    EXPECT_EQ(range.MapDoubleToInteger(50.0), 127);
}

TEST(FloatIntegerRange, HalfRoundsAwayFromZero)
{
    const FloatIntegerRange up = FloatIntegerRange::CreateScaled(0.0, 100.0, 0, 25);
    EXPECT_EQ(up.MapDoubleToInteger(50.0), 13);  // 12.5
    EXPECT_EQ(up.MapDoubleToInteger(2.0), 1);    // 0.5
    EXPECT_EQ(up.MapDoubleToInteger(0.0), 0);

    const FloatIntegerRange down = FloatIntegerRange::CreateScaled(0.0, 100.0, -25, 0);
    EXPECT_EQ(down.MapDoubleToInteger(90.0), -3);  // -2.5
    EXPECT_EQ(down.MapDoubleToInteger(97.0), -1);  // -0.75
}

TEST(FloatIntegerRange, MapIntegerToDouble)
{
    const FloatIntegerRange range = FloatIntegerRange::CreateScaled(0.0, 100.0, 0, 25);
    EXPECT_EQ(range.MapIntegerToDouble(13), 52.0);
    const FloatIntegerRange dimming = FloatIntegerRange::CreateScaled(-100.0, 100.0, 0, 15);
    EXPECT_EQ(dimming.MapIntegerToDouble(0), -100.0);
}

TEST(FloatIntegerRange, EmptyDoubleRangeLogs)
{
    LogCapture capture;
    FloatIntegerRange range(1.0, 1.0, 0, 15);
    range.CalculateScaleFactor();
    EXPECT_EQ(range.GetScaleFactor(), 1.0);
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("CalculateScaleFactor - Failed to calculate the scale factor "
                                                   "because of invalid double range [1, 1].")));
}

TEST(FloatIntegerRange, EmptyIntegerRangeLogs)
{
    LogCapture capture;
    FloatIntegerRange range(0.0, 1.0, 7, 7);
    range.CalculateScaleFactor();
    EXPECT_EQ(range.GetScaleFactor(), 1.0);
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("CalculateScaleFactor - Failed to calculate the scale factor "
                                                   "because of invalid integer range [7, 7].")));
}

TEST(FloatIntegerRange, ZeroScaleBecomesOneAndTheMessageLacksOf)
{
    LogCapture capture;
    // The double width overflows to infinity, so the scale comes out as 0.
    FloatIntegerRange range(-1.7e308, 1.7e308, 0, 15);
    range.CalculateScaleFactor();
    EXPECT_EQ(range.GetScaleFactor(), 1.0);
    EXPECT_THAT(capture.Lines(),
                ElementsAre(Error("CalculateScaleFactor - Failed to calculate the scale factor because of invalid "
                                  "double range [-1.7e+308, 1.7e+308] or because invalid integer range [0, 15].")));
}

TEST(FloatIntegerRange, InRangeClampAndPrintedForm)
{
    const FloatIntegerRange range(-100.0, 100.0, 0, 15);
    EXPECT_TRUE(range.IsInRange(-100.0));
    EXPECT_FALSE(range.IsInRange(100.5));
    double x = 120.0;
    EXPECT_FALSE(range.Clamp(x));
    EXPECT_EQ(x, 100.0);
    EXPECT_EQ(Printed(range), "FloatIntegerRange(-100, 100, 0, 15)");
}

// --- default converter -------------------------------------------------------------------

// A fixture bears the name of the converter it tests; declared in an anonymous namespace it
// hides the class, which is then written Okaro::<Name>.
namespace
{
class KnxConverterDefault : public ::testing::Test
{
protected:
    LogCapture capture;
    Okaro::KnxConverterDefault converter;
    KnxStack::GroupValue untouched = MakeGroupValue({0xAA}, 8);
    KnxStack::GroupValue out = untouched;
};

TEST_F(KnxConverterDefault, BooleanOnDpt2WritesControlWithValue)
{
    ASSERT_TRUE(converter.ToKnxValue(KNXDPT{2, 2, 1}, BoolValue(true), out));
    KnxStack::GroupValue expected;
    expected.SetAsUnsigned2(17);
    EXPECT_EQ(out, expected);
    EXPECT_EQ(out.GetAsUnsigned2(), 3);

    ASSERT_TRUE(converter.ToKnxValue(KNXDPT{2, 2, 1}, BoolValue(false), out));
    expected.SetAsUnsigned2(16);
    EXPECT_EQ(out, expected);
    EXPECT_EQ(out.GetAsUnsigned2(), 2);
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST_F(KnxConverterDefault, BooleanOnDpt1WritesTheBit)
{
    ASSERT_TRUE(converter.ToKnxValue(KNXDPT{1, 1, 1}, BoolValue(true), out));
    KnxStack::GroupValue expected;
    expected.SetAsBoolean(true);
    EXPECT_EQ(out, expected);
}

TEST_F(KnxConverterDefault, BooleanOnOtherDptWritesNothingAndSucceeds)
{
    EXPECT_TRUE(converter.ToKnxValue(KNXDPT{8, 5, 1}, BoolValue(true), out));
    EXPECT_EQ(out, untouched);
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST_F(KnxConverterDefault, ZeroBitSizeOffersTheCodec24Bytes)
{
    // 24 characters fit, 25 do not; the failure names the 24 bytes offered.
    const std::string fits(24, 'x');
    ASSERT_TRUE(converter.ToKnxValue(KNXDPT{0, 16, 0}, StringValue(fits), out));
    EXPECT_EQ(out.GetRawData().GetSize(), 24u);

    out = untouched;
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{0, 16, 0}, StringValue(std::string(25, 'x')), out));
    EXPECT_EQ(out, untouched);
    EXPECT_THAT(capture.Lines(),
                ElementsAre(Error("ToKnxValue - OkaValueToByteArray failed. DPT=16.0 data size =24")));
}

TEST_F(KnxConverterDefault, MoreThan23BytesAlsoOffer24)
{
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{200, 99, 1}, StringValue(std::string(25, 'x')), out));
    EXPECT_THAT(capture.Lines(),
                ElementsAre(Error("ToKnxValue - OkaValueToByteArray failed. DPT=99.1 data size =24")));
}

TEST_F(KnxConverterDefault, ByteSizeIsRoundedUp)
{
    // 12 bits are two bytes: a word fits.
    ASSERT_TRUE(converter.ToKnxValue(KNXDPT{12, 99, 1}, WordValue(0x1234), out));
    EXPECT_THAT(BytesOf(out), ElementsAre(0x12u, 0x34u));
    EXPECT_EQ(out.GetDefinedSize(), 16u);

    // 8 bits are one byte: it does not.
    out = untouched;
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{8, 99, 1}, WordValue(0x1234), out));
    EXPECT_EQ(out, untouched);
    EXPECT_THAT(capture.Lines(),
                ElementsAre(Error("ToKnxValue - OkaValueToByteArray failed. DPT=99.1 data size =1")));
}

TEST_F(KnxConverterDefault, OneByteResultIsWrittenAsUnsigned8)
{
    ASSERT_TRUE(converter.ToKnxValue(KNXDPT{8, 99, 1}, ByteValue(0x5A), out));
    KnxStack::GroupValue expected;
    expected.SetAsUnsigned8(0x5A);
    EXPECT_EQ(out, expected);
}

TEST_F(KnxConverterDefault, PercentAndDimmingStepTravelAsOneByte)
{
    ASSERT_TRUE(converter.ToKnxValue(KNXDPT{16, 99, 1}, FloatValue(42.4, static_cast<OkaValueType>(1005)), out));
    KnxStack::GroupValue expected;
    expected.SetAsUnsigned8(42);
    EXPECT_EQ(out, expected);

    ASSERT_TRUE(converter.ToKnxValue(KNXDPT{0, 99, 1}, FloatValue(7.0, static_cast<OkaValueType>(1037)), out));
    expected.SetAsUnsigned8(7);
    EXPECT_EQ(out, expected);
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST_F(KnxConverterDefault, CodecFailureIsRefused)
{
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{8, 5, 1}, OKAVALUE(), out));
    EXPECT_EQ(out, untouched);
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("ToKnxValue - OkaValueToByteArray failed. DPT=5.1 data size =1")));
}

TEST_F(KnxConverterDefault, FromKnxValueUsesTheGenericCodec)
{
    OKAVALUE value;
    ASSERT_TRUE(converter.FromKnxValue(KNXDPT{16, 99, 1}, MakeGroupValue({0x12, 0x34}, 16), value));
    EXPECT_EQ(value.type, ivtWord);
    EXPECT_EQ(value.numeric.word, 0x1234);
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST_F(KnxConverterDefault, FromKnxValueFailureResetsTheOutputToEmpty)
{
    OKAVALUE value = StringValue("keep me");
    value.subType = OkaDP::istLatin1Text;
    EXPECT_FALSE(converter.FromKnxValue(KNXDPT{40, 99, 2}, MakeGroupValue({1, 2, 3, 4, 5}, 40), value));
    EXPECT_EQ(value, OKAVALUE());
    EXPECT_EQ(value.type, ivtEmpty);
    EXPECT_EQ(value.text.length(), 0u);
    EXPECT_EQ(value.subType, OkaDP::istGeneric);
    EXPECT_THAT(capture.Lines(),
                ElementsAre(Error("FromKnxValue - ByteArrayToOkaValue failed. DPT=99.2 data size =5")));
}

TEST_F(KnxConverterDefault, NothingIsBuiltWhenErrorIsDisabled)
{
    LogCapture quiet(log4cplus::OFF_LOG_LEVEL);
    EXPECT_FALSE(converter.ToKnxValue(KNXDPT{8, 5, 1}, OKAVALUE(), out));
    EXPECT_THAT(quiet.Lines(), IsEmpty());
}
} // namespace

// --- cloning -----------------------------------------------------------------------------

namespace
{
template <typename T, typename = void>
struct HasRange : std::false_type
{
};
template <typename T>
struct HasRange<T, std::void_t<decltype(std::declval<const T&>().GetRange())>> : std::true_type
{
};

template <typename Converter>
void ExpectCloneKeepsClassAndRange(const Converter& original)
{
    const KnxConverter& base = original;
    const std::unique_ptr<KnxConverter> copy(base.Clone());
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy.get(), &base);
    const KnxConverter& cloned = *copy;
    EXPECT_EQ(typeid(cloned), typeid(Converter));
    if constexpr (HasRange<Converter>::value)
    {
        EXPECT_EQ(dynamic_cast<const Converter&>(*copy).GetRange(), original.GetRange());
    }
}
} // namespace

TEST(KnxConverterClone, GivesTheSameClassWithAnEqualRange)
{
    const IntegerRange byteRange = IntegerRange::CreateScaled(-64, 64, 0, 255);
    const IntegerRange64 wideRange = IntegerRange64::CreateScaled(0, 4294967295LL, 0, 4294967295LL);
    const FloatRange floatRange = FloatRange::CreateScaled(-273.0, 670760.0, -273.0, 670760.0);
    const FloatIntegerRange dimming = FloatIntegerRange::CreateScaled(-100.0, 100.0, 0, 15);

    ExpectCloneKeepsClassAndRange(Okaro::KnxConverterDefault());
    ExpectCloneKeepsClassAndRange(KnxConverter1Bit());
    ExpectCloneKeepsClassAndRange(KnxConverter2Bit());
    ExpectCloneKeepsClassAndRange(KnxConverter4Bit(dimming));
    ExpectCloneKeepsClassAndRange(KnxConverter8BitString(byteRange));
    ExpectCloneKeepsClassAndRange(KnxConverterByte8BitUnsigned(byteRange));
    ExpectCloneKeepsClassAndRange(KnxConverterInteger8BitSigned(byteRange));
    ExpectCloneKeepsClassAndRange(KnxConverterStatus8Bit(byteRange));
    ExpectCloneKeepsClassAndRange(KnxConverterInteger16BitUnsigned(byteRange));
    ExpectCloneKeepsClassAndRange(KnxConverterInteger16BitSigned(byteRange));
    ExpectCloneKeepsClassAndRange(KnxConverterFloat16BitFloat(floatRange));
    ExpectCloneKeepsClassAndRange(KnxConverterTimeOfDay());
    ExpectCloneKeepsClassAndRange(KnxConverterDate());
    ExpectCloneKeepsClassAndRange(KnxConverterInteger32BitUnsigned(wideRange));
    ExpectCloneKeepsClassAndRange(KnxConverterInteger32BitSigned(byteRange));
    ExpectCloneKeepsClassAndRange(KnxConverterFloat32BitFloat(floatRange));
    ExpectCloneKeepsClassAndRange(KnxConverter14ByteString(byteRange));
    ExpectCloneKeepsClassAndRange(KnxConverterSceneNumber(byteRange));
    ExpectCloneKeepsClassAndRange(KnxConverterSceneControl(byteRange));
    ExpectCloneKeepsClassAndRange(KnxConverterDateTime());
    ExpectCloneKeepsClassAndRange(KnxConverterSceneInfo(byteRange));
    ExpectCloneKeepsClassAndRange(KnxConverterInteger24BitUnsigned(wideRange));
}

TEST(KnxConverterClone, CopiesTheScaleFactorToo)
{
    const KnxConverterSceneInfo original(IntegerRange::CreateScaled(-64, 64, 0, 255));
    const std::unique_ptr<KnxConverterSceneInfo> copy(original.Clone());
    EXPECT_EQ(copy->GetRange().GetScaleFactor(), 255.0 / 128.0);
}

// --- sharing between threads -------------------------------------------------------------

TEST(KnxConverterSharing, OneConverterServesSeveralThreads)
{
    const KnxConverterFloat16BitFloat converter(FloatRange::CreateScaled(-273.0, 670760.0, -273.0, 670760.0));
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
    {
        threads.emplace_back([&converter, &failures, t]() {
            for (int i = 0; i < 2000; ++i)
            {
                const double x = t * 10.0 + (i % 8) * 0.5;
                KnxStack::GroupValue group;
                OKAVALUE back(ivtFloat);
                if (!converter.ToKnxValue(KNXDPT{16, 9, 1}, FloatValue(x), group) ||
                    !converter.FromKnxValue(KNXDPT{16, 9, 1}, group, back) || back.numeric.real != x)
                {
                    ++failures;
                }
            }
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(failures.load(), 0);
}
