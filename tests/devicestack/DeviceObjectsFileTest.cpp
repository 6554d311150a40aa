#include <devicestack/DeviceObjectsFile.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <stdexcept>

namespace
{
using Lumo::DeviceObject;
using TavKnx::MapProblem;

TEST(DeviceObjectFlags, FormatsInTheCommissioningSoftwaresOrder)
{
    EXPECT_EQ("CRWTUI", Lumo::FormatObjectFlags(0x3Fu));
    EXPECT_EQ("CWT", Lumo::FormatObjectFlags(Lumo::kFlagTransmit | Lumo::kFlagWrite | Lumo::kFlagCommunication));
    EXPECT_EQ("", Lumo::FormatObjectFlags(0));
}

TEST(DeviceObjectFlags, ParsesAnyOrderAndCaseOnce)
{
    unsigned flags = 99;
    ASSERT_TRUE(Lumo::ParseObjectFlags("tuRc", flags));
    EXPECT_EQ(Lumo::kFlagCommunication | Lumo::kFlagRead | Lumo::kFlagTransmit | Lumo::kFlagUpdate, flags);
    ASSERT_TRUE(Lumo::ParseObjectFlags("", flags));
    EXPECT_EQ(0u, flags);
    flags = 7;
    EXPECT_FALSE(Lumo::ParseObjectFlags("CC", flags));
    EXPECT_FALSE(Lumo::ParseObjectFlags("CX", flags));
    EXPECT_FALSE(Lumo::ParseObjectFlags("C R", flags));
    EXPECT_EQ(7u, flags);
}

TEST(DeviceObjectValueId, IsTheCoValueIdOnLogicalDeviceOne)
{
    EXPECT_EQ(100101ul, Lumo::ObjectValueId(1));
    EXPECT_EQ(100201ul, Lumo::ObjectValueId(2));
    EXPECT_EQ(0ul, Lumo::ObjectValueId(0));
}

TEST(DeviceObjectsFile, ReadsObjectsWithAllTheirFields)
{
    std::vector<MapProblem> problems;
    const std::vector<DeviceObject> objects = Lumo::ParseDeviceObjects(
        "# the living room\n"
        "1;1/2/3;9.001;CRWTU;Living room temperature\n"
        "\n"
        "  2 ; 1/1/1, 1/1/2 ,3/2047 ; 1 ; cwt ; Light; main\r\n",
        problems);
    EXPECT_TRUE(problems.empty());
    ASSERT_EQ(2u, objects.size());
    EXPECT_EQ(1, objects[0].co);
    EXPECT_EQ(std::vector<std::uint16_t>{0x0A03}, objects[0].groupAddresses);
    EXPECT_EQ(9, objects[0].dpt.main);
    EXPECT_EQ(1, objects[0].dpt.sub);
    EXPECT_EQ("CRWTU", Lumo::FormatObjectFlags(objects[0].flags));
    EXPECT_EQ("Living room temperature", objects[0].name);
    EXPECT_EQ(2, objects[1].co);
    EXPECT_EQ((std::vector<std::uint16_t>{0x0901, 0x0902, 0x1FFF}), objects[1].groupAddresses);
    EXPECT_EQ(1, objects[1].dpt.main);
    EXPECT_EQ(0, objects[1].dpt.sub);
    EXPECT_EQ("CWT", Lumo::FormatObjectFlags(objects[1].flags));
    EXPECT_EQ("Light; main", objects[1].name);
}

TEST(DeviceObjectsFile, SkipsMalformedLinesAndSaysWhichAndWhy)
{
    std::vector<MapProblem> problems;
    const std::vector<DeviceObject> objects = Lumo::ParseDeviceObjects(
        "1;1/2/3;9.001;CRWTU;Good\n"
        "2;1/2/4;9.001;CRWTU\n"
        "x;1/2/5;9.001;CRWTU;Bad number\n"
        "0;1/2/5;9.001;CRWTU;Zero\n"
        "3;1/2/99999;9.001;CRWTU;Bad address\n"
        "4;;9.001;CRWTU;No address\n"
        "5;1/2/6;nine;CRWTU;Bad DPT\n"
        "6;1/2/7;9.001;CRWQ;Bad flags\n"
        "1;1/2/8;1.001;CWT;Second CO 1\n"
        "7;1/2/9;1.001;CWT;Also good\n",
        problems);
    ASSERT_EQ(2u, objects.size());
    EXPECT_EQ(1, objects[0].co);
    EXPECT_EQ(7, objects[1].co);
    ASSERT_EQ(8u, problems.size());
    EXPECT_EQ(2u, problems[0].line);
    EXPECT_EQ("expected CO;GA[,GA...];DPT;FLAGS;NAME, got '2;1/2/4;9.001;CRWTU'", problems[0].message);
    EXPECT_EQ(3u, problems[1].line);
    EXPECT_EQ(4u, problems[2].line);
    EXPECT_EQ("CO: expected an object number the value ids can hold, got '0'", problems[2].message);
    EXPECT_EQ(5u, problems[3].line);
    EXPECT_EQ("GA: expected a group address, got '1/2/99999'", problems[3].message);
    EXPECT_EQ(6u, problems[4].line);
    EXPECT_EQ("GA: expected a group address, got ''", problems[4].message);
    EXPECT_EQ(7u, problems[5].line);
    EXPECT_EQ(8u, problems[6].line);
    EXPECT_EQ("FLAGS: expected letters of CRWTUI, got 'CRWQ'", problems[6].message);
    EXPECT_EQ(9u, problems[7].line);
    EXPECT_EQ("CO 1 is already defined", problems[7].message);
}

TEST(DeviceObjectsFile, ListsTheFirstHundredProblemsAndCountsTheRest)
{
    std::string content;
    for (int line = 0; line < 150; ++line)
    {
        content += "garbage\n";
    }
    std::vector<MapProblem> problems;
    EXPECT_TRUE(Lumo::ParseDeviceObjects(content, problems).empty());
    ASSERT_EQ(101u, problems.size());
    EXPECT_EQ(100u, problems[99].line);
    EXPECT_EQ("50 more lines skipped", problems[100].message);
}

TEST(DeviceObjectsFile, LoadNamesAFileItCannotRead)
{
    std::vector<MapProblem> problems;
    try
    {
        Lumo::LoadDeviceObjects("/nonexistent/objects.txt", problems);
        FAIL() << "no exception";
    }
    catch (const std::runtime_error& error)
    {
        EXPECT_STREQ("cannot read objects file '/nonexistent/objects.txt'", error.what());
    }
}

TEST(DeviceObjectsFile, LoadReadsAFile)
{
    const std::string path = ::testing::TempDir() + "DeviceObjectsFileTest.txt";
    std::ofstream(path) << "1;1/2/3;9.001;CRWTU;Temperature\nbad\n";
    std::vector<MapProblem> problems;
    const std::vector<DeviceObject> objects = Lumo::LoadDeviceObjects(path, problems);
    std::remove(path.c_str());
    ASSERT_EQ(1u, objects.size());
    ASSERT_EQ(1u, problems.size());
    EXPECT_EQ(2u, problems[0].line);
}

TavProject::Project ProjectWithDevice()
{
    TavProject::Project project;
    TavProject::Device device;
    device.address = "1.1.5";
    TavProject::CommunicationObject temperature;
    temperature.number = 1;
    temperature.name = "Temperature";
    temperature.dpt = TavProject::Dpt{9, std::uint16_t{1}};
    temperature.flags.communication = true;
    temperature.flags.read = true;
    temperature.flags.transmit = true;
    temperature.groupAddressesRaw = {0x0A03, 0x0A04};
    TavProject::CommunicationObject unlinked = temperature;
    unlinked.number = 2;
    unlinked.groupAddressesRaw.clear();
    TavProject::CommunicationObject mainOnly = temperature;
    mainOnly.number = 3;
    mainOnly.dpt = TavProject::Dpt{1, boost::none};
    TavProject::CommunicationObject untyped = temperature;
    untyped.number = 4;
    untyped.dpt = boost::none;
    device.communicationObjects = {temperature, unlinked, mainOnly, untyped};
    TavProject::Device other;
    other.address = "1.1.6";
    other.communicationObjects = {temperature};
    project.devices = {other, device};
    return project;
}

TEST(DeviceObjectsFromProject, TakesTheDevicesLinkedObjectsWithADpt)
{
    std::vector<MapProblem> problems;
    const std::vector<DeviceObject> objects = Lumo::DeviceObjectsFromProject(ProjectWithDevice(), "1.1.5", problems);
    ASSERT_EQ(2u, objects.size());
    EXPECT_EQ(1, objects[0].co);
    EXPECT_EQ((std::vector<std::uint16_t>{0x0A03, 0x0A04}), objects[0].groupAddresses);
    EXPECT_EQ(9, objects[0].dpt.main);
    EXPECT_EQ(1, objects[0].dpt.sub);
    EXPECT_EQ("CRT", Lumo::FormatObjectFlags(objects[0].flags));
    EXPECT_EQ("Temperature", objects[0].name);
    EXPECT_EQ(3, objects[1].co);
    EXPECT_EQ(1, objects[1].dpt.main);
    EXPECT_EQ(0, objects[1].dpt.sub);
    ASSERT_EQ(2u, problems.size());
    EXPECT_EQ("CO 2: no group address", problems[0].message);
    EXPECT_EQ("CO 4: no DPT", problems[1].message);
}

TEST(DeviceObjectsFromProject, RefusesADeviceTheProjectDoesNotHave)
{
    std::vector<MapProblem> problems;
    EXPECT_THROW(Lumo::DeviceObjectsFromProject(ProjectWithDevice(), "1.1.7", problems), std::runtime_error);
}
} // namespace
