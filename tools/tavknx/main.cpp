// tavknx: looks at KNX telegrams, values and object-model ids through the library.
#include "Commands.h"
#include "LogSetup.h"

#include <log4cplus/initializer.h>

#include <boost/program_options.hpp>

#include <exception>
#include <iostream>
#include <string>
#include <vector>

namespace po = boost::program_options;
using namespace TavKnx;

namespace
{
const char* const kProgram = "tavknx";

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

std::vector<Command> AllCommands()
{
    std::vector<Command> commands;
    AddConversionCommands(commands);
    AddDptsCommand(commands);
    AddIdsCommand(commands);
    AddConfigCommand(commands);
    AddDemoCommand(commands);
    AddMonitorCommand(commands);
    AddSendCommand(commands);
    return commands;
}

void PrintToolHelp(const std::vector<Command>& commands, std::ostream& out)
{
    out << "Usage: " << kProgram << " [OPTIONS] COMMAND [ARGS] [OPTIONS]\n\n"
        << "Shows what libtavobjectmodel makes of KNX telegrams, values and object-model ids.\n\nCommands:\n";
    for (const Command& command : commands)
    {
        out << "  " << command.usage << "\n      " << command.summary << "\n";
    }
    out << "\n" << CommonOptions() << "\n"
        << "DPT is MAIN.SUB in decimal (9.001 = 9.1), HEX the group value's bytes (0c1a),\n"
        << "VALUE is TYPE:TEXT (float:21.5, bool:true, date:2024-04-30, time:12:30:00/1, string:Hi).\n"
        << "Exit codes: 0 done, 1 the library refused (monitor, send: or knxd could not be reached),\n"
        << "2 bad usage, 3 an exception left the library.\n\n"
        << "Examples:\n"
        << "  tavknx decode 9.001 0c1a\n"
        << "  tavknx from-knx 1.001 01 --json\n"
        << "  tavknx encode 9.001 float:21.5\n"
        << "  tavknx ids describe 100101\n"
        << "  tavknx demo\n"
        << "  tavknx monitor --map groups.txt           live telegrams through knxd\n"
        << "  tavknx send 2/0/3 9.001 float:21.5\n";
}

void PrintCommandHelp(const Command& command, const po::options_description& options, std::ostream& out)
{
    out << "Usage: " << kProgram << " " << command.usage << "\n\n" << command.help << "\n" << options;
}

// Options before the command name are the common ones; everything from the command name on
// belongs to the command (which accepts the common options as well).
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

po::variables_map Parse(const std::vector<std::string>& tokens, const po::options_description& options,
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
                  .run(),
              map);
    po::notify(map);
    if (map.count("args"))
    {
        args = map["args"].as<std::vector<std::string>>();
    }
    return map;
}

int Usage(const std::string& command, const std::string& message)
{
    std::cerr << kProgram << (command.empty() ? "" : " " + command) << ": " << message << "\n"
              << "Try '" << kProgram << (command.empty() ? "" : " " + command) << " --help'.\n";
    return kExitUsage;
}

int Run(int argc, char** argv)
{
    const std::vector<Command> commands = AllCommands();
    const po::options_description common = CommonOptions();
    const std::size_t commandIndex = FindCommandIndex(argc, argv, common);
    std::string commandName;
    try
    {
        std::vector<std::string> unused;
        const std::vector<std::string> before(argv + 1, argv + commandIndex);
        po::variables_map global = Parse(before, common, false, unused);
        if (commandIndex >= static_cast<std::size_t>(argc))
        {
            if (global.count("help"))
            {
                PrintToolHelp(commands, std::cout);
                return kExitDone;
            }
            return Usage("", "expected a COMMAND (decode, check, encode, from-knx, to-knx, dpts, ids, config, demo, "
                             "monitor, send)");
        }
        commandName = argv[commandIndex];
        const Command* command = nullptr;
        for (const Command& candidate : commands)
        {
            if (commandName == candidate.name)
            {
                command = &candidate;
            }
        }
        if (command == nullptr)
        {
            const std::string shown = commandName.size() > 40 ? commandName.substr(0, 40) + "..." : commandName;
            commandName.clear();
            return Usage("", "unknown command '" + shown + "'; expected one of decode, check, encode, from-knx, "
                             "to-knx, dpts, ids, config, demo, monitor, send");
        }

        po::options_description options(std::string("Options of ") + command->name);
        if (command->addOptions != nullptr)
        {
            command->addOptions(options);
        }
        options.add(common);
        Invocation invocation;
        invocation.command = commandName;
        invocation.out = &std::cout;
        const std::vector<std::string> after(argv + commandIndex + 1, argv + argc);
        invocation.options = Parse(after, options, true, invocation.args);
        // Common options given before the command count as well.
        for (const auto& entry : global)
        {
            invocation.options.insert(entry);
        }
        if (invocation.options.count("help"))
        {
            PrintCommandHelp(*command, options, std::cout);
            return kExitDone;
        }
        invocation.json = invocation.options.count("json") != 0;
        const std::string level =
            invocation.options.count("log-level") ? invocation.options["log-level"].as<std::string>() : "warn";
        if (invocation.options.count("log-config"))
        {
            ConfigureLoggingFromFile(invocation.options["log-config"].as<std::string>(),
                                     invocation.options.count("log-level") ? &level : nullptr);
        }
        else
        {
            ConfigureLogging(level);
        }
        return command->run(invocation);
    }
    catch (const UsageError& error)
    {
        return Usage(commandName, error.what());
    }
    catch (const po::error& error)
    {
        return Usage(commandName, error.what());
    }
}
} // namespace

int main(int argc, char** argv)
{
    log4cplus::Initializer initializer;
    try
    {
        return Run(argc, argv);
    }
    catch (const std::exception& error)
    {
        std::cout.flush();
        std::cerr << kProgram << ": exception: " << error.what() << "\n";
        return kExitException;
    }
    catch (...)
    {
        std::cout.flush();
        std::cerr << kProgram << ": unknown exception\n";
        return kExitException;
    }
}
