#include "bridge/DiscoveryConfigs.h"

#include "bridge/DiscoveryTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

using TavKnx::BridgeTopics;
using TavKnx::DiscoveryEntity;
using TavKnx::GroupAddressMap;
using TavKnx::MapProblem;
using TavKnx::MqttMessage;
using ::testing::IsEmpty;

namespace
{
struct Row
{
    std::uint16_t main;
    std::uint16_t sub;
    const char* component;
    const char* deviceClass;
    const char* unit;
    bool command;
};

class DiscoveryTableRows : public ::testing::TestWithParam<Row>
{
};
} // namespace

TEST_P(DiscoveryTableRows, GivesTheDptsEntity)
{
    const DiscoveryEntity entity = TavKnx::DiscoveryEntityFor(KNXDPT{0, GetParam().main, GetParam().sub});
    EXPECT_STREQ(entity.component, GetParam().component);
    EXPECT_STREQ(entity.deviceClass, GetParam().deviceClass);
    EXPECT_STREQ(entity.unit, GetParam().unit);
    EXPECT_EQ(entity.command, GetParam().command);
}

INSTANTIATE_TEST_SUITE_P(
    Dpts, DiscoveryTableRows,
    ::testing::Values(Row{1, 1, "switch", "", "", true}, Row{1, 2, "binary_sensor", "", "", false},
                      Row{1, 19, "binary_sensor", "", "", false}, Row{5, 1, "number", "", "%", true},
                      Row{5, 10, "sensor", "", "", false}, Row{9, 1, "sensor", "temperature", "\xC2\xB0" "C", false},
                      Row{9, 4, "sensor", "illuminance", "lx", false}, Row{9, 7, "sensor", "humidity", "%", false},
                      Row{9, 5, "sensor", "", "", false}, Row{10, 1, "sensor", "", "", false},
                      Row{11, 1, "sensor", "date", "", false}, Row{14, 19, "sensor", "current", "A", false},
                      Row{14, 27, "sensor", "voltage", "V", false}, Row{14, 56, "sensor", "power", "W", false},
                      Row{14, 68, "sensor", "temperature", "\xC2\xB0" "C", false}, Row{14, 0, "sensor", "", "", false},
                      Row{16, 0, "text", "", "", true}, Row{16, 1, "text", "", "", true},
                      Row{19, 1, "sensor", "", "", false}, Row{7, 1, "sensor", "", "", false}));

TEST(DiscoveryConfigs, OneRetainedConfigPerAddressWithADpt)
{
    std::vector<MapProblem> problems;
    GroupAddressMap map = GroupAddressMap::Parse("1/0/3;9.001\n1/0/1;1.001\n", problems);
    ASSERT_THAT(problems, IsEmpty());
    map.SetName(0x0803, "Living room temperature");
    const std::vector<MqttMessage> configs = TavKnx::DiscoveryConfigs(map, BridgeTopics("knx"), "homeassistant", "tavknx-bridge");
    ASSERT_EQ(configs.size(), 2u);
    EXPECT_EQ(configs[0].topic, "homeassistant/switch/tavknx-bridge/ga_1_0_1/config");
    EXPECT_TRUE(configs[0].retain);
    EXPECT_EQ(configs[0].payload,
              R"x({"name":"KNX 1/0/1","unique_id":"tavknx-bridge_ga_1_0_1","object_id":"tavknx-bridge_ga_1_0_1",)x"
              R"x("availability_topic":"knx/status","payload_available":"online","payload_not_available":"offline",)x"
              R"x("state_topic":"knx/1/0/1/state","value_template":"{{ 'ON' if value_json.value else 'OFF' }}",)x"
              R"x("state_on":"ON","state_off":"OFF","command_topic":"knx/1/0/1/set","payload_on":"true","payload_off":"false",)x"
              R"x("device":{"identifiers":["tavknx-bridge"],"name":"KNX (tavknx-bridge)","manufacturer":"tavknx bridge"},)x"
              R"x("json_attributes_topic":"knx/1/0/1/state"})x");
    EXPECT_EQ(configs[1].topic, "homeassistant/sensor/tavknx-bridge/ga_1_0_3/config");
    EXPECT_EQ(configs[1].payload,
              R"x({"name":"Living room temperature","unique_id":"tavknx-bridge_ga_1_0_3","object_id":"tavknx-bridge_ga_1_0_3",)x"
              R"x("availability_topic":"knx/status","payload_available":"online","payload_not_available":"offline",)x"
              R"x("state_topic":"knx/1/0/3/state","value_template":"{{ value_json.value }}","device_class":"temperature",)x"
              R"x("unit_of_measurement":"°C","state_class":"measurement",)x"
              R"x("device":{"identifiers":["tavknx-bridge"],"name":"KNX (tavknx-bridge)","manufacturer":"tavknx bridge"},)x"
              R"x("json_attributes_topic":"knx/1/0/3/state"})x");
}

