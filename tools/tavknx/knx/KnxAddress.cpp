#include "knx/KnxAddress.h"

#include <algorithm>

#include <vector>

namespace TavKnx
{
namespace
{
// At most five digits a level: enough for 2047 with leading zeros, and no number overflows.
constexpr std::size_t kMaxLevelDigits = 5;

boost::optional<std::uint32_t> ParseLevel(const std::string& text, std::uint32_t max)
{
    if (text.empty() || text.size() > kMaxLevelDigits)
    {
        return boost::none;
    }
    std::uint32_t value = 0;
    for (char c : text)
    {
        if (c < '0' || c > '9')
        {
            return boost::none;
        }
        value = value * 10 + static_cast<std::uint32_t>(c - '0');
    }
    if (value > max)
    {
        return boost::none;
    }
    return value;
}
} // namespace

std::string FormatGroupAddress(std::uint16_t address)
{
    return std::to_string(address >> 11) + "/" + std::to_string((address >> 8) & 0x07) + "/" +
           std::to_string(address & 0xFF);
}

std::string FormatTwoLevelGroupAddress(std::uint16_t address)
{
    return std::to_string(address >> 11) + "/" + std::to_string(address & 0x7FF);
}

std::string FormatGroupAddressLike(std::uint16_t address, const std::string& written)
{
    return std::count(written.begin(), written.end(), '/') == 1 ? FormatTwoLevelGroupAddress(address)
                                                                : FormatGroupAddress(address);
}

std::string FormatIndividualAddress(std::uint16_t address)
{
    return std::to_string(address >> 12) + "." + std::to_string((address >> 8) & 0x0F) + "." +
           std::to_string(address & 0xFF);
}

boost::optional<std::uint16_t> ParseGroupAddress(const std::string& text)
{
    // Three levels at most: stop splitting at the third slash, so huge text costs nothing.
    std::vector<std::string> levels;
    std::string::size_type begin = 0;
    while (levels.size() < 4)
    {
        const std::string::size_type slash = text.find('/', begin);
        levels.push_back(text.substr(begin, slash == std::string::npos ? std::string::npos : slash - begin));
        if (slash == std::string::npos)
        {
            break;
        }
        begin = slash + 1;
    }
    if (levels.size() == 3)
    {
        const auto main = ParseLevel(levels[0], 31);
        const auto middle = ParseLevel(levels[1], 7);
        const auto sub = ParseLevel(levels[2], 255);
        if (main && middle && sub)
        {
            return static_cast<std::uint16_t>(*main << 11 | *middle << 8 | *sub);
        }
    }
    else if (levels.size() == 2)
    {
        const auto main = ParseLevel(levels[0], 31);
        const auto sub = ParseLevel(levels[1], 2047);
        if (main && sub)
        {
            return static_cast<std::uint16_t>(*main << 11 | *sub);
        }
    }
    return boost::none;
}
} // namespace TavKnx
