#include "support/LogCapture.h"

#include <TavObjectModel/AppHostConfig.h>

#include <boost/filesystem.hpp>
#include <boost/optional/optional_io.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <random>
#include <string>
#include <thread>
#include <vector>

using namespace TavTest;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Okaro::AppHostConfiguration;
using Okaro::UTF8String;

namespace
{
const UTF8String Prefix("AppHost");

class AppHostConfig : public ::testing::Test
{
protected:
    void SetUp() override
    {
        directory_ = boost::filesystem::temp_directory_path() / boost::filesystem::unique_path("tavapphost-%%%%-%%%%-%%%%");
        boost::filesystem::create_directories(directory_);
    }

    void TearDown() override { boost::filesystem::remove_all(directory_); }

    boost::filesystem::path Write(const std::string& content, const std::string& name = "tavapphostconfig.xml")
    {
        const auto file = directory_ / name;
        std::ofstream(file.string(), std::ios::binary) << content;
        return file;
    }

    void LoadText(const std::string& content, const UTF8String& prefix = Prefix)
    {
        config_.LoadConfigurationFile(Write(content), logger_, prefix);
    }

    bool Parse(std::string content)
    {
        content.push_back('\0');
        return config_.LoadAppHostConfigXML(&content[0], logger_);
    }

    void ExpectDefaults() const
    {
        EXPECT_FALSE(config_.IsInAppDebugMode());
        EXPECT_FALSE(config_.IsAppHostStartupDisabled());
        EXPECT_FALSE(config_.IsAppConnectorHostStartupDisabled());
        EXPECT_FALSE(config_.IsAppHostWithoutKNX());
        EXPECT_FALSE(config_.GetRootPathNativeApp());
        EXPECT_FALSE(config_.GetRootPathManagedApp());
        EXPECT_FALSE(config_.GetRootPathAppHost());
        EXPECT_FALSE(config_.GetRootPathAppConnectorHost());
    }

    // The parser's complaint, then the loader's fallback notice.
    void ExpectRefused(const LogCapture& capture, const std::string& reason) const
    {
        EXPECT_THAT(capture.Lines(), ElementsAre(Error("Failed to read configuration file: " + reason),
                                                 Error("[AppHost] LoadConfigurationFile - Falling back to standard configuration.")));
    }

    boost::filesystem::path directory_;
    log4cplus::Logger logger_ = log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("TavTest.AppHost"));
    AppHostConfiguration config_;
};

std::string Nested(std::size_t levels)
{
    std::string text = "<TavAppHostConfig WithoutKNX=\"1\">";
    for (std::size_t i = 1; i < levels; ++i)
    {
        text += "<x>";
    }
    for (std::size_t i = 1; i < levels; ++i)
    {
        text += "</x>";
    }
    return text + "</TavAppHostConfig>";
}

// Without a prefix the line may end in a back-trace " [...]".
void ExpectLineWithOptionalBacktrace(const LogLine& line, const std::string& text)
{
    EXPECT_EQ(line.level, log4cplus::ERROR_LOG_LEVEL);
    ASSERT_EQ(line.message.compare(0, text.size(), text), 0) << line.message;
    const std::string rest = line.message.substr(text.size());
    EXPECT_TRUE(rest.empty() || (rest.size() > 3 && rest.compare(0, 2, " [") == 0 && rest.back() == ']')) << line.message;
}
} // namespace

TEST_F(AppHostConfig, StartsWithDefaults)
{
    ExpectDefaults();
}

TEST_F(AppHostConfig, SettersAndReplacersReturnThePreviousValue)
{
    config_.SetAppDebugMode(true);
    EXPECT_TRUE(config_.IsInAppDebugMode());
    EXPECT_TRUE(config_.ReplaceAppDebugMode(false));
    EXPECT_FALSE(config_.ReplaceAppDebugMode(true));
    EXPECT_TRUE(config_.IsInAppDebugMode());

    config_.SetAppHostStartupDisabled(true);
    EXPECT_TRUE(config_.IsAppHostStartupDisabled());
    EXPECT_FALSE(config_.SetAppConnectorHostStartupDisabled(true));
    EXPECT_TRUE(config_.SetAppConnectorHostStartupDisabled(false));
    EXPECT_FALSE(config_.IsAppConnectorHostStartupDisabled());
}

