// Integer and float converters: DPTs 7, 8, 9, 12 to 15, 27 and 232.
#include <TavObjectModel/KnxConverter.h>

#include <TavObjectModel/detail/KnxConverterSupport.h>
#include <platform/KnxFloat16.h>
#include <platform/detail/FloatNarrowing.h>

#include <cmath>
#include <cstring>

namespace Okaro
{
using namespace detail;

namespace
{
// 0x7FFF is DPT 9's "invalid" code; SetAsFloat16 writes it for 32767.0.
constexpr double kFloat16InvalidValue = 32767.0;
constexpr std::uint16_t kFloat16InvalidRaw = 0x7FFF;
} // namespace

TAV_DEFINE_KNX_CONVERTER_CLONE(KnxConverterInteger16BitUnsigned)
TAV_DEFINE_KNX_CONVERTER_CLONE(KnxConverterInteger16BitSigned)
TAV_DEFINE_KNX_CONVERTER_CLONE(KnxConverterFloat16BitFloat)
TAV_DEFINE_KNX_CONVERTER_CLONE(KnxConverterInteger32BitUnsigned)
TAV_DEFINE_KNX_CONVERTER_CLONE(KnxConverterInteger32BitSigned)
TAV_DEFINE_KNX_CONVERTER_CLONE(KnxConverterFloat32BitFloat)
TAV_DEFINE_KNX_CONVERTER_CLONE(KnxConverterInteger24BitUnsigned)

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
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 827,
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
    const std::uint16_t code = in.GetAsUnsigned16();
    if (code == kFloat16InvalidRaw)
    {
        out.type = kInvalidValueType;
        return true;
    }
    // GetAsFloat16 of the same two bytes, read once.
    const double x = KnxStack::DecodeKnxFloat16(code);
    out.numeric.real = x;  // stored even when refused below; the type is the caller's
    if (!range_.IsInRange(x))
    {
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 849,
                "The internal value of DPT=" << dpt.main << "." << dpt.sub << ", f=" << x
                                             << " is out of the allowed range.");
        return false;
    }
    return true;
}

// --- 12.x, 15.x, 27.x unsigned 32 bits ---------------------------------------------------

bool KnxConverterInteger32BitUnsigned::ToKnxValue(const KNXDPT& dpt, const OKAVALUE& value,
                                                  KnxStack::GroupValue& out) const
{
    TraceToKnx(dpt, value);
    if (value.type != ivtDWord)
    {
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1040, "Wrong oka value type (ivtDWord)!");
        return false;
    }
    const std::uint32_t dword = value.numeric.dword;
    if (!range_.IsInRange(dword))
    {
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1046,
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
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1062,
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
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1085,
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
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1110,
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
    // No range check: beyond single precision, IEEE narrowing gives the largest float or an
    // infinity, as the codec's DPT 14 branch writes it.
    out.SetAsFloat32(NarrowToFloat(value.numeric.real));
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
