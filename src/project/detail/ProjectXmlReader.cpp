#include <project/detail/ProjectXmlReader.h>

#include <project/ProjectError.h>
#include <project/detail/ProjectXmlParts.h>
#include <project/detail/ProjectLog.h>
#include <project/detail/Xml.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <set>
#include <sstream>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

namespace TavProject
{
namespace detail
{
namespace
{
constexpr const char* kFile = "ProjectXmlReader.cpp";
constexpr const char* kNamespacePrefix = "http://knx.org/xml/project/";

class Builder
{
public:
    Builder(ProjectDocuments& documents, ManufacturerFiles& files) : documents_(documents), files_(files) {}

    Project Build()
    {
        project_.info.projectId = documents_.projectId;
        project_.info.schemaVersion = documents_.schemaVersion;
        if (documents_.schemaVersion > kNewestKnownSchema)
        {
            TAV_PROJECT_WARN(kFile, 101,
                "schema version " << documents_.schemaVersion << " is newer than the newest known ("
                                  << kNewestKnownSchema << "): reading what can be read");
        }
        ReadProjectXml();
        XmlDocument installation(std::move(documents_.installation), "0.xml");
        ReadInstallation(installation);
        ResolveDevices();
        FinishGroupAddresses();
        return std::move(project_);
    }

private:
    void ReadProjectXml()
    {
        if (!documents_.projectXml)
        {
            TAV_PROJECT_WARN(kFile, 102, "the archive holds no project.xml: no project name or group address style, "
                                         "addresses print in three levels");
            return;
        }
        XmlDocument document(std::move(*documents_.projectXml), "project.xml");
        const XmlNode* root = document.Root();
        if (root == nullptr)
            return;
        project_.info.toolVersion = Attribute(*root, "ToolVersion");
        const XmlNode* projectNode = Child(*root, "Project");
        const XmlNode* information = projectNode == nullptr ? nullptr : Child(*projectNode, "ProjectInformation");
        if (information == nullptr)
        {
            TAV_PROJECT_WARN(kFile, 103, "project.xml holds no ProjectInformation");
            return;
        }
        project_.info.name = Attribute(*information, "Name");
        project_.info.lastModified = Attribute(*information, "LastModified");
        const std::string style = Attribute(*information, "GroupAddressStyle");
        if (style == "TwoLevel")
            project_.info.groupAddressStyle = GroupAddressStyle::TwoLevel;
        else if (style == "Free")
            project_.info.groupAddressStyle = GroupAddressStyle::Free;
        else if (style.empty() || style == "ThreeLevel")
            project_.info.groupAddressStyle = GroupAddressStyle::ThreeLevel;
        else
            TAV_PROJECT_WARN(kFile, 104, "unknown group address style \"" << style << "\": addresses print in three levels");
    }

    void ReadInstallation(const XmlDocument& document)
    {
        const XmlNode* root = document.Root();
        const XmlNode* projectNode = root == nullptr ? nullptr : Child(*root, "Project");
        const XmlNode* installations = projectNode == nullptr ? nullptr : Child(*projectNode, "Installations");
        const XmlNode* installation = installations == nullptr ? nullptr : Child(*installations, "Installation");
        if (installation == nullptr)
            throw ProjectError(ProjectErrorKind::Corrupt, "0.xml: no project installation in it");
        if (project_.info.toolVersion.empty())
            project_.info.toolVersion = Attribute(*root, "ToolVersion");
        for (const XmlNode* other = installation->next_sibling(); other != nullptr; other = other->next_sibling())
        {
            if (IsElement(*other, "Installation"))
            {
                TAV_PROJECT_WARN(kFile, 105, "0.xml holds more than one installation: only the first is read");
                break;
            }
        }
        if (const XmlNode* groupAddresses = Child(*installation, "GroupAddresses"))
        {
            if (const XmlNode* ranges = Child(*groupAddresses, "GroupRanges"))
                ReadGroupRanges(*ranges);
        }
        if (const XmlNode* topology = Child(*installation, "Topology"))
            ReadTopology(*topology);
    }

