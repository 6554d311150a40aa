#include <TavObjectModel/KnxConverter.h>

#include <TavObjectModel/Utilities.h>
#include <TavObjectModel/detail/LogFiles.h>
#include <platform/Logging.h>
#include <platform/TimeOfDay.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>

// Several message texts below look wrong ("ar not zero", the time-of-day text in the date
// converter, "[1990...2089]" for a wider test, "replaced" for dropped bytes) and several
// checks look inverted or lopsided. Other components and field logs match on exactly these
// texts and behaviours, so they are kept as they are; docs/Converters.md lists them.

namespace Okaro
{
namespace
{
const log4cplus::Logger& Log()
{
    return GetGlobalDefaultLogger();
}

constexpr OkaValueType kInvalidValueType = static_cast<OkaValueType>(0);

// 0x7FFF is DPT 9's "invalid" code; SetAsFloat16 writes it for 32767.0.
constexpr double kFloat16InvalidValue = 32767.0;
constexpr std::uint16_t kFloat16InvalidRaw = 0x7FFF;

// --- the shape every dedicated converter shares -----------------------------------------

void TraceToKnx(const KNXDPT& dpt, const OKAVALUE& value)
{
    TAV_LOG_FROM(Log(), log4cplus::DEBUG_LOG_LEVEL, "ToKnxValue", LogFile::KnxConverter, 37,
               "DPT is used. DPT = " << dpt.main << "." << dpt.sub << " ivt=" << value.type
                                     << " val=" << value.ToString());
}

void TraceFromKnx(const KNXDPT& dpt, const KnxStack::GroupValue& in)
{
    TAV_LOG_FROM(Log(), log4cplus::DEBUG_LOG_LEVEL, "FromKnxValue", LogFile::KnxConverter, 44,
               "DPT is used. DPT = " << dpt.main << "." << dpt.sub << " grp.size=" << in.GetDefinedSize()
                                     << " grp.val=" << in.GetRawData().ToString());
}

// "Wrong oka value type (ivtByte) or DPT main number (5.x)!"
bool RefuseValueTypeOrMain(const char* valueTypeName, const char* dptText)
{
    TAV_LOG_FROM(Log(), log4cplus::ERROR_LOG_LEVEL, "ToKnxValue", LogFile::KnxConverter, 52,
               "Wrong oka value type (" << valueTypeName << ") or DPT main number (" << dptText << ")!");
    return false;
}

// "Wrong DPT main number (13.x) or oka value type (ivtInteger)!"
bool RefuseMainOrValueType(const char* dptText, const char* valueTypeName)
{
    TAV_LOG_FROM(Log(), log4cplus::ERROR_LOG_LEVEL, "ToKnxValue", LogFile::KnxConverter, 60,
               "Wrong DPT main number (" << dptText << ") or oka value type (" << valueTypeName << ")!");
    return false;
}

// "Wrong DPT main number (7.x)!"
bool RefuseMain(const char* dptText)
{
    TAV_LOG_FROM(Log(), log4cplus::ERROR_LOG_LEVEL, "FromKnxValue", LogFile::KnxConverter, 68, "Wrong DPT main number (" << dptText << ")!");
    return false;
}

// The byte streamed as a character, not as digits: several messages print it this way.
char RawCharacter(unsigned int byte)
{
    return static_cast<char>(static_cast<unsigned char>(byte));
}

bool IsSingleModeBit(unsigned int mode)
{
    return mode == 1 || mode == 2 || mode == 4;
}

// The first UTF-8 sequence of a zero-terminated text: the lead byte and the continuation
// bytes that follow it, never past the terminator. An empty text gives one zero byte.
std::string FirstUtf8Sequence(const char* text)
{
    const auto lead = static_cast<unsigned char>(text[0]);
    std::size_t expected = 1;
    if ((lead & 0xE0) == 0xC0)
    {
        expected = 2;
    }
    else if ((lead & 0xF0) == 0xE0)
    {
        expected = 3;
    }
    else if ((lead & 0xF8) == 0xF0)
    {
        expected = 4;
    }
    std::string sequence(1, text[0]);
    for (std::size_t i = 1; i < expected && (static_cast<unsigned char>(text[i]) & 0xC0) == 0x80; ++i)
    {
        sequence += text[i];
    }
    return sequence;
}

// Width of a 64-bit interval; wraps instead of overflowing for extreme bounds.
std::int64_t Width(std::int64_t minimum, std::int64_t maximum)
{
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(maximum) - static_cast<std::uint64_t>(minimum));
}
} // namespace

// =========================================================================================
// Ranges

std::int32_t RoundHalfAwayFromZero(double value)
{
    if (value > 0.0)
    {
        value += 0.5;
    }
    else if (value < 0.0)
    {
        value -= 0.5;
    }
    value = std::trunc(value);
    if (std::isnan(value))
    {
        return 0;
    }
    if (value >= static_cast<double>(std::numeric_limits<std::int32_t>::max()))
    {
        return std::numeric_limits<std::int32_t>::max();
    }
    if (value <= static_cast<double>(std::numeric_limits<std::int32_t>::min()))
    {
        return std::numeric_limits<std::int32_t>::min();
    }
    return static_cast<std::int32_t>(value);
}

template <typename Bound>
BasicIntegerRange<Bound>::BasicIntegerRange(Bound internalMinimum, Bound internalMaximum, Bound externalMinimum,
                                            Bound externalMaximum)
    : internalMinimum_(internalMinimum),
      internalMaximum_(internalMaximum),
      externalMinimum_(externalMinimum),
      externalMaximum_(externalMaximum)
{
}

template <typename Bound>
BasicIntegerRange<Bound> BasicIntegerRange<Bound>::CreateScaled(Bound internalMinimum, Bound internalMaximum,
                                                                Bound externalMinimum, Bound externalMaximum)
{
    BasicIntegerRange range(internalMinimum, internalMaximum, externalMinimum, externalMaximum);
    range.CalculateScaleFactor();
    return range;
}

