// Bit, scene and 8-bit converters: DPTs 1 to 6, 17, 18 and 26.
#include <TavObjectModel/KnxConverter.h>

#include <TavObjectModel/Utilities.h>
#include <TavObjectModel/detail/KnxConverterSupport.h>
#include <platform/Utf8Sequence.h>

#include <cstring>
#include <string>

namespace Okaro
{
using namespace detail;

namespace
{
bool IsSingleModeBit(unsigned int mode)
{
    return mode == 1 || mode == 2 || mode == 4;
}

// The first character of a zero-terminated UTF-8 text as one Latin-1 byte: the first
// sequence, never read past the terminator, joined as UTF8ToLatin1 joins it. An empty text
// gives the zero byte.
char FirstCharacterAsLatin1(const char* text)
{
    const std::size_t length = std::strlen(text);
    if (length == 0)
    {
        return '\0';
    }
    const Utf8Sequence sequence = ReadUtf8Sequence(text, text + length);
    const std::string latin1 = UTF8ToLatin1(std::string(text, sequence.length).c_str());
    return latin1.empty() ? '\0' : latin1[0];
}
} // namespace

TAV_DEFINE_KNX_CONVERTER_CLONE(KnxConverter1Bit)
TAV_DEFINE_KNX_CONVERTER_CLONE(KnxConverter2Bit)
TAV_DEFINE_KNX_CONVERTER_CLONE(KnxConverter4Bit)
TAV_DEFINE_KNX_CONVERTER_CLONE(KnxConverter8BitString)
TAV_DEFINE_KNX_CONVERTER_CLONE(KnxConverterByte8BitUnsigned)
TAV_DEFINE_KNX_CONVERTER_CLONE(KnxConverterInteger8BitSigned)
TAV_DEFINE_KNX_CONVERTER_CLONE(KnxConverterStatus8Bit)
TAV_DEFINE_KNX_CONVERTER_CLONE(KnxConverterSceneNumber)
TAV_DEFINE_KNX_CONVERTER_CLONE(KnxConverterSceneControl)
TAV_DEFINE_KNX_CONVERTER_CLONE(KnxConverterSceneInfo)

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
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 582,
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
    const char character = FirstCharacterAsLatin1(value.text.c_str());
    if (dpt.sub == 1 && static_cast<unsigned char>(character) >= 0x80)
    {
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 614,
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
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 632, "Value out of raw range [0..127] for DPT 4.001: " << raw);
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
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 664,
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
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 679,
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
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 727,
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
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 745,
                "The internal value of DPT=" << dpt.main << "." << dpt.sub << ", f=" << RawCharacter(mode)
                                             << " is out of the allowed range.");
        return false;
    }
    out.type = ivtByte;
    out.numeric.byte = in.GetAsUnsigned8();
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
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1217, "Scene number is out of range (>63) for SceneNumber: " << scene);
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
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1235, "Scene number is out of range (>63) for SceneNumber: " << raw);
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
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1249, "Wrong DPT for Scene number (18.001) or oka value type (ivtByte).");
        return false;
    }
    const unsigned int scene = value.numeric.byte & 0x7Fu;
    if (scene >= 64)
    {
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1255,
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
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1268, "Wrong DPT for Scene number, only 18.001 is valid.");
        return false;
    }
    const unsigned char raw = in.GetAsUnsigned8();
    if ((raw & 0x40) != 0)
    {
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1274, "Reserved bit is used for scene number in DPT scene control!");
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
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1288, "Wrong DPT for Scene number (26.001) or oka value type (ivtByte).");
        return false;
    }
    if ((value.numeric.byte & 0x80) != 0)
    {
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1293, "Reserved bit 8 is set for SceneInfo; skipped.");
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
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1305, "Wrong DPT for Scene number, only 26.001 is valid.");
        return false;
    }
    const unsigned char raw = in.GetAsUnsigned8();
    if ((raw & 0x80) != 0)
    {
        // The scene-control text, shared on purpose.
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 1312, "Reserved bit is used for scene number in DPT scene control!");
        return false;
    }
    out.numeric.byte = raw;  // the type is the caller's
    return true;
}

} // namespace Okaro
