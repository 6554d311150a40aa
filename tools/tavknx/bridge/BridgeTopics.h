#pragma once
// The bridge's MQTT topics. A group address is three topic levels ("knx/1/2/3/state"), so
// that subscribers can take a main or middle group with a wildcard ("knx/1/#").
#include <boost/optional.hpp>

#include <cstdint>
#include <string>

namespace TavKnx
{
enum class CommandKind
{
    Set,   // PREFIX/GA/set: a group write of the payload
    Read,  // PREFIX/GA/read: a group read
};

struct CommandTopic
{
    std::uint16_t groupAddress;
    CommandKind kind;
};

class BridgeTopics
{
public:
    // `prefix` without a trailing '/'; it may itself have levels ("site/knx").
    explicit BridgeTopics(std::string prefix) : prefix_(std::move(prefix)) {}

    const std::string& Prefix() const { return prefix_; }
    // PREFIX/status: "online" while the bridge runs, "offline" as its last will.
    std::string Status() const { return prefix_ + "/status"; }
    // PREFIX/1/2/3/state, PREFIX/1/2/3/set, ...
    std::string State(std::uint16_t groupAddress) const { return Of(groupAddress, "state"); }
    std::string Set(std::uint16_t groupAddress) const { return Of(groupAddress, "set"); }
    std::string Read(std::uint16_t groupAddress) const { return Of(groupAddress, "read"); }
    std::string Error(std::uint16_t groupAddress) const { return Of(groupAddress, "error"); }
    // PREFIX/raw/1/2/3: telegrams on addresses the map does not name.
    std::string Raw(std::uint16_t groupAddress) const;
    // The filters the bridge subscribes to: PREFIX/+/+/+/set and PREFIX/+/+/+/read.
    std::string SetFilter() const { return prefix_ + "/+/+/+/set"; }
    std::string ReadFilter() const { return prefix_ + "/+/+/+/read"; }

    // The group address and command of PREFIX/M/M/S/set or .../read; nothing for any other
    // topic, levels out of range included.
    boost::optional<CommandTopic> ParseCommand(const std::string& topic) const;

private:
    std::string Of(std::uint16_t groupAddress, const char* leaf) const;

    std::string prefix_;
};

// A topic prefix as --prefix and --discovery take it: not empty, no wildcards ('+', '#'), no
// empty level, no leading or trailing '/'. Throws TextError naming `what`.
std::string CheckTopicPrefix(const std::string& prefix, const char* what);
} // namespace TavKnx