template <typename Bound>
void BasicIntegerRange<Bound>::CalculateScaleFactor()
{
    const std::int64_t internalWidth = Width(internalMinimum_, internalMaximum_);
    if (internalWidth == 0)
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 170,
                "Failed to calculate the scale factor because of invalid internal range [" << internalMinimum_ << ", "
                                                                                            << internalMaximum_ << "].");
        return;
    }
    const std::int64_t externalWidth = Width(externalMinimum_, externalMaximum_);
    if (externalWidth == 0)
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 178,
                "Failed to calculate the scale factor because of invalid external range [" << externalMinimum_ << ", "
                                                                                            << externalMaximum_ << "].");
        return;
    }
    scaleFactor_ = static_cast<double>(externalWidth) / static_cast<double>(internalWidth);
    if (scaleFactor_ == 0.0)
    {
        // Cannot happen with two non-zero integer widths; kept as a guard.
        scaleFactor_ = 1.0;
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 188,
                "Failed to calculate the scale factor because of invalid internal range ["
                    << internalMinimum_ << ", " << internalMaximum_ << "] or because of invalid external range ["
                    << externalMinimum_ << ", " << externalMaximum_ << "].");
    }
}

template <typename Bound>
bool BasicIntegerRange<Bound>::IsInRange(std::int64_t x) const
{
    return internalMinimum_ <= x && x <= internalMaximum_;
}

template <typename Bound>
bool BasicIntegerRange<Bound>::Clamp(Bound& x) const
{
    if (x < internalMinimum_)
    {
        x = internalMinimum_;
        return false;
    }
    if (x > internalMaximum_)
    {
        x = internalMaximum_;
        return false;
    }
    return true;
}

template <typename Bound>
bool BasicIntegerRange<Bound>::operator==(const BasicIntegerRange& other) const
{
    return internalMinimum_ == other.internalMinimum_ && internalMaximum_ == other.internalMaximum_ &&
           externalMinimum_ == other.externalMinimum_ && externalMaximum_ == other.externalMaximum_ &&
           scaleFactor_ == other.scaleFactor_;
}

template class BasicIntegerRange<std::int32_t>;
template class BasicIntegerRange<std::int64_t>;

namespace
{
template <typename Range>
std::ostream& PrintIntegerRange(std::ostream& out, const Range& range)
{
    return out << "IntegerRange(" << range.GetInternalMinimum() << ", " << range.GetInternalMaximum() << ", "
               << range.GetExternalMinimum() << ", " << range.GetExternalMaximum() << ")";
}
} // namespace

std::ostream& operator<<(std::ostream& out, const IntegerRange& range)
{
    return PrintIntegerRange(out, range);
}

std::ostream& operator<<(std::ostream& out, const IntegerRange64& range)
{
    return PrintIntegerRange(out, range);
}

FloatRange::FloatRange(double minimum, double maximum, double externalMinimum, double externalMaximum)
    : minimum_(minimum), maximum_(maximum), externalMinimum_(externalMinimum), externalMaximum_(externalMaximum)
{
}

FloatRange FloatRange::CreateScaled(double minimum, double maximum, double externalMinimum, double externalMaximum)
{
    FloatRange range(minimum, maximum, externalMinimum, externalMaximum);
    range.CalculateScaleFactor();
    return range;
}

void FloatRange::CalculateScaleFactor()
{
    const double innerWidth = std::max(minimum_, maximum_) - std::min(minimum_, maximum_);
    const double outerWidth = std::max(externalMinimum_, externalMaximum_) - std::min(externalMinimum_, externalMaximum_);
    if (innerWidth == 0.0)
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 266,
                "Failed to calculate the scale factor because of invalid double range [" << minimum_ << ", " << maximum_
                                                                                          << "].");
        return;
    }
    if (outerWidth == 0.0)
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 273,
                "Failed to calculate the scale factor because of invalid external range [" << externalMinimum_ << ", "
                                                                                            << externalMaximum_ << "].");
        return;
    }
    scaleFactor_ = outerWidth / innerWidth;
    if (scaleFactor_ == 0.0)
    {
        scaleFactor_ = 1.0;
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 282,
                "Failed to calculate the scale factor because of invalid double range ["
                    << minimum_ << ", " << maximum_ << "] or because invalid external range [" << externalMinimum_
                    << ", " << externalMaximum_ << "].");
    }
}

bool FloatRange::IsInRange(double x) const
{
    return minimum_ <= x && x <= maximum_;
}

bool FloatRange::Clamp(double& x) const
{
    if (x < minimum_)
    {
        x = minimum_;
        return false;
    }
    if (x > maximum_)
    {
        x = maximum_;
        return false;
    }
    return IsInRange(x);  // false for NaN, which stays as it is
}

double FloatRange::MapInnerToOuter(double x) const
{
    return (x - minimum_) * scaleFactor_ + externalMinimum_;
}

bool FloatRange::operator==(const FloatRange& other) const
{
    return minimum_ == other.minimum_ && maximum_ == other.maximum_ && externalMinimum_ == other.externalMinimum_ &&
           externalMaximum_ == other.externalMaximum_ && scaleFactor_ == other.scaleFactor_;
}

std::ostream& operator<<(std::ostream& out, const FloatRange& range)
{
    return out << "FloatRange(" << range.GetMinimum() << ", " << range.GetMaximum() << ", "
               << range.GetExternalMinimum() << ", " << range.GetExternalMaximum() << ")";
}

FloatIntegerRange::FloatIntegerRange(double doubleMinimum, double doubleMaximum, std::int32_t integerMinimum,
                                     std::int32_t integerMaximum)
    : doubleMinimum_(doubleMinimum),
      doubleMaximum_(doubleMaximum),
      integerMinimum_(integerMinimum),
      integerMaximum_(integerMaximum)
{
}

FloatIntegerRange FloatIntegerRange::CreateScaled(double doubleMinimum, double doubleMaximum,
                                                  std::int32_t integerMinimum, std::int32_t integerMaximum)
{
    FloatIntegerRange range(doubleMinimum, doubleMaximum, integerMinimum, integerMaximum);
    range.CalculateScaleFactor();
    return range;
}

