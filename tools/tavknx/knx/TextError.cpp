#include "knx/TextError.h"

namespace TavKnx
{
std::string Quote(const std::string& text)
{
    std::string shown;
    for (char c : text.substr(0, 40))
    {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F)
        {
            shown += '?';
        }
        else
        {
            shown += c;
        }
    }
    if (text.size() > 40)
    {
        shown += "...";
    }
    return "'" + shown + "'";
}
} // namespace TavKnx
