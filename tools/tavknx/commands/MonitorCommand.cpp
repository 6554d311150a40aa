// monitor: every group telegram on the bus, through knxd, decoded as the controller's
// applications would see it.
#include "cli/KnxdUrlOption.h"
#include "cli/MapOption.h"
#include "cli/ProjectOptions.h"
#include "cli/StopSignal.h"
#include "commands/Commands.h"
#include "knx/GroupAddressFilter.h"
#include "knx/GroupAddressMap.h"
#include "knx/NumberText.h"
#include "knx/TelegramReport.h"
#include "knxd/KnxdConnection.h"

#include <platform/Logging.h>

#include <boost/program_options.hpp>

#include <algorithm>
#include <iostream>
#include <memory>
#include <thread>
#include <vector>

namespace po = boost::program_options;

namespace TavKnx
{
namespace
{
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// Waits are short so that Ctrl-C and the time-out are seen at once.
constexpr milliseconds kLongestWait{200};
// Reconnecting: the first attempt comes soon, then the pause doubles up to this bound.
constexpr milliseconds kFirstRetry{100};
constexpr milliseconds kLongestRetry{5000};

namespace LogFile
{
// The monitor's events keep their published origin wherever its code sits.
constexpr char MonitorCommand[] = "MonitorCommand.cpp";
} // namespace LogFile

log4cplus::Logger MonitorLogger()
{
    return log4cplus::Logger::getInstance("tavknx.monitor");
}

void AddMonitorOptions(po::options_description& options)
{
    AddKnxdUrlOption(options);
    options.add_options()
        ("map", po::value<std::string>()->value_name("FILE"), kMapOptionHelp)
        ("count", po::value<std::string>()->value_name("N"), "stop after N telegrams")
        ("timeout", po::value<std::string>()->value_name("SECONDS"), "stop after SECONDS")
        ("filter", po::value<std::vector<std::string>>()->value_name("GA")->composing(),
         "show only GA: 1/2/3, a middle group 1/2/*, a main group 1/*; repeatable");
    AddProjectPasswordOption(options);
}

// Sleeps for `pause` or until a stop is asked for or the deadline comes.
void Pause(milliseconds pause, Clock::time_point deadline)
{
    const Clock::time_point end = std::min(Clock::now() + pause, deadline);
    while (!StopRequested() && Clock::now() < end)
    {
        std::this_thread::sleep_for(std::min(kLongestWait, std::chrono::duration_cast<milliseconds>(end - Clock::now())));
    }
}

class Monitor
{
public:
    Monitor(const Invocation& invocation, const GroupAddressMap& map)
        : invocation_(invocation), url_(KnxdUrl(invocation)), reporter_(map)
    {
        if (invocation.options.count("count"))
        {
            count_ = ParseUnsigned(invocation.options["count"].as<std::string>(), 0xFFFFFFFFu, "--count");
            if (count_ == 0)
            {
                throw UsageError("--count: expected a number of telegrams from 1 on, got '0'");
            }
        }
        if (invocation.options.count("filter"))
        {
            for (const std::string& pattern : invocation.options["filter"].as<std::vector<std::string>>())
            {
                filter_.Add(pattern);
            }
        }
        deadline_ = Clock::time_point::max();
        if (invocation.options.count("timeout"))
        {
            const std::uint64_t seconds =
                ParseUnsigned(invocation.options["timeout"].as<std::string>(), 31u * 24 * 3600, "--timeout");
            if (seconds == 0)
            {
                throw UsageError("--timeout: expected a number of seconds from 1 on, got '0'");
            }
            deadline_ = Clock::now() + std::chrono::seconds(seconds);
        }
    }

    int Run()
    {
        try
        {
            connection_ = std::make_unique<KnxdConnection>(url_, false);
        }
        catch (const KnxdError& error)
        {
            std::cerr << "tavknx monitor: " << error.what() << "\n";
            return kExitRefused;
        }
        // Scripts wait for this line before they put telegrams on the bus.
        TAV_LOG_AT(MonitorLogger(), log4cplus::INFO_LOG_LEVEL, LogFile::MonitorCommand, 123, "listening to knxd at '" << url_ << "'");
        while (!StopRequested() && !Done() && Clock::now() < deadline_)
        {
            if (connection_)
            {
                ReceiveOne();
            }
            else
            {
                Reconnect();
            }
        }
        if (count_ != 0 && printed_ < count_ && !StopRequested() && invocation_.Out())
        {
            std::cerr << "tavknx monitor: time-out with " << printed_ << " of " << count_ << " telegrams\n";
            return kExitRefused;
        }
        return kExitDone;
    }

private:
    bool Done() const { return (count_ != 0 && printed_ >= count_) || !invocation_.Out(); }

