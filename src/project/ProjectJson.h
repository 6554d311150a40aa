#pragma once
// The model as one JSON object (what `tavknx project --json` prints), and as the simple group
// address map text the tool reads with --map.
#include <project/ProjectModel.h>

#include <string>

namespace TavProject
{
// {"info":{...},"groupAddresses":[...],"devices":[...]} on one line, keys in a fixed order.
// A missing DPT is null, a missing sub number is null. Bytes that are not UTF-8 become U+FFFD.
std::string ToJson(const Project& project);

// One "GA;DPT  # name" line per group address that has a DPT, with a heading comment; group
// addresses without one are listed as comments, so the text loads as a map as it is.
// Addresses print in the project's style, in three levels for the free style (which the map
// reader does not take).
std::string ToMapText(const Project& project);
} // namespace TavProject