    void UnknownElement(const XmlNode& parent, const XmlNode& child)
    {
        const std::string parentName = LocalName(parent);
        const std::string childName = LocalName(child);
        if (unknown_.insert(parentName + '/' + childName).second)
            TAV_PROJECT_WARN(kFile, 106, "skipped unknown element " << childName << " in " << parentName);
    }

    void ReadGroupRanges(const XmlNode& container)
    {
        for (const XmlNode* child = container.first_node(); child != nullptr; child = child->next_sibling())
        {
            if (IsElement(*child, "GroupRange"))
                ReadGroupRanges(*child);  // depth bounded by the nesting guard
            else if (IsElement(*child, "GroupAddress"))
                ReadGroupAddress(*child);
            else if (child->type() == rapidxml::node_element)
                UnknownElement(container, *child);
        }
    }

    void ReadGroupAddress(const XmlNode& node)
    {
        const auto raw = ParseUnsigned(AttributeOrNull(node, "Address"), 0xFFFF);
        const std::string id = Attribute(node, "Id");
        if (!raw)
        {
            TAV_PROJECT_WARN(kFile, 107,
                "skipped group address " << id << ": unreadable Address \"" << Attribute(node, "Address") << "\"");
            return;
        }
        GroupAddress address;
        address.raw = static_cast<std::uint16_t>(*raw);
        address.address = FormatGroupAddress(address.raw, project_.info.groupAddressStyle);
        address.name = Attribute(node, "Name");
        address.description = Attribute(node, "Description");
        address.dpt = ParseDatapointType(Attribute(node, "DatapointType"));
        const char* key = AttributeOrNull(node, "Key");
        address.dataSecure = key != nullptr && *key != '\0';
        if (!id.empty())
            groupAddressById_.emplace(ShortId(id), project_.groupAddresses.size());
        project_.groupAddresses.push_back(std::move(address));
    }

    void ReadTopology(const XmlNode& topology)
    {
        for (const XmlNode* area = topology.first_node(); area != nullptr; area = area->next_sibling())
        {
            if (IsElement(*area, "Area"))
                ReadArea(*area);
            else if (IsElement(*area, "UnassignedDevices"))
                continue;  // no individual address: nothing the bus knows them by
            else if (area->type() == rapidxml::node_element)
                UnknownElement(topology, *area);
        }
    }

    void ReadArea(const XmlNode& area)
    {
        const auto areaNumber = ParseUnsigned(AttributeOrNull(area, "Address"), 15);
        if (!areaNumber)
        {
            TAV_PROJECT_WARN(kFile, 108, "skipped area " << Attribute(area, "Id") << ": unreadable Address");
            return;
        }
        for (const XmlNode* line = area.first_node(); line != nullptr; line = line->next_sibling())
        {
            if (IsElement(*line, "Line"))
            {
                const auto lineNumber = ParseUnsigned(AttributeOrNull(*line, "Address"), 15);
                if (!lineNumber)
                {
                    TAV_PROJECT_WARN(kFile, 109, "skipped line " << Attribute(*line, "Id") << ": unreadable Address");
                    continue;
                }
                ReadLine(*line, *areaNumber, *lineNumber);
            }
            else if (line->type() == rapidxml::node_element)
            {
                UnknownElement(area, *line);
            }
        }
    }

    // Devices sit in the line, or from schema 21 in its segments.
    void ReadLine(const XmlNode& line, unsigned area, unsigned lineNumber)
    {
        for (const XmlNode* child = line.first_node(); child != nullptr; child = child->next_sibling())
        {
            if (IsElement(*child, "DeviceInstance"))
                ReadDevice(*child, area, lineNumber);
            else if (IsElement(*child, "Segment"))
                ReadLine(*child, area, lineNumber);
            else if (child->type() == rapidxml::node_element && !IsElement(*child, "AdditionalGroupAddresses"))
                UnknownElement(line, *child);
        }
    }

