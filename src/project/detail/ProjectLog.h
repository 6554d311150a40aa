#pragma once
// The reader's log lines: logger "TavProject", messages "ReadProject - <text>", each event with
// its declared origin (file name and a number of its own).
#include <platform/Logging.h>

namespace TavProject
{
namespace detail
{
const log4cplus::Logger& ProjectLogger();
} // namespace detail
} // namespace TavProject

#define TAV_PROJECT_WARN(file, line, text)                                                        \
    TAV_LOG_FROM(::TavProject::detail::ProjectLogger(), log4cplus::WARN_LOG_LEVEL, "ReadProject",  \
        file, line, text)
#define TAV_PROJECT_DEBUG(file, line, text)                                                       \
    TAV_LOG_FROM(::TavProject::detail::ProjectLogger(), log4cplus::DEBUG_LOG_LEVEL, "ReadProject", \
        file, line, text)