void FloatIntegerRange::CalculateScaleFactor()
{
    const double doubleWidth = doubleMaximum_ - doubleMinimum_;
    if (doubleWidth == 0.0)
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 348,
                "Failed to calculate the scale factor because of invalid double range [" << doubleMinimum_ << ", "
                                                                                          << doubleMaximum_ << "].");
        return;
    }
    const std::int64_t integerWidth = Width(integerMinimum_, integerMaximum_);
    if (integerWidth == 0)
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 356,
                "Failed to calculate the scale factor because of invalid integer range [" << integerMinimum_ << ", "
                                                                                           << integerMaximum_ << "].");
        return;
    }
    scaleFactor_ = static_cast<double>(integerWidth) / doubleWidth;
    if (scaleFactor_ == 0.0)
    {
        scaleFactor_ = 1.0;
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 365,
                "Failed to calculate the scale factor because of invalid double range ["
                    << doubleMinimum_ << ", " << doubleMaximum_ << "] or because invalid integer range ["
                    << integerMinimum_ << ", " << integerMaximum_ << "].");
    }
}

bool FloatIntegerRange::IsInRange(double x) const
{
    return doubleMinimum_ <= x && x <= doubleMaximum_;
}

bool FloatIntegerRange::Clamp(double& x) const
{
    if (x < doubleMinimum_)
    {
        x = doubleMinimum_;
        return false;
    }
    if (x > doubleMaximum_)
    {
        x = doubleMaximum_;
        return false;
    }
    return IsInRange(x);  // false for NaN, which stays as it is
}

std::int32_t FloatIntegerRange::MapDoubleToInteger(double x) const
{
    return RoundHalfAwayFromZero((x - doubleMinimum_) * scaleFactor_ + integerMinimum_);
}

double FloatIntegerRange::MapIntegerToDouble(std::int32_t i) const
{
    // The difference is a 32-bit one, wrapping like the bus-side integers do.
    const auto difference =
        static_cast<std::int32_t>(static_cast<std::uint32_t>(i) - static_cast<std::uint32_t>(integerMinimum_));
    return static_cast<double>(difference) / scaleFactor_ + doubleMinimum_;
}

bool FloatIntegerRange::operator==(const FloatIntegerRange& other) const
{
    return doubleMinimum_ == other.doubleMinimum_ && doubleMaximum_ == other.doubleMaximum_ &&
           integerMinimum_ == other.integerMinimum_ && integerMaximum_ == other.integerMaximum_ &&
           scaleFactor_ == other.scaleFactor_;
}

std::ostream& operator<<(std::ostream& out, const FloatIntegerRange& range)
{
    return out << "FloatIntegerRange(" << range.GetDoubleMinimum() << ", " << range.GetDoubleMaximum() << ", "
               << range.GetIntegerMinimum() << ", " << range.GetIntegerMaximum() << ")";
}

// =========================================================================================
// Converters

#define TAV_DEFINE_CLONE(Name)      \
    Name* Name::Clone() const       \
    {                               \
        return new Name(*this);     \
    }

TAV_DEFINE_CLONE(KnxConverterDefault)
TAV_DEFINE_CLONE(KnxConverter1Bit)
TAV_DEFINE_CLONE(KnxConverter2Bit)
TAV_DEFINE_CLONE(KnxConverter4Bit)
TAV_DEFINE_CLONE(KnxConverter8BitString)
TAV_DEFINE_CLONE(KnxConverterByte8BitUnsigned)
TAV_DEFINE_CLONE(KnxConverterInteger8BitSigned)
TAV_DEFINE_CLONE(KnxConverterStatus8Bit)
TAV_DEFINE_CLONE(KnxConverterInteger16BitUnsigned)
TAV_DEFINE_CLONE(KnxConverterInteger16BitSigned)
TAV_DEFINE_CLONE(KnxConverterFloat16BitFloat)
TAV_DEFINE_CLONE(KnxConverterTimeOfDay)
TAV_DEFINE_CLONE(KnxConverterDate)
TAV_DEFINE_CLONE(KnxConverterInteger32BitUnsigned)
TAV_DEFINE_CLONE(KnxConverterInteger32BitSigned)
TAV_DEFINE_CLONE(KnxConverterFloat32BitFloat)
TAV_DEFINE_CLONE(KnxConverter14ByteString)
TAV_DEFINE_CLONE(KnxConverterSceneNumber)
TAV_DEFINE_CLONE(KnxConverterSceneControl)
TAV_DEFINE_CLONE(KnxConverterDateTime)
TAV_DEFINE_CLONE(KnxConverterSceneInfo)
TAV_DEFINE_CLONE(KnxConverterInteger24BitUnsigned)

#undef TAV_DEFINE_CLONE

// --- default: the value model's generic byte codec --------------------------------------

bool KnxConverterDefault::ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value, KnxStack::GroupValue& out) const
{
    const unsigned int byteSize = dpt.size / 8u + (dpt.size % 8u != 0 ? 1u : 0u);
    constexpr unsigned int kBufferSize = 24;
    unsigned char bytes[kBufferSize] = {};

    // Two float-family codes travel as one byte.
    if (value.type == static_cast<OkaValueType>(1005) || value.type == static_cast<OkaValueType>(1037))
    {
        unsigned int length = 1;
        if (!OkaValueToByteArray(value, bytes, length))
        {
            TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 466, "OkaValueToByteArray failed. DPT=" << dpt.main << "." << dpt.sub);
            return false;
        }
        out.SetAsUnsigned8(bytes[0]);
        return true;
    }

    if (value.type == ivtBool)
    {
        if (dpt.main == 1)
        {
            out.SetAsBoolean(value.numeric.boolean);
        }
        else if (dpt.main == 2)
        {
            // Control bit set, value bit from the boolean.
            out.SetAsUnsigned2(value.numeric.boolean ? 17 : 16);
        }
        return true;
    }

    unsigned int length = (byteSize == 0 || byteSize > kBufferSize - 1) ? kBufferSize : byteSize;
    if (!OkaValueToByteArray(value, bytes, length))
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 490,
                "OkaValueToByteArray failed. DPT=" << dpt.main << "." << dpt.sub << " data size =" << length);
        return false;
    }
    if (length < 2)
    {
        out.SetAsUnsigned8(bytes[0]);
        return true;
    }
    KnxStack::BinaryData data;
    data.Resize(length);
    for (unsigned int i = 0; i < length; ++i)
    {
        data.SetUInt8Value(i, bytes[i]);
    }
    out.SetRawData(data);
    return true;
}

