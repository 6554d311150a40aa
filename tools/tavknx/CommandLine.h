#pragma once
// What every command of tavknx shares: the usage error, the parsed invocation and the strict
// parsers of the arguments that several commands take (DPT, HEX, --bits, numbers).
#include <platform/KnxDpt.h>

#include <boost/program_options/options_description.hpp>
#include <boost/program_options/variables_map.hpp>

#include <cstdint>
#include <iosfwd>
#include <stdexcept>
#include <string>
#include <vector>

namespace TavKnx
{
// Exit codes of the tool.
enum ExitCode : int
{
    kExitDone = 0,
    kExitRefused = 1,
    kExitUsage = 2,
    kExitException = 3,
};

// Bad usage: the message names the argument and what was expected. Exit code 2.
class UsageError : public std::runtime_error
{
public:
    explicit UsageError(const std::string& message) : std::runtime_error(message) {}
};

// One command line after parsing: the positional arguments after the command name and the
// options, common ones included.
struct Invocation
{
    std::string command;
    std::vector<std::string> args;
    boost::program_options::variables_map options;
    bool json = false;
    std::ostream* out = nullptr;

    std::ostream& Out() const { return *out; }
    // Throws UsageError unless there are between min and max positional arguments; `names`
    // is how the usage line spells them ("DPT HEX"; unused when max is 0).
    void RequireArgs(std::size_t min, std::size_t max, const char* names) const;
    // The --bits option when given.
    bool HasBits() const;
    std::uint32_t Bits() const;
};

// Text from outside for a message: in single quotes, cut to 40 characters (then "..."),
// control bytes shown as '?', so that a huge or binary argument gives a readable message.
std::string Quote(const std::string& text);

// A DPT argument "main.sub" in decimal; "9" is sub 0. The size is left 0.
KNXDPT ParseDpt(const std::string& text, const char* what = "DPT");
std::uint32_t PackDpt(const KNXDPT& dpt);
// "9.1": how results name a DPT.
std::string FormatDpt(const KNXDPT& dpt);

// Hex digits, two per byte, no separators; "" is no bytes.
std::vector<std::uint8_t> ParseHex(const std::string& text, const char* what = "HEX");
std::string FormatHex(const std::vector<std::uint8_t>& bytes);

// --bits: 0..255 (the width of a DPT's size field).
std::uint32_t ParseBits(const std::string& text, const char* what = "--bits");
// The group value's defined size when --bits is not given: the main number's expected size
// when it is below 8 and one byte is given, else 8 bits per byte.
std::uint32_t DefaultBits(std::uint16_t mainNumber, std::size_t byteCount);

// Decimal numbers with no sign, blanks or other characters, within [min, max].
std::uint64_t ParseUnsigned(const std::string& text, std::uint64_t max, const char* what);
std::int64_t ParseSigned(const std::string& text, std::int64_t min, std::int64_t max, const char* what);
} // namespace TavKnx
