// bridge: the installation on MQTT. Telegrams from knxd become retained state messages, set and
// read messages become group writes and reads, and Home Assistant is told about every group
// address of the map (tools/tavknx/bridge holds all of it; this is the command line).
#include "bridge/Bridge.h"
#include "bridge/BridgeTopics.h"
#include "cli/KnxdUrlOption.h"
#include "cli/MapOption.h"
#include "cli/StopSignal.h"
#include "commands/Commands.h"
#include "knx/TextError.h"

#include <boost/program_options.hpp>

#include <fstream>
#include <iostream>

namespace po = boost::program_options;

namespace TavKnx
{
namespace
{
namespace LogFile
{
constexpr char BridgeCommand[] = "BridgeCommand.cpp";
} // namespace LogFile

constexpr char kDefaultClientId[] = "tavknx-bridge";

void AddBridgeOptions(po::options_description& options)
{
    AddKnxdUrlOption(options);
    options.add_options()
        ("map", po::value<std::string>()->value_name("FILE"), kMapOptionHelp)
        ("mqtt", po::value<std::string>()->value_name("URL"), "the broker: mqtt://HOST[:PORT] (default mqtt://localhost:1883)")
        ("prefix", po::value<std::string>()->value_name("PREFIX"), "topic prefix (default knx)")
        ("discovery", po::value<std::string>()->value_name("PREFIX"), "publish Home Assistant discovery configs under PREFIX (homeassistant)")
        ("client-id", po::value<std::string>()->value_name("ID"), "MQTT client id, the persistent session's name (default tavknx-bridge)")
        ("username", po::value<std::string>()->value_name("USER"), "MQTT user name")
        ("password-file", po::value<std::string>()->value_name("FILE"), "MQTT password: the first line of FILE")
        ("tls", po::value<std::string>()->value_name("CAFILE"), "TLS to the broker, its certificate checked against CAFILE")
        ("project-password-file", po::value<std::string>()->value_name("FILE"),
         "the ETS project's password: the first line of FILE (else $TAVKNX_PROJECT_PASSWORD)");
}

std::string Option(const Invocation& invocation, const char* name, const std::string& fallback)
{
    return invocation.options.count(name) ? invocation.options[name].as<std::string>() : fallback;
}

std::string FirstLine(const std::string& path, const char* what)
{
    std::ifstream file(path);
    std::string line;
    if (!file || !std::getline(file, line))
    {
        throw UsageError(std::string(what) + ": cannot read " + Quote(path));
    }
    return line;
}

// --password-file is the broker's here; the project's password has an option of its own.
GroupAddressMap LoadMap(const Invocation& invocation)
{
    if (!invocation.options.count("map"))
    {
        throw UsageError("--map: the bridge needs a map file or an ETS project (.knxproj)");
    }
    Invocation mapInvocation = invocation;
    mapInvocation.options.erase("password-file");
    if (invocation.options.count("project-password-file"))
    {
        mapInvocation.options.insert({"password-file", invocation.options["project-password-file"]});
    }
    return LoadMapOption(mapInvocation, log4cplus::Logger::getInstance("tavknx.bridge"), LogFile::BridgeCommand, 70);
}

int RunBridge(const Invocation& invocation)
{
    invocation.RequireArgs(0, 0, "");
    BridgeOptions options;
    options.knxdUrl = KnxdUrl(invocation);
    options.prefix = CheckTopicPrefix(Option(invocation, "prefix", "knx"), "--prefix");
    if (invocation.options.count("discovery"))
    {
        options.discoveryPrefix = CheckTopicPrefix(invocation.options["discovery"].as<std::string>(), "--discovery");
    }
    options.mqtt.address = ParseMqttUrl(Option(invocation, "mqtt", "mqtt://localhost:1883"));
    options.mqtt.clientId = Option(invocation, "client-id", kDefaultClientId);
    if (options.mqtt.clientId.empty() || options.mqtt.clientId.size() > 23 * 4)
    {
        throw UsageError("--client-id: expected 1 to 92 characters, got " + Quote(options.mqtt.clientId));
    }
    options.mqtt.username = Option(invocation, "username", "");
    if (invocation.options.count("password-file"))
    {
        if (options.mqtt.username.empty())
        {
            throw UsageError("--password-file: needs --username");
        }
        options.mqtt.password = FirstLine(invocation.options["password-file"].as<std::string>(), "--password-file");
    }
    options.mqtt.caFile = Option(invocation, "tls", "");
    const GroupAddressMap map = LoadMap(invocation);
    InstallStopHandlers();
    try
    {
        Bridge bridge(map, options);
        return bridge.Run();
    }
    catch (const MqttError& error)
    {
        std::cerr << "tavknx bridge: " << error.what() << "\n";
        return kExitRefused;
    }
}
} // namespace

void AddBridgeCommand(std::vector<Command>& commands)
{
    commands.push_back(
        {"bridge",
         "bridge [--url URL] --map FILE [--mqtt mqtt://HOST[:PORT]] [--prefix knx] [--discovery PREFIX] [--client-id ID] "
         "[--username U --password-file F] [--tls CAFILE]",
         "bridge the bus to an MQTT broker, with Home Assistant discovery",
         "Every group write and response on a mapped address is published, retained, to PREFIX/GA/state\n"
         "(knx/1/2/3/state) as JSON decoded by GroupValueToOkaValue (\"table\" holds FromKnxValue's result\n"
         "where it differs); a value that does not decode has \"ok\":false and the reason. Other addresses\n"
         "go to PREFIX/raw/GA with the bytes only. PREFIX/GA/set takes a JSON value, {\"value\": ...} or\n"
         "TYPE:TEXT, encoded by OkaValueToGroupValue for the address's DPT and sent as a group write;\n"
         "PREFIX/GA/read sends a group read. A payload that does not fit is answered on PREFIX/GA/error.\n"
         "PREFIX/status is online while the bridge runs, offline otherwise (the broker's last will).\n"
         "--discovery PREFIX publishes a Home Assistant config for every address with a DPT.\n"
         "The session is persistent (QoS 1): commands sent while the bridge is away arrive when it is back.\n"
         "Broker and knxd are reconnected independently. Ends on Ctrl-C, publishing offline.\n"
         "The ETS project's password comes from --project-password-file or $TAVKNX_PROJECT_PASSWORD.\n\n"
         "Examples:\n"
         "  tavknx bridge --map installation.knxproj --discovery homeassistant\n"
         "  tavknx bridge --url ip:192.168.1.10 --map groups.txt --mqtt mqtt://broker.local:1883 --prefix home/knx\n",
         AddBridgeOptions, RunBridge});
}
} // namespace TavKnx
