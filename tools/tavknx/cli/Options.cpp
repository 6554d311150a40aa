#include "cli/Options.h"

#include <boost/program_options.hpp>

namespace po = boost::program_options;

namespace TavKnx
{
po::options_description CommonOptions()
{
    po::options_description options("Common options");
    options.add_options()
        ("help,h", "show help (for a command: tavknx COMMAND --help)")
        ("json", "print results as one JSON object per line")
        ("log-level", po::value<std::string>()->value_name("LEVEL"),
         "log lines on stderr from this level on: trace, debug, info, warn (default), error, off")
        ("log-config", po::value<std::string>()->value_name("FILE"),
         "configure logging from a log4cplus properties file instead");
    return options;
}

std::size_t FindCommandIndex(int argc, char** argv, const po::options_description& common)
{
    for (int i = 1; i < argc; ++i)
    {
        const std::string token = argv[i];
        if (token.size() < 2 || token[0] != '-')
        {
            return static_cast<std::size_t>(i);
        }
        if (token.rfind("--", 0) == 0 && token.find('=') == std::string::npos)
        {
            const po::option_description* option = common.find_nothrow(token.substr(2), false);
            if (option != nullptr && option->semantic()->max_tokens() > 0)
            {
                ++i;
            }
        }
    }
    return static_cast<std::size_t>(argc);
}

namespace
{
// "-5" and "-21.5" are values (a bare VALUE, an integer), not short options: the tool has
// no short option that takes a digit.
std::vector<po::option> NegativeNumbers(std::vector<std::string>& tokens)
{
    const std::string& token = tokens.front();
    if (token.size() < 2 || token[0] != '-' || token.find_first_not_of("0123456789.eE+-", 1) != std::string::npos ||
        token[1] < '0' || token[1] > '9')
    {
        return {};
    }
    po::option value;
    value.value.push_back(token);
    value.original_tokens.push_back(token);
    tokens.erase(tokens.begin());
    return {value};
}
} // namespace

po::variables_map ParseOptions(const std::vector<std::string>& tokens, const po::options_description& options,
                               bool positional, std::vector<std::string>& args)
{
    po::options_description all(options);
    all.add_options()("args", po::value<std::vector<std::string>>());
    po::positional_options_description positions;
    if (positional)
    {
        positions.add("args", -1);
    }
    po::variables_map map;
    po::store(po::command_line_parser(tokens)
                  .options(all)
                  .positional(positions)
                  .style(po::command_line_style::unix_style ^ po::command_line_style::allow_guessing)
                  .extra_style_parser(NegativeNumbers)
                  .run(),
              map);
    po::notify(map);
    if (map.count("args"))
    {
        args = map["args"].as<std::vector<std::string>>();
    }
    return map;
}
} // namespace TavKnx