bool KnxConverterDefault::FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& in, OKAVALUE& out) const
{
    const KnxStack::BinaryData& raw = in.GetRawData();
    const unsigned int count = raw.GetSize();
    if (ByteArrayToOkaValue(raw.GetData(), count, out, false))
    {
        return true;
    }
    out.Reset(ivtEmpty);
    TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 518,
            "ByteArrayToOkaValue failed. DPT=" << dpt.main << "." << dpt.sub << " data size =" << count);
    return false;
}

// --- 1.x boolean: refuses silently -------------------------------------------------------

bool KnxConverter1Bit::ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value, KnxStack::GroupValue& out) const
{
    TraceToKnx(dpt, value);
    if (dpt.main != 1 || value.type != ivtBool)
    {
        return false;
    }
    out.SetAsBoolean(value.numeric.boolean);
    return true;
}

bool KnxConverter1Bit::FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& in, OKAVALUE& out) const
{
    if (dpt.main != 1)
    {
        return false;
    }
    out.numeric.boolean = in.GetAsBoolean();  // the type is the caller's
    return true;
}

// --- 2.x control -------------------------------------------------------------------------

bool KnxConverter2Bit::ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value, KnxStack::GroupValue& out) const
{
    TraceToKnx(dpt, value);
    if (dpt.main != 2 || value.type != ivtByte)
    {
        return RefuseValueTypeOrMain("ivtByte", "2.x");
    }
    out.SetAsUnsigned2(value.numeric.byte);
    return true;
}

bool KnxConverter2Bit::FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& in, OKAVALUE& out) const
{
    TraceFromKnx(dpt, in);
    if (dpt.main != 2)
    {
        return RefuseMain("2.x");
    }
    out.type = ivtByte;
    out.numeric.byte = in.GetAsUnsigned2();
    return true;
}

// --- 3.x dimming / blind control ---------------------------------------------------------

bool KnxConverter4Bit::ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value, KnxStack::GroupValue& out) const
{
    TraceToKnx(dpt, value);
    if (dpt.main != 3 || value.type != ivtByte)
    {
        return RefuseValueTypeOrMain("ivtByte", "3.x");
    }
    if (value.numeric.byte >= 16)
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 582,
                "Value out of raw range [0..15]: " << static_cast<unsigned int>(value.numeric.byte));
        return false;
    }
    out.SetAsUnsigned4(value.numeric.byte);
    return true;
}

bool KnxConverter4Bit::FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& in, OKAVALUE& out) const
{
    TraceFromKnx(dpt, in);
    if (dpt.main != 3)
    {
        return RefuseMain("3.x");
    }
    out.numeric.byte = in.GetAsUnsigned4();  // the type is the caller's
    return true;
}

// --- 4.x single character ----------------------------------------------------------------

bool KnxConverter8BitString::ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value, KnxStack::GroupValue& out) const
{
    TraceToKnx(dpt, value);
    if (dpt.main != 4 || value.type != ivtString)
    {
        return RefuseValueTypeOrMain("ivtString", "4.x");
    }
    const std::string latin1 = UTF8ToLatin1(FirstUtf8Sequence(value.text.c_str()).c_str());
    const char character = latin1.empty() ? '\0' : latin1[0];
    if (dpt.sub == 1 && static_cast<unsigned char>(character) >= 0x80)
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 614,
                "Value out of raw range [0..127] for DPT 4.001: " << static_cast<int>(static_cast<signed char>(character)));
        return false;
    }
    out.SetAsChar(character);
    return true;
}

bool KnxConverter8BitString::FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& in, OKAVALUE& out) const
{
    TraceFromKnx(dpt, in);
    if (dpt.main != 4)
    {
        return RefuseMain("4.x");
    }
    const unsigned int raw = in.GetAsUnsigned8();
    if (dpt.sub == 1 && (raw & 0x80) != 0)
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 632, "Value out of raw range [0..127] for DPT 4.001: " << raw);
        return false;
    }
    out.type = ivtString;
    if (raw < 0x80)
    {
        out.text.assign(RawCharacter(raw));
        return true;
    }
    const char latin1[2] = {RawCharacter(raw), '\0'};
    const std::string utf8 = Latin1ToUTF8(latin1);
    if (utf8.size() > 1)
    {
        out.text.assign(utf8[0]);
        out.text.append(utf8[1]);
    }
    return true;
}

// --- 5.x unsigned byte (also 20.x, 21.x, 23.x, 236.x, 238.x) -----------------------------

bool KnxConverterByte8BitUnsigned::ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value,
                                              KnxStack::GroupValue& out) const
{
    TraceToKnx(dpt, value);
    if (dpt.main != 5 || value.type != ivtByte)
    {
        return RefuseValueTypeOrMain("ivtByte", "5.x");
    }
    // Refuses the bytes inside the range, the opposite of FromKnxValue; kept as deployed.
    if (range_.IsInRange(value.numeric.byte))
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 664,
                "Value out of raw range [0..254] for DPT 5.006: " << static_cast<unsigned int>(value.numeric.byte));
        return false;
    }
    out.SetAsUnsigned8(value.numeric.byte);
    return true;
}

bool KnxConverterByte8BitUnsigned::FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& in,
                                                OKAVALUE& out) const
{
    TraceFromKnx(dpt, in);
    const unsigned int raw = in.GetAsUnsigned8();
    if (!range_.IsInRange(raw))
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 679,
                "Value out of raw range " << range_ << " for DPT " << dpt.main << "." << dpt.sub << "; value was "
                                          << raw);
        return false;
    }
    out.type = ivtByte;
    out.numeric.byte = static_cast<std::uint8_t>(raw);
    return true;
}

