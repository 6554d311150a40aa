#pragma once
// Writes .knxproj archives for tests and benchmarks: a zip writer over libzip (plain, traditional
// PKWARE and AES-256 entries) and a small installation in the layout each ETS generation uses.
#include <project/ProjectModel.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace TavTest
{
enum class Encryption
{
    None,
    TraditionalPkware,
    Aes256
};

class ZipWriter
{
public:
    void Add(const std::string& name, std::string data, Encryption encryption = Encryption::None,
        const std::string& password = std::string(), bool store = false);
    // The archive's bytes.
    std::string Finish() const;

private:
    struct Entry
    {
        std::string name;
        std::string data;
        Encryption encryption;
        std::string password;
        bool store;
    };
    std::vector<Entry> entries_;
};

// The fixture installation. Two devices in line 1.1: 1.1.5, a switch actuator whose objects
// come from its application program and are partly overridden on the instance, and 1.1.2, a
// sensor whose application program is not in the archive. Five group addresses, with and
// without DatapointType, one data-secure.
struct FixtureOptions
{
    unsigned schema = 20;
    std::string password;  // empty: unprotected
    TavProject::GroupAddressStyle style = TavProject::GroupAddressStyle::ThreeLevel;
    // Links attribute from schema 20, Connectors below, unless forced.
    int useLinks = -1;  // -1: by schema, 0: Connectors, 1: Links
};

struct FixtureDocuments
{
    std::string knxMaster;
    std::string projectXml;
    std::string installation;  // 0.xml
    std::string hardware;      // M-0083/Hardware.xml
    std::string program;       // M-0083/M-0083_A-00B0-32-0DFC.xml
};

extern const char* const kFixtureProgramPath;
extern const char* const kFixtureHardwarePath;

FixtureDocuments MakeFixtureDocuments(const FixtureOptions& options);

// Puts documents into the archive layout: P-0242/ directly, or protected in P-0242.zip with
// the encryption of the schema (traditional below 21, AES-256 with the derived password from 21).
// `extra` entries are added to the outer archive as they are.
std::string MakeArchive(const FixtureDocuments& documents, const FixtureOptions& options,
    const std::vector<std::pair<std::string, std::string>>& extra = {});

std::string MakeFixtureArchive(const FixtureOptions& options);

// The model the fixture reads into.
TavProject::Project ExpectedFixtureProject(const FixtureOptions& options);

std::string ReadWholeFile(const std::string& path);
void WriteWholeFile(const std::string& path, const std::string& data);
} // namespace TavTest
