#pragma once
// Which group addresses a monitor shows: "1/2/3" one address, "1/2/*" a middle group, "1/*" a
// main group ("1/1024" and "*" too); any of several.
#include <cstdint>
#include <string>
#include <vector>

namespace TavKnx
{
class GroupAddressFilter
{
public:
    // Adds one pattern. Throws TextError naming `what` for anything else.
    void Add(const std::string& pattern, const char* what = "--filter");
    // True without patterns, or when one of them matches.
    bool Matches(std::uint16_t groupAddress) const;
    bool Empty() const { return ranges_.empty(); }

private:
    struct Range
    {
        std::uint16_t first;
        std::uint16_t last;
    };
    std::vector<Range> ranges_;
};
} // namespace TavKnx
