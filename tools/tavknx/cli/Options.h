#pragma once
// Reading the command line: the common options, where the command name sits, and the options
// and positional arguments on either side of it.
#include <boost/program_options/options_description.hpp>
#include <boost/program_options/variables_map.hpp>

#include <cstddef>
#include <string>
#include <vector>

namespace TavKnx
{
// --help, --json, --log-level, --log-config: taken before the command name and after it.
boost::program_options::options_description CommonOptions();

// Options before the command name are the common ones; everything from the command name on
// belongs to the command (which accepts the common options as well). argc when there is none.
std::size_t FindCommandIndex(int argc, char** argv, const boost::program_options::options_description& common);

// Parses `tokens` against `options`, unix style without guessing abbreviations; with
// `positional`, the arguments that are not options go to `args`. Throws program_options errors.
boost::program_options::variables_map ParseOptions(const std::vector<std::string>& tokens,
                                                   const boost::program_options::options_description& options,
                                                   bool positional, std::vector<std::string>& args);
} // namespace TavKnx
