#pragma once
// The DPT value map: per KNX datapoint type the group value's bit size, the internal value's
// type and sub-type, and the converter between the two. Filled once by KnxValueConverter and
// read-only afterwards, so it is read without locks.
#include <TavObjectModel/KnxConverter.h>

#include <platform/KnxDpt.h>
#include <platform/OkaValueType.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

namespace Okaro
{
// One row of the map. Owns its converter: a copy gets a fresh Clone, so no two entries ever
// share a converter object and callers may register a converter that lives on their stack.
class DptValueEntry
{
public:
    // Takes ownership of `converter` (may be null).
    DptValueEntry(const KNXDPT& dpt, OkaValueType valueType, OkaDP::OkaValueSubType valueSubType,
                  KnxConverter* converter);
    DptValueEntry(const DptValueEntry& other);
    DptValueEntry& operator=(const DptValueEntry& other);
    virtual ~DptValueEntry();

    const KNXDPT& GetDpt() const { return dpt_; }
    OkaValueType GetValueType() const { return valueType_; }
    OkaDP::OkaValueSubType GetValueSubType() const { return valueSubType_; }
    // Null when the entry was registered without a converter.
    const KnxConverter* GetConverter() const { return converter_; }

private:
    KNXDPT dpt_;
    OkaValueType valueType_;
    OkaDP::OkaValueSubType valueSubType_;
    KnxConverter* converter_;
};

class DptValueMap
{
public:
    using SubMap = std::map<std::uint16_t, DptValueEntry>;   // sub number 0 = the ".x" wildcard
    using MainMap = std::map<std::uint16_t, SubMap>;

    DptValueMap() = default;
    virtual ~DptValueMap() = default;
    DptValueMap(const DptValueMap& other);
    DptValueMap& operator=(const DptValueMap& other);

    // Exact sub number, else the main number's wildcard, else the no-entry record (value type
    // ivtEmpty). Logs at ERROR when it falls back to the record; never throws for unknown DPTs.
    // The DPT's bit size plays no part.
    const DptValueEntry& GetEntry(const KNXDPT& dpt) const;

    // Stores a copy under (main, sub). The first registration of a DPT wins: a repeated one
    // leaves the stored entry alone and still reports success.
    bool AddEntry(const KNXDPT& dpt, const DptValueEntry& entry);

    // Removes every entry, deleting their converters.
    void Clear();

    const MainMap& GetEntries() const { return entries_; }
    std::size_t GetEntryCount() const;

    // The process-wide record returned for a DPT without entry: DPT {0, 0, 0}, value type
    // ivtEmpty, sub-type generic, a KnxConverterDefault. Created on first use, thread-safe.
    static const DptValueEntry& GetNoEntryRecord();

private:
    // Main numbers below this are found through a direct index; every converter call looks
    // its DPT up, and the tree search was the largest part of a call.
    static constexpr std::uint16_t kIndexedMainCount = 256;

    const SubMap* FindSubMap(std::uint16_t main) const;
    void IndexMain(std::uint16_t main, const SubMap& subEntries);
    void RebuildIndex();

    MainMap entries_;
    // Points into entries_ (map nodes do not move); rebuilt whenever entries_ is copied.
    std::vector<const SubMap*> subMapByMain_;
};
} // namespace Okaro
