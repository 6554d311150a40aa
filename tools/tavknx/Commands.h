#pragma once
// The commands of tavknx. Each group of commands lives in its own source file and adds its
// entries to the table that main dispatches on.
#include "CommandLine.h"

#include <vector>

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
    // Returns the exit code; throws UsageError for bad arguments.
    int (*run)(const Invocation& invocation);
};

void AddConversionCommands(std::vector<Command>& commands);
void AddDptsCommand(std::vector<Command>& commands);
void AddIdsCommand(std::vector<Command>& commands);
void AddConfigCommand(std::vector<Command>& commands);
void AddDemoCommand(std::vector<Command>& commands);
// The live bus through knxd.
void AddMonitorCommand(std::vector<Command>& commands);
void AddSendCommand(std::vector<Command>& commands);
} // namespace TavKnx
