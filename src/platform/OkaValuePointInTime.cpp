#include <platform/detail/LocalTimeFields.h>
#include <platform/OkaValue.h>

#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <boost/date_time/posix_time/conversion.hpp>
#include <boost/date_time/posix_time/posix_time_types.hpp>

#include <cstdint>

namespace
{
bool IsLastSecondBeforeEpoch(const std::tm& fields)
{
    return fields.tm_year == 69 && fields.tm_mon == 11 && fields.tm_mday == 31 && fields.tm_hour == 23 &&
           fields.tm_min == 59 && fields.tm_sec == 59;
}
} // namespace

OKATIME LocalTimeFromFields(const std::tm& fields, std::time_t (*makeTime)(std::tm*))
{
    std::tm normalised = fields;
    const std::time_t when = makeTime(&normalised);
    OKATIME time;
    time.Clear(true);
    if (when == static_cast<std::time_t>(-1) && !IsLastSecondBeforeEpoch(fields))
    {
        time.SetDateTime(static_cast<std::uint16_t>(fields.tm_year + 1900), static_cast<std::uint8_t>(fields.tm_mon + 1),
                         static_cast<std::uint8_t>(fields.tm_mday), static_cast<std::uint8_t>(fields.tm_hour),
                         static_cast<std::uint8_t>(fields.tm_min), static_cast<std::uint8_t>(fields.tm_sec), true);
        return time;
    }
    time = when;
    return time;
}

OKAVALUE OKAVALUE::FromPointInTime(OkaValueType type, const boost::posix_time::ptime& when)
{
    // The last second a signed 32-bit time_t holds: later points stay without a time on
    // every target alike.
    static const boost::posix_time::ptime kLastRepresentable(boost::gregorian::date(2038, 1, 19),
                                                             boost::posix_time::time_duration(3, 14, 7));
    OKAVALUE value;
    // Special points go on to to_tm, which refuses them with its own exception.
    if (!when.is_special() && when > kLastRepresentable)
    {
        return value;
    }
    value.type = type;
    std::tm fields = boost::posix_time::to_tm(when);
    fields.tm_isdst = -1;
    value.numeric.time = LocalTimeFromFields(fields);
    return value;
}
