#include "commands/CommandTable.h"

#include "commands/Commands.h"

namespace TavKnx
{
std::vector<Command> CommandTable()
{
    std::vector<Command> commands;
    AddConversionCommands(commands);
    AddDptsCommand(commands);
    AddIdsCommand(commands);
    AddConfigCommand(commands);
    AddDemoCommand(commands);
    AddMonitorCommand(commands);
    AddSendCommand(commands);
    AddDeviceStackCommands(commands);
    AddBridgeCommand(commands);
    AddProjectCommand(commands);
    return commands;
}
} // namespace TavKnx
