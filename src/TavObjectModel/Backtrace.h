#pragma once
// The current call stack as one short line, for error messages about failures that are hard
// to place from the message alone.
#include <functional>
#include <string>

namespace Okaro
{
// Called once per stack frame with the text collected so far and the frame's function name.
using BacktraceFrameAppender = std::function<void(std::string& text, const std::string& name)>;

// Walks the current stack (innermost frame first) and returns the text the appender built.
// Throws std::bad_alloc when the symbol names cannot be resolved.
std::string CollectBacktrace(const BacktraceFrameAppender& appendFrame);

// Appends one frame as "name" or ", name", cut to 80 characters plus ".."; leaves out the
// collector's own frames (names containing "Backtrace") and "__libc_start_main".
void AppendBacktraceFrame(std::string& text, const std::string& name);

// " [" + frames + "]" for the current stack, or "" when no frame is left.
std::string FormatBacktraceSuffix();
// The same suffix for frames already collected.
std::string FormatBacktraceSuffix(const std::string& frames);
} // namespace Okaro
