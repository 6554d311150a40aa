#include <devicestack/DeviceObjectsFile.h>

#include <knx/DptText.h>
#include <knx/KnxAddress.h>
#include <knx/NumberText.h>
#include <knx/TextError.h>

#include <fstream>
#include <set>
#include <stdexcept>

namespace Lumo
{
namespace
{
// An installation has a few hundred objects; a bigger file is a mistake or hostile.
constexpr std::size_t kMaxFileBytes = 16u * 1024u * 1024u;
// Garbage gives a problem per line: list the first ones only, so memory stays small.
constexpr std::size_t kMaxListedProblems = 100;
// KNX allows a few group addresses per object; more on one line is a mistake.
constexpr std::size_t kMaxGroupAddresses = 255;
const char kBlanks[] = " \t\r";

std::string Trim(const std::string& text)
{
    const std::string::size_type first = text.find_first_not_of(kBlanks);
    if (first == std::string::npos)
    {
        return std::string();
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// At most `keep` fields; the last one keeps the rest of the text, separators included.
std::vector<std::string> Split(const std::string& text, char separator, std::size_t keep)
{
    std::vector<std::string> fields;
    std::string::size_type at = 0;
    while (fields.size() < keep)
    {
        const std::string::size_type end =
            fields.size() + 1 == keep ? std::string::npos : text.find(separator, at);
        fields.push_back(Trim(text.substr(at, end == std::string::npos ? std::string::npos : end - at)));
        if (end == std::string::npos)
        {
            break;
        }
        at = end + 1;
    }
    return fields;
}

// Throws TavKnx::TextError saying what is wrong.
DeviceObject ParseLine(const std::string& line)
{
    // The name is the rest of the line: it may hold ';'.
    const std::vector<std::string> fields = Split(line, ';', 5);
    if (fields.size() < 5)
    {
        throw TavKnx::TextError("expected CO;GA[,GA...];DPT;FLAGS;NAME, got " + TavKnx::Quote(line));
    }
    DeviceObject object;
    const std::uint64_t co = TavKnx::ParseUnsigned(fields[0], 0xFFFFu, "CO");
    if (co == 0 || ObjectValueId(static_cast<unsigned short>(co)) == 0)
    {
        throw TavKnx::TextError("CO: expected an object number the value ids can hold, got " +
                                TavKnx::Quote(fields[0]));
    }
    object.co = static_cast<unsigned short>(co);
    const std::vector<std::string> addresses = Split(fields[1], ',', kMaxGroupAddresses + 1);
    if (addresses.size() > kMaxGroupAddresses)
    {
        throw TavKnx::TextError("GA: more than 255 group addresses");
    }
    for (const std::string& text : addresses)
    {
        const boost::optional<std::uint16_t> address = TavKnx::ParseGroupAddress(text);
        if (!address)
        {
            throw TavKnx::TextError("GA: expected a group address, got " + TavKnx::Quote(text));
        }
        object.groupAddresses.push_back(*address);
    }
    object.dpt = TavKnx::ParseDpt(fields[2]);
    if (!ParseObjectFlags(fields[3], object.flags))
    {
        throw TavKnx::TextError("FLAGS: expected letters of CRWTUI, got " + TavKnx::Quote(fields[3]));
    }
    object.name = fields[4];
    // A name stays on its line wherever it is printed.
    for (char& c : object.name)
    {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
        {
            c = ' ';
        }
    }
    return object;
}

void Report(std::vector<TavKnx::MapProblem>& problems, std::size_t& dropped, std::size_t line, std::string message)
{
    if (problems.size() < kMaxListedProblems)
    {
        problems.push_back({line, std::move(message)});
    }
    else
    {
        ++dropped;
    }
}
} // namespace

std::vector<DeviceObject> ParseDeviceObjects(const std::string& content, std::vector<TavKnx::MapProblem>& problems)
{
    std::vector<DeviceObject> objects;
    std::set<unsigned short> numbers;
    std::size_t dropped = 0;
    std::size_t lineNumber = 0;
    std::string::size_type at = 0;
    while (at < content.size())
    {
        const std::string::size_type end = content.find('\n', at);
        const std::string line = content.substr(at, end == std::string::npos ? std::string::npos : end - at);
        at = end == std::string::npos ? content.size() : end + 1;
        ++lineNumber;
        const std::string trimmed = Trim(line);
        if (trimmed.empty() || trimmed[0] == '#')
        {
            continue;
        }
        try
        {
            DeviceObject object = ParseLine(trimmed);
            if (!numbers.insert(object.co).second)
            {
                Report(problems, dropped, lineNumber, "CO " + std::to_string(object.co) + " is already defined");
                continue;
            }
            objects.push_back(std::move(object));
        }
        catch (const TavKnx::TextError& error)
        {
            Report(problems, dropped, lineNumber, error.what());
        }
    }
    if (dropped != 0)
    {
        problems.push_back({lineNumber, std::to_string(dropped) + " more lines skipped"});
    }
    return objects;
}

std::vector<DeviceObject> LoadDeviceObjects(const std::string& path, std::vector<TavKnx::MapProblem>& problems)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
    {
        throw std::runtime_error("cannot read objects file '" + path + "'");
    }
    std::string content;
    char buffer[65536];
    while (file.read(buffer, sizeof buffer) || file.gcount() > 0)
    {
        content.append(buffer, static_cast<std::size_t>(file.gcount()));
        if (content.size() > kMaxFileBytes)
        {
            throw std::runtime_error("objects file '" + path + "' is larger than 16 MiB");
        }
    }
    if (file.bad())
    {
        throw std::runtime_error("cannot read objects file '" + path + "'");
    }
    return ParseDeviceObjects(content, problems);
}

std::vector<DeviceObject> DeviceObjectsFromProject(const TavProject::Project& project, const std::string& address,
                                                   std::vector<TavKnx::MapProblem>& problems)
{
    for (const TavProject::Device& device : project.devices)
    {
        if (device.address != address)
        {
            continue;
        }
        std::vector<DeviceObject> objects;
        for (const TavProject::CommunicationObject& source : device.communicationObjects)
        {
            const std::string which = "CO " + std::to_string(source.number);
            if (source.number == 0 || source.number > 0xFFFFu ||
                ObjectValueId(static_cast<unsigned short>(source.number)) == 0)
            {
                problems.push_back({0, which + ": no value id for this number"});
                continue;
            }
            if (source.groupAddressesRaw.empty())
            {
                problems.push_back({0, which + ": no group address"});
                continue;
            }
            if (!source.dpt)
            {
                problems.push_back({0, which + ": no DPT"});
                continue;
            }
            DeviceObject object;
            object.co = static_cast<unsigned short>(source.number);
            object.groupAddresses = source.groupAddressesRaw;
            object.dpt = KNXDPT{0, source.dpt->main, source.dpt->sub ? *source.dpt->sub : std::uint16_t{0}};
            const TavProject::ObjectFlags& flags = source.flags;
            object.flags = (flags.communication ? kFlagCommunication : 0u) | (flags.read ? kFlagRead : 0u) |
                           (flags.write ? kFlagWrite : 0u) | (flags.transmit ? kFlagTransmit : 0u) |
                           (flags.update ? kFlagUpdate : 0u) | (flags.readOnInit ? kFlagReadOnInit : 0u);
            object.name = source.name;
            objects.push_back(std::move(object));
        }
        return objects;
    }
    throw std::runtime_error("the project has no device " + address);
}
} // namespace Lumo
