#include "bridge/SetPayload.h"

#include "cli/CommandLine.h"
#include "cli/ValueArgument.h"
#include "knx/DptText.h"
#include "knx/TextError.h"

#include <TavObjectModel/GroupValueOkaValue.h>
#include <TavObjectModel/KnxLdsMapping.h>

#include <nlohmann/json.hpp>

#include <exception>

namespace TavKnx
{
namespace
{
// The TYPE of TYPE:TEXT for a value type: a name where the value argument has one, else the
// type code (which takes a decimal).
std::string TypeWord(OkaValueType type)
{
    switch (type)
    {
    case ivtBool: return "bool";
    case ivtFloat: return "float";
    case ivtInteger: return "integer";
    case ivtByte: return "byte";
    case ivtWord: return "word";
    case ivtDWord: return "dword";
    case ivtString: return "string";
    case ivtDate: return "date";
    case ivtTime: return "time";
    case ivtDateTime: return "datetime";
    case ivtDayTime: return "daytime";
    default: return std::to_string(static_cast<std::int32_t>(type));
    }
}

OKAVALUE Parsed(const std::string& argument)
{
    try
    {
        return ParseValue(argument);
    }
    catch (const UsageError& error)
    {
        throw SetPayloadError(error.what());
    }
    catch (const TextError& error)
    {
        throw SetPayloadError(error.what());
    }
}

// A JSON number, boolean or string as the DPT's value type.
OKAVALUE FromJson(const nlohmann::json& json, const KNXDPT& dpt)
{
    const OkaValueType type = Okaro::KnxLdsMapping::GetIvtFromDpt(PackDpt(dpt));
    if (type == ivtEmpty)
    {
        throw SetPayloadError("DPT " + FormatDpt(dpt) + " has no value type; give TYPE:TEXT");
    }
    std::string text;
    if (json.is_string())
    {
        text = json.get<std::string>();
    }
    else if (json.is_boolean())
    {
        text = json.get<bool>() ? "true" : "false";
    }
    else if (json.is_number())
    {
        text = json.dump();
    }
    else
    {
        throw SetPayloadError("expected a number, true, false, a string or {\"value\": ...}, got " +
                              Quote(json.dump()));
    }
    return Parsed(TypeWord(type) + ":" + text);
}
} // namespace

OKAVALUE ParseSetPayload(const std::string& payload, const KNXDPT& dpt)
{
    nlohmann::json json = nlohmann::json::parse(payload, nullptr, false);
    if (json.is_discarded())
    {
        // Not JSON: the tool's own form, whose type names the value.
        return Parsed(payload);
    }
    if (json.is_object())
    {
        const auto value = json.find("value");
        if (value == json.end() || json.size() != 1)
        {
            throw SetPayloadError("expected {\"value\": ...} and nothing else, got " + Quote(payload));
        }
        if (value->is_object() || value->is_array() || value->is_null())
        {
            throw SetPayloadError("expected a number, true, false or a string as \"value\", got " +
                                  Quote(value->dump()));
        }
        return FromJson(*value, dpt);
    }
    return FromJson(json, dpt);
}

KnxStack::GroupValue EncodeSetPayload(const std::string& payload, const KNXDPT& dpt)
{
    const OKAVALUE value = ParseSetPayload(payload, dpt);
    boost::optional<KnxStack::GroupValue> groupValue;
    try
    {
        groupValue = Okaro::OkaValueToGroupValue(value, PackDpt(dpt));
    }
    catch (const std::exception& error)
    {
        throw SetPayloadError("DPT " + FormatDpt(dpt) + " cannot take " + Quote(payload) + ": " + error.what());
    }
    if (!groupValue)
    {
        throw SetPayloadError("DPT " + FormatDpt(dpt) + " cannot take " + Quote(payload) + " (" +
                              OKAVALUE::GetNameFromValueType(value.type) + "): the encoder refused it");
    }
    return *groupValue;
}
} // namespace TavKnx
