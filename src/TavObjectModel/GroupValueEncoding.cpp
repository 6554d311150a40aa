// Group value encoding: the value type gate, then one encoder per main number.
#include <TavObjectModel/GroupValueOkaValue.h>

#include <TavObjectModel/KnxLdsMapping.h>
#include <TavObjectModel/Utilities.h>
#include <TavObjectModel/detail/GroupValueCodec.h>
#include <TavObjectModel/detail/LogFiles.h>
#include <platform/Logging.h>
#include <platform/TextEncoding.h>
#include <platform/TimeOfDay.h>
#include <platform/detail/FloatNarrowing.h>

#include <boost/date_time/posix_time/posix_time.hpp>
#include <utf8.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <limits>
#include <string>
#include <vector>

namespace Okaro
{
using detail::kLastBranchedMain;
using detail::MakeDate;
using detail::PackedDpt;

namespace
{
using KnxStack::BinaryData;
using KnxStack::GroupValue;

constexpr const char* kEncodeFunction = "OkaValueToGroupValue";

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
                          timeOfDay->GetWeekday());
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

using EncodeBranch = detail::CodecBranch<Encoder>;

// Main numbers without an encoder (4 and 31 among them) are reported as not supported.
const detail::BranchTable<Encoder>& EncoderTable()
{
    static const detail::BranchTable<Encoder> table{
        {{1}, TAV_CODEC_BRANCH(EncodeBoolean)},
        {{2, 23}, TAV_CODEC_BRANCH(EncodeByte<&GroupValue::SetAsUnsigned2>)},
        {{3}, TAV_CODEC_BRANCH(EncodeByte<&GroupValue::SetAsUnsigned4>)},
        {{5, 18, 20, 21, 26, 238}, TAV_CODEC_BRANCH(EncodeByte<&GroupValue::SetAsUnsigned8>)},
        {{17}, TAV_CODEC_BRANCH(EncodeSceneNumber)},
        {{6}, TAV_CODEC_BRANCH(EncodeSigned8)},
        {{7, 22, 217, 234, 237}, TAV_CODEC_BRANCH(EncodeUnsigned16)},
        {{8}, TAV_CODEC_BRANCH(EncodeSigned16)},
        {{9}, TAV_CODEC_BRANCH(EncodeFloat16)},
        {{10}, TAV_CODEC_BRANCH(EncodeTimeOfDay)},
        {{11}, TAV_CODEC_BRANCH(EncodeDate)},
        {{12, 15, 27}, TAV_CODEC_BRANCH(EncodeUnsigned32)},
        {{13}, TAV_CODEC_BRANCH(EncodeSigned32)},
        {{14}, TAV_CODEC_BRANCH(EncodeFloat32)},
        {{16}, TAV_CODEC_BRANCH(EncodeString14)},
        {{19}, TAV_CODEC_BRANCH(EncodeDateTime)},
        {{232}, TAV_CODEC_BRANCH(EncodeUnsigned24)},
    };
    return table;
}

const EncodeBranch* FindEncodeBranch(std::uint16_t main) { return EncoderTable().Find(main); }

Encoder FindEncoder(const PackedDpt& dpt)
{
    // Below 65536 the packed number carries no main number.
    if (dpt.packed < 0x10000u)
    {
        return nullptr;
    }
    const EncodeBranch* branch = FindEncodeBranch(dpt.main);
    return branch != nullptr ? branch->function : nullptr;
}
} // namespace

const char* detail::GetEncodeBranchName(std::uint16_t main)
{
    const EncodeBranch* branch = FindEncodeBranch(main);
    return branch != nullptr ? branch->name : nullptr;
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