// --- 6.x signed byte ---------------------------------------------------------------------

bool KnxConverterInteger8BitSigned::ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value,
                                               KnxStack::GroupValue& out) const
{
    TraceToKnx(dpt, value);
    if (dpt.main != 6 || value.type != ivtInteger)
    {
        return RefuseValueTypeOrMain("ivtInteger", "6.x");
    }
    out.SetAsSigned8(static_cast<signed char>(value.numeric.integer));
    return true;
}

bool KnxConverterInteger8BitSigned::FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& in,
                                                 OKAVALUE& out) const
{
    TraceFromKnx(dpt, in);
    out.type = ivtInteger;
    out.numeric.integer = in.GetAsSigned8();
    return true;
}

// --- 6.020 status with mode: exactly one of the three mode bits --------------------------

bool KnxConverterStatus8Bit::ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value, KnxStack::GroupValue& out) const
{
    TraceToKnx(dpt, value);
    if (dpt.main != 6 && dpt.sub != 20 && value.type != ivtByte)
    {
        return RefuseValueTypeOrMain("ivtByte", "6.020");
    }
    // Written first and the mode read back from the group value; a refused value stays
    // written, which receivers of this converter rely on.
    out.SetAsUnsigned8(value.numeric.byte);
    const unsigned int mode = out.GetAsUnsigned3();
    if (!IsSingleModeBit(mode))
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 727,
                "The internal value of DPT=" << dpt.main << "." << dpt.sub << ", f=" << RawCharacter(mode)
                                             << " is out of the allowed range.");
        return false;
    }
    return true;
}

bool KnxConverterStatus8Bit::FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& in, OKAVALUE& out) const
{
    TraceFromKnx(dpt, in);
    if (dpt.main != 6 && dpt.sub != 20)
    {
        return RefuseMain("6.020");
    }
    const unsigned int mode = static_cast<unsigned int>(in.GetAsSigned8() & 7);
    if (!IsSingleModeBit(mode))
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 745,
                "The internal value of DPT=" << dpt.main << "." << dpt.sub << ", f=" << RawCharacter(mode)
                                             << " is out of the allowed range.");
        return false;
    }
    out.type = ivtByte;
    out.numeric.byte = in.GetAsUnsigned8();
    return true;
}

// --- 7.x unsigned 16 bits ----------------------------------------------------------------

bool KnxConverterInteger16BitUnsigned::ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value,
                                                  KnxStack::GroupValue& out) const
{
    TraceToKnx(dpt, value);
    if (dpt.main != 7 && value.type != ivtWord)
    {
        return RefuseMainOrValueType("7.x", "ivtWord");
    }
    out.SetAsUnsigned16(value.numeric.word);
    return true;
}

bool KnxConverterInteger16BitUnsigned::FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& in,
                                                    OKAVALUE& out) const
{
    TraceFromKnx(dpt, in);
    if (dpt.main != 7)
    {
        return RefuseMain("7.x");
    }
    out.type = ivtWord;
    out.numeric.word = in.GetAsUnsigned16();
    return true;
}

// --- 8.x signed 16 bits ------------------------------------------------------------------

bool KnxConverterInteger16BitSigned::ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value,
                                                KnxStack::GroupValue& out) const
{
    TraceToKnx(dpt, value);
    if (dpt.main != 8 && value.type != ivtInteger)
    {
        return RefuseMainOrValueType("8.x", "ivtInteger");
    }
    out.SetAsSigned16(static_cast<short>(value.numeric.integer));
    return true;
}

bool KnxConverterInteger16BitSigned::FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& in,
                                                  OKAVALUE& out) const
{
    TraceFromKnx(dpt, in);
    if (dpt.main != 8)
    {
        return RefuseMain("8.x");
    }
    out.type = ivtInteger;
    out.numeric.integer = in.GetAsSigned16();
    return true;
}

// --- 9.x 16-bit KNX float ----------------------------------------------------------------

bool KnxConverterFloat16BitFloat::ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value,
                                             KnxStack::GroupValue& out) const
{
    TraceToKnx(dpt, value);
    if (dpt.main != 9 && value.type != ivtFloat && value.type != kInvalidValueType)
    {
        return RefuseMainOrValueType("9.x", "ivtFloat");
    }
    if (value.type == kInvalidValueType)
    {
        out.SetAsFloat16(kFloat16InvalidValue);
        return true;
    }
    const double x = value.numeric.real;
    if (!range_.IsInRange(x))
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 827,
                "The internal value of DPT=" << dpt.main << "." << dpt.sub << ", f=" << x
                                             << " is out of the allowed range.");
        return false;
    }
    out.SetAsFloat16(x);
    return true;
}

bool KnxConverterFloat16BitFloat::FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& in,
                                               OKAVALUE& out) const
{
    TraceFromKnx(dpt, in);
    if (in.GetAsUnsigned16() == kFloat16InvalidRaw)
    {
        out.type = kInvalidValueType;
        return true;
    }
    const double x = in.GetAsFloat16();
    out.numeric.real = x;  // stored even when refused below; the type is the caller's
    if (!range_.IsInRange(x))
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 849,
                "The internal value of DPT=" << dpt.main << "." << dpt.sub << ", f=" << x
                                             << " is out of the allowed range.");
        return false;
    }
    return true;
}

// --- 10.001 time of day ------------------------------------------------------------------