    void ReceiveOne()
    {
        const auto left = std::chrono::duration_cast<milliseconds>(deadline_ - Clock::now());
        GroupTelegram telegram;
        try
        {
            if (!connection_->Receive(std::min(kLongestWait, left), telegram))
            {
                return;
            }
        }
        catch (const KnxdError& error)
        {
            TAV_LOG_AT(MonitorLogger(), log4cplus::WARN_LOG_LEVEL, LogFile::MonitorCommand, 159,
                    error.what() << "; trying again, at most every " << kLongestRetry.count() / 1000 << " s");
            connection_.reset();
            retry_ = kFirstRetry;
            attempts_ = 0;
            return;
        }
        // Filtered out: not shown, not counted.
        if (!filter_.Matches(telegram.destination))
        {
            return;
        }
        invocation_.Out() << reporter_.Report(telegram, std::chrono::system_clock::now(), invocation_.json) << "\n"
                          << std::flush;
        ++printed_;
    }

    void Reconnect()
    {
        Pause(retry_, deadline_);
        if (StopRequested() || Clock::now() >= deadline_)
        {
            return;
        }
        ++attempts_;
        try
        {
            connection_ = std::make_unique<KnxdConnection>(url_, false);
            TAV_LOG_AT(MonitorLogger(), log4cplus::WARN_LOG_LEVEL, LogFile::MonitorCommand, 182,
                    "connected to knxd at '" << url_ << "' again after " << attempts_ << " attempt"
                                             << (attempts_ == 1 ? "" : "s"));
        }
        catch (const KnxdError& error)
        {
            retry_ = std::min(retry_ * 2, kLongestRetry);
            TAV_LOG_AT(MonitorLogger(), log4cplus::INFO_LOG_LEVEL, LogFile::MonitorCommand, 189,
                    error.what() << "; next attempt in " << retry_.count() << " ms");
        }
    }

    const Invocation& invocation_;
    const std::string url_;
    TelegramReporter reporter_;
    GroupAddressFilter filter_;
    std::unique_ptr<KnxdConnection> connection_;
    std::uint64_t count_ = 0;
    std::uint64_t printed_ = 0;
    Clock::time_point deadline_;
    milliseconds retry_ = kFirstRetry;
    unsigned attempts_ = 0;
};

int RunMonitor(const Invocation& invocation)
{
    invocation.RequireArgs(0, 0, "");
    const GroupAddressMap map = LoadMapOption(invocation, MonitorLogger(), LogFile::MonitorCommand, 68);
    Monitor monitor(invocation, map);
    InstallStopHandlers();
    return monitor.Run();
}
} // namespace

void AddMonitorCommand(std::vector<Command>& commands)
{
    commands.push_back(
        {"monitor", "monitor [--url URL] [--map FILE] [--password-file FILE] [--filter GA]... [--count N] [--timeout SECONDS]",
         "print the group telegrams on the bus through knxd, decoded by both paths",
         "Connects to knxd, opens its group socket and prints one line per group telegram: time (UTC),\n"
         "source, group address, kind (write, read, response), the value's bytes and bits and, where\n"
         "the map gives the group address a DPT, the value decoded by GroupValueToOkaValue (codec) and by\n"
         "the table-driven FromKnxValue (table). A short value (up to 6 bits) arrives with size 6.\n"
         "The map may be an ETS project (.knxproj): its group addresses' DPTs, and their names, which\n"
         "follow the group address in quotes (JSON: \"name\"). Its password as for the project command.\n"
         "A telegram that does not decode is printed as refused; the library's log lines say why.\n"
         "When knxd goes away the monitor says so, tries again (at most every 5 s) and carries on.\n"
         "--filter shows only the telegrams to one group address (1/2/3), a middle group (1/2/*) or a\n"
         "main group (1/*); repeated, any of them; others are neither shown nor counted.\n"
         "Ends after --count telegrams, after --timeout seconds (exit 1 when --count was not reached),\n"
         "or on Ctrl-C. Exit 1 also when knxd cannot be reached at the start.\n\n"
         "Examples:\n"
         "  tavknx monitor --map groups.txt\n"
         "  tavknx monitor --url ip:192.168.1.10 --map export.csv --json\n"
         "  TAVKNX_PROJECT_PASSWORD=secret tavknx monitor --map installation.knxproj\n"
         "  tavknx monitor --url local:/tmp/knx --count 10 --timeout 30\n"
         "  tavknx monitor --map groups.txt --filter 2/0/* --filter 1/1/1\n",
         AddMonitorOptions, RunMonitor});
}
} // namespace TavKnx
