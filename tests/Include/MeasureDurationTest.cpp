#include "support/LogCapture.h"

#include <Tav/MeasureDuration.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <regex>
#include <thread>

using namespace TavTest;
using ::testing::IsEmpty;

namespace
{
constexpr std::int64_t DecodeThresholdNs = 100000000;
const char* const DecodeMessage = "Decoding a KNX value took ";

// Boost.Timer's default format with six places, without its leading blank and final line feed.
const std::regex DecodeLine("^~MeasureDuration - Decoding a KNX value took "
                            "\\d+\\.\\d{6}s wall, \\d+\\.\\d{6}s user \\+ \\d+\\.\\d{6}s system = "
                            "\\d+\\.\\d{6}s CPU \\((\\d+\\.\\d%|n/a%)\\)$");

void TimedDecode(std::chrono::milliseconds duration)
{
    Okaro::MeasureDuration measure(DecodeMessage, DecodeThresholdNs, true);
    std::this_thread::sleep_for(duration);
}
} // namespace

TEST(MeasureDuration, FastDecodeBelowThresholdLogsNothing)
{
    LogCapture capture;
    TimedDecode(std::chrono::milliseconds(50));
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST(MeasureDuration, SlowDecodeLogsOneInfoLineWithTimes)
{
    LogCapture capture;
    TimedDecode(std::chrono::milliseconds(150));
    const auto lines = capture.Lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].level, log4cplus::INFO_LOG_LEVEL);
    EXPECT_TRUE(std::regex_match(lines[0].message, DecodeLine)) << lines[0].message;
    EXPECT_EQ(lines[0].file, "MeasureDuration.cpp");
}

TEST(MeasureDuration, WallTimeEqualToThresholdIsLogged)
{
    LogCapture capture;
    {
        Okaro::MeasureDuration measure(DecodeMessage, 0, true);
    }
    const auto lines = capture.Lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].level, log4cplus::INFO_LOG_LEVEL);
    EXPECT_TRUE(std::regex_match(lines[0].message, DecodeLine)) << lines[0].message;
}

TEST(MeasureDuration, SlowDecodeLogsNothingWhenInfoIsDisabled)
{
    LogCapture capture(log4cplus::WARN_LOG_LEVEL);
    {
        Okaro::MeasureDuration measure(DecodeMessage, 0, true);
    }
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST(MeasureDuration, WithoutThresholdModeEveryRunIsLoggedAtDebug)
{
    LogCapture capture;
    {
        Okaro::MeasureDuration measure(DecodeMessage, INT64_MAX, false);
    }
    const auto lines = capture.Lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].level, log4cplus::DEBUG_LOG_LEVEL);
    EXPECT_TRUE(std::regex_match(lines[0].message, DecodeLine)) << lines[0].message;
}

TEST(MeasureDuration, WithoutThresholdModeNothingWhenDebugIsDisabled)
{
    LogCapture capture(log4cplus::INFO_LOG_LEVEL);
    {
        Okaro::MeasureDuration measure(DecodeMessage, 0, false);
    }
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST(MeasureDuration, WritesToTheGivenLogger)
{
    LogCapture capture;
    log4cplus::Logger silenced = log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("TavTest.Silenced"));
    silenced.setLogLevel(log4cplus::OFF_LOG_LEVEL);
    {
        Okaro::MeasureDuration measure(DecodeMessage, 0, true, silenced);
    }
    EXPECT_THAT(capture.Lines(), IsEmpty());

    log4cplus::Logger own = log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("TavTest.Own"));
    {
        Okaro::MeasureDuration measure("Own block took ", 0, true, own);
    }
    const auto lines = capture.Lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].message.rfind("~MeasureDuration - Own block took ", 0), 0u) << lines[0].message;
}
