#include "cli/LogSetup.h"

#include "cli/CommandLine.h"

#include <log4cplus/configurator.h>
#include <log4cplus/consoleappender.h>
#include <log4cplus/layout.h>
#include <log4cplus/logger.h>
#include <log4cplus/loglevel.h>

#include <boost/algorithm/string/case_conv.hpp>

#include <fstream>
#include <memory>

namespace TavKnx
{
namespace
{
log4cplus::LogLevel ParseLevel(const std::string& name)
{
    const std::string lower = boost::algorithm::to_lower_copy(name);
    if (lower == "trace")
    {
        return log4cplus::TRACE_LOG_LEVEL;
    }
    if (lower == "debug")
    {
        return log4cplus::DEBUG_LOG_LEVEL;
    }
    if (lower == "info")
    {
        return log4cplus::INFO_LOG_LEVEL;
    }
    if (lower == "warn")
    {
        return log4cplus::WARN_LOG_LEVEL;
    }
    if (lower == "error")
    {
        return log4cplus::ERROR_LOG_LEVEL;
    }
    if (lower == "off")
    {
        return log4cplus::OFF_LOG_LEVEL;
    }
    throw UsageError("--log-level: expected trace, debug, info, warn, error or off, got '" + name + "'");
}
} // namespace

void ConfigureLogging(const std::string& level)
{
    const log4cplus::LogLevel parsed = ParseLevel(level);
    log4cplus::Logger root = log4cplus::Logger::getRoot();
    root.removeAllAppenders();
    // stdout carries the results, so the log must stay off it.
    log4cplus::SharedAppenderPtr appender(new log4cplus::ConsoleAppender(true, true));
    appender->setLayout(std::unique_ptr<log4cplus::Layout>(new log4cplus::PatternLayout("%-5p %b:%L %m%n")));
    root.addAppender(appender);
    root.setLogLevel(parsed);
}

void ConfigureLoggingFromFile(const std::string& file, const std::string* level)
{
    if (!std::ifstream(file))
    {
        throw UsageError("--log-config: cannot read the log4cplus properties file '" + file + "'");
    }
    log4cplus::PropertyConfigurator::doConfigure(file);
    if (level != nullptr)
    {
        log4cplus::Logger::getRoot().setLogLevel(ParseLevel(*level));
    }
}
} // namespace TavKnx
