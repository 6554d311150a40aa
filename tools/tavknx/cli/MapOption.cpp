#include "cli/MapOption.h"

#include "cli/ProjectOptions.h"
#include "knx/ProjectMap.h"

#include <platform/Logging.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace TavKnx
{
namespace
{
// The problems an unusable map's error lists; the rest are like them.
constexpr std::size_t kListedProblems = 3;
} // namespace

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
    // A map that names nothing would leave the monitor decoding nothing without a word: the
    // file is not what the user thinks it is.
    if (map.Size() == 0)
    {
        std::string message = "--map: '" + file + "' gives no group address a DPT";
        for (std::size_t i = 0; i < problems.size() && i < kListedProblems; ++i)
        {
            message += (i == 0 ? ": line " : "; line ") + std::to_string(problems[i].line) + ": " + problems[i].message;
        }
        if (problems.size() > kListedProblems)
        {
            message += "; ...";
        }
        else if (problems.empty())
        {
            message += ": no line of the form \"group address;DPT\" and no export header with the columns Address and "
                       "DatapointType";
        }
        throw UsageError(message);
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
