#include "knx/GroupAddressFilter.h"

#include "knx/KnxAddress.h"
#include "knx/NumberText.h"
#include "knx/TextError.h"

namespace TavKnx
{
void GroupAddressFilter::Add(const std::string& pattern, const char* what)
{
    const std::string expected = std::string(what) +
                                 ": expected a group address (1/2/3, 1/1024), a middle group (1/2/*), a main group "
                                 "(1/*) or *, got " +
                                 Quote(pattern);
    if (pattern == "*")
    {
        ranges_.push_back({0, 0xFFFF});
        return;
    }
    const std::string::size_type slash = pattern.find('/');
    const std::string::size_type second = slash == std::string::npos ? slash : pattern.find('/', slash + 1);
    const auto number = [&](const std::string& text, std::uint64_t max) {
        if (!IsDecimalDigits(text) || text.size() > 5 || std::stoul(text) > max)
        {
            throw TextError(expected);
        }
        return static_cast<std::uint16_t>(std::stoul(text));
    };
    if (slash != std::string::npos && pattern.compare(slash + 1, std::string::npos, "*") == 0)
    {
        const std::uint16_t main = number(pattern.substr(0, slash), 31);
        ranges_.push_back({static_cast<std::uint16_t>(main << 11), static_cast<std::uint16_t>((main << 11) | 0x7FF)});
        return;
    }
    if (second != std::string::npos && pattern.compare(second + 1, std::string::npos, "*") == 0)
    {
        const std::uint16_t main = number(pattern.substr(0, slash), 31);
        const std::uint16_t middle = number(pattern.substr(slash + 1, second - slash - 1), 7);
        const auto first = static_cast<std::uint16_t>((main << 11) | (middle << 8));
        ranges_.push_back({first, static_cast<std::uint16_t>(first | 0xFF)});
        return;
    }
    const boost::optional<std::uint16_t> address = ParseGroupAddress(pattern);
    if (!address)
    {
        throw TextError(expected);
    }
    ranges_.push_back({*address, *address});
}

bool GroupAddressFilter::Matches(std::uint16_t groupAddress) const
{
    if (ranges_.empty())
    {
        return true;
    }
    for (const Range& range : ranges_)
    {
        if (groupAddress >= range.first && groupAddress <= range.last)
        {
            return true;
        }
    }
    return false;
}
} // namespace TavKnx
