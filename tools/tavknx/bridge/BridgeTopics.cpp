#include "bridge/BridgeTopics.h"

#include "knx/KnxAddress.h"
#include "knx/TextError.h"

#include <algorithm>

namespace TavKnx
{
std::string BridgeTopics::Of(std::uint16_t groupAddress, const char* leaf) const
{
    return prefix_ + "/" + FormatGroupAddress(groupAddress) + "/" + leaf;
}

std::string BridgeTopics::Raw(std::uint16_t groupAddress) const
{
    return prefix_ + "/raw/" + FormatGroupAddress(groupAddress);
}

boost::optional<CommandTopic> BridgeTopics::ParseCommand(const std::string& topic) const
{
    if (topic.size() <= prefix_.size() + 1 || topic.compare(0, prefix_.size(), prefix_) != 0 ||
        topic[prefix_.size()] != '/')
    {
        return boost::none;
    }
    const std::string rest = topic.substr(prefix_.size() + 1);
    const std::string::size_type leaf = rest.rfind('/');
    if (leaf == std::string::npos)
    {
        return boost::none;
    }
    const std::string command = rest.substr(leaf + 1);
    CommandKind kind;
    if (command == "set")
    {
        kind = CommandKind::Set;
    }
    else if (command == "read")
    {
        kind = CommandKind::Read;
    }
    else
    {
        return boost::none;
    }
    // Three levels only: the topics the bridge publishes are always written so.
    const std::string address = rest.substr(0, leaf);
    if (std::count(address.begin(), address.end(), '/') != 2)
    {
        return boost::none;
    }
    const boost::optional<std::uint16_t> groupAddress = ParseGroupAddress(address);
    if (!groupAddress)
    {
        return boost::none;
    }
    return CommandTopic{*groupAddress, kind};
}

std::string CheckTopicPrefix(const std::string& prefix, const char* what)
{
    const bool emptyLevel = prefix.empty() || prefix.front() == '/' || prefix.back() == '/' ||
                            prefix.find("//") != std::string::npos;
    if (emptyLevel || prefix.find_first_of("+#") != std::string::npos || prefix.find('\0') != std::string::npos)
    {
        throw TextError(std::string(what) + ": expected topic levels without wildcards or empty levels (for example knx), got " +
                        Quote(prefix));
    }
    return prefix;
}
} // namespace TavKnx
