#include "knx/DptNames.h"
#include "knx/DptText.h"
#include "knx/KnxTerms.h"

#include <TavObjectModel/KnxValueConverter.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace
{
KNXDPT Dpt(std::uint16_t main, std::uint16_t sub)
{
    return KNXDPT{0, main, sub};
}

std::string Terms(const KNXDPT& dpt, const OKAVALUE& value)
{
    const boost::optional<std::string> text = TavKnx::KnxTermsText(dpt, value);
    return text ? *text : "(none)";
}

OKAVALUE Value(OkaValueType type)
{
    return OKAVALUE(type);
}

TEST(DptNamesTest, NamesEveryDptTheLibraryMaps)
{
    const Okaro::KnxValueConverter converter;
    for (const auto& main : converter.GetDptValueMap().GetEntries())
    {
        for (const auto& sub : main.second)
        {
            if (sub.first != 0)
            {
                const KNXDPT dpt = Dpt(static_cast<std::uint16_t>(main.first), static_cast<std::uint16_t>(sub.first));
                EXPECT_NE(TavKnx::FindDptName(dpt), nullptr) << TavKnx::FormatKnxDpt(dpt);
            }
        }
    }
}

TEST(DptNamesTest, RowsAreOrderedAndUniqueSoTheLookupFindsEach)
{
    for (const TavKnx::DptName* row = TavKnx::DptNamesBegin(); row != TavKnx::DptNamesEnd(); ++row)
    {
        EXPECT_EQ(TavKnx::FindDptName(Dpt(row->main, row->sub)), row) << row->name;
        EXPECT_EQ(std::string(row->name).rfind("DPT_", 0), 0u) << row->name;
        EXPECT_EQ(row->zero == nullptr, row->one == nullptr) << row->name;
    }
    EXPECT_EQ(TavKnx::FindDptName(Dpt(9, 999)), nullptr);
    EXPECT_EQ(TavKnx::FindDptName(Dpt(9, 0)), nullptr);
}

TEST(DptNamesTest, GivesTheStandardNamesAndUnits)
{
    EXPECT_STREQ(TavKnx::FindDptName(Dpt(9, 1))->name, "DPT_Value_Temp");
    EXPECT_STREQ(TavKnx::FindDptName(Dpt(9, 1))->unit, "°C");
    EXPECT_STREQ(TavKnx::FindDptName(Dpt(5, 1))->unit, "%");
    EXPECT_STREQ(TavKnx::FindDptName(Dpt(9, 4))->unit, "lx");
    EXPECT_STREQ(TavKnx::FindDptName(Dpt(1, 1))->one, "on");
    EXPECT_STREQ(TavKnx::FindDptName(Dpt(232, 600))->name, "DPT_Colour_RGB");
}

TEST(KnxTermsTest, ShowsTheValueAsKnxReadsIt)
{
    OKAVALUE temperature = Value(ivtFloat);
    temperature.numeric.real = 21.0;
    EXPECT_EQ(Terms(Dpt(9, 1), temperature), "21.00 °C");
    temperature.numeric.real = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(Terms(Dpt(9, 1), temperature), "no value (the invalid code)");
    OKAVALUE scaling = Value(ivtByte);
    scaling.numeric.byte = 128;
    EXPECT_EQ(Terms(Dpt(5, 1), scaling), "50.2 %");
    scaling.numeric.byte = 255;
    EXPECT_EQ(Terms(Dpt(5, 1), scaling), "100.0 %");
    EXPECT_EQ(Terms(Dpt(5, 3), scaling), "360.0 °");
    OKAVALUE on = Value(ivtBool);
    on.numeric.boolean = true;
    EXPECT_EQ(Terms(Dpt(1, 1), on), "on");
    EXPECT_EQ(Terms(Dpt(1, 8), on), "down");
    OKAVALUE count = Value(ivtInteger);
    count.numeric.integer = -1234;
    EXPECT_EQ(Terms(Dpt(8, 10), count), "-12.34 %");
    EXPECT_EQ(Terms(Dpt(8, 1), count), "-1234 pulses");
}

TEST(KnxTermsTest, NamesTheWeekdayOrSaysThereIsNone)
{
    OKAVALUE time = Value(ivtDayTime);
    time.numeric.time.hour = 12;
    time.numeric.time.minute = 30;
    time.numeric.time.weekday = 1;
    EXPECT_EQ(Terms(Dpt(10, 1), time), "Mon 12:30:00");
    time.numeric.time.weekday = 0;
    EXPECT_EQ(Terms(Dpt(10, 1), time), "Sun 12:30:00");
    time.numeric.time.weekday = 7;
    EXPECT_EQ(Terms(Dpt(10, 1), time), "12:30:00, no day");
}

TEST(KnxTermsTest, SaysNothingWithoutARowOrBeyondTheLibrarysValue)
{
    OKAVALUE number = Value(ivtByte);
    number.numeric.byte = 5;
    EXPECT_EQ(Terms(Dpt(17, 1), number), "(none)");
    EXPECT_EQ(Terms(Dpt(99, 1), number), "(none)");
    EXPECT_EQ(Terms(Dpt(16, 1), Value(ivtString)), "(none)");
}
} // namespace
