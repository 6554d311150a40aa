#include "knx/TelegramReport.h"

#include "knx/DptNames.h"
#include "knx/DptText.h"
#include "knx/HexText.h"
#include "knx/KnxTerms.h"
#include "knx/Json.h"
#include "knx/KnxAddress.h"
#include "knx/ValueText.h"

#include <TavObjectModel/GroupValueOkaValue.h>

#include <boost/optional.hpp>

#include <cstdio>
#include <ctime>
#include <exception>

namespace TavKnx
{
namespace
{
// A decoder's answer: a value, a refusal, or the text of an exception that left it (the
// calendar checks of the codec throw on impossible dates).
struct Result
{
    boost::optional<OKAVALUE> value;
    std::string exception;
};

struct Decoded
{
    Result codec;
    Result table;
};

template <typename Decode>
Result Catching(Decode decode)
{
    Result result;
    try
    {
        result.value = decode();
    }
    catch (const std::exception& error)
    {
        result.exception = error.what();
    }
    return result;
}

std::vector<std::uint8_t> ValueBytes(const GroupTelegram& telegram)
{
    if (!telegram.HasValue())
    {
        // No group value: the whole APDU is what there is to show.
        return telegram.kind == TelegramKind::Read ? std::vector<std::uint8_t>() : telegram.apdu;
    }
    return BytesOf(telegram.value);
}

unsigned ValueBits(const GroupTelegram& telegram)
{
    return telegram.HasValue() ? telegram.value.GetDefinedSize() : 0;
}

void AddResult(JsonObject& object, const Result& result)
{
    object.Add("ok", static_cast<bool>(result.value));
    if (result.value)
    {
        AddValueFields(object, *result.value);
    }
    else if (!result.exception.empty())
    {
        object.Add("exception", result.exception);
    }
}

// The value in KNX terms first where the DPT defines them, the library's value always.
std::string ResultText(const Result& result, const KNXDPT& dpt)
{
    if (result.value)
    {
        return DescribeValueInKnxTerms(dpt, *result.value);
    }
    return result.exception.empty() ? std::string("refused") : "refused (exception: " + result.exception + ")";
}
} // namespace

std::string FormatTime(std::chrono::system_clock::time_point time)
{
    const auto sinceEpoch = time.time_since_epoch();
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(sinceEpoch);
    const auto millis = std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch - seconds).count();
    const std::time_t whole = static_cast<std::time_t>(seconds.count());
    std::tm fields{};
    gmtime_r(&whole, &fields);
    char text[80];  // room for any int fields, though a real date takes 24
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", fields.tm_year + 1900, fields.tm_mon + 1,
                  fields.tm_mday, fields.tm_hour, fields.tm_min, fields.tm_sec, static_cast<int>(millis));
    return text;
}

std::string TelegramReporter::Report(const GroupTelegram& telegram, std::chrono::system_clock::time_point received,
                                     bool json)
{
    const KNXDPT* mapped = map_.Find(telegram.destination);
    const std::string* name = map_.FindName(telegram.destination);
    boost::optional<Decoded> decoded;
    if (mapped != nullptr && telegram.HasValue())
    {
        decoded.emplace();
        decoded->codec = Catching([&] { return Okaro::GroupValueToOkaValue(telegram.value, PackDpt(*mapped)); });
        decoded->table = Catching([&]() -> boost::optional<OKAVALUE> {
            KNXDPT tableDpt = *mapped;
            // The DPT's size field is 8 bits; a longer value goes in without a size.
            const unsigned bits = telegram.value.GetDefinedSize();
            tableDpt.size = static_cast<std::uint8_t>(bits <= 255 ? bits : 0);
            OKAVALUE value;
            if (!converter_.FromKnxValue(tableDpt, telegram.value, value))
            {
                return boost::none;
            }
            return value;
        });
    }

    const std::string hex = FormatHex(ValueBytes(telegram));
    if (json)
    {
        JsonObject object;
        object.Add("time", FormatTime(received))
            .Add("source", FormatIndividualAddress(telegram.source))
            .Add("ga", FormatGroupAddress(telegram.destination));
        if (name != nullptr)
        {
            object.Add("name", *name);
        }
        object.Add("kind", KindName(telegram.kind))
            .Add("hex", hex)
            .Add("bits", ValueBits(telegram));
        if (mapped != nullptr)
        {
            object.Add("dpt", FormatDpt(*mapped));
        }
        if (decoded)
        {
            AddResult(object, decoded->codec);
            JsonObject table;
            AddResult(table, decoded->table);
            object.AddRaw("table", table.Str());
        }
        return object.Str();
    }

    std::string line = FormatTime(received) + " " + FormatIndividualAddress(telegram.source) + " " +
                       FormatGroupAddress(telegram.destination);
    if (name != nullptr)
    {
        // Quoted: names have blanks, and the fields after it stay where scripts look for them.
        line += " \"" + *name + "\"";
    }
    line += std::string(" ") + KindName(telegram.kind);
    if (telegram.kind != TelegramKind::Read)
    {
        line += " " + (hex.empty() ? std::string("-") : hex);
        if (telegram.HasValue())
        {
            line += " (" + BitsText(ValueBits(telegram)) + ")";
        }
    }
    if (mapped != nullptr)
    {
        const DptName* row = FindDptName(*mapped);
        line += " " + FormatKnxDpt(*mapped) + (row != nullptr ? std::string(" ") + row->name : std::string());
    }
    if (decoded)
    {
        line += " codec: " + ResultText(decoded->codec, *mapped) + " | table: " + ResultText(decoded->table, *mapped);
    }
    return line;
}
} // namespace TavKnx
