// send: one group write (or read request) through knxd, the value encoded by the switch-driven
// codec as the controller's applications encode it.
#include "cli/CodecWarning.h"
#include "cli/KnxdUrlOption.h"
#include "cli/MapOption.h"
#include "cli/Output.h"
#include "cli/ProjectOptions.h"
#include "cli/StopSignal.h"
#include "cli/ValueArgument.h"
#include "commands/Commands.h"
#include "knx/DptText.h"
#include "knx/GroupTelegram.h"
#include "knx/KnxAddress.h"
#include "knx/NumberText.h"
#include "knx/TelegramReport.h"
#include "knx/TextError.h"
#include "knxd/KnxdConnection.h"

#include <TavObjectModel/GroupValueOkaValue.h>

#include <boost/program_options.hpp>

#include <algorithm>
#include <chrono>
#include <iostream>

namespace po = boost::program_options;

namespace TavKnx
{
namespace
{
namespace LogFile
{
constexpr char SendCommand[] = "SendCommand.cpp";
} // namespace LogFile

void AddSendOptions(po::options_description& options)
{
    AddKnxdUrlOption(options);
    options.add_options()
        ("read", "send a read request to GA instead of a write and wait for the response")
        ("timeout", po::value<std::string>()->value_name("SECONDS"),
         "with --read: how long to wait for the response (default 3)")
        ("map", po::value<std::string>()->value_name("FILE"), kMapOptionHelp);
    AddStrictOption(options);
    AddProjectPasswordOption(options);
}

// The DPT argument, or with --map and only GA VALUE given, the group address's DPT in the map.
KNXDPT DptArgument(const Invocation& invocation, std::uint16_t groupAddress)
{
    if (invocation.args.size() == 3)
    {
        return ParseDpt(invocation.args[1]);
    }
    const GroupAddressMap map =
        LoadMapOption(invocation, log4cplus::Logger::getInstance("tavknx.send"), LogFile::SendCommand, 1);
    const KNXDPT* dpt = map.Find(groupAddress);
    if (dpt == nullptr || (dpt->main == 0 && dpt->sub == 0))
    {
        throw UsageError("GA: " + FormatGroupAddressLike(groupAddress, invocation.args[0]) +
                         " has no DPT in the map; give one: send GA DPT VALUE");
    }
    return KNXDPT{0, dpt->main, dpt->sub};
}

std::uint16_t GroupAddressArgument(const std::string& text)
{
    const boost::optional<std::uint16_t> address = ParseGroupAddress(text);
    if (!address)
    {
        throw UsageError("GA: expected a group address MAIN/MIDDLE/SUB (0-31/0-7/0-255) or MAIN/SUB (0-31/0-2047), got " +
                         Quote(text));
    }
    return *address;
}

int Send(const std::string& url, std::uint16_t groupAddress, const std::vector<std::uint8_t>& apdu)
{
    InstallStopHandlers();
    try
    {
        KnxdConnection connection(url, true);
        connection.Send(groupAddress, apdu);
    }
    catch (const KnxdError& error)
    {
        std::cerr << "tavknx send: " << error.what() << "\n";
        return kExitRefused;
    }
    return kExitDone;
}

std::chrono::milliseconds TimeoutOption(const Invocation& invocation)
{
    if (!invocation.options.count("timeout"))
    {
        return std::chrono::seconds(3);
    }
    const std::uint64_t seconds = ParseUnsigned(invocation.options["timeout"].as<std::string>(), 3600, "--timeout");
    if (seconds == 0)
    {
        throw UsageError("--timeout: expected a number of seconds from 1 to 3600, got '0'");
    }
    return std::chrono::seconds(seconds);
}

// --read GA [DPT]: the read request, then the first response to GA, printed as the monitor
// prints it (decoded where a DPT is known). Exit 1 when none came in time.
int ReadRequest(const Invocation& invocation, const std::string& url)
{
    invocation.RequireArgs(1, 2, "GA [DPT]");
    const std::uint16_t groupAddress = GroupAddressArgument(invocation.args[0]);
    const std::chrono::milliseconds timeout = TimeoutOption(invocation);
    GroupAddressMap map;
    if (invocation.args.size() == 2 || invocation.options.count("map"))
    {
        if (invocation.args.size() == 2)
        {
            map.Set(groupAddress, ParseDpt(invocation.args[1]));
        }
        else
        {
            map = LoadMapOption(invocation, log4cplus::Logger::getInstance("tavknx.send"), LogFile::SendCommand, 1);
        }
    }
    const std::string ga = FormatGroupAddressLike(groupAddress, invocation.args[0]);
    InstallStopHandlers();
    using Clock = std::chrono::steady_clock;
    try
    {
        // Listening before the request goes out, so that a quick answer is not missed.
        KnxdConnection connection(url, false);
        connection.Send(groupAddress, MakeReadApdu());
        const Clock::time_point deadline = Clock::now() + timeout;
        TelegramReporter reporter(map);
        while (!StopRequested() && Clock::now() < deadline)
        {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
            GroupTelegram telegram;
            if (connection.Receive(std::min(left, std::chrono::milliseconds(200)), telegram) &&
                telegram.kind == TelegramKind::Response && telegram.destination == groupAddress)
            {
                invocation.Out() << reporter.Report(telegram, std::chrono::system_clock::now(), invocation.json) << "\n";
                return kExitDone;
            }
        }
    }
    catch (const KnxdError& error)
    {
        std::cerr << "tavknx send: " << error.what() << "\n";
        return kExitRefused;
    }
    std::cerr << "tavknx send: no response to the read request of " << ga << " within "
              << std::chrono::duration_cast<std::chrono::seconds>(timeout).count() << " s\n";
    return kExitRefused;
}

int RunSend(const Invocation& invocation)
{
    const std::string url = KnxdUrl(invocation);
    if (invocation.options.count("read"))
    {
        return ReadRequest(invocation, url);
    }

    const bool mapped = invocation.options.count("map") != 0;
    invocation.RequireArgs(mapped ? 2 : 3, 3, mapped ? "GA [DPT] VALUE" : "GA DPT VALUE");
    const std::uint16_t groupAddress = GroupAddressArgument(invocation.args[0]);
    const KNXDPT dpt = DptArgument(invocation, groupAddress);
    const OKAVALUE value = ParseValue(invocation.args.back(), dpt);
    const boost::optional<KnxStack::GroupValue> groupValue = Okaro::OkaValueToGroupValue(value, PackDpt(dpt));
    if (!groupValue)
    {
        PrintRefusal(dpt, invocation.json, invocation.Out());
        return kExitRefused;
    }
    // Checked before sending: with --strict nothing goes on the bus.
    const CodecVerdict verdict = CheckCodec(invocation, "send", dpt, value, *groupValue);
    if (verdict == CodecVerdict::Refused)
    {
        return kExitRefused;
    }
    const int code = Send(url, groupAddress, MakeWriteApdu(*groupValue));
    if (code == kExitDone)
    {
        const std::string ga = FormatGroupAddressLike(groupAddress, invocation.args[0]);
        JsonObject object = GroupValueResultJson(dpt, *groupValue);
        object.Add("ga", ga).Add("kind", "write");
        if (verdict == CodecVerdict::Clamped)
        {
            object.Add("clamped", true);
        }
        invocation.Out() << (invocation.json ? object.Str() : ga + " write " + GroupValueResultText(dpt, *groupValue))
                         << "\n";
    }
    return code;
}
} // namespace

void AddSendCommand(std::vector<Command>& commands)
{
    commands.push_back({"send", "send [--url URL] [--strict] GA DPT VALUE | send [--url URL] --map FILE GA VALUE | send [--url URL] --read GA [DPT] [--timeout S]",
                        "send a group write (or a read request) through knxd",
                        "Encodes VALUE for DPT with the switch-driven codec (OkaValueToGroupValue) and sends it\n"
                        "as a group write to GA through knxd; a value of up to 6 bits goes in the short form.\n"
                        "With --map (a map file or an ETS project) the DPT may be left out: the group address's\n"
                        "DPT in the map is taken. --read sends a read request instead and waits (--timeout, default\n"
                        "3 s) for the first response to GA, printed as the monitor prints it: decoded with the DPT\n"
                        "argument or the map's, raw without; exit 1 when none came. Exit 1 when the codec\n"
                        "refuses the value or knxd cannot be reached (stderr says which). A value the codec clamps\n"
                        "(or writes as DPT 9's invalid code) is sent with a WARN on stderr and \"clamped\":true in\n"
                        "JSON; --strict refuses it and sends nothing.\n\n"
                        "Examples:\n"
                        "  tavknx send 1/2/3 9.001 21.5\n"
                        "  tavknx send 1/2/3 1.001 on\n"
                        "  tavknx send --url local:/tmp/knx 1/1/1 1.001 bool:true --json\n"
                        "  tavknx send --map installation.knxproj 1/0/0 bool:true\n"
                        "  tavknx send --read 1/2/3 9.001 --timeout 5\n",
                        AddSendOptions, RunSend});
}
} // namespace TavKnx
