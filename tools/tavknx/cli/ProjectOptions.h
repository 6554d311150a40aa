#pragma once
// Reading an ETS project from the command line: the --password-file option and the environment
// variable TAVKNX_PROJECT_PASSWORD. A password is never an argument, which any user could read
// in the process list.
#include "cli/CommandLine.h"

#include <project/ProjectModel.h>

#include <boost/program_options/options_description.hpp>

#include <string>

namespace TavKnx
{
constexpr char kProjectPasswordVariable[] = "TAVKNX_PROJECT_PASSWORD";

void AddProjectPasswordOption(boost::program_options::options_description& options);

// The password: the first line of --password-file, else the environment variable, else empty.
// Throws UsageError when the file cannot be read.
std::string ProjectPassword(const Invocation& invocation);

// Reads the project with that password. Throws Refusal with the reader's message (a protected
// project without password, a wrong password, a broken archive), prefixed by `what` when given.
TavProject::Project ReadProject(const Invocation& invocation, const std::string& path, const std::string& what = "");
} // namespace TavKnx
