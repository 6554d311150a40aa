#include "knx/ProjectMap.h"

#include "knx/DptText.h"
#include "knx/TelegramReport.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

using TavKnx::GroupAddressMap;
using TavKnx::MapFromProject;

namespace
{
constexpr std::uint16_t kKitchenLight = 0x0800;  // 1/0/0
constexpr std::uint16_t kStatus = 0x0802;        // 1/0/2
constexpr std::uint16_t kUnused = 0x0001;        // 0/0/1
constexpr std::uint16_t kUnknown = 0x1800;       // 3/0/0

TavProject::GroupAddress Address(std::uint16_t raw, const std::string& name, boost::optional<TavProject::Dpt> dpt)
{
    TavProject::GroupAddress address;
    address.raw = raw;
    address.name = name;
    address.dpt = dpt;
    return address;
}

TavProject::Project TestProject()
{
    TavProject::Project project;
    project.groupAddresses.push_back(Address(kUnused, "Unused", boost::none));
    project.groupAddresses.push_back(Address(kKitchenLight, "Kitchen light", TavProject::Dpt{1, 1}));
    project.groupAddresses.push_back(Address(kStatus, "Status\nsecond\tline", TavProject::Dpt{1, boost::none}));
    project.groupAddresses.push_back(Address(0x1201, "", TavProject::Dpt{9, 1}));
    return project;
}

std::string TempFile(const std::string& name, const std::string& content)
{
    const char* directory = std::getenv("TMPDIR");
    const std::string path = std::string(directory != nullptr ? directory : "/tmp") + "/ProjectMapTest-" + name;
    std::ofstream(path, std::ios::binary) << content;
    return path;
}
} // namespace

TEST(ProjectMapTest, TakesDptsOfGroupAddressesThatHaveOne)
{
    const GroupAddressMap map = MapFromProject(TestProject());
    EXPECT_EQ(map.Size(), 3u);
    ASSERT_NE(map.Find(kKitchenLight), nullptr);
    EXPECT_EQ(TavKnx::FormatDpt(*map.Find(kKitchenLight)), "1.1");
    // Main number only: sub 0, as "9" means on the command line.
    ASSERT_NE(map.Find(kStatus), nullptr);
    EXPECT_EQ(TavKnx::FormatDpt(*map.Find(kStatus)), "1.0");
    EXPECT_EQ(map.Find(kUnused), nullptr);
    EXPECT_EQ(map.Find(kUnknown), nullptr);
}

TEST(ProjectMapTest, NamesGroupAddressesOnOneLine)
{
    const GroupAddressMap map = MapFromProject(TestProject());
    ASSERT_NE(map.FindName(kUnused), nullptr);
    EXPECT_EQ(*map.FindName(kUnused), "Unused");
    ASSERT_NE(map.FindName(kStatus), nullptr);
    EXPECT_EQ(*map.FindName(kStatus), "Status second line");
    EXPECT_EQ(map.FindName(0x1201), nullptr);
    EXPECT_EQ(map.FindName(kUnknown), nullptr);
}

TEST(ProjectMapTest, TextMapsHaveNoNames)
{
    std::vector<TavKnx::MapProblem> problems;
    const GroupAddressMap map = GroupAddressMap::Parse("1/0/0;1.001  # Kitchen light\n", problems);
    EXPECT_NE(map.Find(kKitchenLight), nullptr);
    EXPECT_EQ(map.FindName(kKitchenLight), nullptr);
}

TEST(ProjectMapTest, ReportShowsTheNameInTextAndJson)
{
    const GroupAddressMap map = MapFromProject(TestProject());
    TavKnx::TelegramReporter reporter(map);
    const std::vector<std::uint8_t> apdu{0x00, 0x81};
    const TavKnx::GroupTelegram telegram = TavKnx::ParseGroupTelegram(0x1105, kKitchenLight, apdu.data(), apdu.size());
    const auto received = std::chrono::system_clock::time_point(std::chrono::milliseconds(1795232460123LL));
    EXPECT_EQ(reporter.Report(telegram, received, false),
              "2026-11-21T03:41:00.123Z 1.1.5 1/0/0 \"Kitchen light\" write 01 (6 bits) 1.001 DPT_Switch codec: on = Bool "
              "true [ivt 2, sub-type 0] | table: on = Bool true [ivt 2, sub-type 0]");
    EXPECT_EQ(reporter.Report(telegram, received, true),
              "{\"time\":\"2026-11-21T03:41:00.123Z\",\"source\":\"1.1.5\",\"ga\":\"1/0/0\",\"name\":\"Kitchen light\","
              "\"kind\":\"write\",\"hex\":\"01\",\"bits\":6,\"dpt\":\"1.1\",\"ok\":true,\"ivt\":2,\"type\":\"Bool\","
              "\"subType\":0,\"value\":true,\"table\":{\"ok\":true,\"ivt\":2,\"type\":\"Bool\",\"subType\":0,"
              "\"value\":true}}");
    const TavKnx::GroupTelegram unknown = TavKnx::ParseGroupTelegram(0x1105, kUnknown, apdu.data(), apdu.size());
    EXPECT_EQ(reporter.Report(unknown, received, false), "2026-11-21T03:41:00.123Z 1.1.5 3/0/0 write 01 (6 bits)");
}

TEST(ProjectMapTest, KnowsAProjectByItsZipSignature)
{
    const std::string zip = TempFile("zip.knxproj", std::string("PK\x03\x04", 4) + "rest");
    const std::string empty = TempFile("empty-zip.knxproj", std::string("PK\x05\x06", 4));
    const std::string text = TempFile("map.txt", "1/0/0;1.001\n");
    const std::string shortFile = TempFile("short", "PK");
    EXPECT_TRUE(TavKnx::IsProjectFile(zip));
    EXPECT_TRUE(TavKnx::IsProjectFile(empty));
    EXPECT_FALSE(TavKnx::IsProjectFile(text));
    EXPECT_FALSE(TavKnx::IsProjectFile(shortFile));
    EXPECT_FALSE(TavKnx::IsProjectFile(zip + ".missing"));
    for (const std::string& path : {zip, empty, text, shortFile})
    {
        std::remove(path.c_str());
    }
}
