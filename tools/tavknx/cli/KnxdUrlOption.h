#pragma once
// The --url option of the live-bus commands: where knxd listens.
#include "cli/CommandLine.h"

#include <boost/program_options/options_description.hpp>

#include <string>

namespace TavKnx
{
void AddKnxdUrlOption(boost::program_options::options_description& options);
// --url, else "local:/run/knx". Throws UsageError for a URL that is neither "local:/PATH" nor
// "ip:HOST[:PORT]".
std::string KnxdUrl(const Invocation& invocation);
} // namespace TavKnx
