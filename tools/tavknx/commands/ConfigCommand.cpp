// config: what the app host configuration file says.
#include "cli/Output.h"
#include "commands/Commands.h"

#include <TavObjectModel/AppHostConfig.h>

#include <boost/filesystem/operations.hpp>

#include <log4cplus/appender.h>
#include <log4cplus/logger.h>
#include <log4cplus/spi/loggingevent.h>

#include <ostream>

namespace TavKnx
{
namespace
{
// The library says only in its log that it fell back to the standard settings. The load gets
// a logger of its own that lets every line through to this appender, which notices that line
// and hands each line on to the root logger's appenders as --log-level allows.
class FallbackWatch : public log4cplus::Appender
{
public:
    bool fellBack = false;
    ~FallbackWatch() override { destructorImpl(); }
    void close() override {}

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override
    {
        if (event.getMessage().find("Falling back to standard configuration.") != log4cplus::tstring::npos)
        {
            fellBack = true;
        }
        log4cplus::Logger root = log4cplus::Logger::getRoot();
        if (root.isEnabledFor(event.getLogLevel()))
        {
            root.callAppenders(event);
        }
    }
};

int RunConfig(const Invocation& invocation)
{
    invocation.RequireArgs(0, 1, "[FILE]");
    const boost::filesystem::path file =
        invocation.args.empty() ? Okaro::AppHostConfiguration::DefaultFilePath : invocation.args[0];
    boost::system::error_code error;
    const bool found = boost::filesystem::is_regular_file(file, error);
    Okaro::AppHostConfiguration configuration;
    // A missing or broken file leaves the standard settings; the library logs why.
    log4cplus::Logger logger = log4cplus::Logger::getInstance("tavknx.config");
    log4cplus::SharedAppenderPtr watch(new FallbackWatch());
    logger.setAdditivity(false);
    logger.setLogLevel(log4cplus::TRACE_LOG_LEVEL);
    logger.addAppender(watch);
    configuration.LoadConfigurationFile(file, logger, Okaro::UTF8String("tavknx"));
    logger.removeAppender(watch);
    const bool loaded = found && !static_cast<FallbackWatch&>(*watch).fellBack;

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
        object.Add("ok", true).Add("file", file.string()).Add("found", found).Add("loaded", loaded);
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
    out << "file: " << file.string()
        << (!found   ? " (not found: standard settings)"
            : !loaded ? " (cannot be read as the configuration: standard settings)"
                      : "")
        << "\n";
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
                        "as the app host does and prints its four flags and four root paths. A missing file, or\n"
                        "one that cannot be read as the configuration, gives the standard settings: the first line\n"
                        "says so (JSON: \"found\", \"loaded\"), the log lines on stderr say why.\n\n"
                        "Examples:\n"
                        "  tavknx config\n"
                        "  tavknx config ./tavapphostconfig.xml --json\n",
                        nullptr, RunConfig});
}
} // namespace TavKnx
