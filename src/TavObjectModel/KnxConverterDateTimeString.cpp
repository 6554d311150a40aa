// Date, time and string converters: DPTs 10, 11, 16 and 19.
#include <TavObjectModel/KnxConverter.h>

#include <TavObjectModel/Utilities.h>
#include <TavObjectModel/detail/KnxConverterSupport.h>
#include <platform/TimeOfDay.h>

#include <string>

namespace Okaro
{
using namespace detail;

TAV_DEFINE_KNX_CONVERTER_CLONE(KnxConverterTimeOfDay)
TAV_DEFINE_KNX_CONVERTER_CLONE(KnxConverterDate)
TAV_DEFINE_KNX_CONVERTER_CLONE(KnxConverterDateTime)
TAV_DEFINE_KNX_CONVERTER_CLONE(KnxConverter14ByteString)

// --- 10.001 time of day ------------------------------------------------------------------

bool KnxConverterTimeOfDay::ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value, KnxStack::GroupValue& out) const
{
    TraceToKnx(dpt, value);
    if (dpt.main != 10 && dpt.sub != 1 && value.type != ivtDayTime)
    {
        return RefuseMainOrValueType("10.001", "ivtDayTime");
    }
    const OKATIME& time = value.numeric.time;
    const boost::optional<TavApp::TimeOfDay> timeOfDay = TavApp::TimeOfDay::FromOkaTime(time);
    if (!timeOfDay)
    {
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 870,
                "Could not convert OKATIME "
                    << time.year << " " << static_cast<unsigned int>(time.month) << " "
                    << static_cast<unsigned int>(time.day) << " " << static_cast<unsigned int>(time.hour) << " "
                    << static_cast<unsigned int>(time.minute) << " " << static_cast<unsigned int>(time.second) << " "
                    << static_cast<unsigned int>(time.hundredths) << " " << time.weekday << " " << time.kind << " "
                    << static_cast<unsigned int>(time.localTime) << " "
                    << static_cast<unsigned int>(time.daylightSaving) << " to TimeOfDay");
        return false;
    }
    out.SetAsTimeOfDay(timeOfDay->GetHour(), timeOfDay->GetMinute(), timeOfDay->GetSecond(),
                       timeOfDay->GetWeekday());
    return true;
}

bool KnxConverterTimeOfDay::FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& in, OKAVALUE& out) const
{
    TraceFromKnx(dpt, in);
    if (dpt.main != 10 && dpt.sub != 1)
    {
        return RefuseMain("10.001");
    }
    const KnxStack::BinaryData& raw = in.GetRawData();
    constexpr std::uint8_t kReservedBits = 0xC0;
    if ((raw.GetUInt8Value(1) & kReservedBits) != 0 || (raw.GetUInt8Value(2) & kReservedBits) != 0)
    {
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 897, "No valid TimeOfDay datagram, reserved fields ar not zero!");
        return false;
    }
    int hour = 0;
    int minute = 0;
    int second = 0;
    KnxStack::GroupValue::DayOfWeek day = KnxStack::GroupValue::DayOfWeek::NoDay;
    in.GetAsTimeOfDay(&hour, &minute, &second, &day);
    const boost::optional<TavApp::TimeOfDay> timeOfDay =
        TavApp::TimeOfDay::Create(hour, minute, second, day);
    if (!timeOfDay)
    {
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 909, "No valid TimeOfDay (10.001)!");
        return false;
    }
    // A time of day on the placeholder date 2000-01-01, marked as such by kind 1.
    OKATIME time{};
    time.year = 2000;
    time.month = 1;
    time.day = 1;
    time.kind = 1;
    time.hour = static_cast<std::uint8_t>(timeOfDay->GetHour());
    time.minute = static_cast<std::uint8_t>(timeOfDay->GetMinute());
    time.second = static_cast<std::uint8_t>(timeOfDay->GetSecond());
    time.weekday = timeOfDay->ToOkaWeekday();
    out.type = ivtDayTime;
    out.numeric.time = time;
    return true;
}

// --- 11.001 date -------------------------------------------------------------------------

bool KnxConverterDate::ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value, KnxStack::GroupValue& out) const
{
    TraceToKnx(dpt, value);
    if (dpt.main != 11 && dpt.sub != 1 && value.type != ivtDate)
    {
        return RefuseMainOrValueType("10.001", "ivtDayTime");
    }
    const OKATIME& time = value.numeric.time;
    // The wire holds two digits of the year: 1990..2089.
    if (static_cast<std::uint16_t>(time.year - 1990) > 99)
    {
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 940,
                "Cannot convert the date outside of the range [1990...2089]: year="
                    << time.year << ", month=" << RawCharacter(time.month) << ", day=" << RawCharacter(time.day));
        return false;
    }
    out.SetAsDate(time.day, time.month, time.year);
    return true;
}

