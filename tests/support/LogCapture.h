#pragma once
// Captures the log lines of the library: an appender on the root logger that keeps level,
// message, file and line of every event while the capture lives.
#include <log4cplus/appender.h>
#include <log4cplus/loglevel.h>

#include <mutex>
#include <ostream>
#include <string>
#include <vector>

namespace TavTest
{
struct LogLine
{
    log4cplus::LogLevel level;
    std::string message;
    std::string file;
    int line;

    bool operator==(const LogLine& other) const { return level == other.level && message == other.message; }
};

std::ostream& operator<<(std::ostream& out, const LogLine& line);

// LogLine{level, text} for comparisons; file and line are not compared.
LogLine Line(log4cplus::LogLevel level, const std::string& message);
LogLine Trace(const std::string& message);  // DEBUG
LogLine Info(const std::string& message);
LogLine Warn(const std::string& message);
LogLine Error(const std::string& message);

class LogCapture
{
public:
    // Sets the root logger to `threshold` while capturing, so DEBUG lines are seen too.
    explicit LogCapture(log4cplus::LogLevel threshold = log4cplus::TRACE_LOG_LEVEL);
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<LogLine> Lines() const;
    // Lines at `minimum` level and above.
    std::vector<LogLine> LinesAtOrAbove(log4cplus::LogLevel minimum) const;
    void Clear();

private:
    class Sink;
    log4cplus::SharedAppenderPtr appender_;
    log4cplus::LogLevel previousLevel_;
};
} // namespace TavTest
