#pragma once
// Results on stdout: one line of text for people, or with --json one JSON object per line.
#include <platform/GroupValue.h>
#include <platform/KnxDpt.h>
#include <platform/OkaValue.h>

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace TavKnx
{
// Builds one JSON object; keys keep their order.
class JsonObject
{
public:
    JsonObject& Add(const std::string& key, bool value);
    JsonObject& Add(const std::string& key, std::int64_t value);
    JsonObject& Add(const std::string& key, std::uint64_t value);
    JsonObject& Add(const std::string& key, int value) { return Add(key, static_cast<std::int64_t>(value)); }
    JsonObject& Add(const std::string& key, unsigned value) { return Add(key, static_cast<std::uint64_t>(value)); }
    JsonObject& Add(const std::string& key, const std::string& value);
    JsonObject& Add(const std::string& key, const char* value) { return Add(key, std::string(value)); }
    JsonObject& AddNull(const std::string& key);
    // `json` must already be valid JSON (a number, an object, ...).
    JsonObject& AddRaw(const std::string& key, const std::string& json);
    std::string Str() const;

private:
    std::string body_;
};

// A JSON string literal; bytes that are not UTF-8 are replaced, so the output always parses.
std::string JsonString(const std::string& bytes);
// Shortest text that reads back as the same double; "nan", "inf", "-inf" otherwise.
std::string FormatDouble(double value);

// The value's fields as JSON ("ivt", "type", "subType", "value", and "weekday" for times)
// added to `object`.
void AddValueFields(JsonObject& object, const OKAVALUE& value);
// "Float 21.5 [ivt 3, sub-type 0]".
std::string DescribeValue(const OKAVALUE& value);
// The payload alone: "21.5", "true", "\"text\"", "2024-04-30", "12:30:00 weekday 1".
std::string ValueText(const OKAVALUE& value);

// The group value's raw bytes, all of them.
std::vector<std::uint8_t> BytesOf(const KnxStack::GroupValue& value);

// A group value result: {"ok":true,"dpt":"9.1","hex":"0c1a","bits":16}, or "9.1: 0c1a (16 bits)".
// Commands that say more (send) add their fields to these.
JsonObject GroupValueResultJson(const std::string& dpt, const KnxStack::GroupValue& value);
std::string GroupValueResultText(const std::string& dpt, const KnxStack::GroupValue& value);

// Conversion results, printed the same way by every command.
void PrintValueResult(const std::string& dpt, const OKAVALUE& value, bool json, std::ostream& out);
void PrintGroupValueResult(const std::string& dpt, const KnxStack::GroupValue& value, bool json, std::ostream& out);
void PrintRefusal(const std::string& dpt, bool json, std::ostream& out);
} // namespace TavKnx
