// Group value decoding: the validity check through the converter front, then one decoder
// per main number.
#include <TavObjectModel/GroupValueOkaValue.h>

#include <Tav/MeasureDuration.h>
#include <TavObjectModel/KnxLdsMapping.h>
#include <TavObjectModel/KnxValueConverter.h>
#include <TavObjectModel/detail/GroupValueCodec.h>
#include <TavObjectModel/detail/LogFiles.h>
#include <platform/KnxDpt.h>
#include <platform/Logging.h>
#include <platform/TextEncoding.h>
#include <platform/TimeOfDay.h>

#include <boost/date_time/posix_time/posix_time.hpp>

#include <array>
#include <cstdint>
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

constexpr const char* kDecodeFunction = "GroupValueToOkaValue";

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
        TavApp::TimeOfDay::Create(hour, minute, second, day);
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

using DecodeBranch = detail::CodecBranch<Decoder>;

// Main numbers without a decoder inside 1..238 give a present value of type ivtEmpty.
const detail::BranchTable<Decoder>& DecoderTable()
{
    static const detail::BranchTable<Decoder> table{
        {{1}, TAV_CODEC_BRANCH(DecodeBoolean)},
        {{2, 23}, TAV_CODEC_BRANCH(DecodeByte<&GroupValue::GetAsUnsigned2>)},
        {{3}, TAV_CODEC_BRANCH(DecodeByte<&GroupValue::GetAsUnsigned4>)},
        {{5, 17, 18, 20, 21, 26, 238}, TAV_CODEC_BRANCH(DecodeByte<&GroupValue::GetAsUnsigned8>)},
        {{6}, TAV_CODEC_BRANCH(DecodeSigned8AsByte)},
        {{7, 22, 217, 234, 237}, TAV_CODEC_BRANCH(DecodeUnsigned16)},
        {{8}, TAV_CODEC_BRANCH(DecodeSigned16)},
        {{9}, TAV_CODEC_BRANCH(DecodeFloat16)},
        {{10}, TAV_CODEC_BRANCH(DecodeTimeOfDay)},
        {{11}, TAV_CODEC_BRANCH(DecodeDate)},
        {{12, 15, 27, 232}, TAV_CODEC_BRANCH(DecodeRaw32)},
        {{13}, TAV_CODEC_BRANCH(DecodeSigned32)},
        {{14}, TAV_CODEC_BRANCH(DecodeFloat32)},
        {{16}, TAV_CODEC_BRANCH(DecodeString14)},
        {{19}, TAV_CODEC_BRANCH(DecodeDateTime)},
        {{31}, TAV_CODEC_BRANCH(DecodeByte<&GroupValue::GetAsUnsigned3>)},
    };
    return table;
}

const DecodeBranch* FindDecodeBranch(std::uint16_t main) { return DecoderTable().Find(main); }
} // namespace

const char* detail::GetDecodeBranchName(std::uint16_t main)
{
    const DecodeBranch* branch = FindDecodeBranch(main);
    return branch != nullptr ? branch->name : nullptr;
}

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

    const DecodeBranch* branch = FindDecodeBranch(dpt.main);
    if (branch == nullptr)
    {
        return OKAVALUE();
    }
    try
    {
        return branch->function(value, ivt);
    }
    catch (const KnxStack::GroupValueException&)
    {
        // A truncated telegram that the validity check let through.
        TAV_LOG_AT(GetGlobalDefaultLogger(), log4cplus::ERROR_LOG_LEVEL, LogFile::GroupValueOkaValue, 595,
                "Received invalid value " << value.GetRawData().ToString() << " for DPT " << dpt);
        return boost::none;
    }
}
} // namespace Okaro
