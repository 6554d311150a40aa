#include <TavObjectModel/TavKnxValueConverter.h>

#include <platform/OkaString.h>

namespace Okaro
{
namespace
{
// Unreadable text leaves the default (empty) value; the front's type check refuses it.
OKAVALUE DeserializeValue(const std::string& text)
{
    OKAVALUE value;
    oka_string serialized;
    serialized.assign(text.c_str());
    value.Deserialize(serialized);
    serialized.Free();
    return value;
}
} // namespace

bool TavKnxValueConverter::Init() { return KnxValueConverter::Init(); }

bool TavKnxValueConverter::ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value, KnxStack::GroupValue& groupValue)
{
    return KnxValueConverter::ToKnxValue(dpt, value, groupValue);
}

bool TavKnxValueConverter::FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& groupValue, OKAVALUE& value)
{
    return KnxValueConverter::FromKnxValue(dpt, groupValue, value);
}

bool TavKnxValueConverter::ToKnxValue(const KNXDPT& dpt, const std::string& text, KnxStack::GroupValue& groupValue)
{
    const OKAVALUE value = DeserializeValue(text);
    return KnxValueConverter::ToKnxValue(dpt, value, groupValue);
}

bool TavKnxValueConverter::ToKnxValue(const std::string& text, unsigned long bitSize, KnxStack::GroupValue& groupValue)
{
    // Not const: the front writes the chosen default DPT into it.
    KNXDPT dpt{static_cast<std::uint8_t>(bitSize & 0xFFu), 0, 0};
    const OKAVALUE value = DeserializeValue(text);
    return KnxValueConverter::ToKnxValue(dpt, value, groupValue);
}

bool TavKnxValueConverter::FromKnxValue(const KnxStack::GroupValue& groupValue, std::string& text, bool internalForm)
{
    KNXDPT dpt{static_cast<std::uint8_t>(groupValue.GetDefinedSize() & 0xFFu), 0, 0};
    OKAVALUE value;
    const bool converted = KnxValueConverter::FromKnxValue(dpt, groupValue, value);
    if (converted)
    {
        oka_string serialized;
        value.Serialize(serialized, internalForm);
        text.assign(serialized.c_str(), serialized.length());
    }
    return converted;
}
} // namespace Okaro
