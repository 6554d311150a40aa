#include "knx/GroupAddressMap.h"

#include "knx/DptText.h"
#include "knx/KnxAddress.h"
#include "knx/TextError.h"

#include <boost/algorithm/string/predicate.hpp>
#include <boost/optional.hpp>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace TavKnx
{
namespace
{
// A map names a few thousand group addresses at most; a bigger file is a mistake or hostile.
constexpr std::size_t kMaxFileBytes = 16u * 1024u * 1024u;
// Columns looked for in the header; real exports have a handful.
constexpr std::size_t kMaxHeaderColumns = 1000;
// Garbage gives a problem per line: list the first ones, count the rest, so memory stays small.
constexpr std::size_t kMaxListedProblems = 100;

const char kBlanks[] = " \t";
const char kByteOrderMark[] = "\xEF\xBB\xBF";

std::string Trim(const std::string& text)
{
    const std::string::size_type first = text.find_first_not_of(kBlanks);
    if (first == std::string::npos)
    {
        return std::string();
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// Blank, or a '#' comment: no entry, in either format.
bool IsBlankOrComment(const std::string& line)
{
    const std::string::size_type first = line.find_first_not_of(kBlanks);
    return first == std::string::npos || line[first] == '#';
}

// The fields of one CSV line. A field in double quotes may hold the separator, and "" in it is
// one quote; blanks around a field, inside the quotes or outside, are dropped (no field we read
// has meaningful ones). Fields do not span lines.
struct CsvFields
{
    std::vector<std::string> fields;  // the first ones, as many as asked for
    std::size_t count = 0;            // all of them
    bool closed = true;               // false: a quote opened and the line ended
};

// Keeps only the first `keep` fields, so that a line of a million separators costs no memory.
CsvFields SplitCsv(const std::string& line, char separator, std::size_t keep)
{
    CsvFields result;
    // In a tab-separated export a tab ends a field: only blanks surround one.
    const char* const blanks = separator == '\t' ? " " : kBlanks;
    std::string::size_type at = 0;
    for (;;)
    {
        std::string field;
        std::string::size_type end = line.find_first_not_of(blanks, at);
        if (end != std::string::npos && line[end] == '"')
        {
            std::string::size_type from = end + 1;
            for (;;)
            {
                const std::string::size_type quote = line.find('"', from);
                if (quote == std::string::npos)
                {
                    result.closed = false;
                    return result;
                }
                field.append(line, from, quote - from);
                if (quote + 1 < line.size() && line[quote + 1] == '"')
                {
                    field += '"';
                    from = quote + 2;
                    continue;
                }
                from = quote + 1;
                break;
            }
            // Anything between the closing quote and the separator is kept as written.
            end = line.find(separator, from);
            field = Trim(field + line.substr(from, end == std::string::npos ? std::string::npos : end - from));
        }
        else
        {
            end = line.find(separator, at);
            field = Trim(line.substr(at, end == std::string::npos ? std::string::npos : end - at));
        }
        if (result.count++ < keep)
        {
            result.fields.push_back(std::move(field));
        }
        if (end == std::string::npos)
        {
            return result;
        }
        at = end + 1;
    }
}

// The columns of the commissioning software's export, found in its header line.
struct CsvLayout
{
    char separator = ';';
    std::size_t addressColumn = 0;
    std::size_t dptColumn = 0;
    std::size_t headerFields = 0;
};

boost::optional<std::size_t> FindColumn(const std::vector<std::string>& header, const char* name)
{
    const auto found = std::find_if(header.begin(), header.end(),
                                    [name](const std::string& field) { return boost::iequals(field, name); });
    if (found == header.end())
    {
        return boost::none;
    }
    return static_cast<std::size_t>(found - header.begin());
}

// The export's header names both columns; false for anything else.
bool ReadCsvHeader(const std::string& line, CsvLayout& layout)
{
    for (const char separator : {';', ',', '\t'})
    {
        const CsvFields header = SplitCsv(line, separator, kMaxHeaderColumns);
        if (!header.closed)
        {
            continue;
        }
        const auto address = FindColumn(header.fields, "Address");
        const auto dpt = FindColumn(header.fields, "DatapointType");
        if (address && dpt)
        {
            layout.separator = separator;
            layout.addressColumn = *address;
            layout.dptColumn = *dpt;
            layout.headerFields = header.count;
            return true;
        }
    }
    return false;
}

// "1/-/-", "1/2/-", "1/-": a main or middle group as the export lists it, not an address.
bool IsGroupRange(const std::string& text)
{
    if (!boost::ends_with(text, "/-") || text.find('-') == 0)
    {
        return false;
    }
    std::string filled = text;
    std::replace(filled.begin(), filled.end(), '-', '0');
    // "1/-/3" is no range: dashes only at the end.
    const std::string::size_type firstDash = text.find('-');
    return text.find_first_of("0123456789", firstDash) == std::string::npos && ParseGroupAddress(filled);
}

class MapBuilder
{
public:
    explicit MapBuilder(std::vector<MapProblem>& problems) : problems_(problems) {}

    void Problem(std::size_t line, std::string message)
    {
        if (listed_ < kMaxListedProblems)
        {
            problems_.push_back(MapProblem{line, std::move(message)});
            ++listed_;
        }
        else if (unlisted_++ == 0)
        {
            firstUnlistedLine_ = line;
        }
    }

    // An address and a DPT as written on `line`; both texts are the fields, for the messages.
    void Entry(std::size_t line, const std::string& addressText, const std::string& dptText)
    {
        const auto address = ParseGroupAddress(addressText);
        if (!address)
        {
            Problem(line, "bad group address " + Quote(addressText));
            return;
        }
        const auto dpt = TryParseDpt(dptText);
        if (!dpt)
        {
            Problem(line, "bad DPT " + Quote(dptText));
            return;
        }
        if (dpt->main == 0)
        {
            Problem(line, "bad DPT " + Quote(dptText) + ": main number 0 is no DPT");
            return;
        }
        const auto first = firstLines_.emplace(*address, line);
        if (!first.second)
        {
            Problem(line, "group address " + FormatGroupAddress(*address) + " given again (first on line " +
                              std::to_string(first.first->second) + ")");
            return;
        }
        entries_.emplace(*address, *dpt);
    }

    std::map<std::uint16_t, KNXDPT> Finish()
    {
        if (unlisted_ > 0)
        {
            problems_.push_back(
                MapProblem{firstUnlistedLine_, "too many problems: " + std::to_string(unlisted_) + " more not listed"});
        }
        return std::move(entries_);
    }

private:
    std::vector<MapProblem>& problems_;
    std::size_t listed_ = 0;
    std::size_t unlisted_ = 0;
    std::size_t firstUnlistedLine_ = 0;
    std::map<std::uint16_t, KNXDPT> entries_;
    std::map<std::uint16_t, std::size_t> firstLines_;
};

// "group address;DPT", blanks around the fields, '#' to the end of the line a comment.
void ReadSimpleLine(MapBuilder& builder, std::size_t number, const std::string& line)
{
    const std::string entry = Trim(line.substr(0, line.find('#')));
    if (entry.empty())
    {
        return;
    }
    const std::string::size_type semicolon = entry.find(';');
    const std::string address = Trim(entry.substr(0, semicolon));
    const std::string dpt = semicolon == std::string::npos ? std::string() : Trim(entry.substr(semicolon + 1));
    if (semicolon == std::string::npos || entry.find(';', semicolon + 1) != std::string::npos || address.empty() ||
        dpt.empty())
    {
        builder.Problem(number, "malformed line, expected \"group address;DPT\": " + Quote(entry));
        return;
    }
    builder.Entry(number, address, dpt);
}

void ReadCsvRow(MapBuilder& builder, const CsvLayout& layout, std::size_t number, const std::string& line)
{
    if (Trim(line).empty())
    {
        return;
    }
    const std::size_t needed = std::max(layout.addressColumn, layout.dptColumn) + 1;
    const CsvFields row = SplitCsv(line, layout.separator, needed);
    if (!row.closed)
    {
        builder.Problem(number, "row has an unclosed quote: " + Quote(line));
        return;
    }
    if (row.count < needed)
    {
        builder.Problem(number, "row has " + std::to_string(row.count) + (row.count == 1 ? " field" : " fields") +
                                    ", the header has " + std::to_string(layout.headerFields) + ": " + Quote(line));
        return;
    }
    const std::string& address = row.fields[layout.addressColumn];
    const std::string& dpt = row.fields[layout.dptColumn];
    // Main and middle groups, and group addresses that have no DPT, map nothing.
    if (IsGroupRange(address) || dpt.empty())
    {
        return;
    }
    builder.Entry(number, address, dpt);
}
} // namespace

GroupAddressMap GroupAddressMap::Parse(const std::string& content, std::vector<MapProblem>& problems)
{
    MapBuilder builder(problems);
    CsvLayout csv;
    bool isCsv = false;
    bool formatKnown = false;
    std::string::size_type at = boost::starts_with(content, kByteOrderMark) ? 3 : 0;
    for (std::size_t number = 1; at <= content.size(); ++number)
    {
        const std::string::size_type newline = content.find('\n', at);
        const std::string::size_type end = newline == std::string::npos ? content.size() : newline;
        std::string line = content.substr(at, end - at);
        at = end + 1;
        if (!line.empty() && line.back() == '\r')
        {
            line.pop_back();
        }
        if (!formatKnown)
        {
            if (IsBlankOrComment(line))
            {
                continue;
            }
            formatKnown = true;
            isCsv = ReadCsvHeader(line, csv);
            if (isCsv)
            {
                continue;
            }
        }
        if (isCsv)
        {
            ReadCsvRow(builder, csv, number, line);
        }
        else
        {
            ReadSimpleLine(builder, number, line);
        }
    }
    GroupAddressMap map;
    map.entries_ = builder.Finish();
    return map;
}

GroupAddressMap GroupAddressMap::Load(const std::string& path, std::vector<MapProblem>& problems)
{
    const auto cannotRead = [&path](int error) {
        return std::runtime_error("cannot read map file '" + path + "': " + std::generic_category().message(error));
    };
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
    {
        throw cannotRead(errno);
    }
    std::string content;
    char buffer[64 * 1024];
    for (;;)
    {
        // Read to the end rather than trusting the size: pipes and /proc files have none.
        const ssize_t got = ::read(file, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR)
        {
            continue;
        }
        if (got < 0)
        {
            const int error = errno;
            ::close(file);
            throw cannotRead(error);
        }
        if (got == 0)
        {
            break;
        }
        if (content.size() + static_cast<std::size_t>(got) > kMaxFileBytes)
        {
            ::close(file);
            throw std::runtime_error("map file '" + path + "' is too large: more than 16 MiB");
        }
        content.append(buffer, static_cast<std::size_t>(got));
    }
    ::close(file);
    return Parse(content, problems);
}

const KNXDPT* GroupAddressMap::Find(std::uint16_t groupAddress) const
{
    const auto found = entries_.find(groupAddress);
    return found == entries_.end() ? nullptr : &found->second;
}

const std::string* GroupAddressMap::FindName(std::uint16_t groupAddress) const
{
    const auto found = names_.find(groupAddress);
    return found == names_.end() ? nullptr : &found->second;
}

void GroupAddressMap::Set(std::uint16_t groupAddress, const KNXDPT& dpt)
{
    entries_[groupAddress] = dpt;
}

void GroupAddressMap::SetName(std::uint16_t groupAddress, const std::string& name)
{
    if (name.empty())
    {
        names_.erase(groupAddress);
        return;
    }
    std::string shown = name;
    for (char& c : shown)
    {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f)
        {
            c = ' ';
        }
    }
    names_[groupAddress] = std::move(shown);
}
} // namespace TavKnx
