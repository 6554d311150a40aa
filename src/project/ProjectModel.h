#pragma once
// The plain in-memory model of an ETS project (.knxproj): what the installation's commissioning
// software knows about group addresses, devices and their communication objects. Values only:
// no references into the archive or the XML, so a model may be copied, kept and shared between
// threads freely once read.
#include <boost/optional.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace TavProject
{
// How the project prints group addresses.
enum class GroupAddressStyle
{
    ThreeLevel,  // main/middle/sub, 5/3/8 bits
    TwoLevel,    // main/sub, 5/11 bits
    Free         // the plain 16-bit number
};

// "ThreeLevel", "TwoLevel", "Free": the names the project files use.
const char* GroupAddressStyleName(GroupAddressStyle style);
// The address as the style prints it: 2048 is "1/0/0", "1/0" or "2048".
std::string FormatGroupAddress(std::uint16_t raw, GroupAddressStyle style);

struct Dpt
{
    std::uint16_t main = 0;
    boost::optional<std::uint16_t> sub;  // none where only the main type is given ("DPT-9")

    bool operator==(const Dpt& other) const { return main == other.main && sub == other.sub; }
    bool operator!=(const Dpt& other) const { return !(*this == other); }
};

// The first DPT of a DatapointType attribute: "DPST-9-1" is 9.1, "DPT-9" is 9 without sub;
// several may be listed, separated by blanks. Tokens that are neither form are passed over;
// none when nothing is left.
boost::optional<Dpt> ParseDatapointType(const std::string& text);

struct ProjectInfo
{
    std::string projectId;  // "P-0242"
    std::string name;
    unsigned schemaVersion = 0;  // N of the namespace http://knx.org/xml/project/N
    std::string toolVersion;
    GroupAddressStyle groupAddressStyle = GroupAddressStyle::ThreeLevel;
    std::string lastModified;  // as the project writes it (ISO 8601)
};

struct GroupAddress
{
    std::uint16_t raw = 0;
    std::string address;  // printed in the project's style
    std::string name;
    std::string description;
    // Its own DatapointType, else that of the first communication object linked to it (devices
    // by individual address, objects by number); none when nothing gives one.
    boost::optional<Dpt> dpt;
    bool dataSecure = false;
};

// The communication flags, C R W T U I.
struct ObjectFlags
{
    bool communication = false;  // C
    bool read = false;           // R
    bool write = false;          // W
    bool transmit = false;       // T
    bool update = false;         // U
    bool readOnInit = false;     // I

    bool operator==(const ObjectFlags& other) const;
};

// The set flags in the order C R W T U I, as "CWT"; empty when none is set.
std::string FlagsText(const ObjectFlags& flags);

struct CommunicationObject
{
    unsigned number = 0;
    std::string name;
    std::string function;
    boost::optional<Dpt> dpt;
    ObjectFlags flags;
    // Linked group addresses in the project's order, printed; the first is the sending one.
    std::vector<std::string> groupAddresses;
    std::vector<std::uint16_t> groupAddressesRaw;  // the same, raw
};

struct Device
{
    unsigned area = 0;
    unsigned line = 0;
    unsigned device = 0;
    std::string address;  // "area.line.device"
    std::string name;
    std::string orderNumber;
    std::string manufacturer;  // the manufacturer's name, else its id ("M-0083")
    std::vector<CommunicationObject> communicationObjects;  // by number
};

struct Project
{
    ProjectInfo info;
    std::vector<GroupAddress> groupAddresses;  // by raw address
    std::vector<Device> devices;               // by individual address
};
} // namespace TavProject
