// project: what an ETS project (.knxproj) holds, as the commissioning software shows it: the
// project, its group addresses and its devices with their communication objects.
#include "cli/ProjectOptions.h"
#include "commands/Commands.h"
#include "knx/DptText.h"
#include "knx/TextError.h"

#include <project/ProjectJson.h>
#include <project/ProjectModel.h>

#include <boost/program_options.hpp>

#include <algorithm>
#include <ostream>
#include <string>

namespace po = boost::program_options;

namespace TavKnx
{
namespace
{
void AddProjectOptions(po::options_description& options)
{
    AddProjectPasswordOption(options);
    options.add_options()("format", po::value<std::string>()->value_name("FORMAT"),
                          "'text' (the default) or 'map': the group address map text that --map reads");
}

std::string DptText(const boost::optional<TavProject::Dpt>& dpt)
{
    if (!dpt)
    {
        return "-";
    }
    // As KNX writes it: "9.001", a main number alone as "9".
    return dpt->sub ? FormatKnxDpt(KNXDPT{0, dpt->main, *dpt->sub}) : std::to_string(dpt->main);
}

std::string Padded(const std::string& text, std::size_t width)
{
    return text.size() >= width ? text : text + std::string(width - text.size(), ' ');
}

std::string OrDash(const std::string& text)
{
    return text.empty() ? std::string("-") : text;
}

void PrintText(const TavProject::Project& project, std::ostream& out)
{
    const TavProject::ProjectInfo& info = project.info;
    out << "project " << info.projectId << ": " << OrDash(info.name) << "\n"
        << "  schema " << info.schemaVersion << ", tool " << OrDash(info.toolVersion) << ", group address style "
        << TavProject::GroupAddressStyleName(info.groupAddressStyle) << ", last modified "
        << OrDash(info.lastModified) << "\n";

    // Columns as wide as their widest entry, so that the names line up.
    std::size_t addressWidth = 0;
    std::size_t dptWidth = 0;
    for (const TavProject::GroupAddress& groupAddress : project.groupAddresses)
    {
        addressWidth = std::max(addressWidth, groupAddress.address.size());
        dptWidth = std::max(dptWidth, DptText(groupAddress.dpt).size());
    }
    out << "group addresses: " << project.groupAddresses.size() << "\n";
    for (const TavProject::GroupAddress& groupAddress : project.groupAddresses)
    {
        out << "  " << Padded(groupAddress.address, addressWidth) << "  " << Padded(DptText(groupAddress.dpt), dptWidth)
            << "  " << groupAddress.name << (groupAddress.dataSecure ? " (data secure)" : "") << "\n";
    }

    out << "devices: " << project.devices.size() << "\n";
    for (const TavProject::Device& device : project.devices)
    {
        out << "  " << device.address << "  " << OrDash(device.name) << ", order number " << OrDash(device.orderNumber)
            << ", manufacturer " << OrDash(device.manufacturer) << "\n";
        for (const TavProject::CommunicationObject& object : device.communicationObjects)
        {
            out << "    " << object.number << "  " << OrDash(object.name) << "  " << OrDash(object.function) << "  "
                << DptText(object.dpt) << "  " << OrDash(TavProject::FlagsText(object.flags));
            for (const std::string& groupAddress : object.groupAddresses)
            {
                out << "  " << groupAddress;
            }
            out << "\n";
        }
    }
}

int RunProject(const Invocation& invocation)
{
    invocation.RequireArgs(1, 1, "FILE");
    const std::string format = invocation.options.count("format") ? invocation.options["format"].as<std::string>() : "text";
    if (format != "text" && format != "map")
    {
        throw UsageError("--format: expected 'text' or 'map', got " + Quote(format));
    }
    if (format == "map" && invocation.json)
    {
        throw UsageError("--format map and --json: give one of them");
    }
    const TavProject::Project project = ReadProject(invocation, invocation.args[0]);
    if (invocation.json)
    {
        invocation.Out() << TavProject::ToJson(project) << "\n";
    }
    else if (format == "map")
    {
        invocation.Out() << TavProject::ToMapText(project);
    }
    else
    {
        PrintText(project, invocation.Out());
    }
    return kExitDone;
}
} // namespace

void AddProjectCommand(std::vector<Command>& commands)
{
    commands.push_back(
        {"project", "project FILE [--format text|map] [--password-file FILE] [--json]",
         "print an ETS project's group addresses, devices and communication objects",
         "Reads the ETS project FILE (.knxproj, as ETS 4, 5 and 6 export it) and prints the project,\n"
         "its group addresses (address, DPT, name) and its devices (individual address, name, order\n"
         "number, manufacturer) with their communication objects (number, name, function, DPT, flags\n"
         "C R W T U I, linked group addresses, the sending one first). A DPT of '-' means none is known.\n"
         "--json prints the whole model as one JSON object; --format map prints the 'GA;DPT  # name'\n"
         "map that monitor --map reads (monitor --map also takes the project itself).\n"
         "A password-protected project needs its password: the first line of --password-file, or the\n"
         "environment variable TAVKNX_PROJECT_PASSWORD; never on the command line, where every user\n"
         "sees it. Exit 1 when the project is protected and no password or a wrong one is given, or\n"
         "when it cannot be read (stderr says why); parts that are skipped get a WARN log line.\n\n"
         "Examples:\n"
         "  tavknx project installation.knxproj\n"
         "  tavknx project installation.knxproj --json\n"
         "  tavknx project installation.knxproj --password-file ~/.knxproj-password\n"
         "  tavknx project installation.knxproj --format map > groups.txt\n",
         AddProjectOptions, RunProject});
}
} // namespace TavKnx
