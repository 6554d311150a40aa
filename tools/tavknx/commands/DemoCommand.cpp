// demo: the library's main walk on sample telegrams. Each telegram is decoded by both
// conversion paths, then its value is written to an in-process device stack with the
// blocking messenger and read back; the stack drops the first answer, so one request shows
// a time-out and a retry.
#include "cli/Output.h"
#include "commands/Commands.h"
#include "knx/DptText.h"
#include "knx/HexText.h"
#include "knx/TelegramFile.h"
#include "knx/ValueText.h"

#include <TavObjectModel/DscAsyncRequestMessenger.h>
#include <TavObjectModel/GroupValueOkaValue.h>
#include <TavObjectModel/KnxLdsMapping.h>
#include <TavObjectModel/KnxValueConverter.h>
#include <TavObjectModel/RequestMessengerDeviceStack.h>
#include <platform/LocalDeviceStackClient.h>

#include <boost/filesystem/operations.hpp>
#include <boost/program_options.hpp>

#include <log4cplus/logger.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <iomanip>
#include <ostream>
#include <sstream>

namespace po = boost::program_options;

namespace TavKnx
{
namespace
{
const int kTimeoutMs = 300;
const std::uint32_t kRetries = 2;

void AddDemoOptions(po::options_description& options)
{
    options.add_options()("telegrams", po::value<std::string>()->value_name("FILE"),
                          "sample telegrams to use (default: the installed examples/telegrams.txt)");
}

std::string FindTelegramFile(const Invocation& invocation)
{
    if (invocation.options.count("telegrams"))
    {
        return invocation.options["telegrams"].as<std::string>();
    }
    boost::system::error_code error;
    // Installed next to the binary's prefix, where the build put it, or in the source tree.
    const boost::filesystem::path exe = boost::filesystem::read_symlink("/proc/self/exe", error);
    const boost::filesystem::path candidates[] = {
        exe.parent_path().parent_path() / "share" / "tavobjectmodel" / "telegrams.txt",
        TAVKNX_INSTALLED_TELEGRAMS,
        TAVKNX_SOURCE_TELEGRAMS,
    };
    for (const boost::filesystem::path& candidate : candidates)
    {
        if (boost::filesystem::is_regular_file(candidate, error))
        {
            return candidate.string();
        }
    }
    throw UsageError("cannot find the sample telegrams (telegrams.txt); give --telegrams FILE");
}

std::vector<SampleTelegram> ReadTelegramFile(const std::string& file)
{
    std::ifstream in(file);
    if (!in)
    {
        throw UsageError("--telegrams: cannot read '" + file + "'");
    }
    return ReadTelegrams(in, file);
}

// `text` padded to `width`; a longer one still gets two blanks, so it never runs into the next.
std::string Column(const std::string& text, std::size_t width)
{
    return text + std::string(text.size() + 2 > width ? 2 : width - text.size(), ' ');
}

// The outcome of one conversion path, for both output forms.
struct PathResult
{
    boost::optional<OKAVALUE> value;
    std::string exception;

    std::string Text() const
    {
        if (value)
        {
            std::ostringstream text;
            text << OKAVALUE::GetNameFromValueType(value->type) << " " << ValueText(*value) << " ("
                 << static_cast<int>(value->type) << "/" << static_cast<int>(value->subType) << ")";
            return text.str();
        }
        return exception.empty() ? "refused" : "exception: " + exception;
    }

