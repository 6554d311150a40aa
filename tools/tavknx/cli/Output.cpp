#include "cli/Output.h"

#include "knx/DptText.h"
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

JsonObject GroupValueResultJson(const KNXDPT& dpt, const KnxStack::GroupValue& value)
{
    return GroupValueResultJson(FormatDpt(dpt), value);
}

std::string GroupValueResultText(const KNXDPT& dpt, const KnxStack::GroupValue& value)
{
    return GroupValueResultText(FormatKnxDpt(dpt), value);
}

void PrintValueResult(const KNXDPT& dpt, const OKAVALUE& value, bool json, std::ostream& out)
{
    PrintValueResult(json ? FormatDpt(dpt) : FormatKnxDpt(dpt), value, json, out);
}

void PrintGroupValueResult(const KNXDPT& dpt, const KnxStack::GroupValue& value, bool json, std::ostream& out)
{
    out << (json ? GroupValueResultJson(dpt, value).Str() : GroupValueResultText(dpt, value)) << "\n";
}

void PrintRefusal(const KNXDPT& dpt, bool json, std::ostream& out)
{
    PrintRefusal(FormatKnxDpt(dpt), json, out);
}
} // namespace TavKnx
