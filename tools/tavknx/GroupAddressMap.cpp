#include "GroupAddressMap.h"

#include <stdexcept>

namespace TavKnx
{
GroupAddressMap GroupAddressMap::Parse(const std::string&, std::vector<MapProblem>&)
{
    return GroupAddressMap();  // placeholder until the map parser lands
}

GroupAddressMap GroupAddressMap::Load(const std::string& path, std::vector<MapProblem>&)
{
    throw std::runtime_error("map file " + path + ": not supported yet");
}

const KNXDPT* GroupAddressMap::Find(std::uint16_t groupAddress) const
{
    const auto found = entries_.find(groupAddress);
    return found == entries_.end() ? nullptr : &found->second;
}
} // namespace TavKnx
