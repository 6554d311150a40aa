#pragma once
// The standard rows of the DPT value map, in registration order. Internal to the converter
// front: KnxValueConverter::FillDptValueMap registers them.
#include <TavObjectModel/DptValueMap.h>
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

// The standard rows as the map registers them: each with a converter made once per process
// (thread-safe, on first use) for every map to clone, sorted by main and sub number so that
// each entry is appended. The order of registration shows only in failure messages, and
// registering the standard table cannot fail.
const std::vector<DptValueMap::Row>& GetStandardMapRows();
} // namespace Okaro
