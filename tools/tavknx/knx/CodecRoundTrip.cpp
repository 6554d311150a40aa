#include "knx/CodecRoundTrip.h"

#include "knx/ValueText.h"

#include <TavObjectModel/GroupValueOkaValue.h>
#include <platform/OkaValueFamily.h>

#include <log4cplus/logger.h>

#include <algorithm>
#include <cmath>

namespace TavKnx
{
namespace
{
// The root logger off while the bytes are read back: its lines would describe the tool's
// check, not the user's conversion.
class QuietLog
{
public:
    QuietLog() : root_(log4cplus::Logger::getRoot()), level_(root_.getLogLevel())
    {
        root_.setLogLevel(log4cplus::OFF_LOG_LEVEL);
    }
    ~QuietLog() { root_.setLogLevel(level_); }
    QuietLog(const QuietLog&) = delete;
    QuietLog& operator=(const QuietLog&) = delete;

private:
    log4cplus::Logger root_;
    log4cplus::LogLevel level_;
};

// None when the codec throws; an empty optional inside when it refuses the bytes.
boost::optional<boost::optional<OKAVALUE>> ReadBack(const KnxStack::GroupValue& written, std::uint32_t packedDpt)
{
    const QuietLog quiet;
    try
    {
        return Okaro::GroupValueToOkaValue(written, packedDpt);
    }
    catch (...)
    {
        return boost::none;
    }
}

bool SameFloat(double given, double read)
{
    // DPT 9 keeps 11 bits of mantissa in steps of a hundredth: rounding moves a value by half
    // a step, at most a 2048th of it or 0.005.
    return std::fabs(given - read) <= std::max(0.0051, std::fabs(given) / 1024.0);
}

bool Same(const OKAVALUE& given, const OKAVALUE& read)
{
    switch (GetValueFamily(given.type))
    {
    case OkaValueFamily::Float:
        return SameFloat(given.numeric.real, read.numeric.real);
    default:
        return ValueText(given) == ValueText(read);
    }
}
} // namespace

boost::optional<CodecChange> FindCodecChange(const OKAVALUE& value, const KnxStack::GroupValue& written,
                                             std::uint32_t packedDpt)
{
    const bool isFloat = GetValueFamily(value.type) == OkaValueFamily::Float;
    if (isFloat && std::isnan(value.numeric.real))
    {
        return boost::none;
    }
    if (GetValueFamily(value.type) == OkaValueFamily::Time && value.type != ivtDate)
    {
        return boost::none;
    }
    const boost::optional<boost::optional<OKAVALUE>> result = ReadBack(written, packedDpt);
    if (!result)
    {
        return boost::none;
    }
    if (!*result)
    {
        // Other value types have DPTs whose reading and writing differ on purpose (18.x, 23.x):
        // only a float refused on reading back tells of a range.
        if (!isFloat)
        {
            return boost::none;
        }
        return CodecChange{CodecChange::Unreadable, std::string()};
    }
    const OKAVALUE& read = **result;
    const bool noValue = GetValueFamily(read.type) == OkaValueFamily::Empty ||
                         (GetValueFamily(read.type) == OkaValueFamily::Float && std::isnan(read.numeric.real));
    if (isFloat && noValue)
    {
        return CodecChange{CodecChange::InvalidCode, std::string()};
    }
    if (read.type != value.type || Same(value, read))
    {
        return boost::none;
    }
    return CodecChange{CodecChange::Changed, ValueText(read)};
}
} // namespace TavKnx
