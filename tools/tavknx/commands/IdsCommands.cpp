// ids: make object-model ids (device, co-channel, co-value, parameter), take one apart
// (describe), and look up what the object model uses for a DPT (dpt).
#include "cli/Output.h"
#include "commands/Commands.h"
#include "knx/DptText.h"
#include "knx/NumberText.h"

#include <TavObjectModel/KnxLdsMapping.h>

#include <boost/algorithm/string/case_conv.hpp>

#include <ostream>

namespace TavKnx
{
namespace
{
using Okaro::KnxLdsMapping;
using Okaro::LogicalDeviceId;

LogicalDeviceId ParseLd(const std::string& text)
{
    if (text != "1" && text != "2")
    {
        throw UsageError("LD: expected the logical device, 1 or 2, got '" + text.substr(0, 40) + "'");
    }
    return LogicalDeviceId(text[0] - '0');
}

Okaro::ParameterType ParseParameterType(const std::string& text)
{
    const std::string lower = boost::algorithm::to_lower_copy(text);
    if (lower == "ip" || lower == "0")
    {
        return Okaro::ptIpParameter;
    }
    if (lower == "number" || lower == "1")
    {
        return Okaro::ptNumberParameter;
    }
    if (lower == "text" || lower == "2")
    {
        return Okaro::ptTextParameter;
    }
    throw UsageError("TYPE: expected ip, number or text (or 0, 1, 2), got '" + text.substr(0, 40) + "'");
}

const char* ParameterTypeName(std::uint32_t type)
{
    static const char* const names[] = {"ip", "number", "text"};
    return type < 3 ? names[type] : "unknown";
}

unsigned short ParseCo(const std::string& text, const char* what)
{
    return static_cast<unsigned short>(ParseUnsigned(text, 65535, what));
}

// Prints "name: id" lines, or the ids added to `object` (which starts with "ok"); a missing
// id is a refusal.
// The library logs nothing when it has no id, so the refusal says why itself: `limit` names
// the number range that has ids.
int PrintIds(const Invocation& invocation, JsonObject object, const std::string& textPrefix,
             const std::vector<std::pair<std::string, boost::optional<unsigned long>>>& ids, const char* limit = "")
{
    for (const auto& id : ids)
    {
        if (!id.second)
        {
            PrintRefusal(textPrefix, "ids", std::string("no object-model id") + limit, invocation.json,
                         invocation.Out());
            return kExitRefused;
        }
    }
    if (invocation.json)
    {
        for (const auto& id : ids)
        {
            object.Add(id.first, static_cast<std::uint64_t>(*id.second));
        }
        invocation.Out() << object.Str() << "\n";
        return kExitDone;
    }
    for (const auto& id : ids)
    {
        invocation.Out() << textPrefix << " " << id.first << ": " << *id.second << "\n";
    }
    return kExitDone;
}

int RunDevice(const Invocation& invocation)
{
    invocation.RequireArgs(2, 2, "device LD");
    const LogicalDeviceId ld = ParseLd(invocation.args[1]);
    return PrintIds(invocation, JsonObject().Add("ok", true).Add("ld", ld.Get()), "ld " + std::to_string(ld.Get()),
                    {{"device", KnxLdsMapping::GetKnxDeviceObjModelId()},
                     {"logicalDevice", KnxLdsMapping::GetLogicalKnxDeviceObjModelId(ld)},
                     {"deviceChannel", KnxLdsMapping::GetLdsKnxDeviceChannelObjModelId(ld)},
                     {"appControlChannel", KnxLdsMapping::GetAppHostAppControlChannelObjModelId(ld)},
                     {"appControlState", KnxLdsMapping::GetAppHostAppControlStateObjModelId(ld)},
                     {"appControlEvent", KnxLdsMapping::GetAppHostAppControlEventObjModelId(ld)},
                     {"appControlAlive", KnxLdsMapping::GetAppHostAppControlAliveObjModelId(ld)},
                     {"appControlAppDebug", KnxLdsMapping::GetAppHostAppControlAppDebugObjModelId(ld)}});
}

int RunCo(const Invocation& invocation)
{
    invocation.RequireArgs(3, 3, (invocation.args.at(0) + " CO LD").c_str());
    const unsigned short co = ParseCo(invocation.args[1], "CO");
    const LogicalDeviceId ld = ParseLd(invocation.args[2]);
    const bool channel = invocation.args[0] == "co-channel";
    const auto id = channel ? KnxLdsMapping::GetCoChannelObjModelId(co, ld) : KnxLdsMapping::GetCoValueObjModelId(co, ld);
    return PrintIds(invocation, JsonObject().Add("ok", true).Add("co", static_cast<unsigned>(co)).Add("ld", ld.Get()),
                    "co " + std::to_string(co) + " ld " + std::to_string(ld.Get()), {{"id", id}},
                    ": CO numbers go up to 520");
}

int RunParameter(const Invocation& invocation)
{
    invocation.RequireArgs(4, 4, "parameter N LD TYPE");
    const unsigned short n = ParseCo(invocation.args[1], "N");
    const LogicalDeviceId ld = ParseLd(invocation.args[2]);
    const Okaro::ParameterType type = ParseParameterType(invocation.args[3]);
    return PrintIds(invocation,
                    JsonObject().Add("ok", true).Add("n", static_cast<unsigned>(n)).Add("ld", ld.Get()).Add("parameterType",
                                                                                            ParameterTypeName(type)),
                    "parameter " + std::to_string(n) + " ld " + std::to_string(ld.Get()) + " " + ParameterTypeName(type),
                    {{"channel", KnxLdsMapping::GetParameterChannelObjModelId(n, ld, type)},
                     {"value", KnxLdsMapping::GetParameterValueObjModelId(n, ld, type)}},
                    ": parameter numbers go up to 50");
}

// What an id is, from the predicates and extractors of KnxLdsMapping.
int RunDescribe(const Invocation& invocation)
{
    invocation.RequireArgs(2, 2, "describe ID");
    const auto id = static_cast<std::uint32_t>(ParseUnsigned(invocation.args[1], 4294967295u, "ID"));
    JsonObject object;
    object.Add("ok", true).Add("id", static_cast<std::uint64_t>(id));
    std::string kind = "unknown";
    std::string text = "not an object-model id of the KNX side";
    const boost::optional<LogicalDeviceId> ld = KnxLdsMapping::GetLogicalDeviceIdFromObject(id);
    if (id == KnxLdsMapping::GetKnxDeviceObjModelId())
    {
        kind = "device";
        text = "the KNX device";
    }
    else if (ld)
    {
        const std::string ldText = " of logical device " + std::to_string(ld->Get());
        const std::uint32_t r = id % 100000u;
        auto describeCo = [&](const char* what, std::uint32_t co) {
            object.Add("ld", ld->Get()).Add("co", co);
            text = std::string(what) + " of CO " + std::to_string(co) + ldText;
        };
        auto describeParameter = [&](const char* what, std::uint32_t channel) {
            const std::uint32_t s = channel % 100000u - 60000u;
            const std::uint32_t type = s / 1000u;
            const std::uint32_t n = s % 1000u / 10u;
            object.Add("ld", ld->Get()).Add("n", n).Add("parameterType", ParameterTypeName(type));
            text = std::string(what) + " of " + ParameterTypeName(type) + " parameter " + std::to_string(n) + ldText;
        };
        if (id == KnxLdsMapping::GetLogicalKnxDeviceObjModelId(*ld))
        {
            kind = "logical-device";
            object.Add("ld", ld->Get());
            text = "logical device " + std::to_string(ld->Get());
        }
        else if (id == KnxLdsMapping::GetLdsKnxDeviceChannelObjModelId(*ld))
        {
            kind = "device-channel";
            object.Add("ld", ld->Get());
            text = "device channel" + ldText;
        }
        else if (id == KnxLdsMapping::GetAppHostAppControlChannelObjModelId(*ld))
        {
            kind = "app-control-channel";
            object.Add("ld", ld->Get());
            text = "app control channel" + ldText;
        }
        else if (KnxLdsMapping::IsAppHostAppControlState(id, *ld) || KnxLdsMapping::IsAppHostAppControlEvent(id, *ld) ||
                 KnxLdsMapping::IsAppHostAppControlAliveHeartbeat(id, *ld) ||
                 KnxLdsMapping::IsAppHostAppControlAppDebug(id, *ld))
        {
            static const char* const kinds[] = {"app-control-state", "app-control-event", "app-control-alive",
                                                "app-control-app-debug"};
            static const char* const texts[] = {"app control state", "app control event", "app control alive heartbeat",
                                                "app control app debug flag"};
            const std::uint32_t index = r - 21u;
            kind = kinds[index];
            object.Add("ld", ld->Get());
            text = texts[index] + ldText;
        }
        else if (KnxLdsMapping::IsCoChannel(id))
        {
            kind = "co-channel";
            describeCo("channel", r / 100u);
        }
        else if (KnxLdsMapping::IsCoValue(id))
        {
            kind = "co-value";
            describeCo("value", *KnxLdsMapping::GetCoNumberFromObjModelId(id, *ld));
        }
        else if (KnxLdsMapping::IsParameterChannel(id))
        {
            kind = "parameter-channel";
            describeParameter("channel", id);
        }
        else if (KnxLdsMapping::IsParameterChannel(id - 1u))
        {
            kind = "parameter-value";
            describeParameter("value", id - 1u);
        }
    }
    object.Add("kind", kind);
    if (invocation.json)
    {
        invocation.Out() << object.Str() << "\n";
    }
    else
    {
        invocation.Out() << id << ": " << text << "\n";
    }
    return kExitDone;
}

int RunDpt(const Invocation& invocation)
{
    invocation.RequireArgs(2, 2, "dpt DPT");
    const KNXDPT dpt = ParseDpt(invocation.args[1]);
    const std::uint32_t packed = PackDpt(dpt);
    const OkaValueType type = KnxLdsMapping::GetIvtFromDpt(packed);
    const boost::optional<std::string> defaultValue = KnxLdsMapping::GetDefaultValueFromDpt(packed, false);
    const boost::optional<std::string> defaultInternal = KnxLdsMapping::GetDefaultValueFromDpt(packed, true);
    if (invocation.json)
    {
        JsonObject object;
        object.Add("ok", true)
            .Add("dpt", FormatDpt(dpt))
            .Add("ivt", static_cast<int>(type))
            .Add("type", KnxLdsMapping::GetIvtFromMainType(dpt.main))
            .Add("subType", KnxLdsMapping::GetIstFromMainType(dpt.main));
        defaultValue ? object.Add("default", *defaultValue) : object.AddNull("default");
        defaultInternal ? object.Add("defaultInternal", *defaultInternal) : object.AddNull("defaultInternal");
        invocation.Out() << object.Str() << "\n";
    }
    else
    {
        invocation.Out() << FormatKnxDpt(dpt) << ": value type " << KnxLdsMapping::GetIvtFromMainType(dpt.main) << " ("
                         << static_cast<int>(type) << "), sub-type " << KnxLdsMapping::GetIstFromMainType(dpt.main)
                         << ", default " << (defaultValue ? "'" + *defaultValue + "'" : std::string("(none)"))
                         << ", internal form " << (defaultInternal ? "'" + *defaultInternal + "'" : std::string("(none)"))
                         << "\n";
    }
    return kExitDone;
}

int RunIds(const Invocation& invocation)
{
    const std::string sub = invocation.args.empty() ? std::string() : invocation.args[0];
    if (sub == "device")
    {
        return RunDevice(invocation);
    }
    if (sub == "co-channel" || sub == "co-value")
    {
        return RunCo(invocation);
    }
    if (sub == "parameter")
    {
        return RunParameter(invocation);
    }
    if (sub == "describe")
    {
        return RunDescribe(invocation);
    }
    if (sub == "dpt")
    {
        return RunDpt(invocation);
    }
    throw UsageError((sub.empty() ? std::string("expected a subcommand") : "unknown subcommand '" + sub.substr(0, 40) + "'") +
                     ": device, co-channel, co-value, parameter, describe or dpt");
}
} // namespace

void AddIdsCommand(std::vector<Command>& commands)
{
    commands.push_back(
        {"ids", "ids SUBCOMMAND ARGS", "make, take apart and look up object-model ids (KnxLdsMapping)",
         "Subcommands (LD is the logical device, 1 or 2):\n"
         "  ids device LD              the device's ids: logical device, device channel, app control\n"
         "  ids co-channel CO LD       the channel id of communication object CO (1-520)\n"
         "  ids co-value CO LD         the value id of communication object CO\n"
         "  ids parameter N LD TYPE    channel and value id of parameter N (1-50);\n"
         "                             TYPE ip, number or text (0, 1, 2)\n"
         "  ids describe ID            what an id is (CO channel or value, parameter, app control, ...)\n"
         "  ids dpt DPT                value type, sub-type and default value the object model uses\n"
         "Ids that do not exist (CO above 520, N above 50) are refused (exit 1).\n\n"
         "Examples:\n"
         "  tavknx ids co-value 1 1                co 1 ld 1 id: 100101\n"
         "  tavknx ids parameter 3 2 number --json\n"
         "  tavknx ids describe 261031\n"
         "  tavknx ids dpt 9.001\n",
         nullptr, RunIds});
}
} // namespace TavKnx