TEST_F(AppHostConfig, MinimalFileIsApplied)
{
    LogCapture capture;
    LoadText("<TavAppHostConfig WithoutKNX=\"1\">\n"
             "  <Debugging Active=\"1\">\n"
             "    <AppHost RootPath=\"/opt/apps/host\" DisableStartup=\"1\"/>\n"
             "  </Debugging>\n"
             "</TavAppHostConfig>\n");
    EXPECT_THAT(capture.Lines(), IsEmpty());
    EXPECT_TRUE(config_.IsAppHostWithoutKNX());
    EXPECT_TRUE(config_.IsInAppDebugMode());
    EXPECT_TRUE(config_.IsAppHostStartupDisabled());
    EXPECT_TRUE(config_.IsAppConnectorHostStartupDisabled());
    EXPECT_EQ(config_.GetRootPathAppHost(), std::string("/opt/apps/host"));
    EXPECT_FALSE(config_.GetRootPathNativeApp());
    EXPECT_FALSE(config_.GetRootPathManagedApp());
    EXPECT_FALSE(config_.GetRootPathAppConnectorHost());
}

TEST_F(AppHostConfig, AllFourRootPathsAreRead)
{
    EXPECT_TRUE(Parse("<TavAppHostConfig><Debugging Active='1'>"
                      "<App RootPath='/n'/><ManagedApp RootPath='/m'/><AppHost RootPath='/h'/>"
                      "<AppConnectorHost RootPath='/c' DisableStartup='1'/></Debugging></TavAppHostConfig>"));
    EXPECT_EQ(config_.GetRootPathNativeApp(), std::string("/n"));
    EXPECT_EQ(config_.GetRootPathManagedApp(), std::string("/m"));
    EXPECT_EQ(config_.GetRootPathAppHost(), std::string("/h"));
    EXPECT_EQ(config_.GetRootPathAppConnectorHost(), std::string("/c"));
    EXPECT_TRUE(config_.IsAppConnectorHostStartupDisabled());
    EXPECT_FALSE(config_.IsAppHostStartupDisabled());
}

TEST_F(AppHostConfig, WordFalseCountsAsTrue)
{
    EXPECT_TRUE(Parse("<TavAppHostConfig WithoutKNX=\"false\"/>"));
    EXPECT_TRUE(config_.IsAppHostWithoutKNX());
}

TEST_F(AppHostConfig, OnlyZeroIsFalse)
{
    config_.SetAppDebugMode(true);
    EXPECT_TRUE(Parse("<TavAppHostConfig WithoutKNX=\"no\"><Debugging Active=\"0\"/></TavAppHostConfig>"));
    EXPECT_TRUE(config_.IsAppHostWithoutKNX());
    EXPECT_FALSE(config_.IsInAppDebugMode());
    EXPECT_TRUE(Parse("<TavAppHostConfig WithoutKNX=\"00\"/>"));
    EXPECT_TRUE(config_.IsAppHostWithoutKNX());
    EXPECT_TRUE(Parse("<TavAppHostConfig WithoutKNX=\"0\"/>"));
    EXPECT_FALSE(config_.IsAppHostWithoutKNX());
}

