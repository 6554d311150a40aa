#include <platform/Logging.h>

namespace Okaro
{
const log4cplus::Logger& GetGlobalDefaultLogger()
{
    // Created once, on first use; additivity passes every event on to the root logger.
    static const log4cplus::Logger logger = log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("Tav"));
    return logger;
}
} // namespace Okaro
