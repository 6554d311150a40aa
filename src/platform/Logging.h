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

// A log event names its origin explicitly: the file name it is reported under and its line
// there. Integrators grep for both and tests pin them, so they are declared at the event and do
// not follow the code when it moves between files. The line is the event's number within its
// origin: existing events keep the numbers they were first published with, new ones take a free
// number of their own.
//
// TAV_LOG_AT(logger, log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 909, "text " << value);
#define TAV_LOG_BUILD_(logger, level, function, file, line, text)                                  \
    std::ostringstream tavStream_;                                                                 \
    tavStream_ << function << " - " << text;                                                       \
    (logger).forcedLog(level, tavStream_.str(), (file), (line))

#define TAV_LOG_FROM(logger, level, function, file, line, text)                                    \
    do                                                                                             \
    {                                                                                              \
        const log4cplus::Logger& tavLogger_ = (logger);                                            \
        if (tavLogger_.isEnabledFor(level))                                                        \
        {                                                                                          \
            TAV_LOG_BUILD_(tavLogger_, level, function, file, line, text);                         \
        }                                                                                          \
    } while (false)

// The same event, with the line built in a function of its own that is called only after the
// level test: the calling function keeps no stream in its frame. For paths that run per
// telegram (the converters and their lookups). Not for texts that take a back-trace: the
// extra frame would show in it.
#define TAV_LOG_COLD_FROM(logger, level, function, file, line, text)                               \
    do                                                                                             \
    {                                                                                              \
        const log4cplus::Logger& tavLogger_ = (logger);                                            \
        if (tavLogger_.isEnabledFor(level))                                                        \
        {                                                                                          \
            const char* const tavFunction_ = (function);                                           \
            [&]() __attribute__((noinline, cold)) {                                                \
                TAV_LOG_BUILD_(tavLogger_, level, tavFunction_, file, line, text);                 \
            }();                                                                                   \
        }                                                                                          \
    } while (false)

#define TAV_LOG_AT(logger, level, file, line, text) TAV_LOG_FROM(logger, level, __func__, file, line, text)
#define TAV_LOG_COLD_AT(logger, level, file, line, text) TAV_LOG_COLD_FROM(logger, level, __func__, file, line, text)

// For events whose origin is simply where they are written (tests, scratch tools): the file's own
// base name and line.
#define TAV_LOG(logger, level, text)                                                               \
    TAV_LOG_FROM(logger, level, __func__, ::Okaro::SourceBaseName(__FILE__), __LINE__, text)
#define TAV_LOG_FN_LINE(logger, level, function, line, text)                                       \
    TAV_LOG_FROM(logger, level, function, ::Okaro::SourceBaseName(__FILE__), line, text)
