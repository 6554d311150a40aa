#include "bridge/StatePayload.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using TavKnx::BridgeTopics;
using TavKnx::GroupAddressMap;
using TavKnx::GroupTelegram;
using TavKnx::MapProblem;
using TavKnx::MqttMessage;
using TavKnx::StatePayloads;
using ::testing::IsEmpty;

namespace
{
// 1.1.5 at 2026-11-21 03:41:00.123 UTC.
constexpr std::uint16_t kSource = 0x1105;
const std::chrono::system_clock::time_point kReceived =
    std::chrono::system_clock::time_point(std::chrono::milliseconds(1795232460123LL));
const std::string kTail = R"("source":"1.1.5","time":"2026-11-21T03:41:00.123Z")";

constexpr std::uint16_t GA(unsigned main, unsigned middle, unsigned sub)
{
    return static_cast<std::uint16_t>(main << 11 | middle << 8 | sub);
}

GroupAddressMap TestMap()
{
    std::vector<MapProblem> problems;
    GroupAddressMap map = GroupAddressMap::Parse(
        "1/0/1;1.001\n1/0/2;5.001\n1/0/3;9.001\n1/0/4;10.001\n1/0/5;11.001\n1/0/6;14.056\n1/0/7;16.000\n1/0/8;3.007\n",
        problems);
    EXPECT_THAT(problems, IsEmpty());
    map.SetName(GA(1, 0, 3), "Living room temperature");
    return map;
}

GroupTelegram Telegram(std::uint16_t destination, const std::vector<std::uint8_t>& apdu)
{
    return TavKnx::ParseGroupTelegram(kSource, destination, apdu.data(), apdu.size());
}

class StatePayloadTest : public ::testing::Test
{
protected:
    MqttMessage Build(std::uint16_t destination, const std::vector<std::uint8_t>& apdu)
    {
        MqttMessage message;
        EXPECT_TRUE(payloads_.Build(Telegram(destination, apdu), kReceived, message));
        return message;
    }

    GroupAddressMap map_ = TestMap();
    BridgeTopics topics_{"knx"};
    StatePayloads payloads_{map_, topics_};
};
} // namespace

TEST_F(StatePayloadTest, PublishesAFloatRetainedUnderItsStateTopicWithItsName)
{
    const MqttMessage message = Build(GA(1, 0, 3), {0x00, 0x80, 0x0c, 0x1a});
    EXPECT_EQ(message.topic, "knx/1/0/3/state");
    EXPECT_TRUE(message.retain);
    EXPECT_EQ(message.payload, R"({"ok":true,"value":21.0,"dpt":"9.1","ivt":3,"type":"Float","hex":"0c1a",)" + kTail +
                                   R"(,"name":"Living room temperature"})");
}

struct Row
{
    unsigned sub;  // group address 1/0/sub
    std::vector<std::uint8_t> apdu;
    std::string payload;  // before "source" and "time"
};

class StatePayloadRows : public StatePayloadTest, public ::testing::WithParamInterface<Row>
{
};

TEST_P(StatePayloadRows, DecodesWithTheSwitchDrivenCodec)
{
    const MqttMessage message = Build(GA(1, 0, GetParam().sub), GetParam().apdu);
    EXPECT_EQ(message.payload, GetParam().payload + kTail + "}");
}

INSTANTIATE_TEST_SUITE_P(
    Dpts, StatePayloadRows,
    ::testing::Values(
        Row{1, {0x00, 0x81}, R"({"ok":true,"value":true,"dpt":"1.1","ivt":2,"type":"Bool","hex":"01",)"},
        Row{1, {0x00, 0x40}, R"({"ok":true,"value":false,"dpt":"1.1","ivt":2,"type":"Bool","hex":"00",)"},
        Row{2, {0x00, 0x80, 0x80}, R"({"ok":true,"value":128,"dpt":"5.1","ivt":6,"type":"Byte","hex":"80",)"},
        Row{4, {0x00, 0x80, 0x2c, 0x1e, 0x00},
            R"({"ok":true,"value":"12:30:00","weekday":1,"dpt":"10.1","ivt":15,"type":"DayTime","hex":"2c1e00",)"},
        Row{5, {0x00, 0x80, 0x1e, 0x04, 0x18},
            R"({"ok":true,"value":"2024-04-30","dpt":"11.1","ivt":11,"type":"Date","hex":"1e0418",)"},
        Row{6, {0x00, 0x80, 0x42, 0xc8, 0x00, 0x00},
            R"({"ok":true,"value":1e+02,"dpt":"14.56","ivt":3,"type":"Float","hex":"42c80000",)"},
        Row{7, {0x00, 0x80, 'H', 'e', 'l', 'l', 'o', 0, 0, 0, 0, 0, 0, 0, 0, 0},
            R"({"ok":true,"value":"Hello","dpt":"16.0","ivt":10,"type":"String","hex":"48656c6c6f000000000000000000",)"}));

TEST_F(StatePayloadTest, PublishesAValueThatDoesNotDecodeWithTheReason)
{
    // A DPT 9 value needs two bytes.
    const MqttMessage message = Build(GA(1, 0, 3), {0x00, 0x80, 0x0c});
    EXPECT_EQ(message.topic, "knx/1/0/3/state");
    EXPECT_EQ(message.payload, R"x({"ok":false,"reason":"DPT 9.1 does not decode 0c (8 bits)","dpt":"9.1","hex":"0c",)x" +
                                   kTail + R"(,"name":"Living room temperature"})");
}

TEST_F(StatePayloadTest, AddsTheTableDrivenResultWhereItDiffers)
{
    // DPT 3 is a byte to the codec and a step (Float) to the table, which leaves the step's
    // bits in the value as the library does.
    const MqttMessage message = Build(GA(1, 0, 8), {0x00, 0x8b});
    EXPECT_EQ(message.payload, R"({"ok":true,"value":11,"dpt":"3.7","ivt":6,"type":"Byte","hex":"0b",)" + kTail +
                                   R"(,"table":{"ok":true,"value":5.4e-323,"ivt":3,"type":"Float"}})");
}

TEST_F(StatePayloadTest, PublishesUnmappedAddressesRawAndNotRetained)
{
    const MqttMessage message = Build(GA(2, 0, 1), {0x00, 0x41, 0x0c});
    EXPECT_EQ(message.topic, "knx/raw/2/0/1");
    EXPECT_FALSE(message.retain);
    EXPECT_EQ(message.payload, R"({"kind":"response","hex":"0c",)" + kTail + "}");
}

TEST_F(StatePayloadTest, PublishesNothingForReads)
{
    MqttMessage message;
    EXPECT_FALSE(payloads_.Build(Telegram(GA(1, 0, 3), {0x00, 0x00}), kReceived, message));
    EXPECT_FALSE(payloads_.Build(Telegram(GA(1, 0, 3), {0x00}), kReceived, message));
    EXPECT_EQ(message.topic, "");
}
