#pragma once
// What the bridge publishes for a group telegram from the bus: on a mapped address the decoded
// value as JSON on PREFIX/GA/state (retained), on any other the bytes on PREFIX/raw/GA.
#include "bridge/BridgeTopics.h"
#include "knx/GroupAddressMap.h"
#include "knx/GroupTelegram.h"

#include <TavObjectModel/KnxValueConverter.h>

#include <chrono>
#include <string>

namespace TavKnx
{
struct MqttMessage
{
    std::string topic;
    std::string payload;
    bool retain = false;
};

class StatePayloads
{
public:
    StatePayloads(const GroupAddressMap& map, const BridgeTopics& topics) : map_(map), topics_(topics) {}

    // False for telegrams that carry no value (reads, other services): nothing is published.
    // A value that does not decode is still published, with "ok":false and the reason.
    bool Build(const GroupTelegram& telegram, std::chrono::system_clock::time_point received, MqttMessage& message);

    // {"ok":true,"value":21.0,"dpt":"9.1","ivt":3,"type":"Float","hex":"0c1a","source":"1.1.5",
    //  "time":"...","name":"..."}, decoded by GroupValueToOkaValue; "table" holds the table-driven
    // FromKnxValue's result where it differs.
    std::string State(const GroupTelegram& telegram, const KNXDPT& dpt, std::chrono::system_clock::time_point received);
    // {"kind":"write","hex":"0c1a","source":"1.1.5","time":"..."}
    static std::string Raw(const GroupTelegram& telegram, std::chrono::system_clock::time_point received);

private:
    const GroupAddressMap& map_;
    const BridgeTopics& topics_;
    Okaro::KnxValueConverter converter_;
};
} // namespace TavKnx
