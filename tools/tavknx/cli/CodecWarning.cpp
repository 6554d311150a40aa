#include "cli/CodecWarning.h"

#include "cli/Output.h"
#include "knx/CodecRoundTrip.h"
#include "knx/DptText.h"
#include "knx/HexText.h"
#include "knx/ValueText.h"

#include <platform/Logging.h>

#include <boost/program_options.hpp>

#include <iomanip>
#include <sstream>

namespace TavKnx
{
namespace
{
namespace LogFile
{
constexpr char CodecWarning[] = "CodecWarning.cpp";
} // namespace LogFile

// Floats in plain decimals (700000, not 7e+05): the user typed them so.
std::string GivenText(const OKAVALUE& value)
{
    if (value.type != ivtFloat)
    {
        return ValueText(value);
    }
    std::ostringstream text;
    text << std::setprecision(15) << value.numeric.real;
    return text.str();
}
} // namespace

const char* const kStrictOptionHelp =
    "refuse (exit 1) a value the codec would clamp to the DPT's range or write as the KNX invalid code";

void AddStrictOption(boost::program_options::options_description& options)
{
    options.add_options()("strict", kStrictOptionHelp);
}

CodecVerdict CheckCodec(const Invocation& invocation, const char* command, const KNXDPT& dpt, const OKAVALUE& value,
                        const KnxStack::GroupValue& written)
{
    const boost::optional<CodecChange> change = FindCodecChange(value, written, PackDpt(dpt));
    if (!change)
    {
        return CodecVerdict::Unchanged;
    }
    const std::string hex = FormatHex(BytesOf(written));
    const std::string given = GivenText(value);
    std::string what;
    switch (change->kind)
    {
    case CodecChange::InvalidCode:
        what = "the codec writes " + hex + ", the KNX invalid code (no value), for " + given;
        break;
    case CodecChange::Unreadable:
        what = "the codec writes " + given + " as " + hex + ", which it refuses to read back: outside the DPT's range";
        break;
    case CodecChange::Changed:
        what = "the codec clamps " + given + " to " + hex + ", which reads back as " + change->readBack;
        break;
    }
    if (invocation.options.count("strict") != 0)
    {
        PrintRefusal(DptLabel(dpt), command, what + "; --strict refuses it", invocation.json, invocation.Out());
        return CodecVerdict::Refused;
    }
    TAV_LOG_FROM(log4cplus::Logger::getInstance(std::string("tavknx.") + command), log4cplus::WARN_LOG_LEVEL,
                 "CheckCodec", LogFile::CodecWarning, 40,
                 DptLabel(dpt) << ": " << what << " (--strict refuses such values)");
    return CodecVerdict::Clamped;
}
} // namespace TavKnx
