#pragma once
// Scope guard that times a block and logs how long it took when it goes out of scope.
#include <platform/Logging.h>

#include <boost/timer/timer.hpp>
#include <log4cplus/logger.h>

#include <cstdint>
#include <string>

namespace Okaro
{
// With threshold mode on, only a wall time at or above the threshold costs a log line (INFO),
// so slow paths can be flagged without flooding the log. With it off, every run is logged at
// DEBUG. The line is "~MeasureDuration - " + message + Boost.Timer's default format.
class MeasureDuration
{
public:
    MeasureDuration(std::string message, std::int64_t thresholdNs, bool thresholdMode,
                    log4cplus::Logger logger = GetGlobalDefaultLogger());
    ~MeasureDuration();

    MeasureDuration(const MeasureDuration&) = delete;
    MeasureDuration& operator=(const MeasureDuration&) = delete;

private:
    boost::timer::cpu_timer timer_;
    std::string message_;
    log4cplus::Logger logger_;
    bool thresholdMode_;
    std::int64_t thresholdNs_;
};
} // namespace Okaro
