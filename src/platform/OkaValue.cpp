#include <platform/OkaValue.h>
#include <platform/OkaValueFamily.h>
#include <platform/TimeOfDay.h>

#include <cmath>
#include <cstring>

namespace
{
// The whole union, so that a wider member of a narrow value reads as the narrow value.
void ZeroNumeric(OkaNumeric& numeric) { std::memset(&numeric, 0, sizeof numeric); }

bool SameReal(double a, double b)
{
    if (std::isnan(a) && std::isnan(b))
    {
        return true;
    }
    // Bits, so that 0.0 and -0.0 stay different values.
    return std::memcmp(&a, &b, sizeof a) == 0;
}

bool SamePayload(OkaValueFamily family, const OkaNumeric& a, const OkaNumeric& b)
{
    switch (family)
    {
    case OkaValueFamily::Empty:
    case OkaValueFamily::String:
        return true;
    case OkaValueFamily::Bool:
        // Through the byte: a union written byte-wise may hold other values than 0 and 1.
        return (a.byte != 0) == (b.byte != 0);
    case OkaValueFamily::Float:
        return SameReal(a.real, b.real);
    case OkaValueFamily::Integer:
        return a.integer == b.integer;
    case OkaValueFamily::Byte:
        return a.byte == b.byte;
    case OkaValueFamily::Word:
        return a.word == b.word;
    case OkaValueFamily::DWord:
        return a.dword == b.dword;
    case OkaValueFamily::Time:
        return a.time == b.time;
    case OkaValueFamily::Raw:
        break;
    }
    return std::memcmp(&a, &b, sizeof a) == 0;
}
} // namespace

OKAVALUE::OKAVALUE() : OKAVALUE(ivtEmpty) {}

OKAVALUE::OKAVALUE(OkaValueType newType, OkaDP::OkaValueSubType newSubType) : type(newType), subType(newSubType)
{
    ZeroNumeric(numeric);
}

void OKAVALUE::Reset(OkaValueType newType)
{
    type = newType;
    ZeroNumeric(numeric);
    text.clear();
    subType = OkaDP::istGeneric;
}

OKAVALUE OKAVALUE::DefaultDayTime()
{
    // Midnight without a weekday; the date is only a placeholder (kind 1).
    const TavApp::TimeOfDay midnight = *TavApp::TimeOfDay::Create(0, 0, 0, TavApp::DayOfWeek::NoDay);
    OKAVALUE value(ivtDayTime, OkaDP::istDefaultValue);
    OKATIME& time = value.numeric.time;
    time.Clear(false);
    time.year = 2000;
    time.month = 1;
    time.day = 1;
    time.hour = static_cast<std::uint8_t>(midnight.GetHour());
    time.minute = static_cast<std::uint8_t>(midnight.GetMinute());
    time.second = static_cast<std::uint8_t>(midnight.GetSecond());
    time.weekday = midnight.ToOkaWeekday();
    time.kind = 1;
    return value;
}

bool operator==(const OKAVALUE& a, const OKAVALUE& b)
{
    return a.type == b.type && a.subType == b.subType && a.text == b.text &&
           SamePayload(GetValueFamily(a.type), a.numeric, b.numeric);
}
