#pragma once
// Ctrl-C (SIGINT) and SIGTERM end a long-running command cleanly: the handlers only raise a
// flag that the command's loop looks at between waits, which are kept short for that. SIGPIPE
// is ignored, so that writing to a lost daemon or a closed pipe fails instead of killing the tool.
namespace TavKnx
{
void InstallStopHandlers();
bool StopRequested();
} // namespace TavKnx
