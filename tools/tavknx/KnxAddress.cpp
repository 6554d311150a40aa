#include "KnxAddress.h"

namespace TavKnx
{
std::string FormatGroupAddress(std::uint16_t address)
{
    return std::to_string(address >> 11) + "/" + std::to_string((address >> 8) & 0x07) + "/" +
           std::to_string(address & 0xFF);
}

std::string FormatIndividualAddress(std::uint16_t address)
{
    return std::to_string(address >> 12) + "." + std::to_string((address >> 8) & 0x0F) + "." +
           std::to_string(address & 0xFF);
}

boost::optional<std::uint16_t> ParseGroupAddress(const std::string&)
{
    return boost::none;  // placeholder until the map parser lands
}
} // namespace TavKnx
