#pragma once
// Which DPT each group address carries, read from a map file: either simple text
// ("group address;DPT" per line, '#' comments) or the group address CSV export of the
// commissioning software (header line with the columns "Address" and "DatapointType";
// separated by ';', ',' or tabs).
// A map built from an ETS project (knx/ProjectMap.h) also names the group addresses.
#include <platform/KnxDpt.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace TavKnx
{
// A line of the map file that was skipped, and why.
struct MapProblem
{
    std::size_t line;     // 1-based
    std::string message;  // what was wrong, with the offending text quoted and cut
};

class GroupAddressMap
{
public:
    // Reads the whole text; lines that are unknown or malformed are skipped and reported in
    // `problems`. Never throws for any content.
    static GroupAddressMap Parse(const std::string& content, std::vector<MapProblem>& problems);
    // Reads the file; throws std::runtime_error naming the file when it cannot be read.
    static GroupAddressMap Load(const std::string& path, std::vector<MapProblem>& problems);

    // The DPT of a group address (size 0), or null when the map does not name it.
    const KNXDPT* Find(std::uint16_t groupAddress) const;
    // The group address's name, or null when the map gives none (the text formats never do).
    const std::string* FindName(std::uint16_t groupAddress) const;
    std::size_t Size() const { return entries_.size(); }
    // Calls `visit(groupAddress, dpt)` for every address with a DPT, in address order.
    template <typename Visit>
    void ForEach(Visit visit) const
    {
        for (const auto& entry : entries_)
        {
            visit(entry.first, entry.second);
        }
    }

    // For maps built from elsewhere (an ETS project): a later entry for the same address wins.
    void Set(std::uint16_t groupAddress, const KNXDPT& dpt);
    // An empty name is not kept; control characters become blanks, so a name stays on its line.
    void SetName(std::uint16_t groupAddress, const std::string& name);

private:
    std::map<std::uint16_t, KNXDPT> entries_;
    std::map<std::uint16_t, std::string> names_;
};
} // namespace TavKnx