bool KnxConverterDate::FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& in, OKAVALUE& out) const
{
    TraceFromKnx(dpt, in);
    if (dpt.main != 11 && dpt.sub != 1)
    {
        return RefuseMain("11.001");
    }
    // Day, month and year bytes as sent: top three bits of the day, top four of the
    // month and the top bit of the year are reserved.
    constexpr std::uint32_t kReservedBits = 0xE0F080;
    if ((in.GetRawData().GetUInt24Value(0) & kReservedBits) != 0)
    {
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 961, "No valid Date datagram, reserved fields ar not zero!");
        return false;
    }
    int day = 0;
    int month = 0;
    int year = 0;
    in.GetAsDate(&day, &month, &year);
    if (!OKATIME::IsValidDate(static_cast<std::uint16_t>(year), static_cast<std::uint8_t>(month),
                              static_cast<std::uint8_t>(day)))
    {
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 971,
                "Cannot convert invalid date: year=" << year << ", month=" << month << ", day=" << day);
        return false;
    }
    out.numeric.time.Clear(true);
    out.numeric.time.SetDate(static_cast<std::uint16_t>(year), static_cast<std::uint8_t>(month),
                             static_cast<std::uint8_t>(day), true);
    out.type = ivtDate;
    return true;
}

// --- 19.x date and time: no DPT test and no trace ----------------------------------------

bool KnxConverterDateTime::ToKnxValue(const KNXDPT& /*dpt*/, const OKAVALUE& value, KnxStack::GroupValue& out) const
{
    const OKATIME& time = value.numeric.time;
    if (time.year < 1900 || time.year > 2155)
    {
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 989,
                "Cannot convert the date outside of the range [1990...2089]: year=" << time.year);
        return false;
    }
    // Byte 0 is the year's low byte, not the offset from 1900 that FromKnxValue reads:
    // deployed peers expect exactly this.
    KnxStack::BinaryData data;
    data.SetUInt8Value(0, static_cast<std::uint8_t>(time.year & 0xFF));
    data.SetUInt8Value(1, time.month);
    data.SetUInt8Value(2, time.day);
    data.SetUInt8Value(3, time.hour);  // day-of-week bits stay zero
    data.SetUInt8Value(4, time.minute);
    data.SetUInt8Value(5, time.second);
    data.SetUInt8Value(6, 0x20);
    data.SetUInt8Value(7, 0);
    out = KnxStack::GroupValue(data, 64);
    return true;
}

bool KnxConverterDateTime::FromKnxValue(const KNXDPT& /*dpt*/, const KnxStack::GroupValue& in, OKAVALUE& out) const
{
    const KnxStack::BinaryData raw = in.GetRawData();
    const auto year = static_cast<std::uint16_t>(raw.GetUInt8Value(0) + 1900);
    const auto month = static_cast<std::uint8_t>(raw.GetUInt8Value(1) & 0x0F);
    const auto day = static_cast<std::uint8_t>(raw.GetUInt8Value(2) & 0x1F);
    const auto hour = static_cast<std::uint8_t>(raw.GetUInt8Value(3) & 0x1F);
    const auto minute = static_cast<std::uint8_t>(raw.GetUInt8Value(4) & 0x3F);
    const auto second = static_cast<std::uint8_t>(raw.GetUInt8Value(5) & 0x3F);
    if (!OKATIME::IsValidDate(year, month, day) || !OKATIME::IsValidTime(hour, minute, second))
    {
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1019,
                "Cannot convert invalid date and time: year="
                    << year << ", month=" << static_cast<unsigned int>(month)
                    << ", day=" << static_cast<unsigned int>(day) << ", hour=" << static_cast<unsigned int>(hour)
                    << ", minute=" << static_cast<unsigned int>(minute)
                    << ", second=" << static_cast<unsigned int>(second));
        return false;
    }
    out.numeric.time.Clear(true);
    out.numeric.time.SetDateTime(year, month, day, hour, minute, second, true);  // the type is the caller's
    return true;
}

// --- 16.x 14-character string ------------------------------------------------------------

bool KnxConverter14ByteString::ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value, KnxStack::GroupValue& out) const
{
    TraceToKnx(dpt, value);
    if (dpt.main != 16 && value.type != ivtString)
    {
        return RefuseMainOrValueType("16.x", "ivtString");
    }
    const std::string latin1 = UTF8ToLatin1(value.text.c_str());
    std::string text;
    text.reserve(latin1.size());
    for (const char c : latin1)
    {
        text += range_.IsInRange(static_cast<unsigned char>(c)) ? c : '_';
    }
    out.SetAsString14(text);
    return true;
}

bool KnxConverter14ByteString::FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& in, OKAVALUE& out) const
{
    TraceFromKnx(dpt, in);
    if (dpt.main != 16)
    {
        return RefuseMain("16.x");
    }
    const std::string utf8 = Latin1ToUTF8(in.GetAsString14().c_str());
    std::string kept;
    kept.reserve(utf8.size());
    for (const char c : utf8)
    {
        if (range_.IsInRange(static_cast<unsigned char>(c)))
        {
            kept += c;
        }
    }
    if (kept.size() != utf8.size())
    {
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::INFO_LOG_LEVEL, LogFile::KnxConverter, 1197,
                "Invalid characters for DPT " << dpt.main << "." << dpt.sub << " has been replaced with _.");
    }
    out.type = ivtString;
    out.text.assign(kept.data(), kept.size());
    return true;
}

} // namespace Okaro
