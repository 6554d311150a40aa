#include <devicestack/detail/KnxdWorkerSupport.h>

#include <TavObjectModel/GroupValueOkaValue.h>

#include <knx/DptText.h>
#include <knx/HexText.h>
#include <knx/Json.h>

#include <exception>

namespace Lumo
{
namespace detail
{
log4cplus::Logger KnxdLog()
{
    return log4cplus::Logger::getInstance("KnxdDeviceStackClient");
}

ResponseError StackError(KnxdDeviceStackClient::ErrorCode code, const std::string& what, const std::string& why)
{
    return ResponseError(code, what, why, what + ": " + why);
}

std::string ObjectName(const DeviceObject& object)
{
    return "CO " + std::to_string(object.co);
}

std::string ValueBytesHex(const KnxStack::GroupValue& value)
{
    const KnxStack::BinaryData& raw = value.GetRawData();
    return TavKnx::FormatHex(std::vector<std::uint8_t>(raw.GetData(), raw.GetData() + raw.GetSize()));
}

boost::optional<OKAVALUE> Decode(const KnxStack::GroupValue& value, const DeviceObject& object)
{
    try
    {
        return Okaro::GroupValueToOkaValue(value, PackedObjectDpt(object.dpt));
    }
    catch (const std::exception&)
    {
        return boost::none;
    }
}

boost::optional<KnxStack::GroupValue> Encode(const OKAVALUE& value, const DeviceObject& object)
{
    try
    {
        return Okaro::OkaValueToGroupValue(value, PackedObjectDpt(object.dpt));
    }
    catch (const std::exception&)
    {
        return boost::none;
    }
}

std::string ObjectLine(const DeviceObject& object)
{
    std::string addresses;
    for (const std::uint16_t address : object.groupAddresses)
    {
        addresses += (addresses.empty() ? "" : ",") + FormatObjectGroupAddress(address);
    }
    return std::to_string(object.co) + ";" + addresses + ";" + TavKnx::FormatDpt(object.dpt) + ";" +
           FormatObjectFlags(object.flags) + ";" + object.name;
}
} // namespace detail

std::string DeviceConfigJson(const std::string& url, bool connected, const std::vector<DeviceObject>& objects,
                             const std::vector<OKAVALUE>& values, bool internalFormat)
{
    std::string list;
    for (std::size_t index = 0; index < objects.size(); ++index)
    {
        const DeviceObject& object = objects[index];
        std::string addresses;
        for (const std::uint16_t address : object.groupAddresses)
        {
            addresses += (addresses.empty() ? "" : ",") + TavKnx::JsonString(FormatObjectGroupAddress(address));
        }
        TavKnx::JsonObject entry;
        entry.Add("co", static_cast<unsigned>(object.co))
            .Add("id", static_cast<std::uint64_t>(ObjectValueId(object.co)))
            .AddRaw("gas", "[" + addresses + "]")
            .Add("dpt", TavKnx::FormatDpt(object.dpt))
            .Add("flags", FormatObjectFlags(object.flags))
            .Add("name", object.name);
        if (values[index].type == ivtEmpty)
        {
            entry.AddNull("value");
        }
        else
        {
            oka_string text;
            values[index].Serialize(text, internalFormat);
            entry.Add("value", std::string(text.c_str(), text.length()));
        }
        list += (list.empty() ? "" : ",") + entry.Str();
    }
    return TavKnx::JsonObject().Add("url", url).Add("connected", connected).AddRaw("objects", "[" + list + "]").Str();
}
} // namespace Lumo
