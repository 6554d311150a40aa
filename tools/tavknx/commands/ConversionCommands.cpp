// decode, check, encode (the switch-driven codec) and from-knx, to-knx (the table-driven front).
#include "cli/CodecWarning.h"
#include "cli/Output.h"
#include "cli/ValueArgument.h"
#include "commands/Commands.h"
#include "knx/DptText.h"
#include "knx/HexText.h"
#include "knx/ValueText.h"

#include <TavObjectModel/GroupValueOkaValue.h>
#include <TavObjectModel/KnxValueConverter.h>

#include <boost/program_options.hpp>

#include <ostream>

namespace po = boost::program_options;

namespace TavKnx
{
namespace
{
void AddBitsOption(po::options_description& options)
{
    options.add_options()("bits", po::value<std::string>()->value_name("N"),
                          "the group value's size in bits, 0-255 (default: the DPT's size for one byte of a "
                          "sub-byte DPT, else 8 bits per byte)");
}

struct Telegram
{
    KNXDPT dpt;
    std::vector<std::uint8_t> bytes;
    std::uint32_t bits;
};

Telegram ReadTelegram(const Invocation& invocation)
{
    invocation.RequireArgs(2, 2, "DPT HEX");
    Telegram telegram{ParseDpt(invocation.args[0]), ParseHex(invocation.args[1]), 0};
    telegram.bits = invocation.HasBits() ? invocation.Bits() : DefaultBits(telegram.dpt.main, telegram.bytes.size());
    return telegram;
}

KnxStack::GroupValue MakeGroupValue(const Telegram& telegram)
{
    return KnxStack::GroupValue(
        KnxStack::BinaryData(telegram.bytes.data(), static_cast<unsigned int>(telegram.bytes.size())), telegram.bits);
}

int RunDecode(const Invocation& invocation)
{
    const Telegram telegram = ReadTelegram(invocation);
    const boost::optional<OKAVALUE> value = Okaro::GroupValueToOkaValue(MakeGroupValue(telegram), PackDpt(telegram.dpt));
    if (!value)
    {
        PrintRefusal(telegram.dpt, invocation.json, invocation.Out());
        return kExitRefused;
    }
    PrintValueResult(telegram.dpt, *value, invocation.json, invocation.Out());
    return kExitDone;
}

int RunCheck(const Invocation& invocation)
{
    const Telegram telegram = ReadTelegram(invocation);
    if (!Okaro::CheckGroupValue(MakeGroupValue(telegram), PackDpt(telegram.dpt)))
    {
        PrintRefusal(telegram.dpt, invocation.json, invocation.Out());
        return kExitRefused;
    }
    if (invocation.json)
    {
        invocation.Out() << JsonObject().Add("ok", true).Add("dpt", FormatDpt(telegram.dpt)).Str() << "\n";
    }
    else
    {
        invocation.Out() << DptLabel(telegram.dpt) << ": valid\n";
    }
    return kExitDone;
}

int RunEncode(const Invocation& invocation)
{
    invocation.RequireArgs(2, 2, "DPT VALUE");
    const KNXDPT dpt = ParseDpt(invocation.args[0]);
    const OKAVALUE value = ParseValue(invocation.args[1], dpt);
    const boost::optional<KnxStack::GroupValue> groupValue = Okaro::OkaValueToGroupValue(value, PackDpt(dpt));
    if (!groupValue)
    {
        PrintRefusal(dpt, invocation.json, invocation.Out());
        return kExitRefused;
    }
    const CodecVerdict verdict = CheckCodec(invocation, "encode", dpt, value, *groupValue);
    if (verdict == CodecVerdict::Refused)
    {
        return kExitRefused;
    }
    if (invocation.json)
    {
        JsonObject object = GroupValueResultJson(dpt, *groupValue);
        if (verdict == CodecVerdict::Clamped)
        {
            object.Add("clamped", true);
        }
        invocation.Out() << object.Str() << "\n";
    }
    else
    {
        invocation.Out() << GroupValueResultText(dpt, *groupValue) << "\n";
    }
    return kExitDone;
}

int RunFromKnx(const Invocation& invocation)
{
    const Telegram telegram = ReadTelegram(invocation);
    if (telegram.bits > 255)
    {
        throw UsageError("HEX: " + std::to_string(telegram.bytes.size()) +
                         " bytes are more than a DPT's 8-bit size field can name; give --bits 0-255");
    }
    KNXDPT dpt = telegram.dpt;
    dpt.size = static_cast<std::uint8_t>(telegram.bits);
    Okaro::KnxValueConverter converter;
    OKAVALUE value;
    // The converter writes the default DPT it picks for main number 0 into `dpt`.
    if (!converter.FromKnxValue(dpt, MakeGroupValue(telegram), value))
    {
        PrintRefusal(dpt, invocation.json, invocation.Out());
        return kExitRefused;
    }
    PrintValueResult(dpt, value, invocation.json, invocation.Out());
    return kExitDone;
}

int RunToKnx(const Invocation& invocation)
{
    invocation.RequireArgs(2, 2, "DPT VALUE");
    KNXDPT dpt = ParseDpt(invocation.args[0]);
    const OKAVALUE value = ParseValue(invocation.args[1], dpt);
    if (invocation.HasBits())
    {
        dpt.size = static_cast<std::uint8_t>(invocation.Bits());
    }
    else
    {
        const std::uint32_t expected = Okaro::KnxValueConverter::GetExpectedBitSize(dpt.main);
        dpt.size = static_cast<std::uint8_t>(expected <= 255 ? expected : 0);
    }
    Okaro::KnxValueConverter converter;
    KnxStack::GroupValue groupValue;
    if (!converter.ToKnxValue(dpt, value, groupValue))
    {
        PrintRefusal(dpt, invocation.json, invocation.Out());
        return kExitRefused;
    }
    PrintGroupValueResult(dpt, groupValue, invocation.json, invocation.Out());
    return kExitDone;
}

const char* const kValueHelp =
    "VALUE is TYPE:TEXT, TYPE case-insensitive, or TEXT alone, read as the DPT's value type\n"
    "(9.001 21.5 is float:21.5, 1.001 on is bool:on):\n"
    "  bool:true|false|on|off|1|0   byte:0-255   word:0-65535   dword:0-4294967295\n"
    "  integer:-2147483648..2147483647   float:DECIMAL|nan|inf|-inf\n"
    "  string:TEXT (the rest of the argument, UTF-8)   date:YYYY-MM-DD\n"
    "  time:HH:MM:SS[/DAY]   daytime:HH:MM:SS[/DAY]   (DAY Mon ... Sun, or the value model's 0-6,\n"
    "  0 = Sunday; none = no day)\n"
    "  datetime:YYYY-MM-DDTHH:MM:SS   empty   invalid   CODE:DECIMAL (a type code, e.g. 1039:21.5)\n";
} // namespace

void AddConversionCommands(std::vector<Command>& commands)
{
    static const std::string encodeHelp =
        std::string("Encodes VALUE for DPT with the switch-driven codec (OkaValueToGroupValue).\n"
                    "The value's type must be exactly the DPT main type's value type. The codec clamps a value\n"
                    "to the DPT's range (and writes DPT 9's 32767 as the invalid code 7fff): a WARN on stderr\n"
                    "and \"clamped\":true in JSON say so; --strict refuses such a value (exit 1).\n\n") +
        kValueHelp +
        "\nExamples:\n"
        "  tavknx encode 9.001 21.5                 9.001: 0c33 (16 bits)\n"
        "  tavknx encode DPST-9-1 float:21.5\n"
        "  tavknx encode 10.001 daytime:08:15:30   a time of day without weekday\n"
        "  tavknx encode 1.001 bool:true --json\n"
        "  tavknx encode 11.001 date:2024-04-30\n"
        "  tavknx encode 9.001 700000                clamped to 7ffe, with a WARN on stderr\n"
        "  tavknx encode 9.001 700000 --strict      refused instead\n";
    static const std::string toKnxHelp =
        std::string("Converts VALUE to a group value with the table-driven front (KnxValueConverter::ToKnxValue).\n"
                    "DPT 0.0 lets the front choose a DPT from the value's type and --bits.\n"
                    "--bits sets the DPT's size field (default: the main number's size).\n\n") +
        kValueHelp +
        "\nExamples:\n"
        "  tavknx to-knx 9.001 float:21.5\n"
        "  tavknx to-knx 14.068 21.5 --json\n"
        "  tavknx to-knx 5.001 byte:50          refused: the front never encodes bytes on 5.x\n"
        "  tavknx to-knx 0.0 bool:true\n";
    commands.push_back({"decode", "decode DPT HEX [--bits N]",
                        "decode a group value with the switch-driven codec (GroupValueToOkaValue)",
                        "Decodes the group value HEX for DPT with the switch-driven codec (GroupValueToOkaValue).\n"
                        "The bytes are checked with the table-driven front first.\n\n"
                        "Examples:\n"
                        "  tavknx decode 9.001 0c1a              9.001: Float 21 [ivt 3, sub-type 0]\n"
                        "  tavknx decode 1.001 01 --json\n"
                        "  tavknx decode 10.001 2c1e00           a time of day (Monday 12:30:00)\n"
                        "  tavknx decode 5.001 80 --bits 8\n",
                        AddBitsOption, RunDecode});
    commands.push_back({"check", "check DPT HEX [--bits N]",
                        "tell whether the table-driven front accepts a group value (CheckGroupValue)",
                        "Prints \"valid\" (exit 0) or \"refused\" (exit 1) as CheckGroupValue says.\n\n"
                        "Examples:\n"
                        "  tavknx check 9.001 0c1a\n"
                        "  tavknx check 10.001 391e00 --json      hour 25: refused\n",
                        AddBitsOption, RunCheck});
    commands.push_back({"encode", "encode DPT VALUE [--strict]", "encode a value with the switch-driven codec (OkaValueToGroupValue)",
                        encodeHelp.c_str(), AddStrictOption, RunEncode});
    commands.push_back({"from-knx", "from-knx DPT HEX [--bits N]",
                        "convert a group value with the table-driven front (KnxValueConverter::FromKnxValue)",
                        "Converts the group value HEX with KnxValueConverter::FromKnxValue. DPT 0.0 lets the\n"
                        "front choose a DPT from the size in bits. The printed DPT is the one used.\n\n"
                        "Examples:\n"
                        "  tavknx from-knx 9.001 0c1a\n"
                        "  tavknx from-knx 5.001 ff --json       Byte 255\n"
                        "  tavknx from-knx 0.0 0c1a              the front picks a DPT for 16 bits\n",
                        AddBitsOption, RunFromKnx});
    commands.push_back({"to-knx", "to-knx DPT VALUE [--bits N]",
                        "convert a value with the table-driven front (KnxValueConverter::ToKnxValue)",
                        toKnxHelp.c_str(), AddBitsOption, RunToKnx});
}
} // namespace TavKnx
