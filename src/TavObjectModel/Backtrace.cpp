#include <TavObjectModel/Backtrace.h>

#include <cxxabi.h>
#include <execinfo.h>

#include <cstdlib>
#include <memory>
#include <new>

namespace Okaro
{
namespace
{
constexpr int MaxFrames = 256;
constexpr std::string::size_type MaxNameLength = 80;

struct FreeDeleter
{
    void operator()(void* memory) const { std::free(memory); }
};

// A symbol line reads "file(mangled+offset) [address]"; frames without a symbol give "".
std::string MangledName(const char* symbolLine)
{
    const std::string line(symbolLine);
    const auto open = line.find('(');
    if (open == std::string::npos)
    {
        return std::string();
    }
    const auto end = line.find_first_of("+)", open + 1);
    return line.substr(open + 1, end == std::string::npos ? std::string::npos : end - open - 1);
}

std::string Demangle(const std::string& mangled)
{
    int status = 0;
    std::unique_ptr<char, FreeDeleter> demangled(abi::__cxa_demangle(mangled.c_str(), nullptr, nullptr, &status));
    if (status != 0 || !demangled)
    {
        return mangled;
    }
    return std::string(demangled.get());
}
} // namespace

std::string CollectBacktrace(const BacktraceFrameAppender& appendFrame)
{
    void* addresses[MaxFrames];
    const int count = ::backtrace(addresses, MaxFrames);
    std::unique_ptr<char*, FreeDeleter> lines(::backtrace_symbols(addresses, count));
    if (!lines)
    {
        throw std::bad_alloc();
    }
    std::string text;
    for (int i = 0; i < count; ++i)
    {
        appendFrame(text, Demangle(MangledName(lines.get()[i])));
    }
    return text;
}

void AppendBacktraceFrame(std::string& text, const std::string& name)
{
    if (name.find("Backtrace") != std::string::npos || name == "__libc_start_main")
    {
        return;
    }
    if (!text.empty())
    {
        text += ", ";
    }
    text.append(name, 0, MaxNameLength);
    if (name.size() > MaxNameLength)
    {
        text += "..";
    }
}

std::string FormatBacktraceSuffix() { return FormatBacktraceSuffix(CollectBacktrace(AppendBacktraceFrame)); }

std::string FormatBacktraceSuffix(const std::string& frames)
{
    return frames.empty() ? std::string() : " [" + frames + "]";
}
} // namespace Okaro
