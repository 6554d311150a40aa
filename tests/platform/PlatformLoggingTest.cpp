#include "support/LogCapture.h"

#include <platform/Logging.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace TavTest;
using ::testing::ElementsAre;

namespace
{
void LogSomething(int value) { TAV_LOG(Okaro::GetGlobalDefaultLogger(), log4cplus::ERROR_LOG_LEVEL, "value " << value); }
} // namespace

TEST(GlobalDefaultLogger, LinesReachTheRootLoggerWithFunctionNameAndFileName)
{
    LogCapture capture;
    LogSomething(42);
    const auto lines = capture.Lines();
    ASSERT_THAT(lines, ElementsAre(Error("LogSomething - value 42")));
    EXPECT_EQ(lines[0].file, "PlatformLoggingTest.cpp");
    EXPECT_GT(lines[0].line, 0);
}

TEST(GlobalDefaultLogger, NothingIsBuiltBelowTheLevel)
{
    LogCapture capture(log4cplus::FATAL_LOG_LEVEL);
    int evaluations = 0;
    auto count = [&evaluations]() { return ++evaluations; };
    TAV_LOG(Okaro::GetGlobalDefaultLogger(), log4cplus::ERROR_LOG_LEVEL, "counted " << count());
    EXPECT_EQ(evaluations, 0);
    EXPECT_TRUE(capture.Lines().empty());
}

TEST(GlobalDefaultLogger, ExplicitFunctionNameAndLine)
{
    LogCapture capture;
    TAV_LOG_FN_LINE(Okaro::GetGlobalDefaultLogger(), log4cplus::WARN_LOG_LEVEL, "OnResponse", 275, "text");
    const auto lines = capture.Lines();
    ASSERT_THAT(lines, ElementsAre(Warn("OnResponse - text")));
    EXPECT_EQ(lines[0].line, 275);
}
