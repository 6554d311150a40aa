#include "knx/DptText.h"

#include "knx/NumberText.h"
#include "knx/TextError.h"

#include <TavObjectModel/KnxValueConverter.h>

#include <boost/algorithm/string/predicate.hpp>

#include <iomanip>
#include <sstream>

namespace TavKnx
{
namespace
{
const char* const kExpected = "expected MAIN.SUB in decimal (9.001, 9.1, 9, 9,001, DPST-9-1, DPT-9 or DPT9.001)";

// The main and sub number texts of `text`, or false when it has none of the forms.
bool SplitDpt(const std::string& text, std::string& mainText, std::string& subText)
{
    std::string rest = text;
    char separator = '.';
    if (boost::istarts_with(rest, "DPST-"))
    {
        rest = rest.substr(5);
        separator = '-';
    }
    else if (boost::istarts_with(rest, "DPT"))
    {
        rest = rest.substr(rest.size() > 3 && (rest[3] == '-' || rest[3] == ' ' || rest[3] == '_') ? 4 : 3);
    }
    std::string::size_type at = rest.find(separator);
    if (separator == '.' && at == std::string::npos)
    {
        at = rest.find(',');
    }
    if (separator == '-' && at == std::string::npos)
    {
        return false;
    }
    mainText = rest.substr(0, at);
    subText = at == std::string::npos ? "0" : rest.substr(at + 1);
    return IsDecimalDigits(mainText) && IsDecimalDigits(subText);
}

// Digits beyond 5 are out of range anyway; leading zeros are cut first ("0001" is 1).
bool FitsSixteenBits(const std::string& digits, std::uint16_t& number)
{
    const std::string::size_type first = digits.find_first_not_of('0');
    const std::string significant = first == std::string::npos ? "0" : digits.substr(first);
    if (significant.size() > 5 || std::stoul(significant) > 65535)
    {
        return false;
    }
    number = static_cast<std::uint16_t>(std::stoul(significant));
    return true;
}
} // namespace

KNXDPT ParseDpt(const std::string& text, const char* what)
{
    std::string mainText;
    std::string subText;
    if (!SplitDpt(text, mainText, subText))
    {
        throw TextError(std::string(what) + ": " + kExpected + ", got " + Quote(text));
    }
    const std::string mainWhat = std::string(what) + " main number";
    const std::string subWhat = std::string(what) + " sub number";
    KNXDPT dpt{};
    dpt.main = static_cast<std::uint16_t>(ParseUnsigned(mainText, 65535, mainWhat.c_str()));
    dpt.sub = static_cast<std::uint16_t>(ParseUnsigned(subText, 65535, subWhat.c_str()));
    return dpt;
}

boost::optional<KNXDPT> TryParseDpt(const std::string& text)
{
    std::string mainText;
    std::string subText;
    KNXDPT dpt{};
    if (!SplitDpt(text, mainText, subText) || !FitsSixteenBits(mainText, dpt.main) || !FitsSixteenBits(subText, dpt.sub))
    {
        return boost::none;
    }
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

std::string FormatKnxDpt(const KNXDPT& dpt)
{
    std::ostringstream text;
    text << dpt.main << "." << std::setw(3) << std::setfill('0') << dpt.sub;
    return text.str();
}

std::uint32_t ParseBits(const std::string& text, const char* what)
{
    return static_cast<std::uint32_t>(ParseUnsigned(text, 255, what));
}

std::string BitsText(std::uint64_t bits)
{
    return std::to_string(bits) + (bits == 1 ? " bit" : " bits");
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