TEST_F(AppHostConfig, EmptyWithoutKnxLeavesTheFlagFalse)
{
    LogCapture capture;
    EXPECT_TRUE(Parse("<TavAppHostConfig WithoutKNX=\"\"/>"));
    EXPECT_FALSE(config_.IsAppHostWithoutKNX());
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST_F(AppHostConfig, EmptyAttributesLeaveEverySettingAsItWas)
{
    EXPECT_TRUE(Parse("<TavAppHostConfig WithoutKNX='1'><Debugging Active='1'>"
                      "<App RootPath='/n'/><AppHost RootPath='/h' DisableStartup='1'/></Debugging></TavAppHostConfig>"));
    EXPECT_TRUE(Parse("<TavAppHostConfig WithoutKNX=''><Debugging Active=''>"
                      "<App RootPath=''/><AppHost RootPath='' DisableStartup=''/></Debugging></TavAppHostConfig>"));
    EXPECT_TRUE(config_.IsAppHostWithoutKNX());
    EXPECT_TRUE(config_.IsInAppDebugMode());
    EXPECT_TRUE(config_.IsAppHostStartupDisabled());
    EXPECT_EQ(config_.GetRootPathNativeApp(), std::string("/n"));
    EXPECT_EQ(config_.GetRootPathAppHost(), std::string("/h"));
}

TEST_F(AppHostConfig, InactiveDebuggingIgnoresItsChildren)
{
    EXPECT_TRUE(Parse("<TavAppHostConfig><Debugging Active=\"0\">"
                      "<App RootPath='/n'/><ManagedApp RootPath='/m'/>"
                      "<AppHost RootPath='/h' DisableStartup='1'/><AppConnectorHost RootPath='/c' DisableStartup='1'/>"
                      "</Debugging></TavAppHostConfig>"));
    ExpectDefaults();
}

TEST_F(AppHostConfig, DebugModeSetBeforeEnablesTheChildren)
{
    config_.SetAppDebugMode(true);
    EXPECT_TRUE(Parse("<TavAppHostConfig><Debugging><App RootPath='/n'/></Debugging></TavAppHostConfig>"));
    EXPECT_EQ(config_.GetRootPathNativeApp(), std::string("/n"));
}

TEST_F(AppHostConfig, DisabledAppHostDisablesTheConnectorHost)
{
    EXPECT_TRUE(Parse("<TavAppHostConfig><Debugging Active='1'>"
                      "<AppHost DisableStartup=\"1\"/><AppConnectorHost DisableStartup=\"0\"/>"
                      "</Debugging></TavAppHostConfig>"));
    EXPECT_TRUE(config_.IsAppHostStartupDisabled());
    EXPECT_TRUE(config_.IsAppConnectorHostStartupDisabled());
}

TEST_F(AppHostConfig, AppHostDisabledBeforeLoadingAlsoDisablesTheConnectorHost)
{
    config_.SetAppHostStartupDisabled(true);
    EXPECT_TRUE(Parse("<Other/>"));
    EXPECT_TRUE(config_.IsAppConnectorHostStartupDisabled());
}

TEST_F(AppHostConfig, EveryRootSiblingIsAppliedAndTheLaterWins)
{
    EXPECT_TRUE(Parse("<TavAppHostConfig WithoutKNX='1'><Debugging Active='1'><App RootPath='/first'/>"
                      "<AppHost RootPath='/host'/></Debugging></TavAppHostConfig>"
                      "<Other WithoutKNX='0'/>"
                      "<TavAppHostConfig><Debugging Active='1'><App RootPath='/second'/>"
                      "<ManagedApp RootPath='/managed'/></Debugging></TavAppHostConfig>"));
    EXPECT_TRUE(config_.IsAppHostWithoutKNX());
    EXPECT_EQ(config_.GetRootPathNativeApp(), std::string("/second"));
    EXPECT_EQ(config_.GetRootPathManagedApp(), std::string("/managed"));
    EXPECT_EQ(config_.GetRootPathAppHost(), std::string("/host"));
}

TEST_F(AppHostConfig, EveryDebuggingElementIsAppliedInOrder)
{
    EXPECT_TRUE(Parse("<TavAppHostConfig><Debugging Active='1'><App RootPath='/a'/></Debugging>"
                      "<Debugging Active='0'><App RootPath='/ignored'/></Debugging>"
                      "<Debugging><ManagedApp RootPath='/ignored'/></Debugging></TavAppHostConfig>"));
    EXPECT_FALSE(config_.IsInAppDebugMode());
    EXPECT_EQ(config_.GetRootPathNativeApp(), std::string("/a"));
    EXPECT_FALSE(config_.GetRootPathManagedApp());
}

TEST_F(AppHostConfig, UnknownElementsAndAttributesAreIgnoredSilently)
{
    LogCapture capture;
    LoadText("<?xml version=\"1.0\"?><!-- settings --><Settings WithoutKNX='1'/>"
             "<tavAppHostConfig WithoutKNX='1'/>"
             "<TavAppHostConfig withoutknx='1' Colour='red'><Extra Active='1'/>"
             "<Debugging Active='1' Verbose='1'><Tool RootPath='/t'/><app RootPath='/lower'/>"
             "<App Path='/wrong' RootPath='/n'/><App><AppHost RootPath='/nested'/></App></Debugging>"
             "<App RootPath='/outside'/></TavAppHostConfig>");
    EXPECT_THAT(capture.Lines(), IsEmpty());
    EXPECT_FALSE(config_.IsAppHostWithoutKNX());
    EXPECT_TRUE(config_.IsInAppDebugMode());
    EXPECT_EQ(config_.GetRootPathNativeApp(), std::string("/n"));
    EXPECT_FALSE(config_.GetRootPathAppHost());
}

TEST_F(AppHostConfig, FirstAttributeOfANameCounts)
{
    EXPECT_TRUE(Parse("<TavAppHostConfig WithoutKNX='0' WithoutKNX='1'/>"));
    EXPECT_FALSE(config_.IsAppHostWithoutKNX());
}

TEST_F(AppHostConfig, RootPathIsStoredAsGiven)
{
    EXPECT_TRUE(Parse("<TavAppHostConfig><Debugging Active='1'>"
                      "<App RootPath=' /does/not/exist &amp; &quot;x&quot; '/></Debugging></TavAppHostConfig>"));
    EXPECT_EQ(config_.GetRootPathNativeApp(), std::string(" /does/not/exist & \"x\" "));
}

TEST_F(AppHostConfig, EmptyFileChangesNothing)
{
    LogCapture capture;
    config_.SetAppDebugMode(true);
    LoadText("");
    EXPECT_THAT(capture.Lines(), IsEmpty());
    EXPECT_TRUE(config_.IsInAppDebugMode());
    EXPECT_FALSE(config_.IsAppHostWithoutKNX());

    char zero[] = "";
    EXPECT_TRUE(config_.LoadAppHostConfigXML(zero, logger_));
}

TEST_F(AppHostConfig, ZeroByteEndsTheText)
{
    LogCapture capture;
    LoadText(std::string("<TavAppHostConfig WithoutKNX='1'/>\0<<<garbage", 45));
    EXPECT_THAT(capture.Lines(), IsEmpty());
    EXPECT_TRUE(config_.IsAppHostWithoutKNX());
}

TEST_F(AppHostConfig, MissingClosingBracketIsReported)
{
    LogCapture capture;
    LoadText("<TavAppHostConfig WithoutKNX=\"1\" </TavAppHostConfig>");
    ExpectRefused(capture, "expected >");
    ExpectDefaults();
}

TEST_F(AppHostConfig, MissingElementNameIsReported)
{
    LogCapture capture;
    LoadText("<TavAppHostConfig WithoutKNX=\"1\"><></TavAppHostConfig>");
    ExpectRefused(capture, "expected element name");
    ExpectDefaults();
}

TEST_F(AppHostConfig, TruncatedFileIsReported)
{
    LogCapture capture;
    LoadText("<TavAppHostConfig WithoutKNX=\"1\"><Debugging Active=\"1\">");
    ExpectRefused(capture, "unexpected end of data");
    ExpectDefaults();
}

TEST_F(AppHostConfig, TextOutsideAnElementIsReported)
{
    LogCapture capture;
    LoadText("<TavAppHostConfig WithoutKNX=\"1\"/> trailing words");
    ExpectRefused(capture, "expected <");
    ExpectDefaults();
}

TEST_F(AppHostConfig, ParserErrorWithoutPrefixEndsInFallbackWithFunctionName)
{
    LogCapture capture;
    LoadText("<TavAppHostConfig", UTF8String());
    const auto lines = capture.Lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], Error("Failed to read configuration file: expected >"));
    ExpectLineWithOptionalBacktrace(lines[1], "LoadConfigurationFile - Falling back to standard configuration.");
}

