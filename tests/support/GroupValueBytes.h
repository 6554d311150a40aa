#pragma once
// Builds group values from bytes and reads their bytes back, for tests of the converters.
#include <platform/GroupValue.h>

#include <cstdint>
#include <vector>

namespace TavTest
{
using Bytes = std::vector<std::uint8_t>;

inline KnxStack::GroupValue MakeGroupValue(const Bytes& bytes, unsigned int bits)
{
    return KnxStack::GroupValue(KnxStack::BinaryData(bytes.data(), static_cast<unsigned int>(bytes.size())), bits);
}

inline Bytes BytesOf(const KnxStack::GroupValue& groupValue)
{
    const KnxStack::BinaryData& raw = groupValue.GetRawData();
    return Bytes(raw.GetData(), raw.GetData() + raw.GetSize());
}
} // namespace TavTest