    void ReadDevice(const XmlNode& node, unsigned area, unsigned line)
    {
        const char* addressText = AttributeOrNull(node, "Address");
        if (addressText == nullptr)
            return;  // not yet addressed, or a device without one (a power supply)
        const auto number = ParseUnsigned(addressText, 255);
        if (!number)
        {
            TAV_PROJECT_WARN(kFile, 110,
                "skipped device " << Attribute(node, "Id") << ": unreadable Address \"" << addressText << "\"");
            return;
        }
        DeviceRecord record;
        record.device.area = area;
        record.device.line = line;
        record.device.device = *number;
        record.device.address =
            std::to_string(area) + '.' + std::to_string(line) + '.' + std::to_string(*number);
        record.device.name = Attribute(node, "Name");
        record.productRefId = Attribute(node, "ProductRefId");
        record.hardwareProgramRefId = Attribute(node, "Hardware2ProgramRefId");
        record.instance = &node;
        devices_.push_back(std::move(record));
    }

    const ManufacturerHardware& HardwareOf(const std::string& manufacturer)
    {
        auto found = hardware_.find(manufacturer);
        if (found != hardware_.end())
            return found->second;
        ManufacturerHardware& hardware = hardware_[manufacturer];
        boost::optional<std::string> text = files_.Read(manufacturer + "/Hardware.xml");
        if (!text)
            return hardware;
        XmlDocument document(std::move(*text), manufacturer + "/Hardware.xml");
        const XmlNode* root = document.Root();
        const XmlNode* data = root == nullptr ? nullptr : Child(*root, "ManufacturerData");
        if (data == nullptr)
            return hardware;
        for (const XmlNode* maker = data->first_node(); maker != nullptr; maker = maker->next_sibling())
        {
            const XmlNode* list = IsElement(*maker, "Manufacturer") ? Child(*maker, "Hardware") : nullptr;
            if (list == nullptr)
                continue;
            for (const XmlNode* item = list->first_node(); item != nullptr; item = item->next_sibling())
            {
                if (!IsElement(*item, "Hardware"))
                    continue;
                if (const XmlNode* products = Child(*item, "Products"))
                {
                    for (const XmlNode* product = products->first_node(); product != nullptr;
                         product = product->next_sibling())
                    {
                        if (IsElement(*product, "Product"))
                            hardware.products[Attribute(*product, "Id")] =
                                ProductInfo{Attribute(*product, "Text"), Attribute(*product, "OrderNumber")};
                    }
                }
                if (const XmlNode* programs = Child(*item, "Hardware2Programs"))
                {
                    for (const XmlNode* program = programs->first_node(); program != nullptr;
                         program = program->next_sibling())
                    {
                        const XmlNode* ref =
                            IsElement(*program, "Hardware2Program") ? Child(*program, "ApplicationProgramRef") : nullptr;
                        if (ref != nullptr)
                            hardware.programs[Attribute(*program, "Id")] = Attribute(*ref, "RefId");
                    }
                }
            }
        }
        return hardware;
    }

    void ReadManufacturerNames()
    {
        XmlDocument document(std::move(documents_.knxMaster), "knx_master.xml");
        const XmlNode* root = document.Root();
        const XmlNode* master = root == nullptr ? nullptr : Child(*root, "MasterData");
        const XmlNode* list = master == nullptr ? nullptr : Child(*master, "Manufacturers");
        if (list == nullptr)
            return;
        for (const XmlNode* maker = list->first_node(); maker != nullptr; maker = maker->next_sibling())
        {
            if (IsElement(*maker, "Manufacturer"))
                manufacturerNames_[Attribute(*maker, "Id")] = Attribute(*maker, "Name");
        }
    }

