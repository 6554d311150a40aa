#include <TavObjectModel/GroupValueOkaValue.h>

#include <Tav/MeasureDuration.h>
#include <TavObjectModel/KnxLdsMapping.h>
#include <TavObjectModel/KnxValueConverter.h>
#include <TavObjectModel/Utilities.h>
#include <platform/KnxDpt.h>
#include <TavObjectModel/detail/LogFiles.h>
#include <platform/Logging.h>
#include <platform/TextEncoding.h>
#include <platform/TimeOfDay.h>

#include <boost/date_time/gregorian/gregorian.hpp>
#include <boost/date_time/posix_time/posix_time.hpp>
#include <utf8.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <limits>
#include <ostream>
#include <string>
#include <vector>

namespace Okaro
{
namespace
{
using KnxStack::BinaryData;
using KnxStack::GroupValue;

constexpr const char* kDecodeFunction = "GroupValueToOkaValue";
constexpr const char* kEncodeFunction = "OkaValueToGroupValue";

// Main numbers above this one are never decoded or encoded.
constexpr std::uint16_t kLastBranchedMain = 238;

// The packed DPT, reduced to 32 bits so that a 64-bit host and the 32-bit controller read
// the same main and sub number.
struct PackedDpt
{
    explicit PackedDpt(unsigned long packedDpt)
        : packed(static_cast<std::uint32_t>(packedDpt)),
          main(static_cast<std::uint16_t>(packed >> 16)),
          sub(static_cast<std::uint16_t>(packed & 0xFFFFu))
    {
    }

