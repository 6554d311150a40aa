#pragma once
// The JSON the tool writes: one object per line, keys in the order they are added.
#include <cstdint>
#include <string>

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
} // namespace TavKnx
