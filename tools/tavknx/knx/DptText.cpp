#include "knx/DptText.h"

#include "knx/NumberText.h"
#include "knx/TextError.h"

#include <TavObjectModel/KnxValueConverter.h>

namespace TavKnx
{
KNXDPT ParseDpt(const std::string& text, const char* what)
{
    const std::string::size_type dot = text.find('.');
    const std::string mainText = text.substr(0, dot);
    const std::string subText = dot == std::string::npos ? "0" : text.substr(dot + 1);
    if (!IsDecimalDigits(mainText) || !IsDecimalDigits(subText))
    {
        throw TextError(std::string(what) + ": expected MAIN.SUB in decimal (for example 9.001), got " + Quote(text));
    }
    const std::string mainWhat = std::string(what) + " main number";
    const std::string subWhat = std::string(what) + " sub number";
    KNXDPT dpt{};
    dpt.main = static_cast<std::uint16_t>(ParseUnsigned(mainText, 65535, mainWhat.c_str()));
    dpt.sub = static_cast<std::uint16_t>(ParseUnsigned(subText, 65535, subWhat.c_str()));
    return dpt;
}

std::uint32_t PackDpt(const KNXDPT& dpt)
{
    return (static_cast<std::uint32_t>(dpt.main) << 16) | dpt.sub;
}

std::string FormatDpt(const KNXDPT& dpt)
{
    return std::to_string(dpt.main) + "." + std::to_string(dpt.sub);
}

std::uint32_t ParseBits(const std::string& text, const char* what)
{
    return static_cast<std::uint32_t>(ParseUnsigned(text, 255, what));
}

std::uint32_t DefaultBits(std::uint16_t mainNumber, std::size_t byteCount)
{
    const std::uint32_t expected = Okaro::KnxValueConverter::GetExpectedBitSize(mainNumber);
    if (byteCount == 1 && expected > 0 && expected < 8)
    {
        return expected;
    }
    // Saturates instead of wrapping for absurdly long input.
    return byteCount > 0x1FFFFFFFu ? 0xFFFFFFFFu : static_cast<std::uint32_t>(byteCount * 8u);
}
} // namespace TavKnx
