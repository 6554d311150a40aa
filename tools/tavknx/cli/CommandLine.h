#pragma once
// What every command of tavknx shares: the exit codes, the usage error and the parsed
// invocation. The KNX text parsers (knx/DptText.h, knx/HexText.h, knx/NumberText.h) throw
// TextError, which the tool reports as a usage error with the same text.
#include <boost/program_options/variables_map.hpp>

#include <cstddef>
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

// The library refused what came from outside (a project it cannot read, say): the message goes
// to stderr as it is. Exit code 1.
class Refusal : public std::runtime_error
{
public:
    explicit Refusal(const std::string& message) : std::runtime_error(message) {}
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
} // namespace TavKnx
