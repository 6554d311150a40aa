#include "cli/Output.h"

#include "knx/DptNames.h"
#include "knx/DptText.h"
#include "knx/KnxTerms.h"
#include "knx/HexText.h"
#include "knx/ValueText.h"

#include <iostream>
#include <ostream>

namespace TavKnx
{
void PrintValueResult(const std::string& dpt, const OKAVALUE& value, bool json, std::ostream& out)
{
    if (json)
    {
        JsonObject object;
        object.Add("ok", true).Add("dpt", dpt);
        AddValueFields(object, value);
        out << object.Str() << "\n";
    }
    else
    {
        out << dpt << ": " << DescribeValue(value) << "\n";
    }
}

JsonObject GroupValueResultJson(const std::string& dpt, const KnxStack::GroupValue& value)
{
    JsonObject object;
    object.Add("ok", true)
        .Add("dpt", dpt)
        .Add("hex", FormatHex(BytesOf(value)))
        .Add("bits", static_cast<std::uint64_t>(value.GetDefinedSize()));
    return object;
}

std::string GroupValueResultText(const std::string& dpt, const KnxStack::GroupValue& value)
{
    const std::string hex = FormatHex(BytesOf(value));
    return dpt + ": " + (hex.empty() ? "(no bytes)" : hex) + " (" + BitsText(value.GetDefinedSize()) + ")";
}

void PrintGroupValueResult(const std::string& dpt, const KnxStack::GroupValue& value, bool json, std::ostream& out)
{
    out << (json ? GroupValueResultJson(dpt, value).Str() : GroupValueResultText(dpt, value)) << "\n";
}

void PrintRefusal(const std::string& dpt, bool json, std::ostream& out)
{
    if (json)
    {
        out << JsonObject().Add("ok", false).Str() << "\n";
    }
    else
    {
        out << dpt << ": refused (the log lines on stderr say why)\n";
    }
}

void PrintRefusal(const std::string& prefix, const std::string& command, const std::string& reason, bool json,
                  std::ostream& out)
{
    std::cerr << "tavknx " << command << ": " << prefix << ": " << reason << "\n";
    out << (json ? JsonObject().Add("ok", false).Str() : prefix + ": refused (" + reason + ")") << "\n";
}

std::string DptLabel(const KNXDPT& dpt)
{
    const DptName* row = FindDptName(dpt);
    return FormatKnxDpt(dpt) + (row != nullptr ? std::string(" ") + row->name : std::string());
}

namespace
{
// "name" and "unit" after the other fields, where the DPT has them.
void AddNameFields(JsonObject& object, const KNXDPT& dpt)
{
    const DptName* row = FindDptName(dpt);
    if (row != nullptr)
    {
        object.Add("name", row->name);
        if (*row->unit != '\0')
        {
            object.Add("unit", row->unit);
        }
    }
}
} // namespace

JsonObject GroupValueResultJson(const KNXDPT& dpt, const KnxStack::GroupValue& value)
{
    JsonObject object = GroupValueResultJson(FormatDpt(dpt), value);
    AddNameFields(object, dpt);
    return object;
}

std::string GroupValueResultText(const KNXDPT& dpt, const KnxStack::GroupValue& value)
{
    return GroupValueResultText(DptLabel(dpt), value);
}

void PrintValueResult(const KNXDPT& dpt, const OKAVALUE& value, bool json, std::ostream& out)
{
    if (json)
    {
        JsonObject object;
        object.Add("ok", true).Add("dpt", FormatDpt(dpt));
        AddValueFields(object, value);
        AddNameFields(object, dpt);
        out << object.Str() << "\n";
        return;
    }
    // KNX's reading first, the library's value after it, always.
    out << DptLabel(dpt) << ": " << DescribeValueInKnxTerms(dpt, value) << "\n";
}

void PrintGroupValueResult(const KNXDPT& dpt, const KnxStack::GroupValue& value, bool json, std::ostream& out)
{
    out << (json ? GroupValueResultJson(dpt, value).Str() : GroupValueResultText(dpt, value)) << "\n";
}

void PrintRefusal(const KNXDPT& dpt, bool json, std::ostream& out)
{
    PrintRefusal(DptLabel(dpt), json, out);
}
} // namespace TavKnx
