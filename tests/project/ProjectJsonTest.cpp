// The JSON object and the map text written from a model.
#include "KnxprojWriter.h"

#include <project/ProjectJson.h>
#include <project/ProjectReader.h>

#include <gtest/gtest.h>

using TavProject::GroupAddressStyle;

namespace
{
TEST(ProjectJson, WritesTheWholeFixtureExactly)
{
    TavTest::FixtureOptions options;
    options.password = "a";
    TavProject::ReadOptions read;
    read.password = "a";
    const auto project = TavProject::ReadProjectArchive(TavTest::MakeFixtureArchive(options), read);
    EXPECT_EQ(TavProject::ToJson(project),
        R"({"info":{"projectId":"P-0242","name":"Haus & Hof","schemaVersion":20,"toolVersion":"5.7.1093.38570",)"
        R"("groupAddressStyle":"ThreeLevel","lastModified":"2023-05-04T10:11:12.123Z"},"groupAddresses":[)"
        R"({"address":"0/0/1","raw":1,"name":"Unused","description":"","dpt":null,"dataSecure":false},)"
        R"({"address":"1/0/0","raw":2048,"name":"Kitchen light","description":"ceiling","dpt":{"main":1,"sub":1},)"
        R"("dataSecure":false},)"
        R"({"address":"1/0/1","raw":2049,"name":"Kitchen light central","description":"","dpt":{"main":1,"sub":1},)"
        R"("dataSecure":false},)"
        R"({"address":"1/0/2","raw":2050,"name":"Kitchen light status","description":"","dpt":{"main":1,"sub":null},)"
        R"("dataSecure":false},)"
        R"({"address":"2/2/0","raw":4608,"name":"Living temperature","description":"","dpt":{"main":9,"sub":1},)"
        R"("dataSecure":true}],"devices":[)"
        R"({"address":"1.1.2","name":"Temperature Sensor","orderNumber":"TS-1.01","manufacturer":"MDT technologies",)"
        R"("communicationObjects":[{"number":3,"name":"Temperature","function":"Measure","dpt":{"main":9,"sub":1},)"
        R"("flags":"CRT","groupAddresses":["2/2/0"]}]},)"
        R"({"address":"1.1.5","name":"Kitchen actuator","orderNumber":"AKS-1216.01","manufacturer":"MDT technologies",)"
        R"("communicationObjects":[{"number":0,"name":"Channel A","function":"Switch on/off","dpt":{"main":1,"sub":1},)"
        R"("flags":"CWU","groupAddresses":["1/0/0","1/0/1"]},)"
        R"({"number":1,"name":"Kitchen status","function":"Status","dpt":{"main":1,"sub":11},)"
        R"("flags":"CRT","groupAddresses":["1/0/2"]}]}]})");
}

TEST(ProjectJson, WritesAnEmptyProject)
{
    TavProject::Project project;
    project.info.projectId = "P-1";
    EXPECT_EQ(TavProject::ToJson(project),
        R"({"info":{"projectId":"P-1","name":"","schemaVersion":0,"toolVersion":"","groupAddressStyle":"ThreeLevel",)"
        R"("lastModified":""},"groupAddresses":[],"devices":[]})");
}

TEST(ProjectJson, EscapesTextAndReplacesBytesThatAreNotUtf8)
{
    TavProject::Project project;
    project.info.name = "a\"b\\c\n\x01 \xC3\xA9 \xFF";
    const std::string json = TavProject::ToJson(project);
    EXPECT_NE(json.find(R"("name":"a\"b\\c\n\u0001 é �")"), std::string::npos) << json;
}

TEST(ProjectMapText, WritesOneLinePerGroupAddressInTheProjectsStyle)
{
    TavTest::FixtureOptions options;
    const auto project = TavProject::ReadProjectArchive(TavTest::MakeFixtureArchive(options));
    EXPECT_EQ(TavProject::ToMapText(project),
        "# Group address map of ETS project P-0242 (Haus & Hof)\n"
        "# 0/0/1;?  # Unused\n"
        "1/0/0;1.001  # Kitchen light\n"
        "1/0/1;1.001  # Kitchen light central\n"
        "1/0/2;1  # Kitchen light status\n"
        "2/2/0;9.001  # Living temperature\n");

    options.style = GroupAddressStyle::TwoLevel;
    const auto twoLevel = TavProject::ReadProjectArchive(TavTest::MakeFixtureArchive(options));
    EXPECT_NE(TavProject::ToMapText(twoLevel).find("\n2/512;9.001  # Living temperature\n"), std::string::npos);

    // The map reader takes no free-style numbers: three levels instead.
    options.style = GroupAddressStyle::Free;
    const auto free = TavProject::ReadProjectArchive(TavTest::MakeFixtureArchive(options));
    EXPECT_NE(TavProject::ToMapText(free).find("\n2/2/0;9.001  # Living temperature\n"), std::string::npos);
}

TEST(ProjectMapText, KeepsNamesOnTheirLine)
{
    TavProject::Project project;
    project.info.projectId = "P-1";
    TavProject::GroupAddress address;
    address.raw = 2305;
    address.name = "two\r\nlines\t#";
    address.dpt = TavProject::Dpt{232, 600};
    project.groupAddresses.push_back(address);
    EXPECT_EQ(TavProject::ToMapText(project),
        "# Group address map of ETS project P-1\n"
        "1/1/1;232.600  # two  lines #\n");
}
} // namespace