TEST(DiscoveryConfigs, NodeIdKeepsOnlyWhatTopicsAndIdsAllow)
{
    EXPECT_EQ(TavKnx::DiscoveryNodeId("tavknx-bridge"), "tavknx-bridge");
    EXPECT_EQ(TavKnx::DiscoveryNodeId("site 1/knx+#"), "site_1_knx__");
    EXPECT_EQ(TavKnx::DiscoveryNodeId(""), "tavknx");
}

namespace
{
// docs/Bridge.md, from the test data folder (tests/tool/data) or from this file's folder.
std::string ReadBridgePage()
{
    std::vector<std::string> candidates;
    if (const char* data = std::getenv("TAV_TEST_DATA"))
    {
        candidates.push_back(std::string(data) + "/../../../docs/Bridge.md");
    }
    const std::string source = __FILE__;
    candidates.push_back(source.substr(0, source.find_last_of('/')) + "/../../../docs/Bridge.md");
    for (const std::string& path : candidates)
    {
        std::ifstream file(path);
        if (file)
        {
            std::ostringstream text;
            text << file.rdbuf();
            return text.str();
        }
    }
    return "";
}

// The text between the first pair of backticks in a cell, or "" without one.
std::string Ticked(const std::string& cell)
{
    const std::size_t open = cell.find('`');
    if (open == std::string::npos)
    {
        return "";
    }
    return cell.substr(open + 1, cell.find('`', open + 1) - open - 1);
}

std::vector<std::string> Cells(const std::string& line)
{
    std::vector<std::string> cells;
    std::size_t start = 1;
    for (std::size_t bar = line.find('|', start); bar != std::string::npos; bar = line.find('|', start))
    {
        cells.push_back(line.substr(start, bar - start));
        start = bar + 1;
    }
    return cells;
}
} // namespace

// The page's DPT-to-entity table says what the code does, row by row.
TEST(DiscoveryTable, MatchesTheTableOfTheBridgePage)
{
    const std::string page = ReadBridgePage();
    ASSERT_FALSE(page.empty()) << "docs/Bridge.md not found";
    std::istringstream lines(page.substr(page.find("| DPT | component |")));
    std::string line;
    std::getline(lines, line);
    std::getline(lines, line);  // the separator
    int rows = 0;
    while (std::getline(lines, line) && !line.empty() && line[0] == '|')
    {
        const std::vector<std::string> cells = Cells(line);
        ASSERT_GE(cells.size(), 5u) << line;
        const std::string dpt = cells[0].substr(1, cells[0].find(' ', 1) - 1);
        if (dpt == "any")
        {
            continue;
        }
        const std::size_t dot = dpt.find('.');
        const auto main = static_cast<std::uint16_t>(std::stoi(dpt.substr(0, dot)));
        // "x": any sub number; 999 stands for one no exact row names.
        const auto sub = static_cast<std::uint16_t>(dpt.substr(dot + 1) == "x" ? 999 : std::stoi(dpt.substr(dot + 1)));
        const DiscoveryEntity entity = TavKnx::DiscoveryEntityFor(KNXDPT{0, main, sub});
        EXPECT_EQ(Ticked(cells[1]), entity.component) << line;
        EXPECT_EQ(Ticked(cells[2]), entity.deviceClass) << line;
        EXPECT_EQ(Ticked(cells[3]), entity.unit) << line;
        EXPECT_EQ(cells[4].find("yes") != std::string::npos, entity.command) << line;
        ++rows;
    }
    EXPECT_EQ(rows, 23);
}
