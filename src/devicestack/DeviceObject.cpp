#include <devicestack/DeviceObject.h>

#include <TavObjectModel/KnxLdsMapping.h>

#include <cctype>

namespace Lumo
{
namespace
{
constexpr char kFlagLetters[] = "CRWTUI";
} // namespace

std::string FormatObjectFlags(unsigned flags)
{
    std::string text;
    for (unsigned bit = 0; kFlagLetters[bit] != '\0'; ++bit)
    {
        if ((flags & (1u << bit)) != 0)
        {
            text += kFlagLetters[bit];
        }
    }
    return text;
}

bool ParseObjectFlags(const std::string& text, unsigned& flags)
{
    unsigned parsed = 0;
    for (const char c : text)
    {
        const char upper = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        unsigned bit = 0;
        while (kFlagLetters[bit] != '\0' && kFlagLetters[bit] != upper)
        {
            ++bit;
        }
        if (kFlagLetters[bit] == '\0' || (parsed & (1u << bit)) != 0)
        {
            return false;
        }
        parsed |= 1u << bit;
    }
    flags = parsed;
    return true;
}

unsigned long ObjectValueId(unsigned short co)
{
    const boost::optional<unsigned long> id = Okaro::KnxLdsMapping::GetCoValueObjModelId(co, Okaro::LogicalDeviceId(1));
    return id ? *id : 0;
}

std::string FormatObjectGroupAddress(std::uint16_t address)
{
    return std::to_string(address >> 11) + "/" + std::to_string((address >> 8) & 0x7u) + "/" +
           std::to_string(address & 0xFFu);
}
} // namespace Lumo
