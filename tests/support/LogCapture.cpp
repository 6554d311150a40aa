#include "support/LogCapture.h"

#include <log4cplus/logger.h>
#include <log4cplus/spi/loggingevent.h>

namespace TavTest
{
namespace
{
const char* LevelName(log4cplus::LogLevel level)
{
    switch (level)
    {
    case log4cplus::TRACE_LOG_LEVEL: return "TRACE";
    case log4cplus::DEBUG_LOG_LEVEL: return "DEBUG";
    case log4cplus::INFO_LOG_LEVEL: return "INFO";
    case log4cplus::WARN_LOG_LEVEL: return "WARN";
    case log4cplus::ERROR_LOG_LEVEL: return "ERROR";
    case log4cplus::FATAL_LOG_LEVEL: return "FATAL";
    default: return "?";
    }
}
} // namespace

std::ostream& operator<<(std::ostream& out, const LogLine& line)
{
    return out << LevelName(line.level) << " \"" << line.message << "\"";
}

LogLine Line(log4cplus::LogLevel level, const std::string& message) { return LogLine{level, message, "", 0}; }
LogLine Trace(const std::string& message) { return Line(log4cplus::DEBUG_LOG_LEVEL, message); }
LogLine Info(const std::string& message) { return Line(log4cplus::INFO_LOG_LEVEL, message); }
LogLine Warn(const std::string& message) { return Line(log4cplus::WARN_LOG_LEVEL, message); }
LogLine Error(const std::string& message) { return Line(log4cplus::ERROR_LOG_LEVEL, message); }

class LogCapture::Sink : public log4cplus::Appender
{
public:
    Sink() { setName(LOG4CPLUS_TEXT("TavTestCapture")); }
    ~Sink() override { destructorImpl(); }
    void close() override {}

    std::vector<LogLine> Lines() const
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return lines_;
    }
    void Clear()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        lines_.clear();
    }

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override
    {
        std::lock_guard<std::mutex> lock(mutex_);
        lines_.push_back(LogLine{event.getLogLevel(), event.getMessage(), event.getFile(), event.getLine()});
    }

private:
    mutable std::mutex mutex_;
    std::vector<LogLine> lines_;
};

LogCapture::LogCapture(log4cplus::LogLevel threshold)
    : appender_(new Sink()), previousLevel_(log4cplus::Logger::getRoot().getLogLevel())
{
    log4cplus::Logger root = log4cplus::Logger::getRoot();
    root.setLogLevel(threshold);
    root.addAppender(appender_);
}

LogCapture::~LogCapture()
{
    log4cplus::Logger root = log4cplus::Logger::getRoot();
    root.removeAppender(appender_);
    root.setLogLevel(previousLevel_);
}

std::vector<LogLine> LogCapture::Lines() const { return static_cast<Sink&>(*appender_).Lines(); }

std::vector<LogLine> LogCapture::LinesAtOrAbove(log4cplus::LogLevel minimum) const
{
    std::vector<LogLine> result;
    for (const LogLine& line : Lines())
    {
        if (line.level >= minimum)
        {
            result.push_back(line);
        }
    }
    return result;
}

void LogCapture::Clear() { static_cast<Sink&>(*appender_).Clear(); }
} // namespace TavTest
