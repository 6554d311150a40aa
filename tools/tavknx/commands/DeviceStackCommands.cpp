// get, set, device: the controller's objects on a live bus through the device stack on knxd
// (Lumo::KnxdDeviceStackClient). get and set are the library's blocking requests
// (DscAsyncRequestMessenger over RemoteRequestMessengerDeviceStack), with its time-out, retries
// and log lines.
#include "cli/KnxdUrlOption.h"
#include "cli/Output.h"
#include "cli/ObjectsOption.h"
#include "cli/StopSignal.h"
#include "cli/ValueArgument.h"
#include "commands/Commands.h"
#include "knx/DptText.h"
#include "knx/KnxAddress.h"
#include "knx/KnxTerms.h"
#include "knx/NumberText.h"
#include "knx/TextError.h"
#include "knx/ValueText.h"

#include <TavObjectModel/DscAsyncRequestMessenger.h>
#include <TavObjectModel/RequestMessengerDeviceStack.h>
#include <devicestack/KnxdDeviceStackClient.h>

#include <boost/program_options.hpp>
#include <log4cplus/loggingmacros.h>

#include <chrono>
#include <iostream>
#include <mutex>
#include <thread>

namespace po = boost::program_options;

namespace TavKnx
{
namespace
{
using Lumo::DeviceObject;
using Lumo::KnxdDeviceStackClient;

constexpr char kDefaultTimeout[] = "2";
constexpr std::uint32_t kDefaultRetries = 2;
// Longer runs are a mistake: a day.
constexpr std::uint64_t kMaxMilliseconds = 24u * 3600u * 1000u;

log4cplus::Logger Log(const Invocation& invocation)
{
    return log4cplus::Logger::getInstance("tavknx." + invocation.command);
}

// "2", "0.5", "1.250": seconds with up to three decimals, more than 0. Throws UsageError.
std::chrono::milliseconds ParseSeconds(const std::string& text, const char* what)
{
    const std::string::size_type dot = text.find('.');
    const std::string whole = text.substr(0, dot);
    std::string fraction = dot == std::string::npos ? std::string() : text.substr(dot + 1);
    const std::string expected = std::string(what) + ": expected seconds from 0.001 to 86400, got " + Quote(text);
    if (!IsDecimalDigits(whole) || (dot != std::string::npos && (!IsDecimalDigits(fraction) || fraction.size() > 3)))
    {
        throw UsageError(expected);
    }
    fraction.resize(3, '0');
    if (whole.size() > 6)
    {
        throw UsageError(expected);
    }
    const std::uint64_t milliseconds = std::stoull(whole) * 1000u + std::stoull(fraction);
    if (milliseconds == 0 || milliseconds > kMaxMilliseconds)
    {
        throw UsageError(expected);
    }
    return std::chrono::milliseconds(milliseconds);
}

void AddObjectCommandOptions(po::options_description& options)
{
    AddKnxdUrlOption(options);
    AddObjectsOptions(options);
    options.add_options()
        ("timeout", po::value<std::string>()->value_name("SECONDS"), "time-out of one attempt (default 2)")
        ("retries", po::value<std::string>()->value_name("N"), "attempts after the first (default 2)");
}

void AddDeviceOptions(po::options_description& options)
{
    AddKnxdUrlOption(options);
    AddObjectsOptions(options);
    options.add_options()("timeout", po::value<std::string>()->value_name("SECONDS"), "stop after SECONDS");
}

// The object a CO number or the sending group address of exactly one object names.
const DeviceObject& FindObject(const std::vector<DeviceObject>& objects, const std::string& text)
{
    if (IsDecimalDigits(text))
    {
        const std::uint64_t co = ParseUnsigned(text, 0xFFFFu, "CO");
        for (const DeviceObject& object : objects)
        {
            if (object.co == co)
            {
                return object;
            }
        }
        throw UsageError("CO: no object has number " + text);
    }
    const boost::optional<std::uint16_t> address = ParseGroupAddress(text);
    if (!address)
    {
        throw UsageError("CO: expected an object number or a group address, got " + Quote(text));
    }
    const DeviceObject* found = nullptr;
    for (const DeviceObject& object : objects)
    {
        if (object.groupAddresses.front() == *address)
        {
            if (found != nullptr)
            {
                throw UsageError("CO: " + text + " is the sending address of more than one object; give the CO");
            }
            found = &object;
        }
    }
    if (found == nullptr)
    {
        throw UsageError("CO: " + text + " is the sending address of no object");
    }
    return *found;
}

JsonObject& AddObjectFields(JsonObject& fields, const DeviceObject& object)
{
    return fields.Add("co", static_cast<unsigned>(object.co))
        .Add("id", static_cast<std::uint64_t>(Lumo::ObjectValueId(object.co)))
        .Add("ga", FormatGroupAddress(object.groupAddresses.front()))
        .Add("dpt", FormatDpt(object.dpt));
}

std::string ObjectText(const DeviceObject& object)
{
    return "CO " + std::to_string(object.co) + (object.name.empty() ? "" : " " + object.name) + " (" +
           FormatGroupAddress(object.groupAddresses.front()) + " " + DptLabel(object.dpt) + ")";
}

// Prints the docket; exit 1 unless it holds a readable value.
int PrintDocket(const Invocation& invocation, const DeviceObject& object, const Okaro::Docket& docket)
{
    std::string error;
    OKAVALUE value;
    if (!docket.IsAnswered())
    {
        error = "no answer";
    }
    else if (!docket.IsReplyValid())
    {
        error = docket.ReadDeliveryError();
    }
    else if (!value.Deserialize(oka_string(docket.ReadReply().data(), docket.ReadReply().size())))
    {
        error = "unreadable answer " + Quote(docket.ReadReply());
    }
    if (!error.empty())
    {
        invocation.Out() << (invocation.json ? JsonObject()
                                                   .Add("ok", false)
                                                   .Add("co", static_cast<unsigned>(object.co))
                                                   .Add("error", error)
                                                   .Str()
                                             : ObjectText(object) + ": failed: " + error)
                         << "\n";
        return kExitRefused;
    }
    if (invocation.json)
    {
        JsonObject result;
        AddObjectFields(result.Add("ok", true), object);
        AddValueFields(result, value);
        invocation.Out() << result.Str() << "\n";
    }
    else
    {
        invocation.Out() << ObjectText(object) << ": " << DescribeValueInKnxTerms(object.dpt, value) << "\n";
    }
    return kExitDone;
}

// One blocking request through the library's messenger; the docket printed.
template <typename Request>
int RunRequest(const Invocation& invocation, const DeviceObject& object, const std::vector<DeviceObject>& objects,
               Request request)
{
    const std::chrono::milliseconds timeout = ParseSeconds(
        invocation.options.count("timeout") ? invocation.options["timeout"].as<std::string>() : kDefaultTimeout,
        "--timeout");
    const std::uint32_t retries =
        invocation.options.count("retries")
            ? static_cast<std::uint32_t>(ParseUnsigned(invocation.options["retries"].as<std::string>(), 100, "--retries"))
            : kDefaultRetries;
    InstallStopHandlers();
    KnxdDeviceStackClient::Settings settings;
    // The messenger's time-out and retries decide; the stack's own read time-out outlasts them.
    settings.readTimeout = timeout * (retries + 1) + std::chrono::seconds(1);
    KnxdDeviceStackClient client(KnxdUrl(invocation), objects, settings);
    Okaro::RemoteRequestMessengerDeviceStack messenger(client);
    Okaro::DscAsyncRequestMessenger requests(messenger, boost::posix_time::milliseconds(timeout.count()), retries,
                                             Log(invocation));
    requests.SetAsResponseHandler();
    const Okaro::Docket docket = request(requests, Lumo::ObjectValueId(object.co));
    requests.UnsetAsResponseHandler();
    return PrintDocket(invocation, object, docket);
}

int RunGet(const Invocation& invocation)
{
    invocation.RequireArgs(1, 1, "CO");
    const std::vector<DeviceObject> objects = LoadObjectsOption(invocation, Log(invocation), "DeviceStackCommands.cpp", __LINE__);
    const DeviceObject& object = FindObject(objects, invocation.args[0]);
    return RunRequest(invocation, object, objects, [](Okaro::DscAsyncRequestMessenger& requests, unsigned long id) {
        return requests.GetValue(id, false);
    });
}

int RunSet(const Invocation& invocation)
{
    invocation.RequireArgs(2, 2, "CO VALUE");
    const std::vector<DeviceObject> objects = LoadObjectsOption(invocation, Log(invocation), "DeviceStackCommands.cpp", __LINE__);
    const DeviceObject& object = FindObject(objects, invocation.args[0]);
    const OKAVALUE value = ParseValue(invocation.args[1]);
    return RunRequest(invocation, object, objects,
                      [&value](Okaro::DscAsyncRequestMessenger& requests, unsigned long id) {
                          return requests.SetValue(id, value, false);
                      });
}

const char* SourceName(KnxdDeviceStackClient::ChangeSource source)
{
    switch (source)
    {
    case KnxdDeviceStackClient::ChangeSource::Application:
        return "application";
    case KnxdDeviceStackClient::ChangeSource::BusWrite:
        return "write";
    case KnxdDeviceStackClient::ChangeSource::BusResponse:
        break;
    }
    return "response";
}

int RunDevice(const Invocation& invocation)
{
    invocation.RequireArgs(0, 0, "");
    const std::vector<DeviceObject> objects = LoadObjectsOption(invocation, Log(invocation), "DeviceStackCommands.cpp", __LINE__);
    const auto start = std::chrono::steady_clock::now();
    const auto end = invocation.options.count("timeout")
                         ? start + ParseSeconds(invocation.options["timeout"].as<std::string>(), "--timeout")
                         : std::chrono::steady_clock::time_point::max();
    InstallStopHandlers();
    std::mutex outputMutex;
    KnxdDeviceStackClient client(KnxdUrl(invocation), objects);
    client.SetChangeObserver([&](const DeviceObject& object, const OKAVALUE& value,
                                 KnxdDeviceStackClient::ChangeSource source) {
        std::lock_guard<std::mutex> lock(outputMutex);
        if (invocation.json)
        {
            JsonObject line;
            AddObjectFields(line, object).Add("source", SourceName(source));
            AddValueFields(line, value);
            invocation.Out() << line.Str() << "\n";
        }
        else
        {
            invocation.Out() << ObjectText(object) << " " << SourceName(source) << ": "
                             << DescribeValueInKnxTerms(object.dpt, value) << "\n";
        }
        invocation.Out().flush();
    });
    if (!client.IsConnected())
    {
        std::cerr << "tavknx device: cannot reach knxd at '" << KnxdUrl(invocation) << "'\n";
        return kExitRefused;
    }
    LOG4CPLUS_INFO(Log(invocation), "RunDevice - " << objects.size() << " objects on the bus through knxd at '"
                                                   << KnxdUrl(invocation) << "'");
    while (!StopRequested() && std::chrono::steady_clock::now() < end)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    client.SetChangeObserver(nullptr);
    return kExitDone;
}
} // namespace

void AddDeviceStackCommands(std::vector<Command>& commands)
{
// The same paragraph in the three commands' help.
#define TAVKNX_OBJECTS_HELP                                                                      \
    "The objects come from --objects FILE, one object a line 'CO;GA[,GA...];DPT;FLAGS;NAME'\n" \
    "('#' comments; malformed lines are skipped with a warning), or from --project FILE\n"     \
    "--device IA, the communication objects of that device in an ETS project.\n"
    commands.push_back(
        {"get",
         "get [--url URL] (--objects FILE | --project FILE --device IA) [--timeout SECONDS] [--retries N] CO",
         "read a communication object's value through the device stack on knxd",
         "GetValue of the object's value id through the library's blocking messenger: the\n"
                     "value when the stack holds one, else a group read on the object's sending address\n"
                     "and the response. CO is the object's number, or the sending group address of\n"
                     "exactly one object. Each attempt waits --timeout seconds (default 2), --retries\n"
                     "more are made (default 2); the messenger's log lines go to stderr. Exit 1 when\n"
                     "no answer came or the stack answered with an error.\n"
         TAVKNX_OBJECTS_HELP
             "\nExamples:\n"
             "  tavknx get --objects objects.txt 1\n"
             "  tavknx get --url local:/tmp/knx --objects objects.txt --timeout 0.5 --retries 0 1/2/3 --json\n"
             "  tavknx get --project installation.knxproj --device 1.1.5 4\n",
         AddObjectCommandOptions, RunGet});
    commands.push_back(
        {"set",
         "set [--url URL] (--objects FILE | --project FILE --device IA) [--timeout SECONDS] [--retries N] CO VALUE",
         "write a communication object's value through the device stack on knxd",
         "SetValue of the object's value id through the library's blocking messenger: the\n"
                     "stack encodes VALUE (TYPE:TEXT, as encode takes it) by the object's DPT and sends\n"
                     "a group write on its sending address; the object needs the C and T flags. Prints\n"
                     "the stored value as get does; exit 1 when the stack refused (stderr says why).\n"
         TAVKNX_OBJECTS_HELP
             "\nExamples:\n"
             "  tavknx set --objects objects.txt 1 float:21.5\n"
             "  tavknx set --objects objects.txt 1/2/4 bool:true --json\n",
         AddObjectCommandOptions, RunSet});
    commands.push_back(
        {"device", "device [--url URL] (--objects FILE | --project FILE --device IA) [--timeout SECONDS]",
         "run the objects on the bus as a KNX device does",
         "Keeps the objects' values (writes to objects with W, responses to objects with U),\n"
                     "answers group reads on an object's sending address when it has C and R and a value,\n"
                     "and prints each change (text, or with --json one object a line) until Ctrl-C or\n"
                     "--timeout seconds. Exit 1 when knxd cannot be reached at the start.\n"
         TAVKNX_OBJECTS_HELP
             "\nExamples:\n"
             "  tavknx device --objects objects.txt\n"
             "  tavknx device --url local:/tmp/knx --objects objects.txt --timeout 60 --json\n",
         AddDeviceOptions, RunDevice});
}
#undef TAVKNX_OBJECTS_HELP
} // namespace TavKnx