TEST_F(AppHostConfig, MissingFileIsReportedWithQuotedPath)
{
    LogCapture capture;
    const auto file = directory_ / "missing.xml";
    config_.LoadConfigurationFile(file, logger_, Prefix);
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("[AppHost] LoadConfigurationFile - App host config file cannot be read from: \"" +
                                                   file.string() + "\"")));
    ExpectDefaults();
}

TEST_F(AppHostConfig, MissingFileWithoutPrefixCarriesTheBacktrace)
{
    LogCapture capture;
    const auto file = directory_ / "missing.xml";
    config_.LoadConfigurationFile(file, logger_, UTF8String());
    const auto lines = capture.Lines();
    ASSERT_EQ(lines.size(), 1u);
    ExpectLineWithOptionalBacktrace(lines[0], "LoadConfigurationFile - App host config file cannot be read from: \"" +
                                                  file.string() + "\"");
}

TEST_F(AppHostConfig, QuoteAndAmpersandInThePathAreEscaped)
{
    LogCapture capture;
    boost::filesystem::create_directories(directory_ / "we\"ird&name");
    config_.LoadConfigurationFile(directory_ / "we\"ird&name" / "config.xml", logger_, Prefix);
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("[AppHost] LoadConfigurationFile - App host config file cannot be read from: \"" +
                                                   directory_.string() + "/we&\"ird&&name/config.xml\"")));
}

