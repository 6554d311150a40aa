#include "bridge/DiscoveryConfigs.h"

#include "bridge/DiscoveryTable.h"
#include "knx/Json.h"
#include "knx/KnxAddress.h"

#include <cstring>

namespace TavKnx
{
namespace
{
std::string ObjectId(std::uint16_t groupAddress)
{
    std::string text = "ga_" + FormatGroupAddress(groupAddress);
    for (char& c : text)
    {
        c = c == '/' ? '_' : c;
    }
    return text;
}

bool Is(const char* text, const char* expected)
{
    return std::strcmp(text, expected) == 0;
}

std::string Config(std::uint16_t groupAddress, const std::string* name, const BridgeTopics& topics,
                   const std::string& nodeId, const DiscoveryEntity& entity)
{
    const std::string object = ObjectId(groupAddress);
    const std::string ga = FormatGroupAddress(groupAddress);
    JsonObject config;
    config.Add("name", name != nullptr ? *name : "KNX " + ga)
        .Add("unique_id", nodeId + "_" + object)
        .Add("object_id", nodeId + "_" + object)
        .Add("availability_topic", topics.Status())
        .Add("payload_available", "online")
        .Add("payload_not_available", "offline")
        .Add("state_topic", topics.State(groupAddress));
    const bool onOff = Is(entity.component, "switch") || Is(entity.component, "binary_sensor");
    if (onOff)
    {
        // The state's JSON true or false as the entity's ON and OFF.
        config.Add("value_template", "{{ 'ON' if value_json.value else 'OFF' }}");
    }
    else if (Is(entity.component, "number"))
    {
        // The codec gives a percentage (5.001) as its byte, 0 to 255; the entity shows 0 to 100.
        config.Add("value_template", "{{ (value_json.value * 100 / 255) | round(0) | int }}");
    }
    else
    {
        config.Add("value_template", "{{ value_json.value }}");
    }
    if (Is(entity.component, "switch"))
    {
        config.Add("state_on", "ON").Add("state_off", "OFF");
    }
    else if (Is(entity.component, "binary_sensor"))
    {
        config.Add("payload_on", "ON").Add("payload_off", "OFF");
    }
    if (entity.command)
    {
        config.Add("command_topic", topics.Set(groupAddress));
        if (Is(entity.component, "switch"))
        {
            config.Add("payload_on", "true").Add("payload_off", "false");
        }
        else if (Is(entity.component, "number"))
        {
            config.Add("command_template", "{{ (value * 255 / 100) | round(0) | int }}")
                .Add("min", 0)
                .Add("max", 100)
                .Add("step", 1);
        }
        else if (Is(entity.component, "text"))
        {
            // A DPT 16 value is at most 14 characters.
            config.Add("max", 14);
        }
    }
    if (entity.deviceClass[0] != '\0')
    {
        config.Add("device_class", entity.deviceClass);
    }
    if (entity.unit[0] != '\0')
    {
        config.Add("unit_of_measurement", entity.unit);
    }
    if (Is(entity.component, "sensor") && entity.unit[0] != '\0')
    {
        config.Add("state_class", "measurement");
    }
    const std::string device = JsonObject()
                                   .AddRaw("identifiers", "[" + JsonString(nodeId) + "]")
                                   .Add("name", "KNX (" + nodeId + ")")
                                   .Add("manufacturer", "tavknx bridge")
                                   .Str();
    config.AddRaw("device", device).Add("json_attributes_topic", topics.State(groupAddress));
    return config.Str();
}
} // namespace

std::string DiscoveryNodeId(const std::string& clientId)
{
    std::string node = clientId.empty() ? std::string("tavknx") : clientId;
    for (char& c : node)
    {
        const bool kept = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-';
        c = kept ? c : '_';
    }
    return node;
}

std::vector<MqttMessage> DiscoveryConfigs(const GroupAddressMap& map, const BridgeTopics& topics,
                                          const std::string& discoveryPrefix, const std::string& nodeId)
{
    std::vector<MqttMessage> configs;
    map.ForEach([&](std::uint16_t groupAddress, const KNXDPT& dpt) {
        if (dpt.main == 0 && dpt.sub == 0)
        {
            return;
        }
        const DiscoveryEntity entity = DiscoveryEntityFor(dpt);
        configs.push_back({discoveryPrefix + "/" + entity.component + "/" + nodeId + "/" + ObjectId(groupAddress) + "/config",
                           Config(groupAddress, map.FindName(groupAddress), topics, nodeId, entity), true});
    });
    return configs;
}
} // namespace TavKnx
