#include <project/detail/ProjectXmlParts.h>

#include <cstring>

namespace TavProject
{
namespace detail
{
namespace
{
const char* const kFlagAttributes[6] = {"CommunicationFlag", "ReadFlag", "WriteFlag", "TransmitFlag",
    "UpdateFlag", "ReadOnInitFlag"};
} // namespace

boost::optional<unsigned> ParseUnsigned(const char* text, unsigned maximum)
{
    if (text == nullptr || *text == '\0')
        return boost::none;
    unsigned long value = 0;
    for (const char* p = text; *p != '\0'; ++p)
    {
        if (*p < '0' || *p > '9')
            return boost::none;
        value = value * 10 + static_cast<unsigned>(*p - '0');
        if (value > maximum)
            return boost::none;
    }
    return static_cast<unsigned>(value);
}

std::string ShortId(const std::string& id)
{
    const std::size_t underscore = id.find('_');
    return underscore == std::string::npos ? id : id.substr(underscore + 1);
}

std::string ManufacturerOf(const std::string& id)
{
    return id.substr(0, id.find('_'));
}

bool FlagValue(const char* text)
{
    return text != nullptr && std::strcmp(text, "Enabled") == 0;
}



ObjectLayer LayerOf(const XmlNode& node)
{
    ObjectLayer layer;
    layer.number = ParseUnsigned(AttributeOrNull(node, "Number"), 0xFFFFFFu);
    const auto text = [&](const char* name) -> boost::optional<std::string> {
        const char* value = AttributeOrNull(node, name);
        if (value == nullptr)
            return boost::none;
        return std::string(value);
    };
    layer.name = text("Name");
    layer.text = text("Text");
    layer.functionText = text("FunctionText");
    layer.datapointType = text("DatapointType");
    for (int i = 0; i < 6; ++i)
    {
        const char* value = AttributeOrNull(node, kFlagAttributes[i]);
        if (value != nullptr)
            layer.flags[i] = FlagValue(value);
    }
    return layer;
}

void Overlay(ObjectLayer& below, const ObjectLayer& above)
{
    if (above.number)
        below.number = above.number;
    if (above.name)
        below.name = above.name;
    if (above.text)
        below.text = above.text;
    if (above.functionText)
        below.functionText = above.functionText;
    // An empty DatapointType on a level above names no type: the one below stays.
    if (above.datapointType && ParseDatapointType(*above.datapointType))
        below.datapointType = above.datapointType;
    for (int i = 0; i < 6; ++i)
    {
        if (above.flags[i])
            below.flags[i] = above.flags[i];
    }
}
} // namespace detail
} // namespace TavProject
