#pragma once
// Home Assistant's MQTT discovery: one retained config per group address with a DPT, under
// DISCOVERY/<component>/<node>/<object>/config. The node is the bridge's client id, the object
// the group address ("ga_1_2_3"), so unique ids stay the same across restarts.
#include "bridge/BridgeTopics.h"
#include "bridge/StatePayload.h"
#include "knx/GroupAddressMap.h"

#include <string>
#include <vector>

namespace TavKnx
{
// The client id as a discovery node id: letters, digits, '_' and '-' kept, anything else '_'.
std::string DiscoveryNodeId(const std::string& clientId);

// The configs for every address of the map with a DPT, in address order.
std::vector<MqttMessage> DiscoveryConfigs(const GroupAddressMap& map, const BridgeTopics& topics,
                                          const std::string& discoveryPrefix, const std::string& nodeId);
} // namespace TavKnx