TEST_F(AppHostConfig, UnreadableFileIsReported)
{
    // Tests may run as root, where file permissions do not stop reading; a directory opens but
    // cannot be read.
    LogCapture capture;
    const auto file = directory_ / "directory.xml";
    boost::filesystem::create_directories(file);
    config_.LoadConfigurationFile(file, logger_, Prefix);
    EXPECT_THAT(capture.Lines(), ElementsAre(Error("[AppHost] LoadConfigurationFile - App host config file cannot be read from: \"" +
                                                   file.string() + "\"")));
    ExpectDefaults();
}

TEST_F(AppHostConfig, DefaultFileIsTheControllersPath)
{
    EXPECT_STREQ(AppHostConfiguration::DefaultFilePath, "/opt/userdata/etc/tavapphost/tavapphostconfig.xml");
    if (boost::filesystem::exists(AppHostConfiguration::DefaultFilePath))
    {
        GTEST_SKIP() << "this machine has an app host configuration file";
    }
    LogCapture capture;
    config_.LoadConfigurationFile(logger_, Prefix);
    EXPECT_THAT(capture.Lines(),
                ElementsAre(Error("[AppHost] LoadConfigurationFile - App host config file cannot be read from: "
                                  "\"/opt/userdata/etc/tavapphost/tavapphostconfig.xml\"")));
}

