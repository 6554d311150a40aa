#include "support/ScopedTimeZone.h"

#include <TavObjectModel/KnxLdsMapping.h>
#include <TavObjectModel/MainTypeInfoTable.h>
#include <platform/OkaValue.h>

#include <boost/optional/optional_io.hpp>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>

using Okaro::KnxLdsMapping;
using Okaro::MainTypeInfo;

namespace
{
struct ExpectedRow
{
    std::uint32_t mainType;
    int ivt;
    int ist;
    const char* ivtName;
    const char* istName;
    const char* defaultForm;
    const char* internalForm;
};

// Every main type of the object model with its value type, sub-type and default value text.
const ExpectedRow kExpectedRows[] = {
    {1, 2, 2001, "Bool", "Switch", "2/2:false", "2.7/2:false"},
    {2, 6, 0, "Byte", "Generic", "6/2:0", "6.7/2:0"},
    {3, 6, 0, "Byte", "Generic", "6/2:0", "6.7/2:0"},
    {4, 1, 0, "Empty", "Generic", "1:", "1.7:"},
    {5, 6, 0, "Byte", "Generic", "6/2:0", "6.7/2:0"},
    {6, 6, 9, "Byte", "SignedRelative", "6/2:0", "6.7/2:0"},
    {7, 7, 0, "Word", "Generic", "7/2:0", "7.7/2:0"},
    {8, 4, 12, "Integer", "SignedCount", "4/2:0", "4.7/2:0"},
    {9, 3, 0, "Float", "Generic", "3/2:0", "3.7/2:0"},
    {10, 15, 0, "DayTime", "Generic", "15/2:2000-01-01T00:00:00.00;w=7;k=1;l=0;d=0", "15.7/2:2000-01-01T00:00:00.00;w=7;k=1;l=0;d=0"},
    {11, 11, 0, "Date", "Generic", "11/2:1990-01-01T00:00:00.00;w=1;k=0;l=1;d=0", "11.7/2:1990-01-01T00:00:00.00;w=1;k=0;l=1;d=0"},
    {12, 8, 0, "DWord", "Generic", "8/2:0", "8.7/2:0"},
    {13, 4, 0, "Integer", "Generic", "4/2:0", "4.7/2:0"},
    {14, 3, 0, "Float", "Generic", "3/2:0", "3.7/2:0"},
    {15, 8, 0, "DWord", "Generic", "8/2:0", "8.7/2:0"},
    {16, 10, 0, "String", "Generic", "10/2:", "10.7/2:"},
    {17, 6, 0, "Byte", "Generic", "6/2:0", "6.7/2:0"},
    {18, 6, 0, "Byte", "Generic", "6/2:0", "6.7/2:0"},
    {19, 13, 0, "DateTime", "Generic", "13/2:1900-01-01T00:00:00.00;w=1;k=0;l=1;d=0", "13.7/2:1900-01-01T00:00:00.00;w=1;k=0;l=1;d=0"},
    {20, 6, 0, "Byte", "Generic", "6/2:0", "6.7/2:0"},
    {21, 6, 0, "Byte", "Generic", "6/2:0", "6.7/2:0"},
    {22, 7, 0, "Word", "Generic", "7/2:0", "7.7/2:0"},
    {23, 6, 0, "Byte", "Generic", "6/2:0", "6.7/2:0"},
    {24, 10, 0, "String", "Generic", "10/2:", "10.7/2:"},
    {25, 6, 0, "Byte", "Generic", "6/2:0", "6.7/2:0"},
    {26, 6, 0, "Byte", "Generic", "6/2:0", "6.7/2:0"},
    {27, 8, 0, "DWord", "Generic", "8/2:0", "8.7/2:0"},
    {28, 10, 0, "String", "Generic", "10/2:", "10.7/2:"},
    {29, 1, 0, "Empty", "Generic", "1:", "1.7:"},
    {30, 8, 0, "DWord", "Generic", "8/2:0", "8.7/2:0"},
    {31, 6, 0, "Byte", "Generic", "6/2:0", "6.7/2:0"},
    {200, 7, 0, "Word", "Generic", "7/2:0", "7.7/2:0"},
    {201, 7, 0, "Word", "Generic", "7/2:0", "7.7/2:0"},
    {202, 7, 0, "Word", "Generic", "7/2:0", "7.7/2:0"},
    {217, 7, 0, "Word", "Generic", "7/2:0", "7.7/2:0"},
    {219, 1, 0, "Empty", "Generic", "1:", "1.7:"},
    {222, 1, 0, "Empty", "Generic", "1:", "1.7:"},
    {229, 1, 0, "Empty", "Generic", "1:", "1.7:"},
    {230, 1, 0, "Empty", "Generic", "1:", "1.7:"},
    {232, 8, 0, "DWord", "Generic", "8/2:0", "8.7/2:0"},
    {234, 7, 0, "Word", "Generic", "7/2:23130", "7.7/2:23130"},
    {237, 7, 0, "Word", "Generic", "7/2:0", "7.7/2:0"},
    {238, 6, 0, "Byte", "Generic", "6/2:0", "6.7/2:0"},
};

// The date rows are built from local time; fix the zone so the texts do not depend on the host.
// In one anonymous namespace with its tests, the fixture hides the class it tests, which is
// written Okaro::MainTypeInfoTable.
class MainTypeInfoTable : public TavTest::TimeZoneFixture
{
protected:
    MainTypeInfoTable() : TimeZoneFixture("UTC") {}
};

std::uint32_t Packed(std::uint32_t mainType, std::uint32_t subType) { return mainType << 16 | subType; }

std::string Text(const boost::optional<std::string>& text) { return text ? *text : std::string("<none>"); }

// Looked up while the test program's own statics are built, before main.
const std::string kIvtNameDuringStaticInit = KnxLdsMapping::GetIvtFromMainType(9);

TEST_F(MainTypeInfoTable, HasExactlyTheExpectedRows)
{
    const Okaro::MainTypeInfoTable& table = Okaro::MainTypeInfoTable::Instance();
    EXPECT_EQ(table.Size(), 43u);
    EXPECT_EQ(sizeof kExpectedRows / sizeof kExpectedRows[0], 43u);
    for (const ExpectedRow& row : kExpectedRows)
    {
        const MainTypeInfo* info = table.Find(row.mainType);
        ASSERT_NE(info, nullptr) << row.mainType;
        EXPECT_EQ(static_cast<int>(info->ivt), row.ivt) << row.mainType;
        EXPECT_EQ(static_cast<int>(info->ist), row.ist) << row.mainType;
    }
}

// One row of the table: the lookups of KnxLdsMapping agree with it.
class MainTypeInfoTableRow : public TavTest::TimeZoneFixture, public ::testing::WithParamInterface<ExpectedRow>
{
protected:
    MainTypeInfoTableRow() : TimeZoneFixture("UTC") {}
};

TEST_P(MainTypeInfoTableRow, HasTheNamesOfItsTypes)
{
    const ExpectedRow& row = GetParam();
    EXPECT_EQ(KnxLdsMapping::GetIvtFromMainType(row.mainType), row.ivtName) << row.mainType;
    EXPECT_EQ(KnxLdsMapping::GetIstFromMainType(row.mainType), row.istName) << row.mainType;
}

TEST_P(MainTypeInfoTableRow, GivesItsValueTypeFromAPackedDpt)
{
    const ExpectedRow& row = GetParam();
    EXPECT_EQ(static_cast<int>(KnxLdsMapping::GetIvtFromDpt(Packed(row.mainType, 0))), row.ivt) << row.mainType;
    EXPECT_EQ(static_cast<int>(KnxLdsMapping::GetIvtFromDpt(Packed(row.mainType, 1))), row.ivt) << row.mainType;
    EXPECT_EQ(static_cast<int>(KnxLdsMapping::GetIvtFromDpt(Packed(row.mainType, 0xFFFF))), row.ivt)
        << row.mainType;
}

TEST_P(MainTypeInfoTableRow, GivesItsDefaultValueInBothTextForms)
{
    const ExpectedRow& row = GetParam();
    for (std::uint32_t sub : {0u, 1u, 0xFFFFu})
    {
        EXPECT_EQ(Text(KnxLdsMapping::GetDefaultValueFromDpt(Packed(row.mainType, sub), false)), row.defaultForm)
            << row.mainType << "." << sub;
        EXPECT_EQ(Text(KnxLdsMapping::GetDefaultValueFromDpt(Packed(row.mainType, sub), true)), row.internalForm)
            << row.mainType << "." << sub;
    }
}

TEST_P(MainTypeInfoTableRow, DefaultValueReadsBackWithItsTypeAndSubType)
{
    const ExpectedRow& row = GetParam();
    for (bool internal : {false, true})
    {
        const boost::optional<std::string> text = KnxLdsMapping::GetDefaultValueFromDpt(Packed(row.mainType, 1), internal);
        ASSERT_TRUE(text) << row.mainType;
        OKAVALUE value;
        ASSERT_TRUE(value.Deserialize(oka_string(text->c_str()))) << *text;
        EXPECT_EQ(static_cast<int>(value.type), row.ivt) << *text;
        EXPECT_EQ(static_cast<int>(value.subType), row.ivt == ivtEmpty ? 0 : 2) << *text;
    }
}

INSTANTIATE_TEST_SUITE_P(EveryMainType, MainTypeInfoTableRow, ::testing::ValuesIn(kExpectedRows),
                         [](const ::testing::TestParamInfo<ExpectedRow>& info) {
                             return "Main" + std::to_string(info.param.mainType);
                         });

TEST_F(MainTypeInfoTable, UnknownMainTypesHaveNoRow)
{
    for (unsigned long mainType : {0ul, 32ul, 199ul, 203ul, 233ul, 239ul, 65535ul, 65536ul})
    {
        EXPECT_EQ(KnxLdsMapping::GetIvtFromMainType(mainType), "Empty") << mainType;
        EXPECT_EQ(KnxLdsMapping::GetIstFromMainType(mainType), "Generic") << mainType;
        EXPECT_EQ(Okaro::MainTypeInfoTable::Instance().Find(static_cast<std::uint32_t>(mainType)), nullptr) << mainType;
    }
    EXPECT_EQ(KnxLdsMapping::GetIvtFromDpt(0), ivtEmpty);
    EXPECT_EQ(KnxLdsMapping::GetIvtFromDpt(Packed(32, 1)), ivtEmpty);
    EXPECT_EQ(KnxLdsMapping::GetIvtFromDpt(0xFFFFFFFFu), ivtEmpty);
    EXPECT_EQ(KnxLdsMapping::GetIvtFromDpt(9), ivtEmpty);  // 0.9: the sub number is no main type
    EXPECT_FALSE(KnxLdsMapping::GetDefaultValueFromDpt(0, false));
    EXPECT_FALSE(KnxLdsMapping::GetDefaultValueFromDpt(Packed(32, 1), false));
    EXPECT_FALSE(KnxLdsMapping::GetDefaultValueFromDpt(Packed(233, 1), true));
    EXPECT_FALSE(KnxLdsMapping::GetDefaultValueFromDpt(0xFFFFFFFFul, true));
}

TEST_F(MainTypeInfoTable, StatusWithModeHasItsOwnDefaultValue)
{
    EXPECT_EQ(Text(KnxLdsMapping::GetDefaultValueFromDpt(0x60014, false)), "6/2:1");
    EXPECT_EQ(Text(KnxLdsMapping::GetDefaultValueFromDpt(0x60014, true)), "6.7/2:1");
    // Its neighbours take the row's factory, which gives 0.
    EXPECT_EQ(Text(KnxLdsMapping::GetDefaultValueFromDpt(0x60013, false)), "6/2:0");
    EXPECT_EQ(Text(KnxLdsMapping::GetDefaultValueFromDpt(0x60015, false)), "6/2:0");
    EXPECT_EQ(Text(KnxLdsMapping::GetDefaultValueFromDpt(0x60000, false)), "6/2:0");
    EXPECT_EQ(Okaro::MainTypeInfoTable::Instance().Find(6)->defaultValue(ivtByte).numeric.byte, 0);
}

TEST_F(MainTypeInfoTable, StatusWithModeNeverCallsTheFactory)
{
    int calls = 0;
    Okaro::MainTypeInfoTable table;
    table.Add(6, MainTypeInfo{ivtByte, OkaDP::istSignedRelative, [&calls](OkaValueType type) {
                                  ++calls;
                                  return OKAVALUE(type, OkaDP::istDefaultValue);
                              }});

    const boost::optional<OKAVALUE> special = table.DefaultValueForDpt(0x60014);
    ASSERT_TRUE(special);
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(special->type, ivtByte);
    EXPECT_EQ(special->numeric.byte, 1);
    EXPECT_EQ(special->numeric.integer, 1);
    EXPECT_EQ(special->subType, OkaDP::istDefaultValue);
    EXPECT_EQ(special->text.length(), 0u);

    ASSERT_TRUE(table.DefaultValueForDpt(0x60001));
    EXPECT_EQ(calls, 1);
}

TEST_F(MainTypeInfoTable, StatusWithModeNeedsTheRowOfMainType6)
{
    Okaro::MainTypeInfoTable table;
    table.Add(5, MainTypeInfo{ivtByte, OkaDP::istGeneric, [](OkaValueType type) { return OKAVALUE(type); }});
    EXPECT_FALSE(table.DefaultValueForDpt(0x60014));
}

TEST_F(MainTypeInfoTable, AMissingFactoryThrows)
{
    Okaro::MainTypeInfoTable table;
    table.Add(7, MainTypeInfo{ivtWord, OkaDP::istGeneric, Okaro::DefaultValueFactory()});
    EXPECT_THROW(table.DefaultValueForDpt(Packed(7, 1)), std::bad_function_call);
    // 6.020 does not reach the factory, so an empty one does no harm there.
    table.Add(6, MainTypeInfo{ivtByte, OkaDP::istGeneric, Okaro::DefaultValueFactory()});
    EXPECT_TRUE(table.DefaultValueForDpt(0x60014));
}

TEST_F(MainTypeInfoTable, FactoryIsHandedTheRowsValueType)
{
    OkaValueType handed = ivtEmpty;
    Okaro::MainTypeInfoTable table;
    table.Add(11, MainTypeInfo{ivtDate, OkaDP::istGeneric, [&handed](OkaValueType type) {
                                   handed = type;
                                   return OKAVALUE(type);
                               }});
    ASSERT_TRUE(table.DefaultValueForDpt(Packed(11, 1)));
    EXPECT_EQ(handed, ivtDate);
}

TEST_F(MainTypeInfoTable, EmptyTableHasNoRows)
{
    const Okaro::MainTypeInfoTable table;
    EXPECT_EQ(table.Size(), 0u);
    EXPECT_EQ(table.Find(1), nullptr);
    EXPECT_FALSE(table.DefaultValueForDpt(Packed(1, 1)));
    EXPECT_FALSE(table.DefaultValueForDpt(0x60014));
}

TEST_F(MainTypeInfoTable, PlainFactoriesKeepTheirTypeWhateverTheyAreHanded)
{
    const Okaro::MainTypeInfoTable& table = Okaro::MainTypeInfoTable::Instance();
    EXPECT_EQ(table.Find(2)->defaultValue(ivtWord).type, ivtByte);
    EXPECT_EQ(table.Find(16)->defaultValue(ivtByte).type, ivtString);
    EXPECT_EQ(table.Find(4)->defaultValue(ivtByte).type, ivtEmpty);
    EXPECT_EQ(table.Find(234)->defaultValue(ivtByte).type, ivtWord);
}

TEST_F(MainTypeInfoTable, PayloadsOfTheDefaultValues)
{
    const Okaro::MainTypeInfoTable& table = Okaro::MainTypeInfoTable::Instance();

    const OKAVALUE word = *table.DefaultValueForDpt(Packed(7, 1));
    EXPECT_EQ(word.numeric.dword, 0u);
    EXPECT_EQ(word.subType, OkaDP::istDefaultValue);

    const OKAVALUE zz = *table.DefaultValueForDpt(Packed(234, 1));
    EXPECT_EQ(zz.type, ivtWord);
    EXPECT_EQ(zz.numeric.word, 23130);
    EXPECT_EQ(zz.subType, OkaDP::istDefaultValue);

    const OKAVALUE empty = *table.DefaultValueForDpt(Packed(29, 1));
    EXPECT_EQ(empty.type, ivtEmpty);
    EXPECT_EQ(empty.subType, OkaDP::istGeneric);

    const OKAVALUE text = *table.DefaultValueForDpt(Packed(16, 1));
    EXPECT_EQ(text.type, ivtString);
    EXPECT_EQ(text.text.length(), 0u);
    EXPECT_EQ(text.subType, OkaDP::istDefaultValue);

    const OKAVALUE date = *table.DefaultValueForDpt(Packed(11, 1));
    EXPECT_EQ(date.type, ivtDate);
    EXPECT_EQ(date.numeric.time.year, 1990);
    EXPECT_EQ(date.numeric.time.month, 1);
    EXPECT_EQ(date.numeric.time.day, 1);
    EXPECT_EQ(date.numeric.time.hour, 0);
    EXPECT_EQ(date.subType, OkaDP::istDefaultValue);

    const OKAVALUE dateTime = *table.DefaultValueForDpt(Packed(19, 1));
    EXPECT_EQ(dateTime.type, ivtDateTime);
    EXPECT_EQ(dateTime.numeric.time.year, 1900);
    EXPECT_EQ(dateTime.numeric.time.month, 1);
    EXPECT_EQ(dateTime.numeric.time.day, 1);
    EXPECT_EQ(dateTime.numeric.time.hour, 0);
    EXPECT_EQ(dateTime.numeric.time.minute, 0);
    EXPECT_EQ(dateTime.numeric.time.second, 0);
    EXPECT_EQ(dateTime.subType, OkaDP::istDefaultValue);

    EXPECT_EQ(*table.DefaultValueForDpt(Packed(10, 1)), OKAVALUE::DefaultDayTime());
}

TEST_F(MainTypeInfoTable, PackedDptIsReadAsIts32BitValue)
{
    if (sizeof(unsigned long) <= 4)
    {
        GTEST_SKIP() << "unsigned long has 32 bits here";
    }
    // The 32-bit controller cannot pass the upper bits at all; a 64-bit host ignores them.
    const unsigned long above32Bits = static_cast<unsigned long>(UINT32_MAX) + 1ul;
    EXPECT_EQ(Text(KnxLdsMapping::GetDefaultValueFromDpt(above32Bits | 0x60014ul, false)), "6/2:1");
    EXPECT_EQ(Text(KnxLdsMapping::GetDefaultValueFromDpt(above32Bits | 0x90001ul, false)), "3/2:0");
    EXPECT_EQ(KnxLdsMapping::GetIvtFromMainType(above32Bits | 9ul), "Float");
}

TEST_F(MainTypeInfoTable, UsableFromAnotherStaticInitialiser)
{
    EXPECT_EQ(kIvtNameDuringStaticInit, "Float");
}
} // namespace
