#include "KnxprojWriter.h"

#include <project/ProjectPassword.h>

#include <zip.h>

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace TavTest
{
using TavProject::GroupAddressStyle;

const char* const kFixtureProgramPath = "M-0083/M-0083_A-00B0-32-0DFC.xml";
const char* const kFixtureHardwarePath = "M-0083/Hardware.xml";

void ZipWriter::Add(const std::string& name, std::string data, Encryption encryption, const std::string& password,
    bool store)
{
    entries_.push_back(Entry{name, std::move(data), encryption, password, store});
}

std::string ZipWriter::Finish() const
{
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* source = zip_source_buffer_create(nullptr, 0, 0, &error);
    zip_t* archive = source == nullptr ? nullptr : zip_open_from_source(source, ZIP_TRUNCATE, &error);
    if (archive == nullptr)
        throw std::runtime_error(std::string("zip writer: ") + zip_error_strerror(&error));
    zip_source_keep(source);
    for (const Entry& entry : entries_)
    {
        zip_source_t* data = zip_source_buffer(archive, entry.data.data(), entry.data.size(), 0);
        const zip_int64_t index = zip_file_add(archive, entry.name.c_str(), data, ZIP_FL_ENC_UTF_8);
        if (index < 0)
            throw std::runtime_error("zip writer: cannot add " + entry.name);
        const auto at = static_cast<zip_uint64_t>(index);
        if (entry.store)
            zip_set_file_compression(archive, at, ZIP_CM_STORE, 0);
        if (entry.encryption != Encryption::None)
        {
            const zip_uint16_t method =
                entry.encryption == Encryption::Aes256 ? ZIP_EM_AES_256 : ZIP_EM_TRAD_PKWARE;
            if (zip_file_set_encryption(archive, at, method, entry.password.c_str()) != 0)
                throw std::runtime_error("zip writer: cannot encrypt " + entry.name);
        }
    }
    if (zip_close(archive) != 0)
        throw std::runtime_error(std::string("zip writer: ") + zip_strerror(archive));
    std::string bytes;
    if (zip_source_open(source) == 0)
    {
        char chunk[65536];
        zip_int64_t got;
        while ((got = zip_source_read(source, chunk, sizeof chunk)) > 0)
            bytes.append(chunk, static_cast<std::size_t>(got));
        zip_source_close(source);
    }
    zip_source_free(source);
    return bytes;
}

namespace
{
std::string Root(const FixtureOptions& options)
{
    const char* tool = options.schema <= 11 ? "ETS4\" ToolVersion=\"4.2.1"
                       : options.schema <= 20 ? "ETS5\" ToolVersion=\"5.7.1093.38570"
                                              : "ETS6\" ToolVersion=\"6.1.6410.38254";
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<KNX xmlns=\"http://knx.org/xml/project/" +
           std::to_string(options.schema) + "\" CreatedBy=\"" + tool + "\">";
}

std::string ToolVersion(unsigned schema)
{
    return schema <= 11 ? "4.2.1" : schema <= 20 ? "5.7.1093.38570" : "6.1.6410.38254";
}

const char* StyleName(GroupAddressStyle style)
{
    return TavProject::GroupAddressStyleName(style);
}

bool UsesLinks(const FixtureOptions& options)
{
    return options.useLinks < 0 ? options.schema >= 20 : options.useLinks != 0;
}

// One object instance: new schemas name the reference without the program and list links by
// id; old ones name it in full and link through Connectors.
std::string Instance(const FixtureOptions& options, const std::string& ref, const std::string& attributes,
    const std::vector<std::string>& send, const std::vector<std::string>& receive)
{
    const std::string refId = options.schema >= 20 ? ref : "M-0083_A-00B0-32-0DFC_" + ref;
    std::string xml = "<ComObjectInstanceRef RefId=\"" + refId + "\"" + attributes;
    if (UsesLinks(options))
    {
        std::string links;
        for (const auto& id : send)
            links += (links.empty() ? "" : " ") + id;
        for (const auto& id : receive)
            links += (links.empty() ? "" : " ") + id;
        if (!links.empty())
            xml += " Links=\"" + links + "\"";
        return xml + " />";
    }
    if (send.empty() && receive.empty())
        return xml + " />";
    // Receive written before Send on purpose: the sending address still comes first.
    xml += "><Connectors>";
    for (const auto& id : receive)
        xml += "<Receive GroupAddressRefId=\"P-0242-0_" + id + "\" />";
    for (const auto& id : send)
        xml += "<Send GroupAddressRefId=\"P-0242-0_" + id + "\" />";
    return xml + "</Connectors></ComObjectInstanceRef>";
}
} // namespace

FixtureDocuments MakeFixtureDocuments(const FixtureOptions& options)
{
    FixtureDocuments documents;
    const std::string root = Root(options);
    documents.knxMaster = root +
                          "<MasterData Version=\"x\"><Manufacturers>"
                          "<Manufacturer Id=\"M-0001\" Name=\"Other maker\" />"
                          "<Manufacturer Id=\"M-0083\" Name=\"MDT technologies\" />"
                          "</Manufacturers></MasterData></KNX>";
    documents.projectXml = root +
                           "<Project Id=\"P-0242\"><ProjectInformation Name=\"Haus &amp; Hof\" "
                           "GroupAddressStyle=\"" +
                           StyleName(options.style) +
                           "\" LastModified=\"2023-05-04T10:11:12.123Z\" ProjectStart=\"2020-01-01T00:00:00Z\" />"
                           "</Project></KNX>";

    std::ostringstream zero;
    zero << root << "<Project Id=\"P-0242\"><Installations><Installation Name=\"\" InstallationId=\"0\">"
         << "<Topology><Area Id=\"P-0242-0_A-1\" Name=\"Building\" Address=\"1\">"
         << "<Line Id=\"P-0242-0_L-1\" Name=\"Ground floor\" Address=\"1\" MediumTypeRefId=\"MT-0\">";
    if (options.schema >= 21)
        zero << "<Segment Id=\"P-0242-0_S-1\" Name=\"\" Number=\"0\" MediumTypeRefId=\"MT-0\">";
    // The actuator first, the sensor with the lower address second: devices sort by address.
    zero << "<DeviceInstance Id=\"P-0242-0_DI-1\" Name=\"Kitchen actuator\" "
            "ProductRefId=\"M-0083_H-AKS.2D1216.2E01_P-AKS.2D1216.2E01\" "
            "Hardware2ProgramRefId=\"M-0083_H-AKS.2D1216.2E01_HP-00B0-32-0DFC\" Address=\"5\">"
         << "<ComObjectInstanceRefs>"
         << Instance(options, "O-1_R-2", " Text=\"Kitchen status\" ReadFlag=\"Enabled\" DatapointType=\"DPST-1-11\"",
                {"GA-3"}, {})
         << Instance(options, "O-0_R-1", "", {"GA-1"}, {"GA-2"})
         << Instance(options, "O-2_R-3", " Text=\"Unlinked\"", {}, {})
         << "</ComObjectInstanceRefs></DeviceInstance>"
         << "<DeviceInstance Id=\"P-0242-0_DI-2\" Name=\"\" "
            "ProductRefId=\"M-0083_H-TS.2D1.2E01_P-TS.2D1.2E01\" "
            "Hardware2ProgramRefId=\"M-0083_H-TS.2D1.2E01_HP-0099-10-AAAA\" Address=\"2\">"
         << "<ComObjectInstanceRefs>"
         << Instance(options, "O-3_R-7",
                " Text=\"Temperature\" FunctionText=\"Measure\" DatapointType=\"DPST-9-1\" CommunicationFlag=\"Enabled\" "
                "ReadFlag=\"Enabled\" TransmitFlag=\"Enabled\"",
                {"GA-4"}, {})
         << "</ComObjectInstanceRefs></DeviceInstance>"
         << "<DeviceInstance Id=\"P-0242-0_DI-3\" Name=\"Power supply\" "
            "ProductRefId=\"M-0083_H-PS_P-PS\" />";
    if (options.schema >= 21)
        zero << "</Segment>";
    zero << "</Line></Area></Topology>"
         << "<GroupAddresses><GroupRanges>"
         << "<GroupRange Id=\"P-0242-0_GR-1\" RangeStart=\"2048\" RangeEnd=\"4095\" Name=\"Lighting\">"
         << "<GroupRange Id=\"P-0242-0_GR-2\" RangeStart=\"2048\" RangeEnd=\"2303\" Name=\"Kitchen\">"
         << "<GroupAddress Id=\"P-0242-0_GA-2\" Address=\"2049\" Name=\"Kitchen light central\" />"
         << "<GroupAddress Id=\"P-0242-0_GA-1\" Address=\"2048\" Name=\"Kitchen light\" Description=\"ceiling\" "
            "DatapointType=\"DPST-1-1\" />"
         << "<GroupAddress Id=\"P-0242-0_GA-3\" Address=\"2050\" Name=\"Kitchen light status\" DatapointType=\"DPT-1\" />"
         << "</GroupRange></GroupRange>"
         << "<GroupRange Id=\"P-0242-0_GR-3\" RangeStart=\"4096\" RangeEnd=\"6143\" Name=\"Climate\">"
         << "<GroupAddress Id=\"P-0242-0_GA-4\" Address=\"4608\" Name=\"Living temperature\" Key=\"q83vEjRWeJASNFZ4kKvN7w==\" />"
         << "</GroupRange>"
         << "<GroupRange Id=\"P-0242-0_GR-4\" RangeStart=\"0\" RangeEnd=\"2047\" Name=\"Spare\">"
         << "<GroupAddress Id=\"P-0242-0_GA-5\" Address=\"1\" Name=\"Unused\" Description=\"\" />"
         << "</GroupRange>"
         << "</GroupRanges></GroupAddresses>"
         << "</Installation></Installations></Project></KNX>";
    documents.installation = zero.str();

    documents.hardware = root +
                         "<ManufacturerData><Manufacturer RefId=\"M-0083\"><Hardware>"
                         "<Hardware Id=\"M-0083_H-AKS.2D1216.2E01\" Name=\"AKS-1216.01\">"
                         "<Products><Product Id=\"M-0083_H-AKS.2D1216.2E01_P-AKS.2D1216.2E01\" "
                         "Text=\"Switch Actuator 12-fold\" OrderNumber=\"AKS-1216.01\" /></Products>"
                         "<Hardware2Programs><Hardware2Program Id=\"M-0083_H-AKS.2D1216.2E01_HP-00B0-32-0DFC\">"
                         "<ApplicationProgramRef RefId=\"M-0083_A-00B0-32-0DFC\" /></Hardware2Program></Hardware2Programs>"
                         "</Hardware>"
                         "<Hardware Id=\"M-0083_H-TS.2D1.2E01\" Name=\"TS-1.01\">"
                         "<Products><Product Id=\"M-0083_H-TS.2D1.2E01_P-TS.2D1.2E01\" "
                         "Text=\"Temperature Sensor\" OrderNumber=\"TS-1.01\" /></Products>"
                         "<Hardware2Programs><Hardware2Program Id=\"M-0083_H-TS.2D1.2E01_HP-0099-10-AAAA\">"
                         "<ApplicationProgramRef RefId=\"M-0083_A-0099-10-AAAA\" /></Hardware2Program></Hardware2Programs>"
                         "</Hardware>"
                         "</Hardware></Manufacturer></ManufacturerData></KNX>";

    const std::string app = "M-0083_A-00B0-32-0DFC";
    documents.program =
        root + "<ManufacturerData><Manufacturer RefId=\"M-0083\"><ApplicationPrograms>"
               "<ApplicationProgram Id=\"" +
        app +
        "\" Name=\"Switch\" ApplicationNumber=\"176\" ApplicationVersion=\"50\">"
        "<Static><ComObjectTable>"
        "<ComObject Id=\"" + app + "_O-0\" Name=\"Switch\" Text=\"Channel A\" Number=\"0\" FunctionText=\"Switch\" "
        "ObjectSize=\"1 Bit\" ReadFlag=\"Disabled\" WriteFlag=\"Enabled\" CommunicationFlag=\"Enabled\" "
        "TransmitFlag=\"Disabled\" UpdateFlag=\"Disabled\" ReadOnInitFlag=\"Disabled\" DatapointType=\"DPST-1-1\" />"
        "<ComObject Id=\"" + app + "_O-1\" Name=\"Status\" Text=\"Channel A\" Number=\"1\" FunctionText=\"Status\" "
        "ObjectSize=\"1 Bit\" ReadFlag=\"Disabled\" WriteFlag=\"Disabled\" CommunicationFlag=\"Enabled\" "
        "TransmitFlag=\"Enabled\" UpdateFlag=\"Disabled\" ReadOnInitFlag=\"Disabled\" DatapointType=\"DPST-1-1\" />"
        "<ComObject Id=\"" + app + "_O-2\" Name=\"Block\" Text=\"Channel A\" Number=\"2\" FunctionText=\"Block\" "
        "ObjectSize=\"1 Bit\" ReadFlag=\"Disabled\" WriteFlag=\"Enabled\" CommunicationFlag=\"Enabled\" "
        "TransmitFlag=\"Disabled\" UpdateFlag=\"Disabled\" ReadOnInitFlag=\"Disabled\" DatapointType=\"DPST-1-3\" />"
        "</ComObjectTable><ComObjectRefs>"
        "<ComObjectRef Id=\"" + app + "_O-0_R-1\" RefId=\"" + app + "_O-0\" FunctionText=\"Switch on/off\" UpdateFlag=\"Enabled\" />"
        "<ComObjectRef Id=\"" + app + "_O-1_R-2\" RefId=\"" + app + "_O-1\" Text=\"Channel A status\" />"
        "<ComObjectRef Id=\"" + app + "_O-2_R-3\" RefId=\"" + app + "_O-2\" />"
        "</ComObjectRefs></Static>"
        "<Dynamic><ChannelIndependentBlock><ParameterBlock Id=\"" + app + "_PB-1\" Text=\"General\">"
        "<choose ParamRefId=\"" + app + "_P-1_R-1\"><when test=\"1\"><ComObjectRefRef RefId=\"" + app + "_O-0_R-1\" />"
        "</when></choose></ParameterBlock></ChannelIndependentBlock></Dynamic>"
        "</ApplicationProgram></ApplicationPrograms></Manufacturer></ManufacturerData></KNX>";
    return documents;
}

std::string MakeArchive(const FixtureDocuments& documents, const FixtureOptions& options,
    const std::vector<std::pair<std::string, std::string>>& extra)
{
    ZipWriter outer;
    outer.Add("knx_master.xml", documents.knxMaster);
    outer.Add("P-0242.signature", std::string("\x01\x02\x03\x04 signature", 15), Encryption::None, "", true);
    const std::string projectFile = options.schema <= 11 ? "Project.xml" : "project.xml";
    if (options.password.empty())
    {
        outer.Add("P-0242/" + projectFile, documents.projectXml);
        outer.Add("P-0242/0.xml", documents.installation);
    }
    else
    {
        ZipWriter inner;
        const bool aes = options.schema >= 21;
        const Encryption encryption = aes ? Encryption::Aes256 : Encryption::TraditionalPkware;
        const std::string password =
            aes ? TavProject::DeriveEts6ZipPassword(options.password) : options.password;
        inner.Add(projectFile, documents.projectXml, encryption, password);
        inner.Add("0.xml", documents.installation, encryption, password);
        outer.Add("P-0242.zip", inner.Finish(), Encryption::None, "", true);
    }
    outer.Add(kFixtureHardwarePath, documents.hardware);
    outer.Add(kFixtureProgramPath, documents.program);
    for (const auto& entry : extra)
        outer.Add(entry.first, entry.second);
    return outer.Finish();
}

std::string MakeFixtureArchive(const FixtureOptions& options)
{
    return MakeArchive(MakeFixtureDocuments(options), options);
}

TavProject::Project ExpectedFixtureProject(const FixtureOptions& options)
{
    using namespace TavProject;
    const auto ga = [&](std::uint16_t raw) { return FormatGroupAddress(raw, options.style); };
    Project project;
    project.info = ProjectInfo{"P-0242", "Haus & Hof", options.schema, ToolVersion(options.schema), options.style,
        "2023-05-04T10:11:12.123Z"};
    project.groupAddresses = {
        GroupAddress{1, ga(1), "Unused", "", boost::none, false},
        GroupAddress{2048, ga(2048), "Kitchen light", "ceiling", Dpt{1, 1}, false},
        GroupAddress{2049, ga(2049), "Kitchen light central", "", Dpt{1, 1}, false},
        GroupAddress{2050, ga(2050), "Kitchen light status", "", Dpt{1, boost::none}, false},
        GroupAddress{4608, ga(4608), "Living temperature", "", Dpt{9, 1}, true},
    };
    Device sensor;
    sensor.area = 1;
    sensor.line = 1;
    sensor.device = 2;
    sensor.address = "1.1.2";
    sensor.name = "Temperature Sensor";
    sensor.orderNumber = "TS-1.01";
    sensor.manufacturer = "MDT technologies";
    CommunicationObject temperature;
    temperature.number = 3;
    temperature.name = "Temperature";
    temperature.function = "Measure";
    temperature.dpt = Dpt{9, 1};
    temperature.flags.communication = temperature.flags.read = temperature.flags.transmit = true;
    temperature.groupAddresses = {ga(4608)};
    temperature.groupAddressesRaw = {4608};
    sensor.communicationObjects = {temperature};

    Device actuator;
    actuator.area = 1;
    actuator.line = 1;
    actuator.device = 5;
    actuator.address = "1.1.5";
    actuator.name = "Kitchen actuator";
    actuator.orderNumber = "AKS-1216.01";
    actuator.manufacturer = "MDT technologies";
    CommunicationObject sw;
    sw.number = 0;
    sw.name = "Channel A";
    sw.function = "Switch on/off";
    sw.dpt = Dpt{1, 1};
    sw.flags.communication = sw.flags.write = sw.flags.update = true;
    sw.groupAddresses = {ga(2048), ga(2049)};
    sw.groupAddressesRaw = {2048, 2049};
    CommunicationObject status;
    status.number = 1;
    status.name = "Kitchen status";
    status.function = "Status";
    status.dpt = Dpt{1, 11};
    status.flags.communication = status.flags.read = status.flags.transmit = true;
    status.groupAddresses = {ga(2050)};
    status.groupAddressesRaw = {2050};
    actuator.communicationObjects = {sw, status};
    project.devices = {sensor, actuator};
    return project;
}

std::string ReadWholeFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

void WriteWholeFile(const std::string& path, const std::string& data)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(data.data(), static_cast<std::streamsize>(data.size()));
}
} // namespace TavTest
