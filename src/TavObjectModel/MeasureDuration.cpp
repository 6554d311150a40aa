#include <Tav/MeasureDuration.h>

#include <TavObjectModel/detail/LogFiles.h>
#include <platform/Logging.h>

#include <utility>

namespace Okaro
{
namespace
{
// Boost.Timer's default format starts with a blank and ends with a line feed; neither belongs
// inside a log line.
std::string FormatTimes(const boost::timer::cpu_times& elapsed)
{
    std::string times = boost::timer::format(elapsed, 6);
    if (times.size() >= 2)
    {
        times = times.substr(1, times.size() - 2);
    }
    return times;
}
} // namespace

MeasureDuration::MeasureDuration(std::string message, std::int64_t thresholdNs, bool thresholdMode,
                                 log4cplus::Logger logger)
    : message_(std::move(message)), logger_(std::move(logger)), thresholdMode_(thresholdMode), thresholdNs_(thresholdNs)
{
}

MeasureDuration::~MeasureDuration()
{
    // A destructor must not throw; losing one timing line is better than terminating.
    try
    {
        if (!thresholdMode_)
        {
            TAV_LOG_FROM(logger_, log4cplus::DEBUG_LOG_LEVEL, "~MeasureDuration", LogFile::MeasureDuration, 35, message_ << FormatTimes(timer_.elapsed()));
            return;
        }
        const boost::timer::cpu_times elapsed = timer_.elapsed();
        if (static_cast<std::int64_t>(elapsed.wall) < thresholdNs_)
        {
            return;
        }
        TAV_LOG_FROM(logger_, log4cplus::INFO_LOG_LEVEL, "~MeasureDuration", LogFile::MeasureDuration, 43, message_ << FormatTimes(elapsed));
    }
    catch (...)
    {
    }
}
} // namespace Okaro
