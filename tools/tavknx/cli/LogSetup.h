#pragma once
// Where the tool's log lines go: stderr, at the level of --log-level, or as a log4cplus
// properties file says.
#include <string>

namespace TavKnx
{
// A console appender on stderr for the root logger at `level`. Throws UsageError for an
// unknown level name.
void ConfigureLogging(const std::string& level);
// The properties file decides; a level given as well overrides the root logger's level.
// Throws UsageError when the file cannot be read.
void ConfigureLoggingFromFile(const std::string& file, const std::string* level);
} // namespace TavKnx
