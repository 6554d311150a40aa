// The fallback converter for datapoint types without a class of their own.
#include <TavObjectModel/KnxConverter.h>

#include <TavObjectModel/detail/KnxConverterSupport.h>

namespace Okaro
{
using namespace detail;

TAV_DEFINE_KNX_CONVERTER_CLONE(KnxConverterDefault)

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
            TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 466, "OkaValueToByteArray failed. DPT=" << dpt.main << "." << dpt.sub);
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
        TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 490,
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
    TAV_LOG_COLD_AT(ConverterLog(), log4cplus::ERROR_LOG_LEVEL, LogFile::KnxConverter, 518,
            "ByteArrayToOkaValue failed. DPT=" << dpt.main << "." << dpt.sub << " data size =" << count);
    return false;
}
} // namespace Okaro