bool KnxConverterTimeOfDay::ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value, KnxStack::GroupValue& out) const
{
    TraceToKnx(dpt, value);
    if (dpt.main != 10 && dpt.sub != 1 && value.type != ivtDayTime)
    {
        return RefuseMainOrValueType("10.001", "ivtDayTime");
    }
    const OKATIME& time = value.numeric.time;
    const boost::optional<TavApp::TimeOfDay> timeOfDay = TavApp::TimeOfDay::FromOkaTime(time);
    if (!timeOfDay)
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 870,
                "Could not convert OKATIME "
                    << time.year << " " << static_cast<unsigned int>(time.month) << " "
                    << static_cast<unsigned int>(time.day) << " " << static_cast<unsigned int>(time.hour) << " "
                    << static_cast<unsigned int>(time.minute) << " " << static_cast<unsigned int>(time.second) << " "
                    << static_cast<unsigned int>(time.hundredths) << " " << time.weekday << " " << time.kind << " "
                    << static_cast<unsigned int>(time.localTime) << " "
                    << static_cast<unsigned int>(time.daylightSaving) << " to TimeOfDay");
        return false;
    }
    // Both weekday types use the KNX numbering.
    out.SetAsTimeOfDay(timeOfDay->GetHour(), timeOfDay->GetMinute(), timeOfDay->GetSecond(),
                       static_cast<KnxStack::GroupValue::DayOfWeek>(timeOfDay->GetWeekday()));
    return true;
}

bool KnxConverterTimeOfDay::FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& in, OKAVALUE& out) const
{
    TraceFromKnx(dpt, in);
    if (dpt.main != 10 && dpt.sub != 1)
    {
        return RefuseMain("10.001");
    }
    const KnxStack::BinaryData& raw = in.GetRawData();
    constexpr std::uint8_t kReservedBits = 0xC0;
    if ((raw.GetUInt8Value(1) & kReservedBits) != 0 || (raw.GetUInt8Value(2) & kReservedBits) != 0)
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 897, "No valid TimeOfDay datagram, reserved fields ar not zero!");
        return false;
    }
    int hour = 0;
    int minute = 0;
    int second = 0;
    KnxStack::GroupValue::DayOfWeek day = KnxStack::GroupValue::DayOfWeek::NoDay;
    in.GetAsTimeOfDay(&hour, &minute, &second, &day);
    const boost::optional<TavApp::TimeOfDay> timeOfDay =
        TavApp::TimeOfDay::Create(hour, minute, second, static_cast<TavApp::DayOfWeek>(day));
    if (!timeOfDay)
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 909, "No valid TimeOfDay (10.001)!");
        return false;
    }
    // A time of day on the placeholder date 2000-01-01, marked as such by kind 1.
    OKATIME time{};
    time.year = 2000;
    time.month = 1;
    time.day = 1;
    time.kind = 1;
    time.hour = static_cast<std::uint8_t>(timeOfDay->GetHour());
    time.minute = static_cast<std::uint8_t>(timeOfDay->GetMinute());
    time.second = static_cast<std::uint8_t>(timeOfDay->GetSecond());
    time.weekday = timeOfDay->ToOkaWeekday();
    out.type = ivtDayTime;
    out.numeric.time = time;
    return true;
}

// --- 11.001 date -------------------------------------------------------------------------

bool KnxConverterDate::ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value, KnxStack::GroupValue& out) const
{
    TraceToKnx(dpt, value);
    if (dpt.main != 11 && dpt.sub != 1 && value.type != ivtDate)
    {
        return RefuseMainOrValueType("10.001", "ivtDayTime");
    }
    const OKATIME& time = value.numeric.time;
    // The wire holds two digits of the year: 1990..2089.
    if (static_cast<std::uint16_t>(time.year - 1990) > 99)
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 940,
                "Cannot convert the date outside of the range [1990...2089]: year="
                    << time.year << ", month=" << RawCharacter(time.month) << ", day=" << RawCharacter(time.day));
        return false;
    }
    out.SetAsDate(time.day, time.month, time.year);
    return true;
}

bool KnxConverterDate::FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& in, OKAVALUE& out) const
{
    TraceFromKnx(dpt, in);
    if (dpt.main != 11 && dpt.sub != 1)
    {
        return RefuseMain("11.001");
    }
    // Day, month and year bytes as sent: top three bits of the day, top four of the
    // month and the top bit of the year are reserved.
    constexpr std::uint32_t kReservedBits = 0xE0F080;
    if ((in.GetRawData().GetUInt24Value(0) & kReservedBits) != 0)
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 961, "No valid Date datagram, reserved fields ar not zero!");
        return false;
    }
    int day = 0;
    int month = 0;
    int year = 0;
    in.GetAsDate(&day, &month, &year);
    if (!OKATIME::IsValidDate(static_cast<std::uint16_t>(year), static_cast<std::uint8_t>(month),
                              static_cast<std::uint8_t>(day)))
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 971,
                "Cannot convert invalid date: year=" << year << ", month=" << month << ", day=" << day);
        return false;
    }
    out.numeric.time.Clear(true);
    out.numeric.time.SetDate(static_cast<std::uint16_t>(year), static_cast<std::uint8_t>(month),
                             static_cast<std::uint8_t>(day), true);
    out.type = ivtDate;
    return true;
}

// --- 19.x date and time: no DPT test and no trace ----------------------------------------

bool KnxConverterDateTime::ToKnxValue(const KNXDPT& /*dpt*/, const OKAVALUE& value, KnxStack::GroupValue& out) const
{
    const OKATIME& time = value.numeric.time;
    if (time.year < 1900 || time.year > 2155)
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 989,
                "Cannot convert the date outside of the range [1990...2089]: year=" << time.year);
        return false;
    }
    // Byte 0 is the year's low byte, not the offset from 1900 that FromKnxValue reads:
    // deployed peers expect exactly this.
    KnxStack::BinaryData data;
    data.SetUInt8Value(0, static_cast<std::uint8_t>(time.year & 0xFF));
    data.SetUInt8Value(1, time.month);
    data.SetUInt8Value(2, time.day);
    data.SetUInt8Value(3, time.hour);  // day-of-week bits stay zero
    data.SetUInt8Value(4, time.minute);
    data.SetUInt8Value(5, time.second);
    data.SetUInt8Value(6, 0x20);
    data.SetUInt8Value(7, 0);
    out = KnxStack::GroupValue(data, 64);
    return true;
}

