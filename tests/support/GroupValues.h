#pragma once
// Builds group values from bytes and reads their bytes back.
#include <platform/BinaryData.h>
#include <platform/GroupValue.h>

#include <cstdint>
#include <vector>

namespace TavTest
{
using Bytes = std::vector<std::uint8_t>;

inline KnxStack::BinaryData MakeBinaryData(const Bytes& bytes)
{
    return KnxStack::BinaryData(bytes.data(), static_cast<unsigned int>(bytes.size()));
}

// `bits` is the defined size of the group value, which may be less than the bytes hold.
inline KnxStack::GroupValue MakeGroupValue(const Bytes& bytes, unsigned int bits)
{
    return KnxStack::GroupValue(MakeBinaryData(bytes), bits);
}

inline Bytes BytesOf(const KnxStack::GroupValue& groupValue)
{
    const KnxStack::BinaryData& raw = groupValue.GetRawData();
    return Bytes(raw.GetData(), raw.GetData() + raw.GetSize());
}
} // namespace TavTest