    void ResolveDevices()
    {
        if (devices_.empty())
            return;
        ReadManufacturerNames();
        // Products and programs first, so that each program is read once for all its devices.
        std::map<std::string, std::vector<DeviceRecord*>> byProgram;
        for (DeviceRecord& record : devices_)
        {
            const std::string manufacturer = ManufacturerOf(record.productRefId);
            if (!manufacturer.empty())
            {
                const auto name = manufacturerNames_.find(manufacturer);
                record.device.manufacturer =
                    name != manufacturerNames_.end() && !name->second.empty() ? name->second : manufacturer;
                const ManufacturerHardware& hardware = HardwareOf(manufacturer);
                const auto product = hardware.products.find(record.productRefId);
                if (product != hardware.products.end())
                {
                    record.device.orderNumber = product->second.orderNumber;
                    if (record.device.name.empty())
                        record.device.name = product->second.text;
                }
                const auto program = hardware.programs.find(record.hardwareProgramRefId);
                if (program != hardware.programs.end())
                    record.applicationProgramId = program->second;
            }
            byProgram[record.applicationProgramId].push_back(&record);
        }
        for (auto& entry : byProgram)
            ResolveProgram(entry.first, entry.second);

        std::vector<Device>& devices = project_.devices;
        for (DeviceRecord& record : devices_)
        {
            std::stable_sort(record.device.communicationObjects.begin(), record.device.communicationObjects.end(),
                [](const CommunicationObject& a, const CommunicationObject& b) { return a.number < b.number; });
            devices.push_back(std::move(record.device));
        }
        std::stable_sort(devices.begin(), devices.end(), [](const Device& a, const Device& b) {
            return std::tie(a.area, a.line, a.device) < std::tie(b.area, b.line, b.device);
        });
    }

    void ResolveProgram(const std::string& programId, const std::vector<DeviceRecord*>& records)
    {
        std::unique_ptr<XmlDocument> document;
        std::unordered_map<std::string, const XmlNode*> objects;
        std::unordered_map<std::string, const XmlNode*> refs;
        bool haveProgram = false;
        if (!programId.empty())
        {
            const std::string path = ManufacturerOf(programId) + '/' + programId + ".xml";
            if (boost::optional<std::string> text = files_.Read(path))
            {
                document = std::make_unique<XmlDocument>(std::move(*text), path);
                haveProgram = IndexProgram(*document, objects, refs);
            }
        }
        for (DeviceRecord* record : records)
        {
            const bool needsProgram = !record->hardwareProgramRefId.empty();
            if (needsProgram && !haveProgram)
            {
                TAV_PROJECT_WARN(kFile, 111,
                    "device " << record->device.address << ": application program "
                              << (programId.empty() ? record->hardwareProgramRefId : programId)
                              << " is missing: its objects come from the instance alone");
            }
            ReadObjects(*record, programId, objects, refs);
        }
    }

    static bool IndexProgram(const XmlDocument& document, std::unordered_map<std::string, const XmlNode*>& objects,
        std::unordered_map<std::string, const XmlNode*>& refs)
    {
        const XmlNode* root = document.Root();
        const XmlNode* data = root == nullptr ? nullptr : Child(*root, "ManufacturerData");
        const XmlNode* maker = data == nullptr ? nullptr : Child(*data, "Manufacturer");
        const XmlNode* programs = maker == nullptr ? nullptr : Child(*maker, "ApplicationPrograms");
        const XmlNode* program = programs == nullptr ? nullptr : Child(*programs, "ApplicationProgram");
        const XmlNode* statics = program == nullptr ? nullptr : Child(*program, "Static");
        if (statics == nullptr)
            return false;
        if (const XmlNode* table = Child(*statics, "ComObjectTable"))
        {
            for (const XmlNode* object = table->first_node(); object != nullptr; object = object->next_sibling())
            {
                if (IsElement(*object, "ComObject"))
                    objects.emplace(Attribute(*object, "Id"), object);
            }
        }
        if (const XmlNode* list = Child(*statics, "ComObjectRefs"))
        {
            for (const XmlNode* ref = list->first_node(); ref != nullptr; ref = ref->next_sibling())
            {
                if (IsElement(*ref, "ComObjectRef"))
                    refs.emplace(Attribute(*ref, "Id"), ref);
            }
        }
        return true;
    }

