#pragma once
// One command of tavknx as the command line knows it: its name, its help texts, its options and
// what runs it. The commands fill a table of these (commands/CommandTable.h); main dispatches on it.
#include "cli/CommandLine.h"

#include <boost/program_options/options_description.hpp>

namespace TavKnx
{
struct Command
{
    const char* name;
    const char* usage;    // "decode DPT HEX [--bits N]"
    const char* summary;  // one line for the tool's --help
    const char* help;     // description and examples for the command's --help
    // Options of this command besides the common ones (may be null).
    void (*addOptions)(boost::program_options::options_description& options);
    // Returns the exit code; throws UsageError (or TextError) for bad arguments.
    int (*run)(const Invocation& invocation);
};
} // namespace TavKnx
