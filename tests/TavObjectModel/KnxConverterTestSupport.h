#pragma once
// Small builders shared by the converter tests: values, group values and the expected
// trace lines.
#include <TavObjectModel/KnxConverter.h>
#include <platform/GroupValue.h>
#include <platform/OkaValue.h>

#include <initializer_list>
#include <string>
#include <vector>

namespace TavTest
{
inline OKAVALUE ByteValue(std::uint8_t byte, OkaValueType type = ivtByte)
{
    OKAVALUE value(type);
    value.numeric.byte = byte;
    return value;
}

inline OKAVALUE IntegerValue(std::int32_t integer, OkaValueType type = ivtInteger)
{
    OKAVALUE value(type);
    value.numeric.integer = integer;
    return value;
}

inline OKAVALUE WordValue(std::uint16_t word, OkaValueType type = ivtWord)
{
    OKAVALUE value(type);
    value.numeric.word = word;
    return value;
}

inline OKAVALUE DWordValue(std::uint32_t dword, OkaValueType type = ivtDWord)
{
    OKAVALUE value(type);
    value.numeric.dword = dword;
    return value;
}

inline OKAVALUE RealValue(double real, OkaValueType type = ivtFloat)
{
    OKAVALUE value(type);
    value.numeric.real = real;
    return value;
}

inline OKAVALUE BoolValue(bool boolean, OkaValueType type = ivtBool)
{
    OKAVALUE value(type);
    value.numeric.boolean = boolean;
    return value;
}

inline OKAVALUE StringValue(const std::string& text, OkaValueType type = ivtString)
{
    OKAVALUE value(type);
    value.text.assign(text.data(), text.size());
    return value;
}

inline OKAVALUE TimeValue(const OKATIME& time, OkaValueType type)
{
    OKAVALUE value(type);
    value.numeric.time = time;
    return value;
}

inline OKATIME MakeTime(std::uint16_t year, std::uint8_t month, std::uint8_t day, std::uint8_t hour = 0,
                        std::uint8_t minute = 0, std::uint8_t second = 0, std::uint16_t weekday = 7)
{
    OKATIME time{};
    time.year = year;
    time.month = month;
    time.day = day;
    time.hour = hour;
    time.minute = minute;
    time.second = second;
    time.weekday = weekday;
    return time;
}

inline KnxStack::GroupValue Group(std::initializer_list<unsigned char> bytes, unsigned int bits)
{
    const std::vector<unsigned char> data(bytes);
    return KnxStack::GroupValue(KnxStack::BinaryData(data.data(), static_cast<unsigned int>(data.size())), bits);
}

inline std::vector<unsigned int> Bytes(const KnxStack::GroupValue& group)
{
    std::vector<unsigned int> bytes;
    const KnxStack::BinaryData& raw = group.GetRawData();
    for (unsigned int i = 0; i < raw.GetSize(); ++i)
    {
        bytes.push_back(raw.GetUInt8Value(i));
    }
    return bytes;
}

inline std::string Dpt(const KNXDPT& dpt)
{
    return std::to_string(dpt.main) + "." + std::to_string(dpt.sub);
}

// The DEBUG line a converter writes on entry.
inline std::string ToTraceText(const KNXDPT& dpt, const OKAVALUE& value)
{
    return "ToKnxValue - DPT is used. DPT = " + Dpt(dpt) + " ivt=" + std::to_string(static_cast<int>(value.type)) +
           " val=" + value.ToString();
}

inline std::string FromTraceText(const KNXDPT& dpt, const KnxStack::GroupValue& group)
{
    return "FromKnxValue - DPT is used. DPT = " + Dpt(dpt) + " grp.size=" + std::to_string(group.GetDefinedSize()) +
           " grp.val=" + group.GetRawData().ToString();
}
} // namespace TavTest