    // From schema 20 on an instance names its reference without the program ("O-1_R-1"), and
    // inside a module with the module instance ("MD-1_M-1_MI-1_O-3-1_R-2"), whose reference in
    // the program is the module definition's ("MD-1_O-3-1_R-2").
    static std::vector<std::string> ReferenceCandidates(const std::string& refId, const std::string& programId)
    {
        if (programId.empty() || refId.compare(0, programId.size(), programId) == 0)
            return {refId};
        std::vector<std::string> candidates{programId + '_' + refId};
        if (refId.compare(0, 3, "MD-") == 0)
        {
            std::string stripped;
            std::istringstream parts(refId);
            std::string part;
            while (std::getline(parts, part, '_'))
            {
                if (part.compare(0, 2, "M-") == 0 || part.compare(0, 3, "MI-") == 0)
                    continue;
                stripped += (stripped.empty() ? "" : "_") + part;
            }
            candidates.push_back(programId + '_' + stripped);
        }
        return candidates;
    }

    // "..._O-12_R-3": 12, the number the object's id is made from, for objects without a program.
    static unsigned NumberFromId(const std::string& refId)
    {
        const std::size_t at = refId.rfind("O-");
        if (at == std::string::npos)
            return 0;
        unsigned value = 0;
        for (std::size_t i = at + 2; i < refId.size() && refId[i] >= '0' && refId[i] <= '9'; ++i)
        {
            value = value * 10 + static_cast<unsigned>(refId[i] - '0');
            if (value > 0xFFFFFFu)
                return 0;
        }
        return value;
    }

    std::vector<std::string> LinksOf(const XmlNode& instance)
    {
        std::vector<std::string> links;
        if (const char* attribute = AttributeOrNull(instance, "Links"))
        {
            std::istringstream ids(attribute);
            std::string id;
            while (ids >> id)
                links.push_back(ShortId(id));
            return links;
        }
        // Below schema 20: one Send (the sending address) and any number of Receive elements.
        if (const XmlNode* connectors = Child(instance, "Connectors"))
        {
            for (const char* kind : {"Send", "Receive"})
            {
                for (const XmlNode* item = connectors->first_node(); item != nullptr; item = item->next_sibling())
                {
                    if (IsElement(*item, kind))
                        links.push_back(ShortId(Attribute(*item, "GroupAddressRefId")));
                }
            }
        }
        return links;
    }

