#include <project/ProjectJson.h>

#include <nlohmann/json.hpp>

#include <sstream>

namespace TavProject
{
namespace
{
using Json = nlohmann::ordered_json;

Json DptJson(const boost::optional<Dpt>& dpt)
{
    if (!dpt)
        return nullptr;
    Json object;
    object["main"] = dpt->main;
    object["sub"] = dpt->sub ? Json(*dpt->sub) : Json(nullptr);
    return object;
}

// "9.001" as the map reader and the tool's DPT argument take it; "9" for a main type alone.
std::string DptText(const Dpt& dpt)
{
    std::ostringstream out;
    out << dpt.main;
    if (dpt.sub)
    {
        const std::string sub = std::to_string(*dpt.sub);
        out << '.' << std::string(sub.size() < 3 ? 3 - sub.size() : 0, '0') << sub;
    }
    return out.str();
}

// A name on one line: line breaks would end the comment early.
std::string OneLine(std::string text)
{
    for (char& c : text)
    {
        if (c == '\r' || c == '\n' || c == '\t')
            c = ' ';
    }
    return text;
}
} // namespace

std::string ToJson(const Project& project)
{
    Json root;
    Json& info = root["info"];
    info["projectId"] = project.info.projectId;
    info["name"] = project.info.name;
    info["schemaVersion"] = project.info.schemaVersion;
    info["toolVersion"] = project.info.toolVersion;
    info["groupAddressStyle"] = GroupAddressStyleName(project.info.groupAddressStyle);
    info["lastModified"] = project.info.lastModified;

    Json& addresses = root["groupAddresses"] = Json::array();
    for (const GroupAddress& address : project.groupAddresses)
    {
        Json item;
        item["address"] = address.address;
        item["raw"] = address.raw;
        item["name"] = address.name;
        item["description"] = address.description;
        item["dpt"] = DptJson(address.dpt);
        item["dataSecure"] = address.dataSecure;
        addresses.push_back(std::move(item));
    }

    Json& devices = root["devices"] = Json::array();
    for (const Device& device : project.devices)
    {
        Json item;
        item["address"] = device.address;
        item["name"] = device.name;
        item["orderNumber"] = device.orderNumber;
        item["manufacturer"] = device.manufacturer;
        Json& objects = item["communicationObjects"] = Json::array();
        for (const CommunicationObject& object : device.communicationObjects)
        {
            Json entry;
            entry["number"] = object.number;
            entry["name"] = object.name;
            entry["function"] = object.function;
            entry["dpt"] = DptJson(object.dpt);
            entry["flags"] = FlagsText(object.flags);
            entry["groupAddresses"] = object.groupAddresses;
            objects.push_back(std::move(entry));
        }
        devices.push_back(std::move(item));
    }
    return root.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string ToMapText(const Project& project)
{
    const GroupAddressStyle style = project.info.groupAddressStyle == GroupAddressStyle::Free
                                        ? GroupAddressStyle::ThreeLevel
                                        : project.info.groupAddressStyle;
    std::ostringstream out;
    out << "# Group address map of ETS project " << project.info.projectId;
    if (!project.info.name.empty())
        out << " (" << OneLine(project.info.name) << ')';
    out << '\n';
    for (const GroupAddress& address : project.groupAddresses)
    {
        const std::string printed = FormatGroupAddress(address.raw, style);
        if (address.dpt && address.dpt->main != 0)
            out << printed << ';' << DptText(*address.dpt);
        else
            out << "# " << printed << ";?";
        out << "  # " << OneLine(address.name) << '\n';
    }
    return out.str();
}
} // namespace TavProject
