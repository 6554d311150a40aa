// Reading a protected ETS5 project of installation size: about 1.2 MB of archive holding about
// 14 MB of XML, most of it manufacturers' application programs. The same archive is also
// unpacked by `unzip -p` for comparison with plain decompression.
#include "KnxprojWriter.h"

#include <project/ProjectReader.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

namespace
{
constexpr int kPrograms = 9;
constexpr int kObjectsPerProgram = 240;
constexpr int kParametersPerProgram = 2600;
constexpr int kDevices = 120;
constexpr int kGroupAddresses = 1500;
const char* const kPassword = "bench";

// Reproducible noise, so the XML compresses like real programs do (about 12:1), not like
// repeated text.
class Noise
{
public:
    explicit Noise(std::uint32_t seed) : state_(seed) {}
    std::uint32_t Next(std::uint32_t bound)
    {
        state_ = state_ * 1664525u + 1013904223u;
        return (state_ >> 8) % bound;
    }

private:
    std::uint32_t state_;
};

const char* const kWords[] = {"Channel", "Switch", "Dimming", "Blind", "Status", "Lock", "Scene", "Value",
    "Heating", "Cooling", "Delay", "Time", "Threshold", "Output", "Input", "Central", "Feedback", "Alarm",
    "Priority", "Mode", "Night", "Day", "Brightness", "Position", "Slat", "Wind", "Rain", "Frost"};

std::string Words(Noise& noise, int count)
{
    std::string text;
    for (int i = 0; i < count; ++i)
        text += (i == 0 ? "" : " ") + std::string(kWords[noise.Next(sizeof kWords / sizeof kWords[0])]);
    return text;
}

std::string ProgramId(int program)
{
    char id[64];
    std::snprintf(id, sizeof id, "M-0083_A-%04X-%02X-%04X", 0x0100 + program, 0x10 + program, 0xA000 + program * 7);
    return id;
}

std::string Program(int program)
{
    Noise noise(static_cast<std::uint32_t>(program) * 7919u + 17u);
    const std::string app = ProgramId(program);
    std::ostringstream xml;
    xml << "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<KNX xmlns=\"http://knx.org/xml/project/20\" "
           "CreatedBy=\"KNX MT\" ToolVersion=\"5.1.255.16695\">\n<ManufacturerData>\n<Manufacturer RefId=\"M-0083\">\n"
           "<ApplicationPrograms>\n<ApplicationProgram Id=\""
        << app << "\" ApplicationNumber=\"" << 256 + program << "\" ApplicationVersion=\"" << 16 + program
        << "\" ProgramType=\"ApplicationProgram\" MaskVersion=\"MV-07B0\" Name=\"" << Words(noise, 3)
        << "\" LoadProcedureStyle=\"MergedProcedure\" PeiType=\"0\" DefaultLanguage=\"de-DE\" DynamicTableManagement=\"false\" "
           "Linkable=\"false\" MinEtsVersion=\"4.0\">\n<Static>\n<Code><RelativeSegment Id=\""
        << app << "_RS-04-00000\" Name=\"Parameters\" Offset=\"0\" Size=\"4096\" LoadStateMachine=\"4\" /></Code>\n"
        << "<ParameterTypes>\n";
    for (int t = 0; t < 60; ++t)
    {
        xml << "<ParameterType Id=\"" << app << "_PT-" << t << "\" Name=\"" << Words(noise, 2) << "_" << t << "\">"
            << "<TypeRestriction Base=\"Value\" SizeInBit=\"8\">";
        for (int e = 0; e < 6; ++e)
            xml << "<Enumeration Text=\"" << Words(noise, 2) << "\" Value=\"" << e << "\" Id=\"" << app << "_PT-" << t
                << "_EN-" << e << "\" />";
        xml << "</TypeRestriction></ParameterType>\n";
    }
    xml << "</ParameterTypes>\n<Parameters>\n";
    for (int p = 0; p < kParametersPerProgram; ++p)
    {
        xml << "<Parameter Id=\"" << app << "_P-" << p << "\" Name=\"P" << noise.Next(100000) << "\" ParameterType=\""
            << app << "_PT-" << noise.Next(60) << "\" Text=\"" << Words(noise, 4) << "\" Access=\"ReadWrite\" Value=\""
            << noise.Next(256) << "\"><Memory CodeSegment=\"" << app << "_RS-04-00000\" Offset=\"" << noise.Next(4096)
            << "\" BitOffset=\"" << noise.Next(8) << "\" /></Parameter>\n";
    }
    xml << "</Parameters>\n<ParameterRefs>\n";
    for (int p = 0; p < kParametersPerProgram; ++p)
        xml << "<ParameterRef Id=\"" << app << "_P-" << p << "_R-" << p + 1 << "\" RefId=\"" << app << "_P-" << p
            << "\" />\n";
    xml << "</ParameterRefs>\n<ComObjectTable CodeSegment=\"" << app << "_RS-04-00000\" Offset=\"0\">\n";
    for (int o = 0; o < kObjectsPerProgram; ++o)
    {
        xml << "<ComObject Id=\"" << app << "_O-" << o << "\" Name=\"" << Words(noise, 2) << "\" Text=\"Channel "
            << o / 8 + 1 << ": " << Words(noise, 2) << "\" Number=\"" << o << "\" FunctionText=\"" << Words(noise, 2)
            << "\" ObjectSize=\"1 Bit\" ReadFlag=\"Disabled\" WriteFlag=\"Enabled\" CommunicationFlag=\"Enabled\" "
               "TransmitFlag=\""
            << (noise.Next(2) ? "Enabled" : "Disabled")
            << "\" UpdateFlag=\"Disabled\" ReadOnInitFlag=\"Disabled\" DatapointType=\"DPST-1-" << 1 + noise.Next(20)
            << "\" />\n";
    }
    xml << "</ComObjectTable>\n<ComObjectRefs>\n";
    for (int o = 0; o < kObjectsPerProgram; ++o)
        xml << "<ComObjectRef Id=\"" << app << "_O-" << o << "_R-" << o + 1 << "\" RefId=\"" << app << "_O-" << o
            << "\" Text=\"" << Words(noise, 3) << "\" />\n";
    xml << "</ComObjectRefs>\n</Static>\n<Dynamic>\n";
    for (int c = 0; c < 30; ++c)
    {
        xml << "<Channel Id=\"" << app << "_CH-" << c << "\" Name=\"C" << c << "\" Number=\"" << c << "\" Text=\""
            << Words(noise, 2) << "\"><ParameterBlock Id=\"" << app << "_PB-" << c << "\" Text=\"" << Words(noise, 2)
            << "\">";
        for (int k = 0; k < 60; ++k)
        {
            const int p = static_cast<int>(noise.Next(kParametersPerProgram));
            xml << "<choose ParamRefId=\"" << app << "_P-" << p << "_R-" << p + 1 << "\"><when test=\"" << noise.Next(4)
                << "\"><ParameterRefRef RefId=\"" << app << "_P-" << p << "_R-" << p + 1 << "\" />"
                << "<ComObjectRefRef RefId=\"" << app << "_O-" << noise.Next(kObjectsPerProgram) << "_R-"
                << noise.Next(kObjectsPerProgram) + 1 << "\" /></when></choose>\n";
        }
        xml << "</ParameterBlock></Channel>\n";
    }
    xml << "</Dynamic>\n</ApplicationProgram>\n</ApplicationPrograms>\n</Manufacturer>\n</ManufacturerData>\n</KNX>\n";
    return xml.str();
}

struct BenchProject
{
    std::string path;
    std::string archive;
    std::size_t xmlBytes = 0;
};

BenchProject MakeBenchProject()
{
    const std::string root = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<KNX xmlns=\"http://knx.org/xml/project/20\" "
                             "CreatedBy=\"ETS5\" ToolVersion=\"5.7.1093.38570\">";
    BenchProject bench;
    Noise noise(4711);
    std::ostringstream master;
    master << root << "<MasterData Version=\"x\"><DatapointTypes>";
    for (int d = 0; d < 2500; ++d)
        master << "<DatapointType Id=\"DPT-" << d << "\" Number=\"" << d << "\" Name=\"" << Words(noise, 2)
               << "\" Text=\"" << Words(noise, 3) << "\" SizeInBit=\"" << 1 + noise.Next(32) << "\" />\n";
    master << "</DatapointTypes><Manufacturers>";
    for (int m = 0; m < 400; ++m)
        master << "<Manufacturer Id=\"M-" << std::hex << m + 1 << std::dec << "\" Name=\"" << Words(noise, 2)
               << "\" KnxManufacturerId=\"" << m + 1 << "\" />\n";
    master << "<Manufacturer Id=\"M-0083\" Name=\"MDT technologies\" /></Manufacturers></MasterData></KNX>";

    std::ostringstream hardware;
    hardware << root << "<ManufacturerData><Manufacturer RefId=\"M-0083\"><Hardware>";
    for (int p = 0; p < kPrograms; ++p)
        hardware << "<Hardware Id=\"M-0083_H-" << p << "\" Name=\"H" << p << "\"><Products><Product Id=\"M-0083_H-" << p
                 << "_P-" << p << "\" Text=\"" << Words(noise, 3) << "\" OrderNumber=\"ORD-" << p
                 << "\" /></Products><Hardware2Programs><Hardware2Program Id=\"M-0083_H-" << p << "_HP-" << p
                 << "\"><ApplicationProgramRef RefId=\"" << ProgramId(p)
                 << "\" /></Hardware2Program></Hardware2Programs></Hardware>";
    hardware << "</Hardware></Manufacturer></ManufacturerData></KNX>";

    std::ostringstream zero;
    zero << root << "<Project Id=\"P-0B17\"><Installations><Installation Name=\"\" InstallationId=\"0\"><Topology>"
         << "<Area Id=\"P-0B17-0_A-1\" Name=\"A\" Address=\"1\">";
    for (int line = 1; line <= 4; ++line)
    {
        zero << "<Line Id=\"P-0B17-0_L-" << line << "\" Name=\"L\" Address=\"" << line << "\">";
        for (int d = 0; d < kDevices / 4; ++d)
        {
            const int program = static_cast<int>(noise.Next(kPrograms));
            zero << "<DeviceInstance Id=\"P-0B17-0_DI-" << line * 100 + d << "\" Name=\"" << Words(noise, 2)
                 << "\" ProductRefId=\"M-0083_H-" << program << "_P-" << program << "\" Hardware2ProgramRefId=\"M-0083_H-"
                 << program << "_HP-" << program << "\" Address=\"" << d + 1 << "\"><ComObjectInstanceRefs>";
            for (int o = 0; o < 24; ++o)
            {
                zero << "<ComObjectInstanceRef RefId=\"O-" << o << "_R-" << o + 1 << "\" Links=\"GA-"
                     << 1 + noise.Next(kGroupAddresses) << " GA-" << 1 + noise.Next(kGroupAddresses) << "\" />";
            }
            zero << "</ComObjectInstanceRefs></DeviceInstance>";
        }
        zero << "</Line>";
    }
    zero << "</Area></Topology><GroupAddresses><GroupRanges>";
    for (int g = 0; g < kGroupAddresses; ++g)
    {
        if (g % 100 == 0)
            zero << (g == 0 ? "" : "</GroupRange>") << "<GroupRange Id=\"P-0B17-0_GR-" << g << "\" Name=\"" << Words(noise, 2)
                 << "\">";
        zero << "<GroupAddress Id=\"P-0B17-0_GA-" << g + 1 << "\" Address=\"" << 2048 + g * 3 << "\" Name=\""
             << Words(noise, 3) << "\"" << (g % 3 == 0 ? " DatapointType=\"DPST-9-1\"" : "") << " />";
    }
    zero << "</GroupRange></GroupRanges></GroupAddresses></Installation></Installations></Project></KNX>";
    const std::string project = root + "<Project Id=\"P-0B17\"><ProjectInformation Name=\"Bench\" "
                                       "GroupAddressStyle=\"ThreeLevel\" LastModified=\"2024-01-01T00:00:00Z\" /></Project></KNX>";

    TavTest::ZipWriter inner;
    inner.Add("project.xml", project, TavTest::Encryption::TraditionalPkware, kPassword);
    inner.Add("0.xml", zero.str(), TavTest::Encryption::TraditionalPkware, kPassword);
    TavTest::ZipWriter outer;
    outer.Add("knx_master.xml", master.str());
    outer.Add("P-0B17.signature", "signature", TavTest::Encryption::None, "", true);
    outer.Add("P-0B17.zip", inner.Finish(), TavTest::Encryption::None, "", true);
    outer.Add("M-0083/Hardware.xml", hardware.str());
    bench.xmlBytes = master.str().size() + hardware.str().size() + zero.str().size() + project.size();
    for (int p = 0; p < kPrograms; ++p)
    {
        std::string program = Program(p);
        bench.xmlBytes += program.size();
        outer.Add("M-0083/" + ProgramId(p) + ".xml", std::move(program));
    }
    bench.archive = outer.Finish();
    const char* tmp = std::getenv("TMPDIR");
    bench.path = std::string(tmp != nullptr ? tmp : "/tmp") + "/tav-bench-project.knxproj";
    TavTest::WriteWholeFile(bench.path, bench.archive);
    return bench;
}

const BenchProject& Bench()
{
    static const BenchProject bench = MakeBenchProject();
    return bench;
}

void SetSizes(benchmark::State& state)
{
    state.counters["archive_bytes"] = static_cast<double>(Bench().archive.size());
    state.counters["xml_bytes"] = static_cast<double>(Bench().xmlBytes);
}

void BM_ReadProtectedEts5Project(benchmark::State& state)
{
    TavProject::ReadOptions options;
    options.password = kPassword;
    Bench();  // generated before the clock starts
    std::size_t objects = 0;
    for (auto _ : state)
    {
        const TavProject::Project project = TavProject::ReadProjectFile(Bench().path, options);
        objects = 0;
        for (const auto& device : project.devices)
            objects += device.communicationObjects.size();
        benchmark::DoNotOptimize(objects);
    }
    SetSizes(state);
    state.counters["objects"] = static_cast<double>(objects);
}
BENCHMARK(BM_ReadProtectedEts5Project)->Unit(benchmark::kMillisecond)->UseRealTime();

// The yardstick: `unzip -p` of the same archive into /dev/null, process start included.
void BM_UnzipPipeSameArchive(benchmark::State& state)
{
    Bench();
    const std::string command = "unzip -p '" + Bench().path + "' > /dev/null 2>&1";
    if (std::system("command -v unzip > /dev/null 2>&1") != 0)
    {
        state.SkipWithError("unzip is not installed");
        return;
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(std::system(command.c_str()));
    SetSizes(state);
}
BENCHMARK(BM_UnzipPipeSameArchive)->Unit(benchmark::kMillisecond)->UseRealTime();
} // namespace
