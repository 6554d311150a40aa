// config: what the app host configuration file says.
#include "cli/Output.h"
#include "commands/Commands.h"

#include <TavObjectModel/AppHostConfig.h>

#include <boost/filesystem/operations.hpp>

#include <log4cplus/logger.h>

#include <ostream>

namespace TavKnx
{
namespace
{
int RunConfig(const Invocation& invocation)
{
    invocation.RequireArgs(0, 1, "[FILE]");
    const boost::filesystem::path file =
        invocation.args.empty() ? Okaro::AppHostConfiguration::DefaultFilePath : invocation.args[0];
    boost::system::error_code error;
    const bool found = boost::filesystem::is_regular_file(file, error);
    Okaro::AppHostConfiguration configuration;
    // A missing or broken file leaves the standard settings; the library logs why.
    configuration.LoadConfigurationFile(file, log4cplus::Logger::getInstance("tavknx"), Okaro::UTF8String("tavknx"));

    const std::pair<const char*, bool> flags[] = {
        {"appDebugMode", configuration.IsInAppDebugMode()},
        {"appHostStartupDisabled", configuration.IsAppHostStartupDisabled()},
        {"appConnectorHostStartupDisabled", configuration.IsAppConnectorHostStartupDisabled()},
        {"appHostWithoutKNX", configuration.IsAppHostWithoutKNX()},
    };
    const std::pair<const char*, const boost::optional<std::string>*> paths[] = {
        {"rootPathNativeApp", &configuration.GetRootPathNativeApp()},
        {"rootPathManagedApp", &configuration.GetRootPathManagedApp()},
        {"rootPathAppHost", &configuration.GetRootPathAppHost()},
        {"rootPathAppConnectorHost", &configuration.GetRootPathAppConnectorHost()},
    };
    std::ostream& out = invocation.Out();
    if (invocation.json)
    {
        JsonObject object;
        object.Add("ok", true).Add("file", file.string()).Add("found", found);
        for (const auto& flag : flags)
        {
            object.Add(flag.first, flag.second);
        }
        for (const auto& path : paths)
        {
            *path.second ? object.Add(path.first, **path.second) : object.AddNull(path.first);
        }
        out << object.Str() << "\n";
        return kExitDone;
    }
    out << "file: " << file.string() << (found ? "" : " (not found: standard settings)") << "\n";
    for (const auto& flag : flags)
    {
        out << flag.first << ": " << (flag.second ? "true" : "false") << "\n";
    }
    for (const auto& path : paths)
    {
        out << path.first << ": " << (*path.second ? **path.second : std::string("(not set)")) << "\n";
    }
    return kExitDone;
}
} // namespace

void AddConfigCommand(std::vector<Command>& commands)
{
    commands.push_back({"config", "config [FILE]", "show what the app host configuration file says",
                        "Loads the app host configuration (default /opt/userdata/etc/tavapphost/tavapphostconfig.xml)\n"
                        "as the app host does and prints its four flags and four root paths. A missing or broken\n"
                        "file gives the standard settings; the log lines on stderr say why.\n\n"
                        "Examples:\n"
                        "  tavknx config\n"
                        "  tavknx config ./tavapphostconfig.xml --json\n",
                        nullptr, RunConfig});
}
} // namespace TavKnx
