#pragma once
// Logging helpers shared by the controller's components: the global default logger and the
// line builder. A line is "<function> - <text>", built in a string stream only after the
// level test, and carries the source file's base name and the line.
#include <log4cplus/logger.h>
#include <log4cplus/loglevel.h>

#include <sstream>

namespace Okaro
{
// Passes its events on to the root logger (name "Tav").
const log4cplus::Logger& GetGlobalDefaultLogger();

constexpr const char* SourceBaseName(const char* path)
{
    const char* base = path;
    for (const char* p = path; *p != '\0'; ++p)
    {
        if (*p == '/')
        {
            base = p + 1;
        }
    }
    return base;
}
} // namespace Okaro

// TAV_LOG(logger, log4cplus::ERROR_LOG_LEVEL, "text " << value);
#define TAV_LOG_FN_LINE(logger, level, function, line, text)                                       \
    do                                                                                             \
    {                                                                                              \
        const log4cplus::Logger& tavLogger_ = (logger);                                            \
        if (tavLogger_.isEnabledFor(level))                                                        \
        {                                                                                          \
            std::ostringstream tavStream_;                                                         \
            tavStream_ << function << " - " << text;                                               \
            tavLogger_.forcedLog(level, tavStream_.str(), ::Okaro::SourceBaseName(__FILE__), line); \
        }                                                                                          \
    } while (false)

#define TAV_LOG_FN(logger, level, function, text) TAV_LOG_FN_LINE(logger, level, function, __LINE__, text)
#define TAV_LOG(logger, level, text) TAV_LOG_FN_LINE(logger, level, __func__, __LINE__, text)