bool KnxConverterDateTime::FromKnxValue(const KNXDPT& /*dpt*/, const KnxStack::GroupValue& in, OKAVALUE& out) const
{
    const KnxStack::BinaryData raw = in.GetRawData();
    const auto year = static_cast<std::uint16_t>(raw.GetUInt8Value(0) + 1900);
    const auto month = static_cast<std::uint8_t>(raw.GetUInt8Value(1) & 0x0F);
    const auto day = static_cast<std::uint8_t>(raw.GetUInt8Value(2) & 0x1F);
    const auto hour = static_cast<std::uint8_t>(raw.GetUInt8Value(3) & 0x1F);
    const auto minute = static_cast<std::uint8_t>(raw.GetUInt8Value(4) & 0x3F);
    const auto second = static_cast<std::uint8_t>(raw.GetUInt8Value(5) & 0x3F);
    if (!OKATIME::IsValidDate(year, month, day) || !OKATIME::IsValidTime(hour, minute, second))
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1019,
                "Cannot convert invalid date and time: year="
                    << year << ", month=" << static_cast<unsigned int>(month)
                    << ", day=" << static_cast<unsigned int>(day) << ", hour=" << static_cast<unsigned int>(hour)
                    << ", minute=" << static_cast<unsigned int>(minute)
                    << ", second=" << static_cast<unsigned int>(second));
        return false;
    }
    out.numeric.time.Clear(true);
    out.numeric.time.SetDateTime(year, month, day, hour, minute, second, true);  // the type is the caller's
    return true;
}

// --- 12.x, 15.x, 27.x unsigned 32 bits ---------------------------------------------------

bool KnxConverterInteger32BitUnsigned::ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value,
                                                  KnxStack::GroupValue& out) const
{
    TraceToKnx(dpt, value);
    if (value.type != ivtDWord)
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1040, "Wrong oka value type (ivtDWord)!");
        return false;
    }
    const std::uint32_t dword = value.numeric.dword;
    if (!range_.IsInRange(dword))
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1046,
                "The internal value of DPT=" << dpt.main << "." << dpt.sub << ", ivt=" << value.type
                                             << " is out of range: " << dword << "!");
        return false;
    }
    out.SetAsUnsigned32(dword);
    return true;
}

bool KnxConverterInteger32BitUnsigned::FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& in,
                                                    OKAVALUE& out) const
{
    TraceFromKnx(dpt, in);
    const std::uint32_t raw = in.GetAsUnsigned32();
    if (!range_.IsInRange(raw))
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1062,
                "The internal value of DPT=" << dpt.main << "." << dpt.sub << ", ivt=" << out.type
                                             << " is out of range: " << raw << "!");
        return false;
    }
    out.type = ivtDWord;
    out.numeric.dword = raw;
    return true;
}

// --- 13.x signed 32 bits: the only converter that scales ---------------------------------

bool KnxConverterInteger32BitSigned::ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value,
                                                KnxStack::GroupValue& out) const
{
    TraceToKnx(dpt, value);
    if (dpt.main != 13 && value.type != ivtInteger)
    {
        return RefuseMainOrValueType("13.x", "ivtInteger");
    }
    const std::int32_t v = value.numeric.integer;
    if (!range_.IsInRange(v))
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1085,
                "The internal value of DPT=" << dpt.main << "." << dpt.sub << ", ivt=" << value.type
                                             << " is out of range: " << v << "!");
        return false;
    }
    const double raw = (static_cast<double>(v) - static_cast<double>(range_.GetInternalMinimum())) *
                           range_.GetScaleFactor() +
                       static_cast<double>(range_.GetExternalMinimum());
    out.SetAsSigned32(RoundHalfAwayFromZero(raw));
    return true;
}

bool KnxConverterInteger32BitSigned::FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& in,
                                                  OKAVALUE& out) const
{
    TraceFromKnx(dpt, in);
    if (dpt.main != 13)
    {
        return RefuseMain("13.x");
    }
    // Checked against the internal bounds and delivered unscaled: receivers were built
    // against this, and with an identity range both directions agree.
    const std::int32_t raw = in.GetAsSigned32();
    if (!range_.IsInRange(raw))
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1110,
                "The group value of DPT=" << dpt.main << "." << dpt.sub << " is out of range: " << raw << "!");
        return false;
    }
    out.type = ivtInteger;
    out.numeric.integer = raw;
    return true;
}

// --- 14.x IEEE single --------------------------------------------------------------------

bool KnxConverterFloat32BitFloat::ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value,
                                             KnxStack::GroupValue& out) const
{
    TraceToKnx(dpt, value);
    if (dpt.main != 14 && value.type != ivtFloat && value.type != kInvalidValueType)
    {
        return RefuseMainOrValueType("14.x", "ivtFloat");
    }
    if (value.type == kInvalidValueType)
    {
        const std::uint32_t quietNanBits = 0x7FC00000;
        float quietNan = 0.0f;
        std::memcpy(&quietNan, &quietNanBits, sizeof quietNan);
        out.SetAsFloat32(quietNan);
        return true;
    }
    // No range check: beyond single precision IEEE narrowing gives an infinity (the range
    // of an IEEE float includes the infinities, so the cast is defined).
    const float narrowed = static_cast<float>(value.numeric.real);
    out.SetAsFloat32(narrowed);
    return true;
}

bool KnxConverterFloat32BitFloat::FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& in,
                                               OKAVALUE& out) const
{
    TraceFromKnx(dpt, in);
    if (dpt.main != 14)
    {
        return RefuseMain("14.x");
    }
    const double x = in.GetAsFloat32();
    out.type = std::isnan(x) ? kInvalidValueType : ivtFloat;
    out.numeric.real = x;
    return true;
}

// --- 16.x 14-character string ------------------------------------------------------------

