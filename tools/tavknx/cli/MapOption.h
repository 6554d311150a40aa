#pragma once
// The --map option of the commands that read a group address map: simple 'GA;DPT' text, the
// commissioning software's CSV export, or an ETS project (.knxproj, its password as
// cli/ProjectOptions.h reads it).
#include "cli/CommandLine.h"
#include "knx/GroupAddressMap.h"

#include <log4cplus/logger.h>

namespace TavKnx
{
constexpr char kMapOptionHelp[] =
    "group address to DPT map: 'GA;DPT' lines, the commissioning software's CSV export, or an ETS project (.knxproj)";

// The map --map names; an empty map without the option. A file that cannot be read, or whose
// lines give no group address a DPT, is a usage error (the latter with its first problems),
// a project that cannot be read a Refusal. Each skipped line of a text map is a WARN
// through `logger`, reported under the caller's own log origin (file name and line).
GroupAddressMap LoadMapOption(const Invocation& invocation, const log4cplus::Logger& logger, const char* logFile,
                              int logLine);
} // namespace TavKnx