    std::string Json(const std::string& dpt) const
    {
        JsonObject object;
        if (!value)
        {
            object.Add("ok", false);
            if (!exception.empty())
            {
                object.Add("exception", exception);
            }
            return object.Str();
        }
        object.Add("ok", true).Add("dpt", dpt);
        AddValueFields(object, *value);
        return object.Str();
    }
};

KnxStack::GroupValue MakeGroupValue(const SampleTelegram& telegram)
{
    return KnxStack::GroupValue(
        KnxStack::BinaryData(telegram.bytes.data(), static_cast<unsigned int>(telegram.bytes.size())), telegram.bits);
}

PathResult DecodeSwitchDriven(const SampleTelegram& telegram)
{
    PathResult result;
    try
    {
        result.value = Okaro::GroupValueToOkaValue(MakeGroupValue(telegram), PackDpt(telegram.dpt));
    }
    catch (const std::exception& error)
    {
        // Calendar errors pass through this path on purpose; the demo shows them and goes on.
        result.exception = error.what();
    }
    return result;
}

PathResult DecodeTableDriven(Okaro::KnxValueConverter& converter, const SampleTelegram& telegram, KNXDPT& dpt)
{
    PathResult result;
    dpt = telegram.dpt;
    dpt.size = static_cast<std::uint8_t>(telegram.bits > 255 ? 0 : telegram.bits);
    OKAVALUE value;
    if (converter.FromKnxValue(dpt, MakeGroupValue(telegram), value))
    {
        result.value = value;
    }
    return result;
}

std::string DocketText(const Okaro::Docket& docket)
{
    std::ostringstream text;
    text << "answered " << (docket.IsAnswered() ? "yes" : "no") << ", valid " << (docket.IsReplyValid() ? "yes" : "no")
         << ", reply " << JsonString(docket.ReadReply());
    if (!docket.ReadDeliveryError().empty())
    {
        text << ", error " << JsonString(docket.ReadDeliveryError());
    }
    return text.str();
}

std::string DocketJson(const Okaro::Docket& docket)
{
    return JsonObject()
        .Add("answered", docket.IsAnswered())
        .Add("replyValid", docket.IsReplyValid())
        .Add("reply", docket.ReadReply())
        .Add("deliveryError", docket.ReadDeliveryError())
        .Str();
}

struct ValueToWrite
{
    std::size_t number;  // 1-based, also the CO number it is written to
    OKAVALUE value;
};

std::vector<ValueToWrite> DecodeAll(const std::vector<SampleTelegram>& telegrams, bool json, std::ostream& out)
{
    Okaro::KnxValueConverter converter;
    std::vector<ValueToWrite> values;
    if (!json)
    {
        out << "Each telegram decoded by both paths:\n"
            << "  switch-driven: GroupValueToOkaValue(group value, packed DPT)\n"
            << "  table-driven:  KnxValueConverter::FromKnxValue(KNXDPT, group value, value)\n"
            << "  values are shown as: type value (type code/sub-type)\n\n"
            << std::left << std::setw(4) << " #" << std::setw(8) << "DPT" << std::setw(30) << "HEX" << std::setw(6)
            << "bits" << std::setw(42) << "switch-driven" << "table-driven\n";
    }
    for (std::size_t i = 0; i < telegrams.size(); ++i)
    {
        const SampleTelegram& telegram = telegrams[i];
        const PathResult switchResult = DecodeSwitchDriven(telegram);
        KNXDPT tableDpt{};
        const PathResult tableResult = DecodeTableDriven(converter, telegram, tableDpt);
        const std::string hex = FormatHex(telegram.bytes);
        if (json)
        {
            out << JsonObject()
                       .Add("telegram", static_cast<std::uint64_t>(i + 1))
                       .Add("dpt", FormatDpt(telegram.dpt))
                       .Add("hex", hex)
                       .Add("bits", static_cast<std::uint64_t>(telegram.bits))
                       .Add("comment", telegram.comment)
                       .AddRaw("switch", switchResult.Json(FormatDpt(telegram.dpt)))
                       .AddRaw("table", tableResult.Json(FormatDpt(tableDpt)))
                       .Str()
                << "\n";
        }
        else
        {
            out << std::setw(4) << std::right << i + 1 << std::left << "  " << telegram.comment << "\n"
                << "    " << std::setw(8) << FormatKnxDpt(telegram.dpt) << std::setw(30) << (hex.empty() ? "-" : hex)
                << std::setw(6) << telegram.bits << Column(switchResult.Text(), 42) << tableResult.Text() << "\n";
        }
        if (switchResult.value)
        {
            values.push_back({i + 1, *switchResult.value});
        }
        else if (tableResult.value)
        {
            values.push_back({i + 1, *tableResult.value});
        }
    }
    return values;
}

void WriteAndReadBack(const std::vector<ValueToWrite>& values, bool json, std::ostream& out)
{
    Lumo::LocalDeviceStackClient client;
    // The first answer gets lost, as on a busy bus: the messenger waits out its time-out and
    // sends the request again.
    std::atomic<bool> dropped{false};
    client.SetAnswerPlanner([&dropped](const Lumo::LocalDeviceStackClient::RequestInfo&) {
        Lumo::LocalDeviceStackClient::AnswerPlan plan;
        plan.latency = std::chrono::milliseconds(1);
        plan.drop = !dropped.exchange(true);
        return plan;
    });
    Okaro::RemoteRequestMessengerDeviceStack remote(client);
    Okaro::DscAsyncRequestMessenger messenger(remote, boost::posix_time::milliseconds(kTimeoutMs), kRetries,
                                              log4cplus::Logger::getInstance("tavknx.demo"));
    messenger.SetAsResponseHandler();
    if (!json)
    {
        out << "\nEach value written to the in-process device stack with DscAsyncRequestMessenger::SetValue\n"
            << "and read back with GetValue (time-out " << kTimeoutMs << " ms, " << kRetries << " retries; the stack\n"
            << "drops the first answer):\n";
    }
    const Okaro::LogicalDeviceId ld(1);
    for (const ValueToWrite& entry : values)
    {
        const boost::optional<unsigned long> id =
            Okaro::KnxLdsMapping::GetCoValueObjModelId(static_cast<unsigned short>(entry.number), ld);
        if (!id)
        {
            continue;
        }
        const std::uint64_t droppedBefore = client.GetCounters().answersDropped;
        const auto start = std::chrono::steady_clock::now();
        const Okaro::Docket set = messenger.SetValue(*id, entry.value, false);
        const auto elapsedMs =
            std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start).count();
        const std::uint64_t droppedNow = client.GetCounters().answersDropped - droppedBefore;
        const Okaro::Docket get = messenger.GetValue(*id, false);
        if (json)
        {
            out << JsonObject()
                       .Add("telegram", static_cast<std::uint64_t>(entry.number))
                       .Add("id", static_cast<std::uint64_t>(*id))
                       .Add("droppedAnswers", droppedNow)
                       .AddRaw("setValue", DocketJson(set))
                       .AddRaw("getValue", DocketJson(get))
                       .Str()
                << "\n";
            continue;
        }
        out << std::setw(4) << std::right << entry.number << std::left << "  CO " << entry.number << " value, id " << *id
            << ": " << DescribeValue(entry.value) << "\n"
            << "      SetValue docket: " << DocketText(set) << "\n";
        if (droppedNow > 0)
        {
            out << "      (the answer was dropped: the request timed out after " << kTimeoutMs
                << " ms and was sent again; " << elapsedMs << " ms in all)\n";
        }
        out << "      GetValue docket: " << DocketText(get) << "\n";
    }
    messenger.UnsetAsResponseHandler();
}

int RunDemo(const Invocation& invocation)
{
    invocation.RequireArgs(0, 0, "no arguments");
    const std::string file = FindTelegramFile(invocation);
    const std::vector<SampleTelegram> telegrams = ReadTelegramFile(file);
    if (!invocation.json)
    {
        invocation.Out() << "tavknx demo: " << telegrams.size() << " sample telegrams from " << file << "\n"
                         << "(log lines of refusals and time-outs go to stderr)\n\n";
    }
    const std::vector<ValueToWrite> values = DecodeAll(telegrams, invocation.json, invocation.Out());
    WriteAndReadBack(values, invocation.json, invocation.Out());
    return kExitDone;
}
} // namespace

void AddDemoCommand(std::vector<Command>& commands)
{
    commands.push_back({"demo", "demo [--telegrams FILE]",
                        "decode sample telegrams both ways, write them to a local device stack and read them back",
                        "Runs the library's main walk on sample telegrams (examples/telegrams.txt: one telegram\n"
                        "a line, \"DPT HEX [BITS] [# comment]\"). Each telegram is decoded by GroupValueToOkaValue\n"
                        "and by KnxValueConverter::FromKnxValue, side by side; each value is then written to an\n"
                        "in-process device stack with DscAsyncRequestMessenger::SetValue and read back with\n"
                        "GetValue, with the dockets shown. The stack drops the first answer, so the first\n"
                        "request shows a time-out and a retry.\n\n"
                        "Examples:\n"
                        "  tavknx demo\n"
                        "  tavknx demo --telegrams my-telegrams.txt --log-level info\n"
                        "  tavknx demo --json\n",
                        AddDemoOptions, RunDemo});
}
} // namespace TavKnx