bool KnxConverter14ByteString::ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value, KnxStack::GroupValue& out) const
{
    TraceToKnx(dpt, value);
    if (dpt.main != 16 && value.type != ivtString)
    {
        return RefuseMainOrValueType("16.x", "ivtString");
    }
    const std::string latin1 = UTF8ToLatin1(value.text.c_str());
    std::string text;
    text.reserve(latin1.size());
    for (const char c : latin1)
    {
        text += range_.IsInRange(static_cast<unsigned char>(c)) ? c : '_';
    }
    out.SetAsString14(text);
    return true;
}

bool KnxConverter14ByteString::FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& in, OKAVALUE& out) const
{
    TraceFromKnx(dpt, in);
    if (dpt.main != 16)
    {
        return RefuseMain("16.x");
    }
    const std::string utf8 = Latin1ToUTF8(in.GetAsString14().c_str());
    std::string kept;
    kept.reserve(utf8.size());
    for (const char c : utf8)
    {
        if (range_.IsInRange(static_cast<unsigned char>(c)))
        {
            kept += c;
        }
    }
    if (kept.size() != utf8.size())
    {
        TAV_LOG_AT(Log(), log4cplus::INFO_LOG_LEVEL, LogFile::KnxConverter, 1197,
                "Invalid characters for DPT " << dpt.main << "." << dpt.sub << " has been replaced with _.");
    }
    out.type = ivtString;
    out.text.assign(kept.data(), kept.size());
    return true;
}

// --- 17.001 scene number -----------------------------------------------------------------

bool KnxConverterSceneNumber::ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value, KnxStack::GroupValue& out) const
{
    TraceToKnx(dpt, value);
    if (dpt.main != 17 && dpt.sub != 1 && value.type != ivtByte)
    {
        return RefuseMainOrValueType("17.001", "ivtByte");
    }
    const std::int32_t scene = value.numeric.integer;
    if (!range_.IsInRange(scene))
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1217, "Scene number is out of range (>63) for SceneNumber: " << scene);
        return false;
    }
    out.SetAsUnsigned8(static_cast<unsigned char>(scene));
    return true;
}

bool KnxConverterSceneNumber::FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& in, OKAVALUE& out) const
{
    TraceFromKnx(dpt, in);
    if (dpt.main != 17 && dpt.sub != 1)
    {
        return RefuseMain("17.001");
    }
    const unsigned int raw = in.GetAsUnsigned8();
    out.numeric.integer = static_cast<std::int32_t>(raw);  // stored even when refused below
    if (!range_.IsInRange(raw))
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1235, "Scene number is out of range (>63) for SceneNumber: " << raw);
        return false;
    }
    out.type = ivtByte;
    return true;
}

// --- 18.001 scene control: bit 7 learn, bit 6 reserved -----------------------------------

bool KnxConverterSceneControl::ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value, KnxStack::GroupValue& out) const
{
    TraceToKnx(dpt, value);
    if (dpt.main != 18 || dpt.sub != 1 || value.type != ivtByte)
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1249, "Wrong DPT for Scene number (18.001) or oka value type (ivtByte).");
        return false;
    }
    const unsigned int scene = value.numeric.byte & 0x7Fu;
    if (scene >= 64)
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1255,
                "Scene number is out of range (>63) for SceneControl: " << RawCharacter(scene));
        return false;
    }
    out.SetAsUnsigned8(value.numeric.byte);  // with the learn flag
    return true;
}

bool KnxConverterSceneControl::FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& in, OKAVALUE& out) const
{
    TraceFromKnx(dpt, in);
    if (dpt.main != 18 || dpt.sub != 1)
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1268, "Wrong DPT for Scene number, only 18.001 is valid.");
        return false;
    }
    const unsigned char raw = in.GetAsUnsigned8();
    if ((raw & 0x40) != 0)
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1274, "Reserved bit is used for scene number in DPT scene control!");
        return false;
    }
    out.numeric.byte = raw;  // the type is the caller's
    return true;
}

// --- 26.001 scene information: bit 7 reserved --------------------------------------------

bool KnxConverterSceneInfo::ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value, KnxStack::GroupValue& out) const
{
    TraceToKnx(dpt, value);
    if (dpt.main != 26 || dpt.sub != 1 || value.type != ivtByte)
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1288, "Wrong DPT for Scene number (26.001) or oka value type (ivtByte).");
        return false;
    }
    if ((value.numeric.byte & 0x80) != 0)
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1293, "Reserved bit 8 is set for SceneInfo; skipped.");
        return false;
    }
    out.SetAsUnsigned8(value.numeric.byte);
    return true;
}

bool KnxConverterSceneInfo::FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& in, OKAVALUE& out) const
{
    TraceFromKnx(dpt, in);
    if (dpt.main != 26 || dpt.sub != 1)
    {
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1305, "Wrong DPT for Scene number, only 26.001 is valid.");
        return false;
    }
    const unsigned char raw = in.GetAsUnsigned8();
    if ((raw & 0x80) != 0)
    {
        // The scene-control text, shared on purpose.
        TAV_LOG_AT(Log(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1312, "Reserved bit is used for scene number in DPT scene control!");
        return false;
    }
    out.numeric.byte = raw;  // the type is the caller's
    return true;
}

// --- 232.x 24-bit unsigned: no test, no check --------------------------------------------

bool KnxConverterInteger24BitUnsigned::ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value,
                                                  KnxStack::GroupValue& out) const
{
    TraceToKnx(dpt, value);
    const std::uint32_t v = static_cast<std::uint32_t>(value.numeric.integer) & 0xFFFFFFu;
    const unsigned char bytes[3] = {static_cast<unsigned char>(v >> 16), static_cast<unsigned char>(v >> 8),
                                    static_cast<unsigned char>(v)};
    out = KnxStack::GroupValue(KnxStack::BinaryData(bytes, 3), 24);
    return true;
}

bool KnxConverterInteger24BitUnsigned::FromKnxValue(const KNXDPT& dpt, const KnxStack::GroupValue& in,
                                                    OKAVALUE& out) const
{
    TraceFromKnx(dpt, in);
    out.numeric.integer = static_cast<std::int32_t>(in.GetRawData().GetUInt24Value(0));  // the type is the caller's
    return true;
}
} // namespace Okaro
