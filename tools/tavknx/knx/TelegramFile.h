#pragma once
// The demo's sample telegrams: one per line, "DPT HEX [BITS] [# comment]"; blank lines and
// lines starting with '#' are skipped.
#include <platform/KnxDpt.h>

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace TavKnx
{
struct SampleTelegram
{
    KNXDPT dpt;  // size: the group value's size in bits (BITS, else the default rule)
    std::vector<std::uint8_t> bytes;
    std::uint32_t bits;
    std::string comment;
};

// Reads every line of `in`. Throws TextError starting "name:line: " for a malformed entry.
std::vector<SampleTelegram> ReadTelegrams(std::istream& in, const std::string& name);
} // namespace TavKnx
