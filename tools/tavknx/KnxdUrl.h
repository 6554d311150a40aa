#pragma once
// The --url option of the live-bus commands: where knxd listens, in its client library's forms.
#include "CommandLine.h"

#include <string>

namespace TavKnx
{
void AddKnxdUrlOption(boost::program_options::options_description& options);
// --url, else "local:/run/knx". Throws UsageError for a URL that is neither "local:/PATH" nor
// "ip:HOST[:PORT]".
std::string KnxdUrl(const Invocation& invocation);
} // namespace TavKnx
