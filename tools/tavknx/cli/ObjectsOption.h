#pragma once
// Where the device-stack commands (get, set, device) take their objects from: --objects FILE
// (the objects file, devicestack/DeviceObjectsFile.h) or --project FILE --device IA (a device
// of an ETS project, its password as cli/ProjectOptions.h reads it).
#include "cli/CommandLine.h"

#include <devicestack/DeviceObject.h>

#include <boost/program_options/options_description.hpp>
#include <log4cplus/logger.h>

#include <vector>

namespace TavKnx
{
void AddObjectsOptions(boost::program_options::options_description& options);

// The objects. Usage error without a source, with both, or with a file that cannot be read;
// Refusal for a project that cannot be read or has no such device, and when no object is
// left. Each skipped line or object is a WARN through `logger` under the caller's log origin.
std::vector<Lumo::DeviceObject> LoadObjectsOption(const Invocation& invocation, const log4cplus::Logger& logger,
                                                  const char* logFile, int logLine);
} // namespace TavKnx
