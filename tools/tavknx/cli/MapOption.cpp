#include "cli/MapOption.h"

#include "cli/ProjectOptions.h"
#include "knx/ProjectMap.h"

#include <platform/Logging.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace TavKnx
{
GroupAddressMap LoadMapOption(const Invocation& invocation, const log4cplus::Logger& logger, const char* logFile,
                              int logLine)
{
    if (!invocation.options.count("map"))
    {
        return GroupAddressMap();
    }
    const std::string file = invocation.options["map"].as<std::string>();
    if (IsProjectFile(file))
    {
        return MapFromProject(ReadProject(invocation, file, "--map: "));
    }
    std::vector<MapProblem> problems;
    GroupAddressMap map;
    try
    {
        map = GroupAddressMap::Load(file, problems);
    }
    catch (const std::runtime_error& error)
    {
        throw UsageError(std::string("--map: ") + error.what());
    }
    for (const MapProblem& problem : problems)
    {
        // Named as the monitor's published line has it: "LoadMap - map '...' line N skipped: ...".
        TAV_LOG_FROM(logger, log4cplus::WARN_LOG_LEVEL, "LoadMap", logFile, logLine,
                     "map '" << file << "' line " << problem.line << " skipped: " << problem.message);
    }
    return map;
}
} // namespace TavKnx
