#include <TavObjectModel/MainTypeInfoTable.h>

#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <boost/date_time/posix_time/ptime.hpp>

#include <utility>

namespace Okaro
{
namespace
{
constexpr std::uint16_t kWordOfTwoLetterZ = 0x5A5A;  // 23130

struct MainTypeRow
{
    std::uint32_t mainType;
    OkaValueType ivt;
    OkaDP::OkaValueSubType ist;
};

// Values the object model stores and other programs read: the numbers must stay as they are.
constexpr MainTypeRow kRows[] = {
    {1, ivtBool, OkaDP::istSwitch},
    {2, ivtByte, OkaDP::istGeneric},
    {3, ivtByte, OkaDP::istGeneric},
    {4, ivtEmpty, OkaDP::istGeneric},
    {5, ivtByte, OkaDP::istGeneric},
    {6, ivtByte, OkaDP::istSignedRelative},
    {7, ivtWord, OkaDP::istGeneric},
    {8, ivtInteger, OkaDP::istSignedCount},
    {9, ivtFloat, OkaDP::istGeneric},
    {10, ivtDayTime, OkaDP::istGeneric},
    {11, ivtDate, OkaDP::istGeneric},
    {12, ivtDWord, OkaDP::istGeneric},
    {13, ivtInteger, OkaDP::istGeneric},
    {14, ivtFloat, OkaDP::istGeneric},
    {15, ivtDWord, OkaDP::istGeneric},
    {16, ivtString, OkaDP::istGeneric},
    {17, ivtByte, OkaDP::istGeneric},
    {18, ivtByte, OkaDP::istGeneric},
    {19, ivtDateTime, OkaDP::istGeneric},
    {20, ivtByte, OkaDP::istGeneric},
    {21, ivtByte, OkaDP::istGeneric},
    {22, ivtWord, OkaDP::istGeneric},
    {23, ivtByte, OkaDP::istGeneric},
    {24, ivtString, OkaDP::istGeneric},
    {25, ivtByte, OkaDP::istGeneric},
    {26, ivtByte, OkaDP::istGeneric},
    {27, ivtDWord, OkaDP::istGeneric},
    {28, ivtString, OkaDP::istGeneric},
    {29, ivtEmpty, OkaDP::istGeneric},
    {30, ivtDWord, OkaDP::istGeneric},
    {31, ivtByte, OkaDP::istGeneric},
    {200, ivtWord, OkaDP::istGeneric},
    {201, ivtWord, OkaDP::istGeneric},
    {202, ivtWord, OkaDP::istGeneric},
    {217, ivtWord, OkaDP::istGeneric},
    {219, ivtEmpty, OkaDP::istGeneric},
    {222, ivtEmpty, OkaDP::istGeneric},
    {229, ivtEmpty, OkaDP::istGeneric},
    {230, ivtEmpty, OkaDP::istGeneric},
    {232, ivtDWord, OkaDP::istGeneric},
    {234, ivtWord, OkaDP::istGeneric},
    {237, ivtWord, OkaDP::istGeneric},
    {238, ivtByte, OkaDP::istGeneric},
};

// Payload zero, empty text; an empty value carries no sub-type, every other default is
// marked as a default value.
OKAVALUE ZeroValue(OkaValueType type)
{
    return OKAVALUE(type, type == ivtEmpty ? OkaDP::istGeneric : OkaDP::istDefaultValue);
}

OKAVALUE PointInTimeValue(OkaValueType type, const boost::posix_time::ptime& when)
{
    OKAVALUE value = OKAVALUE::FromPointInTime(type, when);
    value.subType = OkaDP::istDefaultValue;
    return value;
}

OKAVALUE StatusWithModeDefault()
{
    OKAVALUE value = ZeroValue(ivtByte);
    value.numeric.byte = 1;  // the byte is the payload of a byte value
    return value;
}

DefaultValueFactory FactoryForValueType(OkaValueType ivt)
{
    switch (ivt)
    {
    case ivtDate:
        return [](OkaValueType type) {
            return PointInTimeValue(type, boost::posix_time::ptime(boost::gregorian::date(1990, 1, 1)));
        };
    case ivtDateTime:
        return [](OkaValueType type) {
            return PointInTimeValue(type, boost::posix_time::ptime(boost::gregorian::date(1900, 1, 1)));
        };
    case ivtDayTime:
        return [](OkaValueType) { return OKAVALUE::DefaultDayTime(); };
    default:
        // The type is fixed by the row, whatever the caller passes.
        return [ivt](OkaValueType) { return ZeroValue(ivt); };
    }
}

MainTypeInfoTable MakeStandardTable()
{
    MainTypeInfoTable table;
    for (const MainTypeRow& row : kRows)
    {
        table.Add(row.mainType, MainTypeInfo{row.ivt, row.ist, FactoryForValueType(row.ivt)});
    }
    // Main type 234 is a word like its neighbours but defaults to "ZZ" on purpose.
    table.Add(234, MainTypeInfo{ivtWord, OkaDP::istGeneric, [](OkaValueType) {
                                    OKAVALUE value = ZeroValue(ivtWord);
                                    value.numeric.word = kWordOfTwoLetterZ;
                                    return value;
                                }});
    return table;
}

// Fills the table while the library is loaded rather than on the first lookup.
[[maybe_unused]] const MainTypeInfoTable& filledAtLoad = MainTypeInfoTable::Instance();
} // namespace

const MainTypeInfoTable& MainTypeInfoTable::Instance()
{
    static const MainTypeInfoTable table = MakeStandardTable();
    return table;
}

void MainTypeInfoTable::Add(std::uint32_t mainType, MainTypeInfo info) { rows_[mainType] = std::move(info); }

const MainTypeInfo* MainTypeInfoTable::Find(std::uint32_t mainType) const
{
    if (rows_.empty())
    {
        return nullptr;
    }
    const auto row = rows_.find(mainType);
    return row == rows_.end() ? nullptr : &row->second;
}

boost::optional<OKAVALUE> MainTypeInfoTable::DefaultValueForDpt(std::uint32_t dpt) const
{
    const MainTypeInfo* info = Find(dpt >> 16);
    if (info == nullptr)
    {
        return boost::none;
    }
    if (dpt == kStatusWithModeDpt)
    {
        return StatusWithModeDefault();
    }
    return info->defaultValue(info->ivt);
}
} // namespace Okaro
