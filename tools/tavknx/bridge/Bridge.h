#pragma once
// The bridge between knxd and an MQTT broker: telegrams from the bus become state messages,
// messages on PREFIX/GA/set and PREFIX/GA/read become group writes and reads. The broker and
// knxd are reconnected independently: either may go away while the other carries on.
#include "bridge/BridgeTopics.h"
#include "bridge/MqttSession.h"
#include "bridge/StatePayload.h"
#include "knx/GroupAddressMap.h"
#include "knxd/KnxdConnection.h"

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace TavKnx
{
struct BridgeOptions
{
    std::string knxdUrl;
    std::string prefix = "knx";
    std::string discoveryPrefix;  // no discovery when empty
    MqttOptions mqtt;              // the will, subscriptions and connect hook are the bridge's
};

class Bridge
{
public:
    Bridge(const GroupAddressMap& map, BridgeOptions options);

    // Runs until StopRequested(); publishes "offline" on the way out. Returns the exit code.
    int Run();

    // One command from the broker: a group write or read, or an answer on PREFIX/GA/error.
    void HandleCommand(const MqttMessage& message);

private:
    void OnBrokerConnect();
    void Wait();
    void ReceiveFromKnxd();
    void ReconnectKnxd();
    void ConnectKnxd();
    void DropKnxd();
    void Refuse(std::uint16_t groupAddress, const std::string& payload, const std::string& reason);

    const GroupAddressMap& map_;
    BridgeOptions options_;
    BridgeTopics topics_;
    StatePayloads states_;
    std::vector<MqttMessage> discovery_;
    std::unique_ptr<MqttSession> session_;
    // Two connections: what the bridge sends comes back on the listening one like any other
    // client's telegram, so its own writes reach the state topics too.
    std::unique_ptr<KnxdConnection> knxd_;
    std::unique_ptr<KnxdConnection> knxdSend_;
    std::chrono::milliseconds retry_;
    std::chrono::steady_clock::time_point nextAttempt_;
    unsigned attempts_ = 0;
};
} // namespace TavKnx
