#include "bridge/Bridge.h"

#include "bridge/DiscoveryConfigs.h"
#include "bridge/SetPayload.h"
#include "cli/StopSignal.h"
#include "knx/DptText.h"
#include "knx/Json.h"
#include "knx/KnxAddress.h"
#include "knx/TextError.h"

#include <platform/Logging.h>

#include <poll.h>

#include <algorithm>

namespace TavKnx
{
namespace
{
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

namespace LogFile
{
constexpr char Bridge[] = "Bridge.cpp";
} // namespace LogFile

// The loop sleeps in poll(2) on knxd's socket and the session's wake pipe together; at least
// this often it looks at Ctrl-C and the reconnect schedules.
constexpr milliseconds kLongestWait{200};
// knxd is tried again after 100 ms, then after twice as long each time, at most 5 s.
constexpr milliseconds kFirstRetry{100};
constexpr milliseconds kLongestRetry{5000};
// How long the way out waits for the broker to take "offline".
constexpr milliseconds kGoodbyeWait{2000};

log4cplus::Logger BridgeLogger()
{
    return log4cplus::Logger::getInstance("tavknx.bridge");
}

std::string Cut(const std::string& payload)
{
    return payload.size() > 200 ? payload.substr(0, 200) + "..." : payload;
}
} // namespace

Bridge::Bridge(const GroupAddressMap& map, BridgeOptions options)
    : map_(map), options_(std::move(options)), topics_(options_.prefix), states_(map_, topics_), retry_(kFirstRetry)
{
    if (!options_.discoveryPrefix.empty())
    {
        discovery_ = DiscoveryConfigs(map_, topics_, options_.discoveryPrefix, DiscoveryNodeId(options_.mqtt.clientId));
    }
    options_.mqtt.willTopic = topics_.Status();
    options_.mqtt.subscriptions = {topics_.SetFilter(), topics_.ReadFilter()};
    options_.mqtt.onConnect = [this] { OnBrokerConnect(); };
}

void Bridge::OnBrokerConnect()
{
    // On every connect: a broker without persistence has forgotten the retained messages.
    session_->Publish({topics_.Status(), "online", true});
    for (const MqttMessage& config : discovery_)
    {
        session_->Publish(config);
    }
}

int Bridge::Run()
{
    session_ = std::make_unique<MqttSession>(options_.mqtt);
    try
    {
        ConnectKnxd();
    }
    catch (const KnxdError& error)
    {
        TAV_LOG_AT(BridgeLogger(), log4cplus::WARN_LOG_LEVEL, LogFile::Bridge, 80,
                   error.what() << "; trying again, at most every " << kLongestRetry.count() / 1000 << " s");
        nextAttempt_ = Clock::now() + retry_;
    }
    session_->Start();
    // Scripts wait for this line before they put telegrams on the bus.
    TAV_LOG_AT(BridgeLogger(), log4cplus::INFO_LOG_LEVEL, LogFile::Bridge, 86,
               "bridging knxd at '" << options_.knxdUrl << "' and MQTT under '" << topics_.Prefix() << "/', "
                                    << map_.Size() << " mapped group addresses, " << discovery_.size()
                                    << " discovery configs");
    while (!StopRequested())
    {
        session_->KeepTrying();
        if (!knxd_)
        {
            ReconnectKnxd();
        }
        Wait();
        if (knxd_)
        {
            ReceiveFromKnxd();
        }
        MqttMessage command;
        while (session_->Receive(milliseconds(0), command))
        {
            HandleCommand(command);
        }
    }
    session_->Stop({topics_.Status(), "offline", true}, kGoodbyeWait);
    TAV_LOG_AT(BridgeLogger(), log4cplus::INFO_LOG_LEVEL, LogFile::Bridge, 106, "stopped");
    return 0;
}

void Bridge::Wait()
{
    pollfd descriptors[2] = {{session_->WakeFd(), POLLIN, 0}, {-1, POLLIN, 0}};
    nfds_t count = 1;
    milliseconds wait = kLongestWait;
    if (knxd_)
    {
        descriptors[count++].fd = knxd_->Descriptor();
    }
    else
    {
        wait = std::max(milliseconds(0),
                        std::min(wait, std::chrono::duration_cast<milliseconds>(nextAttempt_ - Clock::now())));
    }
    // A signal (Ctrl-C) ends the wait early; an error is found out by the reads after it.
    poll(descriptors, count, static_cast<int>(wait.count()));
}

void Bridge::ReceiveFromKnxd()
{
    GroupTelegram telegram;
    try
    {
        // A burst is taken whole before the broker's side is looked at again.
        for (int i = 0; i < 256 && knxd_->Receive(milliseconds(0), telegram); ++i)
        {
            MqttMessage message;
            if (states_.Build(telegram, std::chrono::system_clock::now(), message))
            {
                session_->Publish(message);
            }
        }
    }
    catch (const KnxdError& error)
    {
        TAV_LOG_AT(BridgeLogger(), log4cplus::WARN_LOG_LEVEL, LogFile::Bridge, 126,
                   error.what() << "; trying again, at most every " << kLongestRetry.count() / 1000 << " s");
        DropKnxd();
        retry_ = kFirstRetry;
        attempts_ = 0;
        nextAttempt_ = Clock::now() + retry_;
    }
}

void Bridge::ConnectKnxd()
{
    auto listening = std::make_unique<KnxdConnection>(options_.knxdUrl, false);
    knxdSend_ = std::make_unique<KnxdConnection>(options_.knxdUrl, true);
    knxd_ = std::move(listening);
}

void Bridge::DropKnxd()
{
    knxd_.reset();
    knxdSend_.reset();
}

void Bridge::ReconnectKnxd()
{
    if (Clock::now() < nextAttempt_)
    {
        return;
    }
    ++attempts_;
    try
    {
        ConnectKnxd();
        TAV_LOG_AT(BridgeLogger(), log4cplus::WARN_LOG_LEVEL, LogFile::Bridge, 145,
                   "connected to knxd at '" << options_.knxdUrl << "' again after " << attempts_ << " attempt"
                                            << (attempts_ == 1 ? "" : "s"));
    }
    catch (const KnxdError& error)
    {
        retry_ = std::min(retry_ * 2, kLongestRetry);
        nextAttempt_ = Clock::now() + retry_;
        TAV_LOG_AT(BridgeLogger(), log4cplus::INFO_LOG_LEVEL, LogFile::Bridge, 153,
                   error.what() << "; next attempt in " << retry_.count() << " ms");
    }
}

void Bridge::Refuse(std::uint16_t groupAddress, const std::string& payload, const std::string& reason)
{
    const std::string topic = topics_.Set(groupAddress);
    TAV_LOG_AT(BridgeLogger(), log4cplus::WARN_LOG_LEVEL, LogFile::Bridge, 161,
               "'" << topic << "' " << Quote(payload) << " not sent: " << reason);
    session_->Publish({topics_.Error(groupAddress),
                       JsonObject().Add("topic", topic).Add("payload", Cut(payload)).Add("error", reason).Str(), false});
}

void Bridge::HandleCommand(const MqttMessage& message)
{
    const boost::optional<CommandTopic> command = topics_.ParseCommand(message.topic);
    if (!command)
    {
        return;  // the filters let through only well-formed topics; anything else is not ours
    }
    std::vector<std::uint8_t> apdu;
    if (command->kind == CommandKind::Read)
    {
        apdu = MakeReadApdu();
    }
    else
    {
        const KNXDPT* dpt = map_.Find(command->groupAddress);
        if (dpt == nullptr)
        {
            Refuse(command->groupAddress, message.payload,
                   FormatGroupAddress(command->groupAddress) + " has no DPT in the map");
            return;
        }
        try
        {
            apdu = MakeWriteApdu(EncodeSetPayload(message.payload, *dpt));
        }
        catch (const SetPayloadError& error)
        {
            Refuse(command->groupAddress, message.payload, error.what());
            return;
        }
    }
    if (!knxd_)
    {
        Refuse(command->groupAddress, message.payload, "knxd at '" + options_.knxdUrl + "' is not connected");
        return;
    }
    try
    {
        knxdSend_->Send(command->groupAddress, apdu);
    }
    catch (const KnxdError& error)
    {
        Refuse(command->groupAddress, message.payload, error.what());
        DropKnxd();
        retry_ = kFirstRetry;
        attempts_ = 0;
        nextAttempt_ = Clock::now() + retry_;
    }
}
} // namespace TavKnx
