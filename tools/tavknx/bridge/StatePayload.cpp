#include "bridge/StatePayload.h"

#include "knx/DptText.h"
#include "knx/HexText.h"
#include "knx/Json.h"
#include "knx/KnxAddress.h"
#include "knx/TelegramReport.h"
#include "knx/ValueText.h"

#include <TavObjectModel/GroupValueOkaValue.h>

#include <boost/optional.hpp>

#include <exception>

namespace TavKnx
{
namespace
{
// A decoder's answer: a value, or the reason there is none.
struct Decoded
{
    boost::optional<OKAVALUE> value;
    std::string reason;
};

template <typename Decode>
Decoded Catching(Decode decode, const std::string& refusal)
{
    Decoded result;
    try
    {
        result.value = decode();
        if (!result.value)
        {
            result.reason = refusal;
        }
    }
    catch (const std::exception& error)
    {
        // The calendar checks of DPT 11 and 19 throw on impossible dates.
        result.reason = refusal + ": " + error.what();
    }
    return result;
}

bool IsTimeOfDay(const OKAVALUE& value)
{
    return value.type == ivtTime || value.type == ivtDayTime;
}

void AddValue(JsonObject& object, const OKAVALUE& value)
{
    object.AddRaw("value", ValueJson(value));
    if (IsTimeOfDay(value))
    {
        object.Add("weekday", static_cast<std::uint64_t>(value.numeric.time.weekday));
    }
}

void AddType(JsonObject& object, const OKAVALUE& value)
{
    object.Add("ivt", static_cast<std::int64_t>(value.type)).Add("type", OKAVALUE::GetNameFromValueType(value.type));
}
} // namespace

bool StatePayloads::Build(const GroupTelegram& telegram, std::chrono::system_clock::time_point received,
                          MqttMessage& message)
{
    if (!telegram.HasValue())
    {
        return false;
    }
    const KNXDPT* dpt = map_.Find(telegram.destination);
    if (dpt == nullptr)
    {
        message = MqttMessage{topics_.Raw(telegram.destination), Raw(telegram, received), false};
        return true;
    }
    message = MqttMessage{topics_.State(telegram.destination), State(telegram, *dpt, received), true};
    return true;
}

std::string StatePayloads::State(const GroupTelegram& telegram, const KNXDPT& dpt,
                                 std::chrono::system_clock::time_point received)
{
    const unsigned bits = telegram.value.GetDefinedSize();
    const std::string hex = FormatHex(BytesOf(telegram.value));
    const std::string refusal = "DPT " + FormatDpt(dpt) + " does not decode " + (hex.empty() ? "no bytes" : hex) + " (" +
                                std::to_string(bits) + " bits)";
    const Decoded codec =
        Catching([&] { return Okaro::GroupValueToOkaValue(telegram.value, PackDpt(dpt)); }, refusal);
    const Decoded table = Catching(
        [&]() -> boost::optional<OKAVALUE> {
            KNXDPT tableDpt = dpt;
            // The DPT's size field is 8 bits; a longer value goes in without a size.
            tableDpt.size = static_cast<std::uint8_t>(bits <= 255 ? bits : 0);
            OKAVALUE value;
            if (!converter_.FromKnxValue(tableDpt, telegram.value, value))
            {
                return boost::none;
            }
            return value;
        },
        refusal);

    JsonObject object;
    object.Add("ok", static_cast<bool>(codec.value));
    if (codec.value)
    {
        AddValue(object, *codec.value);
    }
    else
    {
        object.Add("reason", codec.reason);
    }
    object.Add("dpt", FormatDpt(dpt));
    if (codec.value)
    {
        AddType(object, *codec.value);
    }
    object.Add("hex", hex).Add("source", FormatIndividualAddress(telegram.source)).Add("time", FormatTime(received));
    if (const std::string* name = map_.FindName(telegram.destination))
    {
        object.Add("name", *name);
    }
    const bool same = codec.value && table.value ? *codec.value == *table.value : !codec.value && !table.value;
    if (!same)
    {
        JsonObject other;
        other.Add("ok", static_cast<bool>(table.value));
        if (table.value)
        {
            AddValue(other, *table.value);
            AddType(other, *table.value);
        }
        object.AddRaw("table", other.Str());
    }
    return object.Str();
}

std::string StatePayloads::Raw(const GroupTelegram& telegram, std::chrono::system_clock::time_point received)
{
    return JsonObject()
        .Add("kind", KindName(telegram.kind))
        .Add("hex", FormatHex(BytesOf(telegram.value)))
        .Add("source", FormatIndividualAddress(telegram.source))
        .Add("time", FormatTime(received))
        .Str();
}
} // namespace TavKnx
