#pragma once
// What the two halves of the group value codec share (GroupValueDecoding.cpp and
// GroupValueEncoding.cpp). Not installed.
#include <boost/date_time/gregorian/gregorian_types.hpp>

#include <array>
#include <cstdint>
#include <initializer_list>
#include <ostream>
#include <vector>

namespace Okaro
{
namespace detail
{
// Main numbers above this one are never decoded or encoded.
constexpr std::uint16_t kLastBranchedMain = 238;

// The packed DPT, reduced to 32 bits so that a 64-bit host and the 32-bit controller read
// the same main and sub number.
struct PackedDpt
{
    explicit PackedDpt(unsigned long packedDpt)
        : packed(static_cast<std::uint32_t>(packedDpt)),
          main(static_cast<std::uint16_t>(packed >> 16)),
          sub(static_cast<std::uint16_t>(packed & 0xFFFFu))
    {
    }

    std::uint32_t packed;
    std::uint16_t main;
    std::uint16_t sub;
};

inline std::ostream& operator<<(std::ostream& out, const PackedDpt& dpt)
{
    return out << dpt.main << '.' << dpt.sub;
}

// Builds the date field by field so that the calendar error names the first bad field.
inline boost::gregorian::date MakeDate(int year, int month, int day)
{
    const boost::gregorian::greg_year checkedYear(static_cast<unsigned short>(year));
    const boost::gregorian::greg_month checkedMonth(static_cast<unsigned short>(month));
    const boost::gregorian::greg_day checkedDay(static_cast<unsigned short>(day));
    return boost::gregorian::date(checkedYear, checkedMonth, checkedDay);
}

// A branch of the codec: its function and its name (the reference page prints the name).
template <class Function>
struct CodecBranch
{
    Function function = nullptr;
    const char* name = nullptr;
};

#define TAV_CODEC_BRANCH(function) {&function, #function}

// The branches of one direction by main number, filled once from rows that each name the main
// numbers one branch serves; a lookup is an index.
template <class Function>
class BranchTable
{
public:
    struct Row
    {
        std::vector<std::uint16_t> mains;
        CodecBranch<Function> branch;
    };

    BranchTable(std::initializer_list<Row> rows)
    {
        for (const Row& row : rows)
        {
            for (const std::uint16_t main : row.mains)
            {
                branches_[main] = row.branch;
            }
        }
    }

    // nullptr for main 0, a main above the last branched one, or one without a branch.
    const CodecBranch<Function>* Find(std::uint16_t main) const
    {
        if (main == 0 || main > kLastBranchedMain)
        {
            return nullptr;
        }
        const CodecBranch<Function>& branch = branches_[main];
        return branch.function != nullptr ? &branch : nullptr;
    }

private:
    std::array<CodecBranch<Function>, kLastBranchedMain + 1> branches_{};
};

// The branch that decoding and encoding take for a main number, by name; nullptr where there
// is none (decoding then gives an empty value, encoding refuses). For the reference page
// docs/DptMainNumbers.md, which a test keeps in step with the tables.
const char* GetDecodeBranchName(std::uint16_t main);
const char* GetEncodeBranchName(std::uint16_t main);
} // namespace detail
} // namespace Okaro
