#include "bridge/SetPayload.h"

#include "knx/HexText.h"
#include "knx/ValueText.h"

#include <gtest/gtest.h>

using TavKnx::EncodeSetPayload;
using TavKnx::SetPayloadError;

namespace
{
KNXDPT Dpt(std::uint16_t main, std::uint16_t sub)
{
    return KNXDPT{0, main, sub};
}

std::string Encoded(const std::string& payload, const KNXDPT& dpt)
{
    const KnxStack::GroupValue value = EncodeSetPayload(payload, dpt);
    return TavKnx::FormatHex(TavKnx::BytesOf(value)) + "/" + std::to_string(value.GetDefinedSize());
}

std::string Refusal(const std::string& payload, const KNXDPT& dpt)
{
    try
    {
        EncodeSetPayload(payload, dpt);
    }
    catch (const SetPayloadError& error)
    {
        return error.what();
    }
    return "(accepted)";
}

struct Row
{
    const char* payload;
    std::uint16_t main;
    std::uint16_t sub;
    const char* encoded;  // hex bytes / defined size in bits
};

class SetPayloadRows : public ::testing::TestWithParam<Row>
{
};
} // namespace

TEST_P(SetPayloadRows, EncodesTheDptsValueType)
{
    EXPECT_EQ(Encoded(GetParam().payload, Dpt(GetParam().main, GetParam().sub)), GetParam().encoded)
        << GetParam().payload;
}

INSTANTIATE_TEST_SUITE_P(
    Forms, SetPayloadRows,
    ::testing::Values(Row{"true", 1, 1, "01/1"}, Row{"false", 1, 1, "00/1"}, Row{"1", 1, 1, "01/1"},
                      Row{"{\"value\":true}", 1, 1, "01/1"}, Row{"bool:true", 1, 1, "01/1"},
                      Row{"128", 5, 1, "80/8"}, Row{"255", 5, 1, "ff/8"}, Row{"{\"value\": 0}", 5, 1, "00/8"},
                      Row{"21.5", 9, 1, "0c33/16"}, Row{" 21.5 ", 9, 1, "0c33/16"}, Row{"float:21", 9, 1, "0c1a/16"},
                      Row{"{\"value\":21}", 9, 1, "0c1a/16"}, Row{"\"12:30:00/1\"", 10, 1, "2c1e00/24"},
                      Row{"\"2024-04-30\"", 11, 1, "1e0418/24"}, Row{"date:2024-04-30", 11, 1, "1e0418/24"},
                      Row{"100", 14, 56, "42c80000/32"}, Row{"-1.5e3", 14, 56, "c4bb8000/32"},
                      Row{"\"Hello\"", 16, 0, "48656c6c6f000000000000000000/112"},
                      Row{"{\"value\":\"\"}", 16, 0, "0000000000000000000000000000/112"}));

TEST(SetPayload, RefusesWhatDoesNotFitWithTheReason)
{
    EXPECT_EQ(Refusal("hello", Dpt(9, 1)), "VALUE: expected TYPE:TEXT (for example float:21.5), got 'hello'");
    EXPECT_EQ(Refusal("true", Dpt(9, 1)), "VALUE float: expected a decimal number, nan, inf or -inf, got 'true'");
    EXPECT_EQ(Refusal("\"warm\"", Dpt(9, 1)), "VALUE float: expected a decimal number, nan, inf or -inf, got 'warm'");
    EXPECT_EQ(Refusal("2", Dpt(1, 1)), "VALUE bool: expected true, false, on, off, 1 or 0, got '2'");
    EXPECT_EQ(Refusal("null", Dpt(1, 1)), "expected a number, true, false, a string or {\"value\": ...}, got 'null'");
    EXPECT_EQ(Refusal("[1]", Dpt(1, 1)), "expected a number, true, false, a string or {\"value\": ...}, got '[1]'");
    EXPECT_EQ(Refusal("{\"v\":1}", Dpt(1, 1)), "expected {\"value\": ...} and nothing else, got '{\"v\":1}'");
    EXPECT_EQ(Refusal("{\"value\":1,\"x\":2}", Dpt(1, 1)),
              "expected {\"value\": ...} and nothing else, got '{\"value\":1,\"x\":2}'");
    EXPECT_EQ(Refusal("{\"value\":{}}", Dpt(1, 1)), "expected a number, true, false or a string as \"value\", got '{}'");
    EXPECT_EQ(Refusal("string:x", Dpt(9, 1)), "DPT 9.1 cannot take 'string:x' (String): the encoder refused it");
    EXPECT_EQ(Refusal("21", Dpt(999, 1)), "DPT 999.1 has no value type; give TYPE:TEXT");
    EXPECT_EQ(Refusal("", Dpt(1, 1)), "VALUE: expected TYPE:TEXT (for example float:21.5), got ''");
}
