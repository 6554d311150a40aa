#include <project/ProjectModel.h>

#include <cctype>
#include <sstream>

namespace TavProject
{
const char* GroupAddressStyleName(GroupAddressStyle style)
{
    switch (style)
    {
    case GroupAddressStyle::TwoLevel:
        return "TwoLevel";
    case GroupAddressStyle::Free:
        return "Free";
    case GroupAddressStyle::ThreeLevel:
        break;
    }
    return "ThreeLevel";
}

std::string FormatGroupAddress(std::uint16_t raw, GroupAddressStyle style)
{
    const unsigned value = raw;
    std::ostringstream out;
    switch (style)
    {
    case GroupAddressStyle::TwoLevel:
        out << (value >> 11 & 0x1F) << '/' << (value & 0x7FF);
        break;
    case GroupAddressStyle::Free:
        out << value;
        break;
    case GroupAddressStyle::ThreeLevel:
        out << (value >> 11 & 0x1F) << '/' << (value >> 8 & 0x7) << '/' << (value & 0xFF);
        break;
    }
    return out.str();
}

namespace
{
// A decimal number of at most five digits that fits 16 bits.
boost::optional<std::uint16_t> ParseNumber(const std::string& text)
{
    if (text.empty() || text.size() > 5)
        return boost::none;
    unsigned value = 0;
    for (const char c : text)
    {
        if (!std::isdigit(static_cast<unsigned char>(c)))
            return boost::none;
        value = value * 10 + static_cast<unsigned>(c - '0');
    }
    if (value > 0xFFFF)
        return boost::none;
    return static_cast<std::uint16_t>(value);
}

boost::optional<Dpt> ParseDptToken(const std::string& token)
{
    if (token.compare(0, 5, "DPST-") == 0)
    {
        const std::size_t dash = token.find('-', 5);
        if (dash == std::string::npos)
            return boost::none;
        const auto main = ParseNumber(token.substr(5, dash - 5));
        const auto sub = ParseNumber(token.substr(dash + 1));
        if (!main || !sub)
            return boost::none;
        return Dpt{*main, *sub};
    }
    if (token.compare(0, 4, "DPT-") == 0)
    {
        const auto main = ParseNumber(token.substr(4));
        if (!main)
            return boost::none;
        return Dpt{*main, boost::none};
    }
    return boost::none;
}
} // namespace

boost::optional<Dpt> ParseDatapointType(const std::string& text)
{
    std::istringstream tokens(text);
    std::string token;
    while (tokens >> token)
    {
        if (auto dpt = ParseDptToken(token))
            return dpt;
    }
    return boost::none;
}

bool ObjectFlags::operator==(const ObjectFlags& other) const
{
    return communication == other.communication && read == other.read && write == other.write &&
           transmit == other.transmit && update == other.update && readOnInit == other.readOnInit;
}

std::string FlagsText(const ObjectFlags& flags)
{
    std::string text;
    if (flags.communication)
        text += 'C';
    if (flags.read)
        text += 'R';
    if (flags.write)
        text += 'W';
    if (flags.transmit)
        text += 'T';
    if (flags.update)
        text += 'U';
    if (flags.readOnInit)
        text += 'I';
    return text;
}
} // namespace TavProject
