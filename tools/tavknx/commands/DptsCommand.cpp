// dpts: the rows of the DPT value map as KnxValueConverter fills it.
#include "cli/Output.h"
#include "commands/Commands.h"
#include "knx/DptText.h"

#include <TavObjectModel/KnxValueConverter.h>
#include <platform/OkaValue.h>

#include <iomanip>
#include <ostream>

namespace TavKnx
{
namespace
{
int RunDpts(const Invocation& invocation)
{
    invocation.RequireArgs(0, 0, "no arguments");
    const Okaro::KnxValueConverter converter;
    std::ostream& out = invocation.Out();
    if (!invocation.json)
    {
        out << std::left << std::setw(10) << "DPT" << std::setw(6) << "bits" << std::setw(20) << "value type"
            << "sub-type\n";
    }
    for (const auto& main : converter.GetDptValueMap().GetEntries())
    {
        for (const auto& sub : main.second)
        {
            const Okaro::DptValueEntry& entry = sub.second;
            // Sub number 0 is the main number's wildcard row.
            const std::string dpt =
                std::to_string(main.first) + "." + (sub.first == 0 ? std::string("x") : std::to_string(sub.first));
            const OkaValueType type = entry.GetValueType();
            const OkaDP::OkaValueSubType subType = entry.GetValueSubType();
            if (invocation.json)
            {
                out << JsonObject()
                           .Add("dpt", dpt)
                           .Add("bits", static_cast<unsigned>(entry.GetDpt().size))
                           .Add("ivt", static_cast<int>(type))
                           .Add("type", OKAVALUE::GetNameFromValueType(type))
                           .Add("subType", static_cast<int>(subType))
                           .Add("subTypeName", OkaDP::GetNameFromValueSubType(subType))
                           .Str()
                    << "\n";
            }
            else
            {
                const std::string typeText =
                    std::string(OKAVALUE::GetNameFromValueType(type)) + " (" + std::to_string(type) + ")";
                out << std::setw(10) << dpt << std::setw(6) << static_cast<unsigned>(entry.GetDpt().size)
                    << std::setw(20) << typeText << OkaDP::GetNameFromValueSubType(subType) << " ("
                    << static_cast<int>(subType) << ")\n";
            }
        }
    }
    return kExitDone;
}
} // namespace

void AddDptsCommand(std::vector<Command>& commands)
{
    commands.push_back({"dpts", "dpts", "list the DPT value map (DPT, bits, value type, sub-type)",
                        "Lists every row of the DPT value map that KnxValueConverter fills: the DPT (MAIN.x is\n"
                        "the main number's wildcard row), the group value's size in bits, the value type and\n"
                        "the sub-type.\n\n"
                        "Examples:\n"
                        "  tavknx dpts\n"
                        "  tavknx dpts --json\n",
                        nullptr, RunDpts});
}
} // namespace TavKnx
