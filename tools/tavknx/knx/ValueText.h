#pragma once
// Values and group values as results show them: JSON fields, or a line of text for people.
#include "knx/Json.h"

#include <platform/GroupValue.h>
#include <platform/OkaValue.h>

#include <cstdint>
#include <string>
#include <vector>

namespace TavKnx
{
// The value's fields as JSON ("ivt", "type", "subType", "value", and "weekday" for times)
// added to `object`.
void AddValueFields(JsonObject& object, const OKAVALUE& value);
// The "value" field alone, as JSON (a number, true/false, a string, null).
std::string ValueJson(const OKAVALUE& value);
// "Float 21.5 [ivt 3, sub-type 0]".
std::string DescribeValue(const OKAVALUE& value);
// The payload alone: "21.5", "true", "\"text\"", "2024-04-30", "12:30:00 Mon (value model
// weekday 1, 0 = Sunday)", "12:30:00 no day (value model weekday 7)": the numbering, said.
std::string ValueText(const OKAVALUE& value);
// "Sun" ... "Sat" for the value model's weekday 0-6; "no day" for 7 and above.
std::string WeekdayName(unsigned weekday);

// The group value's raw bytes, all of them.
std::vector<std::uint8_t> BytesOf(const KnxStack::GroupValue& value);
} // namespace TavKnx
