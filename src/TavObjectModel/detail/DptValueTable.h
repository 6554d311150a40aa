#pragma once
// The standard rows of the DPT value map, in registration order. Internal to the converter
// front: KnxValueConverter::FillDptValueMap registers them.
#include <TavObjectModel/KnxConverter.h>

#include <platform/OkaValueType.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace Okaro
{
struct DptValueRow
{
    std::uint16_t mainNumber;
    std::uint16_t subNumber;  // 0 = the ".x" wildcard
    std::uint8_t bitSize;
    OkaValueType valueType;
    OkaDP::OkaValueSubType valueSubType;
    const char* text;  // how failure messages name the row
    std::unique_ptr<KnxConverter> (*makeConverter)();
};

struct DptValueRows
{
    const DptValueRow* begin() const { return first; }
    const DptValueRow* end() const { return first + count; }
    const DptValueRow* first;
    std::size_t count;
};

DptValueRows GetStandardDptValueRows();

// One converter per standard row, in the same order, made on first use (thread-safe) and kept
// for the process: each map clones these rather than making and dropping a temporary per row.
const std::vector<std::unique_ptr<KnxConverter>>& GetStandardConverters();
} // namespace Okaro
