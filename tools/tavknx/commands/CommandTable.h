#pragma once
// Every command of tavknx, in the order the tool's help and messages list them.
#include "cli/Command.h"

#include <vector>

namespace TavKnx
{
std::vector<Command> CommandTable();
} // namespace TavKnx
