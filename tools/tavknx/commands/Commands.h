#pragma once
// The commands of tavknx. Each command, or small group of related commands, lives in its own
// source file and adds its entries to the table (CommandTable.cpp).
#include "cli/Command.h"

#include <vector>

namespace TavKnx
{
void AddConversionCommands(std::vector<Command>& commands);
void AddDptsCommand(std::vector<Command>& commands);
void AddIdsCommand(std::vector<Command>& commands);
void AddConfigCommand(std::vector<Command>& commands);
void AddDemoCommand(std::vector<Command>& commands);
// The live bus through knxd.
void AddMonitorCommand(std::vector<Command>& commands);
void AddSendCommand(std::vector<Command>& commands);
// get, set, device: the objects on the bus through the device stack on knxd.
void AddDeviceStackCommands(std::vector<Command>& commands);
// The bus on MQTT.
void AddBridgeCommand(std::vector<Command>& commands);
// The ETS project.
void AddProjectCommand(std::vector<Command>& commands);
} // namespace TavKnx
