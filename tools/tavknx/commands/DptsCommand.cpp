// dpts: the rows of the DPT value map as KnxValueConverter fills it.
#include "cli/Output.h"
#include "commands/Commands.h"
#include "knx/DptNames.h"
#include "knx/DptText.h"

#include <boost/program_options.hpp>

#include <TavObjectModel/KnxValueConverter.h>
#include <platform/OkaValue.h>

#include <iomanip>
#include <ostream>

namespace po = boost::program_options;

namespace TavKnx
{
namespace
{
// --names: the whole name table, KNX's vocabulary, whether the library maps the DPT or not.
int PrintNames(const Invocation& invocation)
{
    std::ostream& out = invocation.Out();
    if (!invocation.json)
    {
        out << std::left << std::setw(10) << "DPT" << std::setw(40) << "name"
            << "unit\n";
    }
    for (const DptName* row = DptNamesBegin(); row != DptNamesEnd(); ++row)
    {
        const KNXDPT dpt{0, row->main, row->sub};
        if (invocation.json)
        {
            JsonObject object;
            object.Add("dpt", FormatDpt(dpt)).Add("name", row->name).Add("unit", row->unit);
            if (row->zero != nullptr)
            {
                object.Add("zero", row->zero).Add("one", row->one);
            }
            out << object.Str() << "\n";
        }
        else
        {
            out << std::setw(10) << FormatKnxDpt(dpt) << std::setw(40) << row->name << row->unit
                << (row->zero != nullptr ? std::string(*row->unit ? " " : "") + "(0 " + row->zero + ", 1 " + row->one + ")"
                                         : std::string())
                << "\n";
        }
    }
    return kExitDone;
}

int RunDpts(const Invocation& invocation)
{
    invocation.RequireArgs(0, 0, "no arguments");
    if (invocation.options.count("names"))
    {
        return PrintNames(invocation);
    }
    const Okaro::KnxValueConverter converter;
    std::ostream& out = invocation.Out();
    if (!invocation.json)
    {
        out << std::left << std::setw(10) << "DPT" << std::setw(6) << "bits" << std::setw(20) << "value type"
            << std::setw(32) << "sub-type" << "name and unit\n";
    }
    for (const auto& main : converter.GetDptValueMap().GetEntries())
    {
        for (const auto& sub : main.second)
        {
            const Okaro::DptValueEntry& entry = sub.second;
            // Sub number 0 is the main number's wildcard row.
            const std::string dpt =
                std::to_string(main.first) + "." + (sub.first == 0 ? std::string("x") : std::to_string(sub.first));
            const KNXDPT key{0, static_cast<std::uint16_t>(main.first), static_cast<std::uint16_t>(sub.first)};
            const DptName* name = sub.first == 0 ? nullptr : FindDptName(key);
            const OkaValueType type = entry.GetValueType();
            const OkaDP::OkaValueSubType subType = entry.GetValueSubType();
            if (invocation.json)
            {
                JsonObject object;
                object.Add("dpt", dpt)
                    .Add("bits", static_cast<unsigned>(entry.GetDpt().size))
                    .Add("ivt", static_cast<int>(type))
                    .Add("type", OKAVALUE::GetNameFromValueType(type))
                    .Add("subType", static_cast<int>(subType))
                    .Add("subTypeName", OkaDP::GetNameFromValueSubType(subType));
                if (name != nullptr)
                {
                    object.Add("name", name->name);
                    if (*name->unit != '\0')
                    {
                        object.Add("unit", name->unit);
                    }
                }
                out << object.Str() << "\n";
            }
            else
            {
                const std::string typeText =
                    std::string(OKAVALUE::GetNameFromValueType(type)) + " (" + std::to_string(type) + ")";
                const std::string subTypeText =
                    std::string(OkaDP::GetNameFromValueSubType(subType)) + " (" + std::to_string(subType) + ")";
                const std::string knxDpt = sub.first == 0 ? std::to_string(main.first) + ".xxx" : FormatKnxDpt(key);
                out << std::setw(10) << knxDpt << std::setw(6) << static_cast<unsigned>(entry.GetDpt().size)
                    << std::setw(20) << typeText;
                if (name != nullptr)
                {
                    out << std::setw(32) << subTypeText << name->name << (*name->unit ? " " : "") << name->unit;
                }
                else
                {
                    out << subTypeText;
                }
                out << "\n";
            }
        }
    }
    return kExitDone;
}
} // namespace

void AddDptsCommand(std::vector<Command>& commands)
{
    commands.push_back({"dpts", "dpts [--names]", "list the DPT value map (DPT, bits, value type, sub-type, name, unit)",
                        "Lists every row of the DPT value map that KnxValueConverter fills: the DPT (MAIN.xxx is\n"
                        "the main number's wildcard row; JSON writes it MAIN.x), the group value's size in bits,\n"
                        "the value type, the sub-type, and KNX's name and unit of the DPT. --names lists KNX's\n"
                        "names and units of every DPT the tool knows (docs/DptNames.md), mapped or not.\n\n"
                        "Examples:\n"
                        "  tavknx dpts\n"
                        "  tavknx dpts --json\n"
                        "  tavknx dpts --names\n",
                        [](po::options_description& options) {
                            options.add_options()("names", "list KNX's names and units of the DPTs instead");
                        },
                        RunDpts});
}
} // namespace TavKnx
