// tavknx: looks at KNX telegrams, values and object-model ids through the library.
#include "cli/CommandLine.h"
#include "cli/LogSetup.h"
#include "cli/Options.h"
#include "commands/CommandTable.h"
#include "knx/TextError.h"

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

// "decode, check, ...": the commands in table order, for the usage messages.
std::string CommandNames(const std::vector<Command>& commands)
{
    std::string names;
    for (const Command& command : commands)
    {
        names += (names.empty() ? "" : ", ") + std::string(command.name);
    }
    return names;
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
        << "DPT is MAIN.SUB in decimal as ETS writes it (9.001 = 9.1 = 9,001 = DPST-9-1 = DPT9.001; 9 =\n"
        << "DPT-9), HEX the group value's bytes (0c1a, \"0C 1A\", 0c:1a, 0x0c1a), VALUE the text alone,\n"
        << "read as the DPT's value type (21.5, on, 12:30:00/Mon), or TYPE:TEXT (float:21.5, bool:true,\n"
        << "date:2024-04-30, daytime:12:30:00/Mon, string:Hi).\n"
        << "Exit codes: 0 done, 1 the library refused (monitor, send: or knxd could not be reached, or\n"
        << "no response came), 2 bad usage, 3 an exception left the library.\n\n"
        << "Examples:\n"
        << "  tavknx decode 9.001 0c1a\n"
        << "  tavknx from-knx 1.001 01 --json\n"
        << "  tavknx encode DPST-9-1 21.5\n"
        << "  tavknx ids describe 100101\n"
        << "  tavknx demo\n"
        << "  tavknx monitor --map groups.txt           live telegrams through knxd\n"
        << "  tavknx send 2/0/3 9.001 21.5\n"
        << "  tavknx project installation.knxproj       the ETS project's group addresses and devices\n";
}

void PrintCommandHelp(const Command& command, const po::options_description& options, std::ostream& out)
{
    out << "Usage: " << kProgram << " " << command.usage << "\n\n" << command.help << "\n" << options;
}

int Usage(const std::string& command, const std::string& message)
{
    std::cerr << kProgram << (command.empty() ? "" : " " + command) << ": " << message << "\n"
              << "Try '" << kProgram << (command.empty() ? "" : " " + command) << " --help'.\n";
    return kExitUsage;
}

int Run(int argc, char** argv)
{
    const std::vector<Command> commands = CommandTable();
    const po::options_description common = CommonOptions();
    const std::size_t commandIndex = FindCommandIndex(argc, argv, common);
    std::string commandName;
    try
    {
        std::vector<std::string> unused;
        const std::vector<std::string> before(argv + 1, argv + commandIndex);
        po::variables_map global = ParseOptions(before, common, false, unused);
        if (commandIndex >= static_cast<std::size_t>(argc))
        {
            if (global.count("help"))
            {
                PrintToolHelp(commands, std::cout);
                return kExitDone;
            }
            return Usage("", "expected a COMMAND (" + CommandNames(commands) + ")");
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
            return Usage("", "unknown command '" + shown + "'; expected one of " + CommandNames(commands));
        }

        // A command without options of its own gets no heading over nothing.
        po::options_description options(command->addOptions != nullptr ? std::string("Options of ") + command->name
                                                                        : std::string());
        if (command->addOptions != nullptr)
        {
            command->addOptions(options);
        }
        options.add(common);
        Invocation invocation;
        invocation.command = commandName;
        invocation.out = &std::cout;
        const std::vector<std::string> after(argv + commandIndex + 1, argv + argc);
        invocation.options = ParseOptions(after, options, true, invocation.args);
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
    catch (const Refusal& error)
    {
        std::cout.flush();
        std::cerr << kProgram << " " << commandName << ": " << error.what() << "\n";
        return kExitRefused;
    }
    // Text the KNX pieces refused came from the command line: a usage error, same text.
    catch (const TextError& error)
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