    void ReadObjects(DeviceRecord& record, const std::string& programId,
        const std::unordered_map<std::string, const XmlNode*>& objects,
        const std::unordered_map<std::string, const XmlNode*>& refs)
    {
        const XmlNode* list = Child(*record.instance, "ComObjectInstanceRefs");
        if (list == nullptr)
            return;
        for (const XmlNode* instance = list->first_node(); instance != nullptr; instance = instance->next_sibling())
        {
            if (!IsElement(*instance, "ComObjectInstanceRef"))
                continue;
            // Objects without a group address carry no telegrams: the model leaves them out.
            CommunicationObject object;
            for (const std::string& link : LinksOf(*instance))
            {
                const auto found = groupAddressById_.find(link);
                if (found == groupAddressById_.end())
                    continue;
                const GroupAddress& address = project_.groupAddresses[found->second];
                object.groupAddresses.push_back(address.address);
                object.groupAddressesRaw.push_back(address.raw);
            }
            if (object.groupAddresses.empty())
                continue;

            const std::string refId = Attribute(*instance, "RefId");
            ObjectLayer layer;
            bool fromProgram = false;
            for (const std::string& candidate : ReferenceCandidates(refId, programId))
            {
                const auto ref = refs.find(candidate);
                if (ref == refs.end())
                    continue;
                const auto base = objects.find(Attribute(*ref->second, "RefId"));
                if (base != objects.end())
                    layer = LayerOf(*base->second);
                Overlay(layer, LayerOf(*ref->second));
                fromProgram = true;
                break;
            }
            ObjectLayer own = LayerOf(*instance);
            own.number = boost::none;  // an instance carries no number of its own
            Overlay(layer, own);
            object.number = layer.number ? *layer.number : (fromProgram ? 0 : NumberFromId(refId));
            object.name = layer.text && !layer.text->empty() ? *layer.text : layer.name.value_or(std::string());
            object.function = layer.functionText.value_or(std::string());
            if (layer.datapointType)
                object.dpt = ParseDatapointType(*layer.datapointType);
            bool* const flags[6] = {&object.flags.communication, &object.flags.read, &object.flags.write,
                &object.flags.transmit, &object.flags.update, &object.flags.readOnInit};
            for (int i = 0; i < 6; ++i)
                *flags[i] = layer.flags[i].value_or(false);
            record.device.communicationObjects.push_back(std::move(object));
        }
    }

    void FinishGroupAddresses()
    {
        // A group address without a type of its own takes that of its first linked object.
        std::unordered_map<std::uint16_t, Dpt> linked;
        for (const Device& device : project_.devices)
        {
            for (const CommunicationObject& object : device.communicationObjects)
            {
                if (!object.dpt)
                    continue;
                for (const std::uint16_t raw : object.groupAddressesRaw)
                    linked.emplace(raw, *object.dpt);
            }
        }
        for (GroupAddress& address : project_.groupAddresses)
        {
            if (address.dpt)
                continue;
            const auto found = linked.find(address.raw);
            if (found != linked.end())
                address.dpt = found->second;
        }
        std::stable_sort(project_.groupAddresses.begin(), project_.groupAddresses.end(),
            [](const GroupAddress& a, const GroupAddress& b) { return a.raw < b.raw; });
    }

    ProjectDocuments& documents_;
    ManufacturerFiles& files_;
    Project project_;
    std::vector<DeviceRecord> devices_;
    std::unordered_map<std::string, std::size_t> groupAddressById_;
    std::unordered_map<std::string, ManufacturerHardware> hardware_;
    std::unordered_map<std::string, std::string> manufacturerNames_;
    std::set<std::string> unknown_;
};
} // namespace

unsigned SchemaVersionOf(const std::string& knxMaster)
{
    // The root element comes first; its namespace is all that is needed here, so the document
    // is not parsed for it.
    const std::size_t window = std::min<std::size_t>(knxMaster.size(), 64u << 10);
    const std::size_t at = knxMaster.substr(0, window).find(kNamespacePrefix);
    if (at != std::string::npos)
    {
        std::size_t p = at + std::strlen(kNamespacePrefix);
        unsigned long version = 0;
        std::size_t digits = 0;
        while (p < knxMaster.size() && knxMaster[p] >= '0' && knxMaster[p] <= '9' && digits < 6)
        {
            version = version * 10 + static_cast<unsigned>(knxMaster[p] - '0');
            ++p;
            ++digits;
        }
        if (digits > 0 && digits < 6 && p < knxMaster.size() && (knxMaster[p] == '"' || knxMaster[p] == '\''))
            return static_cast<unsigned>(version);
    }
    throw ProjectError(ProjectErrorKind::Corrupt, "knx_master.xml: no project schema namespace (" +
                                                      std::string(kNamespacePrefix) + "N) on its root element");
}

Project BuildProject(ProjectDocuments documents, ManufacturerFiles& files)
{
    return Builder(documents, files).Build();
}
} // namespace detail
} // namespace TavProject
