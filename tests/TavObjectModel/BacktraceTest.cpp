#include <TavObjectModel/Backtrace.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <execinfo.h>

#include <atomic>
#include <new>
#include <string>
#include <vector>

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

namespace
{
std::atomic<bool> failSymbolLookup{false};
} // namespace

// Stands in for the C library's symbol lookup so that its failure can be simulated; the
// library resolves this definition before the C library's.
extern "C" char** backtrace_symbols(void* const* addresses, int count) noexcept
{
    using Lookup = char** (*)(void* const*, int);
    if (failSymbolLookup)
    {
        return nullptr;
    }
    static const Lookup real = reinterpret_cast<Lookup>(::dlsym(RTLD_NEXT, "backtrace_symbols"));
    return real(addresses, count);
}

namespace
{
std::string Append(const std::vector<std::string>& names)
{
    std::string text;
    for (const auto& name : names)
    {
        Okaro::AppendBacktraceFrame(text, name);
    }
    return text;
}
} // namespace

TEST(AppendBacktraceFrame, SeparatesFramesWithCommaAndBlank)
{
    EXPECT_EQ(Append({"main"}), "main");
    EXPECT_EQ(Append({"Okaro::Decode()", "Okaro::Run()", "main"}), "Okaro::Decode(), Okaro::Run(), main");
}

TEST(AppendBacktraceFrame, NameLongerThan80CharactersIsCutAndMarked)
{
    const std::string first80 = std::string(40, 'a') + std::string(40, 'b');
    EXPECT_EQ(Append({first80 + "cdef"}), first80 + "..");
    EXPECT_EQ(Append({"x", first80 + "c"}), "x, " + first80 + "..");
}

TEST(AppendBacktraceFrame, NameOfExactly80CharactersIsKept)
{
    const std::string name(80, 'n');
    EXPECT_EQ(Append({name}), name);
}

TEST(AppendBacktraceFrame, SkipsCollectorFramesAndLibcStart)
{
    EXPECT_EQ(Append({"Okaro::CollectBacktrace()", "Run", "__libc_start_main", "FormatBacktraceSuffix", "main"}),
              "Run, main");
    // Only the exact name is skipped.
    EXPECT_EQ(Append({"__libc_start_main_impl", "__libc_start_call_main"}), "__libc_start_main_impl, __libc_start_call_main");
}

TEST(FormatBacktraceSuffix, EmptyWhenEveryFrameIsSkipped)
{
    const std::string text = Append({"Okaro::CollectBacktrace()", "Okaro::FormatBacktraceSuffix()", "__libc_start_main"});
    EXPECT_EQ(text, "");
    EXPECT_EQ(Okaro::FormatBacktraceSuffix(text), "");
}

TEST(FormatBacktraceSuffix, WrapsFramesInBrackets)
{
    EXPECT_EQ(Okaro::FormatBacktraceSuffix(Append({"Okaro::Run()", "main"})), " [Okaro::Run(), main]");
}

TEST(CollectBacktrace, CallsTheAppenderWithDemangledNamesOfTheLibrary)
{
    std::vector<std::string> names;
    std::string seen;
    const std::string text = Okaro::CollectBacktrace([&](std::string& accumulated, const std::string& name) {
        seen = accumulated;
        names.push_back(name);
        accumulated += "|";
    });
    ASSERT_THAT(names, Not(IsEmpty()));
    EXPECT_EQ(text, std::string(names.size(), '|'));
    EXPECT_EQ(seen, std::string(names.size() - 1, '|'));
    // The library's exported symbols resolve and are demangled.
    EXPECT_THAT(names, Contains(HasSubstr("Okaro::CollectBacktrace")));
}

TEST(CollectBacktrace, FailingSymbolLookupThrowsBadAlloc)
{
    failSymbolLookup = true;
    EXPECT_THROW(Okaro::CollectBacktrace(Okaro::AppendBacktraceFrame), std::bad_alloc);
    failSymbolLookup = false;
}

TEST(FormatBacktraceSuffix, CurrentStackLeavesOutTheCollector)
{
    const std::string suffix = Okaro::FormatBacktraceSuffix();
    EXPECT_THAT(suffix, Not(HasSubstr("Backtrace")));
    if (!suffix.empty())
    {
        EXPECT_EQ(suffix.rfind(" [", 0), 0u) << suffix;
        EXPECT_EQ(suffix.back(), ']') << suffix;
    }
}