TEST_F(AppHostConfig, LinesGoToTheGivenLoggerOnly)
{
    LogCapture capture;
    logger_.setLogLevel(log4cplus::OFF_LOG_LEVEL);
    config_.LoadConfigurationFile(directory_ / "missing.xml", logger_, Prefix);
    LoadText("<broken");
    logger_.setLogLevel(log4cplus::NOT_SET_LOG_LEVEL);
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST_F(AppHostConfig, NestingUpToTheLimitIsAccepted)
{
    LogCapture capture;
    LoadText(Nested(64));
    EXPECT_THAT(capture.Lines(), IsEmpty());
    EXPECT_TRUE(config_.IsAppHostWithoutKNX());
}

TEST_F(AppHostConfig, NestingBeyondTheLimitIsRefused)
{
    LogCapture capture;
    LoadText(Nested(65));
    ExpectRefused(capture, "elements are nested deeper than 64 levels");
    ExpectDefaults();
}

TEST_F(AppHostConfig, VeryDeepNestingIsRefusedWithoutCrash)
{
    LogCapture capture;
    LoadText(Nested(100000));
    ExpectRefused(capture, "elements are nested deeper than 64 levels");
    ExpectDefaults();
}

TEST_F(AppHostConfig, TextOfOneMebibyteIsAccepted)
{
    const std::string head = "<TavAppHostConfig WithoutKNX='1'/><!--";
    const std::string tail = "-->";
    LogCapture capture;
    LoadText(head + std::string(AppHostConfiguration::MaxTextSize - head.size() - tail.size(), 'x') + tail);
    EXPECT_THAT(capture.Lines(), IsEmpty());
    EXPECT_TRUE(config_.IsAppHostWithoutKNX());
}

TEST_F(AppHostConfig, TextLargerThanOneMebibyteIsRefused)
{
    const std::string head = "<TavAppHostConfig WithoutKNX='1'/><!--";
    const std::string tail = "-->";
    LogCapture capture;
    LoadText(head + std::string(AppHostConfiguration::MaxTextSize - head.size() - tail.size() + 1, 'x') + tail);
    ExpectRefused(capture, "text is larger than 1048576 bytes");
    ExpectDefaults();
}

TEST_F(AppHostConfig, BinaryGarbageChangesNothing)
{
    std::mt19937 random(7u);
    for (int round = 0; round < 200; ++round)
    {
        std::string garbage(1 + random() % 4096, '\0');
        for (auto& byte : garbage)
        {
            byte = static_cast<char>(random() & 0xFF);
        }
        garbage[0] = '<';  // gets the parser past the first byte
        LogCapture capture;
        LoadText(garbage);
        for (const auto& line : capture.Lines())
        {
            EXPECT_EQ(line.level, log4cplus::ERROR_LOG_LEVEL) << line;
        }
        ExpectDefaults();
    }
}

TEST_F(AppHostConfig, FlagsCanBeReadWhileAnotherThreadSetsThem)
{
    std::atomic<bool> stop{false};
    std::atomic<long> reads{0};
    std::vector<std::thread> readers;
    for (int i = 0; i < 3; ++i)
    {
        readers.emplace_back([&] {
            while (!stop.load())
            {
                const bool any = config_.IsInAppDebugMode() || config_.IsAppHostStartupDisabled() ||
                                 config_.IsAppConnectorHostStartupDisabled() || config_.IsAppHostWithoutKNX();
                static_cast<void>(any);
                reads.fetch_add(1);
            }
        });
    }
    while (reads.load() < 3)
    {
        std::this_thread::yield();
    }
    bool previous = false;
    for (int i = 0; i < 20000; ++i)
    {
        const bool value = (i % 2) == 0;
        config_.SetAppDebugMode(value);
        config_.SetAppHostStartupDisabled(value);
        EXPECT_EQ(config_.SetAppConnectorHostStartupDisabled(value), previous);
        EXPECT_EQ(config_.ReplaceAppDebugMode(value), value);
        previous = value;
    }
    stop = true;
    for (auto& reader : readers)
    {
        reader.join();
    }
    EXPECT_GT(reads.load(), 0);
    EXPECT_FALSE(config_.IsInAppDebugMode());
    EXPECT_FALSE(config_.IsAppConnectorHostStartupDisabled());
}
