#include "cli/ObjectsOption.h"

#include "cli/ProjectOptions.h"

#include <devicestack/DeviceObjectsFile.h>
#include <platform/Logging.h>

#include <boost/program_options.hpp>

#include <stdexcept>
#include <string>

namespace po = boost::program_options;

namespace TavKnx
{
void AddObjectsOptions(po::options_description& options)
{
    options.add_options()
        ("objects", po::value<std::string>()->value_name("FILE"), "the objects: 'CO;GA[,GA...];DPT;FLAGS;NAME' lines")
        ("project", po::value<std::string>()->value_name("FILE"), "the objects of --device in an ETS project (.knxproj)")
        ("device", po::value<std::string>()->value_name("IA"), "the device of --project, as 1.1.5");
    AddProjectPasswordOption(options);
}

std::vector<Lumo::DeviceObject> LoadObjectsOption(const Invocation& invocation, const log4cplus::Logger& logger,
                                                  const char* logFile, int logLine)
{
    const bool fromFile = invocation.options.count("objects") != 0;
    const bool fromProject = invocation.options.count("project") != 0;
    if (fromFile == fromProject)
    {
        throw UsageError("give the objects with --objects FILE or with --project FILE --device IA");
    }
    if (fromProject != (invocation.options.count("device") != 0))
    {
        throw UsageError("--project and --device go together");
    }
    std::vector<MapProblem> problems;
    std::vector<Lumo::DeviceObject> objects;
    std::string source;
    if (fromFile)
    {
        source = invocation.options["objects"].as<std::string>();
        try
        {
            objects = Lumo::LoadDeviceObjects(source, problems);
        }
        catch (const std::runtime_error& error)
        {
            throw UsageError(std::string("--objects: ") + error.what());
        }
    }
    else
    {
        source = invocation.options["project"].as<std::string>();
        const std::string device = invocation.options["device"].as<std::string>();
        try
        {
            objects = Lumo::DeviceObjectsFromProject(ReadProject(invocation, source, "--project: "), device, problems);
        }
        catch (const Refusal&)
        {
            throw;
        }
        catch (const std::runtime_error& error)
        {
            throw Refusal(std::string("--project: ") + error.what());
        }
    }
    for (const MapProblem& problem : problems)
    {
        if (problem.line == 0)
        {
            TAV_LOG_FROM(logger, log4cplus::WARN_LOG_LEVEL, "LoadObjects", logFile, logLine,
                         "project '" << source << "' " << problem.message << ": skipped");
        }
        else
        {
            TAV_LOG_FROM(logger, log4cplus::WARN_LOG_LEVEL, "LoadObjects", logFile, logLine,
                         "objects '" << source << "' line " << problem.line << " skipped: " << problem.message);
        }
    }
    if (objects.empty())
    {
        throw Refusal("no objects in '" + source + "'");
    }
    return objects;
}
} // namespace TavKnx