    std::uint32_t packed;
    std::uint16_t main;
    std::uint16_t sub;
};

std::ostream& operator<<(std::ostream& out, const PackedDpt& dpt)
{
    return out << dpt.main << '.' << dpt.sub;
}

// Builds the date field by field so that the calendar error names the first bad field.
boost::gregorian::date MakeDate(int year, int month, int day)
{
    const boost::gregorian::greg_year checkedYear(static_cast<unsigned short>(year));
    const boost::gregorian::greg_month checkedMonth(static_cast<unsigned short>(month));
    const boost::gregorian::greg_day checkedDay(static_cast<unsigned short>(day));
    return boost::gregorian::date(checkedYear, checkedMonth, checkedDay);
}

// ---------------------------------------------------------------------------------------
// Decoding: one decoder per row of the branch table.

using Decoder = boost::optional<OKAVALUE> (*)(const GroupValue& value, OkaValueType ivt);

OKAVALUE ByteValue(std::uint8_t byte)
{
    OKAVALUE result(ivtByte);
    result.numeric.byte = byte;
    return result;
}

boost::optional<OKAVALUE> DecodeBoolean(const GroupValue& value, OkaValueType)
{
    OKAVALUE result(ivtBool);
    result.numeric.boolean = value.GetAsBoolean();
    return result;
}

template <unsigned char (GroupValue::*Get)() const>
boost::optional<OKAVALUE> DecodeByte(const GroupValue& value, OkaValueType)
{
    return ByteValue((value.*Get)());
}

// DPT 6 stays a byte on this path: the two's-complement bits, -1 reads as 255.
boost::optional<OKAVALUE> DecodeSigned8AsByte(const GroupValue& value, OkaValueType)
{
    return ByteValue(static_cast<std::uint8_t>(value.GetAsSigned8()));
}

boost::optional<OKAVALUE> DecodeUnsigned16(const GroupValue& value, OkaValueType)
{
    OKAVALUE result(ivtWord);
    result.numeric.word = value.GetAsUnsigned16();
    return result;
}

boost::optional<OKAVALUE> DecodeSigned16(const GroupValue& value, OkaValueType)
{
    OKAVALUE result(ivtInteger);
    result.numeric.integer = value.GetAsSigned16();
    return result;
}

boost::optional<OKAVALUE> DecodeFloat16(const GroupValue& value, OkaValueType)
{
    OKAVALUE result(ivtFloat);
    result.numeric.real = value.GetAsFloat16();
    return result;
}

boost::optional<OKAVALUE> DecodeTimeOfDay(const GroupValue& value, OkaValueType ivt)
{
    int hour = 0;
    int minute = 0;
    int second = 0;
    GroupValue::DayOfWeek day = GroupValue::DayOfWeek::NoDay;
    value.GetAsTimeOfDay(&hour, &minute, &second, &day);

    const auto timeOfDay =
        TavApp::TimeOfDay::Create(hour, minute, second, static_cast<TavApp::DayOfWeek>(day));
    if (!timeOfDay)
    {
        TAV_LOG_FROM(GetGlobalDefaultLogger(), log4cplus::WARN_LOG_LEVEL, kDecodeFunction, LogFile::GroupValueOkaValue, 132,
                   "Received invalid DPT 10 time of day: " << hour << ":" << minute << ":" << second
                                                           << " " << static_cast<unsigned>(day));
        return boost::none;
    }

    OKAVALUE result(ivt);
    OKATIME& time = result.numeric.time;
    time.year = 2000;
    time.month = 1;
    time.day = 1;
    time.hour = static_cast<std::uint8_t>(timeOfDay->GetHour());
    time.minute = static_cast<std::uint8_t>(timeOfDay->GetMinute());
    time.second = static_cast<std::uint8_t>(timeOfDay->GetSecond());
    time.weekday = timeOfDay->ToOkaWeekday();
    time.kind = 1;
    time.localTime = false;
    time.daylightSaving = false;
    return result;
}

boost::optional<OKAVALUE> DecodeDate(const GroupValue& value, OkaValueType ivt)
{
    const BinaryData& raw = value.GetRawData();
    if (raw.GetSize() != 3)
    {
        TAV_LOG_FROM(GetGlobalDefaultLogger(), log4cplus::WARN_LOG_LEVEL, kDecodeFunction, LogFile::GroupValueOkaValue, 158,
                   "Received an invalid DPT 11.001 date from the KNX: Length in bytes is "
                       << raw.GetSize() << ", expected 3");
        return boost::none;
    }
    const unsigned yearByte = raw.GetUInt8Value(2);
    if (yearByte > 99)
    {
        TAV_LOG_FROM(GetGlobalDefaultLogger(), log4cplus::WARN_LOG_LEVEL, kDecodeFunction, LogFile::GroupValueOkaValue, 166,
                   "Received an invalid DPT 11.001 date from the KNX: Year " << yearByte
                                                                             << " is out of range (0-99)");
        return boost::none;
    }

    int day = 0;
    int month = 0;
    int year = 0;
    value.GetAsDate(&day, &month, &year);
    if (year < 1990 || year > 2089 || month < 1 || month > 12 || day < 1 || day > 31)
    {
        TAV_LOG_FROM(GetGlobalDefaultLogger(), log4cplus::WARN_LOG_LEVEL, kDecodeFunction, LogFile::GroupValueOkaValue, 178,
                   "Received an invalid DPT 11.001 date from the KNX: " << year << "-" << month << "-"
                                                                        << day);
        return boost::none;
    }
    // A day the month does not have (31 April) throws here, on purpose.
    const boost::posix_time::ptime midnight(MakeDate(year, month, day));
    return OKAVALUE::FromPointInTime(ivt, midnight);
}

boost::optional<OKAVALUE> DecodeRaw32(const GroupValue& value, OkaValueType)
{
    OKAVALUE result(ivtDWord);
    result.numeric.dword = value.GetRawData().GetUInt32Value(0);
    return result;
}

boost::optional<OKAVALUE> DecodeSigned32(const GroupValue& value, OkaValueType)
{
    OKAVALUE result(ivtInteger);
    result.numeric.integer = value.GetAsSigned32();
    return result;
}

boost::optional<OKAVALUE> DecodeFloat32(const GroupValue& value, OkaValueType)
{
    OKAVALUE result(ivtFloat);
    result.numeric.real = static_cast<double>(value.GetAsFloat32());
    return result;
}

boost::optional<OKAVALUE> DecodeString14(const GroupValue& value, OkaValueType)
{
    const UTF8String text = getUTF8FromLatin1(KnxStyleString(value.GetAsString14()));
    OKAVALUE result(ivtString);
    result.text.assign(text.data(), text.size());
    return result;
}

// No length check and no message: impossible calendar fields throw from the date library.
boost::optional<OKAVALUE> DecodeDateTime(const GroupValue& value, OkaValueType ivt)
{
    const BinaryData raw = value.GetRawData();
    const int year = raw.GetUInt8Value(0) + 1900;
    const int month = raw.GetUInt8Value(1) & 0x0F;
    const int day = raw.GetUInt8Value(2) & 0x1F;
    const long hour = raw.GetUInt8Value(3) & 0x1F;
    const long minute = raw.GetUInt8Value(4) & 0x3F;
    const long second = raw.GetUInt8Value(5) & 0x3F;

    const boost::posix_time::ptime when(MakeDate(year, month, day),
                                        boost::posix_time::seconds(hour * 3600 + minute * 60 + second));
    return OKAVALUE::FromPointInTime(ivt, when);
}

struct DecodeRow
{
    std::vector<std::uint16_t> mains;
    Decoder decode;
};

// Main numbers without a decoder inside 1..238 give a present value of type ivtEmpty.
const std::array<Decoder, kLastBranchedMain + 1>& DecoderTable()
{
    static const std::array<Decoder, kLastBranchedMain + 1> table = [] {
        const DecodeRow rows[] = {
            {{1}, &DecodeBoolean},
            {{2, 23}, &DecodeByte<&GroupValue::GetAsUnsigned2>},
            {{3}, &DecodeByte<&GroupValue::GetAsUnsigned4>},
            {{5, 17, 18, 20, 21, 26, 238}, &DecodeByte<&GroupValue::GetAsUnsigned8>},
            {{6}, &DecodeSigned8AsByte},
            {{7, 22, 217, 234, 237}, &DecodeUnsigned16},
            {{8}, &DecodeSigned16},
            {{9}, &DecodeFloat16},
            {{10}, &DecodeTimeOfDay},
            {{11}, &DecodeDate},
            {{12, 15, 27, 232}, &DecodeRaw32},
            {{13}, &DecodeSigned32},
            {{14}, &DecodeFloat32},
            {{16}, &DecodeString14},
            {{19}, &DecodeDateTime},
            {{31}, &DecodeByte<&GroupValue::GetAsUnsigned3>},
        };
        std::array<Decoder, kLastBranchedMain + 1> filled{};
        for (const DecodeRow& row : rows)
        {
            for (const std::uint16_t main : row.mains)
            {
                filled[main] = row.decode;
            }
        }
        return filled;
    }();
    return table;
}

// ---------------------------------------------------------------------------------------
// Encoding: one encoder per row of the branch table.

using Encoder = boost::optional<GroupValue> (*)(const OKAVALUE& value, const PackedDpt& dpt);

boost::optional<GroupValue> EncodeBoolean(const OKAVALUE& value, const PackedDpt&)
{
    GroupValue result;
    result.SetAsBoolean(value.numeric.byte != 0);
    return result;
}

template <void (GroupValue::*Set)(unsigned char)>
boost::optional<GroupValue> EncodeByte(const OKAVALUE& value, const PackedDpt&)
{
    GroupValue result;
    (result.*Set)(value.numeric.byte);
    return result;
}

// Scene numbers only go up to 63; the refusal is silent.
boost::optional<GroupValue> EncodeSceneNumber(const OKAVALUE& value, const PackedDpt& dpt)
{
    if (value.numeric.byte >= 64)
    {
        return boost::none;
    }
    return EncodeByte<&GroupValue::SetAsUnsigned8>(value, dpt);
}

boost::optional<GroupValue> EncodeSigned8(const OKAVALUE& value, const PackedDpt&)
{
    GroupValue result;
    result.SetAsSigned8(static_cast<signed char>(value.numeric.byte));
    return result;
}

// Out-of-range values are reported and sent clamped, not refused.
boost::optional<GroupValue> EncodeUnsigned16(const OKAVALUE& value, const PackedDpt& dpt)
{
    std::uint32_t number = value.numeric.dword;
    if (number > 65535u)
    {
        TAV_LOG_FROM(GetGlobalDefaultLogger(), log4cplus::ERROR_LOG_LEVEL, kEncodeFunction, LogFile::GroupValueOkaValue, 317,
                   "Value out of range: " << number << " (DPT " << dpt.main << ")");
        number = 65535u;
    }
    GroupValue result;
    result.SetAsUnsigned16(static_cast<unsigned short>(number));
    return result;
}

boost::optional<GroupValue> EncodeSigned16(const OKAVALUE& value, const PackedDpt&)
{
    std::int32_t number = value.numeric.integer;
    if (number < -32768 || number > 32767)
    {
        TAV_LOG_FROM(GetGlobalDefaultLogger(), log4cplus::ERROR_LOG_LEVEL, kEncodeFunction, LogFile::GroupValueOkaValue, 331,
                   "Value out of range: " << number << " (DPT " << 8 << ")");
        number = number < 0 ? -32768 : 32767;
    }
    GroupValue result;
    result.SetAsSigned16(static_cast<short>(number));
    return result;
}

// An infinity is refused without a message; NaN goes out as the KNX invalid code.
boost::optional<GroupValue> EncodeFloat16(const OKAVALUE& value, const PackedDpt&)
{
    const double number = value.numeric.real;
    if (!std::isnan(number) && std::fabs(number) > std::numeric_limits<double>::max())
    {
        return boost::none;
    }
    GroupValue result;
    result.SetAsFloat16(number);
    return result;
}

boost::optional<GroupValue> EncodeTimeOfDay(const OKAVALUE& value, const PackedDpt&)
{
    const OKATIME& time = value.numeric.time;
    const auto timeOfDay = TavApp::TimeOfDay::FromOkaTime(time);
    if (!timeOfDay)
    {
        TAV_LOG_FROM(GetGlobalDefaultLogger(), log4cplus::ERROR_LOG_LEVEL, kEncodeFunction, LogFile::GroupValueOkaValue, 359,
                   "Could not convert OKATIME "
                       << time.year << " " << static_cast<unsigned>(time.month) << " "
                       << static_cast<unsigned>(time.day) << " " << static_cast<unsigned>(time.hour) << " "
                       << static_cast<unsigned>(time.minute) << " " << static_cast<unsigned>(time.second)
                       << " " << static_cast<unsigned>(time.hundredths) << " " << time.weekday << " "
                       << time.kind << " " << time.localTime << " " << time.daylightSaving << " "
                       << " to TimeOfDay");
        return boost::none;
    }
    GroupValue result;
    result.SetAsTimeOfDay(timeOfDay->GetHour(), timeOfDay->GetMinute(), timeOfDay->GetSecond(),
                          static_cast<GroupValue::DayOfWeek>(timeOfDay->GetWeekday()));
    return result;
}

boost::optional<GroupValue> EncodeDate(const OKAVALUE& value, const PackedDpt&)
{
    const OKATIME& time = value.numeric.time;
    if (!OKATIME::IsValidDate(time.year, time.month, time.day))
    {
        TAV_LOG_FROM(GetGlobalDefaultLogger(), log4cplus::ERROR_LOG_LEVEL, kEncodeFunction, LogFile::GroupValueOkaValue, 380,
                   "Not a valid date: " << time.year << " " << static_cast<unsigned>(time.month) << " "
                                        << static_cast<unsigned>(time.day) << " ");
        return boost::none;
    }
    GroupValue result;
    result.SetAsDate(time.day, time.month, time.year);
    return result;
}

boost::optional<GroupValue> EncodeUnsigned32(const OKAVALUE& value, const PackedDpt&)
{
    GroupValue result;
    result.SetAsUnsigned32(value.numeric.dword);
    return result;
}

boost::optional<GroupValue> EncodeSigned32(const OKAVALUE& value, const PackedDpt&)
{
    GroupValue result;
    result.SetAsSigned32(value.numeric.integer);
    return result;
}

// A finite double beyond the float range becomes the infinity of its sign, as IEEE
// rounding gives, without the undefined conversion.
float NarrowToFloat(double number)
{
    if (std::isfinite(number) && std::fabs(number) > static_cast<double>(std::numeric_limits<float>::max()))
    {
        const float infinity = std::numeric_limits<float>::infinity();
        return number < 0 ? -infinity : infinity;
    }
    return static_cast<float>(number);
}

boost::optional<GroupValue> EncodeFloat32(const OKAVALUE& value, const PackedDpt&)
{
    GroupValue result;
    result.SetAsFloat32(NarrowToFloat(value.numeric.real));
    return result;
}

boost::optional<GroupValue> EncodeString14(const OKAVALUE& value, const PackedDpt&)
{
    const char* bytes = value.text.c_str();
    const std::size_t length = value.text.length();
    if (!utf8::is_valid(bytes, bytes + length))
    {
        TAV_LOG_FROM(GetGlobalDefaultLogger(), log4cplus::ERROR_LOG_LEVEL, kEncodeFunction, LogFile::GroupValueOkaValue, 429,
                   "Got OKAVALUE that contains a non-UTF8 string");
        return boost::none;
    }
    const UTF8String repaired(RepairUTF8(std::string(bytes, length)));
    GroupValue result;
    result.SetAsString14(getLatin1FromUTF8Lossy(repaired));
    return result;
}

// Eight bytes built by hand: year - 1900, month, day, day of week | hour, minute, second,
// flags, 0. Impossible calendar fields throw from the date library.
boost::optional<GroupValue> EncodeDateTime(const OKAVALUE& value, const PackedDpt&)
{
    const std::tm broken = value.numeric.time;
    const boost::posix_time::ptime when(
        MakeDate(broken.tm_year + 1900, broken.tm_mon + 1, broken.tm_mday),
        boost::posix_time::seconds(static_cast<long>(broken.tm_hour) * 3600 +
                                   static_cast<long>(broken.tm_min) * 60 + broken.tm_sec));

    BinaryData bytes;
    std::uint8_t dayOfWeekBits = 0;
    const boost::gregorian::date date = when.date();
    if (date.is_pos_infinity())
    {
        bytes.SetUInt8Value(0, 70);
        bytes.SetUInt8Value(1, 1);
        bytes.SetUInt8Value(2, 1);
    }
    else
    {
        const boost::gregorian::date::ymd_type ymd = date.year_month_day();
        bytes.SetUInt8Value(0, static_cast<std::uint8_t>(static_cast<int>(ymd.year) - 1900));
        bytes.SetUInt8Value(1, static_cast<std::uint8_t>(ymd.month.as_number()));
        bytes.SetUInt8Value(2, static_cast<std::uint8_t>(ymd.day.as_number()));
        // KNX counts Sunday as 7, the calendar as 0.
        const unsigned weekday = date.day_of_week().as_number();
        dayOfWeekBits = static_cast<std::uint8_t>((weekday == 0 ? 7u : weekday) << 5);
    }

    const boost::posix_time::time_duration timeOfDay = when.time_of_day();
    if (timeOfDay.is_special())
    {
        bytes.SetUInt8Value(3, dayOfWeekBits);
        bytes.SetUInt8Value(4, 0);
        bytes.SetUInt8Value(5, 0);
    }
    else
    {
        bytes.SetUInt8Value(3, static_cast<std::uint8_t>(dayOfWeekBits | timeOfDay.hours()));
        bytes.SetUInt8Value(4, static_cast<std::uint8_t>(timeOfDay.minutes()));
        bytes.SetUInt8Value(5, static_cast<std::uint8_t>(timeOfDay.seconds()));
    }
    bytes.SetUInt8Value(6, dayOfWeekBits != 0 ? 0x20 : 0x24);
    bytes.SetUInt8Value(7, 0);
    return GroupValue(bytes, 64);
}

// The low 24 bits, most significant byte first.
boost::optional<GroupValue> EncodeUnsigned24(const OKAVALUE& value, const PackedDpt&)
{
    const std::uint32_t number = value.numeric.dword;
    BinaryData bytes;
    bytes.SetUInt8Value(0, static_cast<std::uint8_t>(number >> 16));
    bytes.SetUInt8Value(1, static_cast<std::uint8_t>(number >> 8));
    bytes.SetUInt8Value(2, static_cast<std::uint8_t>(number));
    return GroupValue(bytes, 24);
}

struct EncodeRow
{
    std::vector<std::uint16_t> mains;
    Encoder encode;
};

// Main numbers without an encoder (4 and 31 among them) are reported as not supported.
const std::array<Encoder, kLastBranchedMain + 1>& EncoderTable()
{
    static const std::array<Encoder, kLastBranchedMain + 1> table = [] {
        const EncodeRow rows[] = {
            {{1}, &EncodeBoolean},
            {{2, 23}, &EncodeByte<&GroupValue::SetAsUnsigned2>},
            {{3}, &EncodeByte<&GroupValue::SetAsUnsigned4>},
            {{5, 18, 20, 21, 26, 238}, &EncodeByte<&GroupValue::SetAsUnsigned8>},
            {{17}, &EncodeSceneNumber},
            {{6}, &EncodeSigned8},
            {{7, 22, 217, 234, 237}, &EncodeUnsigned16},
            {{8}, &EncodeSigned16},
            {{9}, &EncodeFloat16},
            {{10}, &EncodeTimeOfDay},
            {{11}, &EncodeDate},
            {{12, 15, 27}, &EncodeUnsigned32},
            {{13}, &EncodeSigned32},
            {{14}, &EncodeFloat32},
            {{16}, &EncodeString14},
            {{19}, &EncodeDateTime},
            {{232}, &EncodeUnsigned24},
        };
        std::array<Encoder, kLastBranchedMain + 1> filled{};
        for (const EncodeRow& row : rows)
        {
            for (const std::uint16_t main : row.mains)
            {
                filled[main] = row.encode;
            }
        }
        return filled;
    }();
    return table;
}

Encoder FindEncoder(const PackedDpt& dpt)
{
    // Below 65536 the packed number carries no main number.
    if (dpt.packed < 0x10000u || dpt.main > kLastBranchedMain)
    {
        return nullptr;
    }
    return EncoderTable()[dpt.main];
}
} // namespace

bool CheckGroupValue(const KnxStack::GroupValue& value, unsigned long packedDpt)
{
    const PackedDpt packed(packedDpt);
    // Not const: the converter front writes a default DPT into it when main is 0.
    KNXDPT dpt{static_cast<std::uint8_t>(value.GetDefinedSize()), packed.main, packed.sub};
    TAV_LOG_AT(GetGlobalDefaultLogger(), log4cplus::DEBUG_LOG_LEVEL, LogFile::GroupValueOkaValue, 556,
            "DPT is " << dpt.main << "." << dpt.sub << " with bit size " << static_cast<unsigned>(dpt.size));

    KnxValueConverter converter;
    converter.Init();
    OKAVALUE scratch;
    return converter.FromKnxValue(dpt, value, scratch);
}

boost::optional<OKAVALUE> GroupValueToOkaValue(const KnxStack::GroupValue& value, unsigned long packedDpt)
{
    const MeasureDuration measure("Decoding a KNX value took ", 100000000, true);
    const PackedDpt dpt(packedDpt);

    const OkaValueType ivt = KnxLdsMapping::GetIvtFromDpt(dpt.packed);
    if (ivt == ivtEmpty)
    {
        TAV_LOG_AT(GetGlobalDefaultLogger(), log4cplus::ERROR_LOG_LEVEL, LogFile::GroupValueOkaValue, 573, "Unsupported DPT: " << dpt);
        return boost::none;
    }
    if (!CheckGroupValue(value, dpt.packed))
    {
        TAV_LOG_AT(GetGlobalDefaultLogger(), log4cplus::ERROR_LOG_LEVEL, LogFile::GroupValueOkaValue, 578,
                "Received invalid value " << value.GetRawData().ToString() << " for DPT " << dpt);
        return boost::none;
    }

    const Decoder decode = (dpt.main == 0 || dpt.main > kLastBranchedMain) ? nullptr : DecoderTable()[dpt.main];
    if (decode == nullptr)
    {
        return OKAVALUE();
    }
    try
    {
        return decode(value, ivt);
    }
    catch (const KnxStack::GroupValueException&)
    {
        // A truncated telegram that the validity check let through.
        TAV_LOG_AT(GetGlobalDefaultLogger(), log4cplus::ERROR_LOG_LEVEL, LogFile::GroupValueOkaValue, 595,
                "Received invalid value " << value.GetRawData().ToString() << " for DPT " << dpt);
        return boost::none;
    }
}

boost::optional<KnxStack::GroupValue> OkaValueToGroupValue(const OKAVALUE& value, unsigned long packedDpt)
{
    const PackedDpt dpt(packedDpt);

    // No conversion between value types here: the caller hands in the DPT's own type.
    const OkaValueType expected = KnxLdsMapping::GetIvtFromDpt(dpt.packed);
    if (expected != value.type)
    {
        TAV_LOG_AT(GetGlobalDefaultLogger(), log4cplus::ERROR_LOG_LEVEL, LogFile::GroupValueOkaValue, 609,
                "Value type mismatch: Expected '" << OKAVALUE::GetNameFromValueType(expected) << "', got '"
                                                  << OKAVALUE::GetNameFromValueType(value.type) << "'");
        return boost::none;
    }

    const Encoder encode = FindEncoder(dpt);
    if (encode == nullptr)
    {
        TAV_LOG_AT(GetGlobalDefaultLogger(), log4cplus::ERROR_LOG_LEVEL, LogFile::GroupValueOkaValue, 618,
                "Value type " << dpt.main << " not supported (dwDPT=" << dpt.packed << " with value='"
                              << static_cast<std::int32_t>(value.type) << " -> " << value.ToString() << "').");
        return boost::none;
    }
    return encode(value, dpt);
}
} // namespace Okaro
