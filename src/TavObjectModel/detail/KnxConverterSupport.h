#pragma once
// What the converter units share: the trace lines and refusals every dedicated converter
// writes, and a few small helpers. Not installed.
//
// Several message texts of the converters look wrong ("ar not zero", the time-of-day text in
// the date converter, "[1990...2089]" for a wider test, "replaced" for dropped bytes) and
// several checks look inverted or lopsided. Other components and field logs match on exactly
// these texts and behaviours, so they are kept as they are; docs/Converters.md lists them.
#include <TavObjectModel/KnxConverter.h>
#include <TavObjectModel/detail/ConverterStorage.h>
#include <TavObjectModel/detail/LogFiles.h>
#include <platform/Logging.h>

#include <type_traits>

namespace Okaro
{
namespace detail
{
// The global default logger object, looked up once: every conversion tests its level, and
// the level itself is read from the logger on every test.
inline const log4cplus::Logger& ConverterLog()
{
    static const log4cplus::Logger& logger = GetGlobalDefaultLogger();
    return logger;
}

constexpr OkaValueType kInvalidValueType = static_cast<OkaValueType>(0);

// --- the shape every dedicated converter shares -----------------------------------------

inline void TraceToKnx(const KNXDPT& dpt, const OKAVALUE& value)
{
    TAV_LOG_COLD_FROM(ConverterLog(), log4cplus::DEBUG_LOG_LEVEL, "ToKnxValue", LogFile::KnxConverter, 37,
               "DPT is used. DPT = " << dpt.main << "." << dpt.sub << " ivt=" << value.type
                                     << " val=" << value.ToString());
}

inline void TraceFromKnx(const KNXDPT& dpt, const KnxStack::GroupValue& in)
{
    TAV_LOG_COLD_FROM(ConverterLog(), log4cplus::DEBUG_LOG_LEVEL, "FromKnxValue", LogFile::KnxConverter, 44,
               "DPT is used. DPT = " << dpt.main << "." << dpt.sub << " grp.size=" << in.GetDefinedSize()
                                     << " grp.val=" << in.GetRawData().ToString());
}

// "Wrong oka value type (ivtByte) or DPT main number (5.x)!"
inline bool RefuseValueTypeOrMain(const char* valueTypeName, const char* dptText)
{
    TAV_LOG_COLD_FROM(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, "ToKnxValue", LogFile::KnxConverter, 52,
               "Wrong oka value type (" << valueTypeName << ") or DPT main number (" << dptText << ")!");
    return false;
}

// "Wrong DPT main number (13.x) or oka value type (ivtInteger)!"
inline bool RefuseMainOrValueType(const char* dptText, const char* valueTypeName)
{
    TAV_LOG_COLD_FROM(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, "ToKnxValue", LogFile::KnxConverter, 60,
               "Wrong DPT main number (" << dptText << ") or oka value type (" << valueTypeName << ")!");
    return false;
}

// "Wrong DPT main number (7.x)!"
inline bool RefuseMain(const char* dptText)
{
    TAV_LOG_COLD_FROM(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, "FromKnxValue", LogFile::KnxConverter, 68,
                 "Wrong DPT main number (" << dptText << ")!");
    return false;
}

// The byte streamed as a character, not as digits: several messages print it this way.
inline char RawCharacter(unsigned int byte)
{
    return static_cast<char>(static_cast<unsigned char>(byte));
}

// A copy of `source` in the current placement's storage, or on the heap: what KnxConverter's
// operator new gives, without the call, since a map clones a whole table at once. Deleted
// like any other converter, through the virtual destructor and KnxConverter's operator delete.
template <typename Converter>
Converter* CloneConverter(const Converter& source)
{
    static_assert(alignof(Converter) <= kConverterHeader, "converters fit the storage's alignment");
    static_assert(std::is_nothrow_copy_constructible<Converter>::value, "a copy cannot fail halfway");
    return ::new (AllocateConverter(sizeof(Converter))) Converter(source);
}
} // namespace detail
} // namespace Okaro

// Every converter clones itself the same way.
#define TAV_DEFINE_KNX_CONVERTER_CLONE(Name)         \
    Name* Name::Clone() const                        \
    {                                                \
        return detail::CloneConverter(*this);        \
    }
