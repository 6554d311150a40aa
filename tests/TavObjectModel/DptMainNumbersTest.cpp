// docs/DptMainNumbers.md shows in one table what every path of the library does for a DPT main
// number. The tables themselves stay separate on purpose; this test renders the page from them
// and fails when the committed page no longer matches, so the page cannot drift.
#include <TavObjectModel/KnxConverter.h>
#include <TavObjectModel/KnxValueConverter.h>
#include <TavObjectModel/MainTypeInfoTable.h>
#include <TavObjectModel/detail/DptValueTable.h>
#include <TavObjectModel/detail/GroupValueCodec.h>

#include <gtest/gtest.h>

#include <cxxabi.h>

#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <typeinfo>
#include <vector>

namespace
{
using namespace Okaro;

constexpr char kPageName[] = "DptMainNumbers.md";

std::string ClassName(const KnxConverter& converter)
{
    int status = 0;
    std::unique_ptr<char, void (*)(void*)> demangled(
        abi::__cxa_demangle(typeid(converter).name(), nullptr, nullptr, &status), &std::free);
    std::string name = status == 0 ? demangled.get() : typeid(converter).name();
    const std::string prefix = "Okaro::";
    return name.compare(0, prefix.size(), prefix) == 0 ? name.substr(prefix.size()) : name;
}

template <typename Converter>
void AppendRangeOf(const KnxConverter& converter, std::string& text)
{
    if (const auto* typed = dynamic_cast<const Converter*>(&converter))
    {
        std::ostringstream range;
        range << std::setprecision(12) << typed->GetRange() << ", scale " << typed->GetRange().GetScaleFactor();
        text += " " + range.str();
    }
}

template <typename... Converters>
std::string RangeText(const KnxConverter& converter)
{
    std::string text;
    (AppendRangeOf<Converters>(converter, text), ...);
    return text;
}

std::string ConverterText(const KnxConverter& converter)
{
    return ClassName(converter) +
           RangeText<KnxConverter4Bit, KnxConverter8BitString, KnxConverterByte8BitUnsigned,
                     KnxConverterInteger8BitSigned, KnxConverterStatus8Bit, KnxConverterInteger16BitUnsigned,
                     KnxConverterInteger16BitSigned, KnxConverterFloat16BitFloat, KnxConverterInteger32BitUnsigned,
                     KnxConverterInteger32BitSigned, KnxConverterFloat32BitFloat, KnxConverter14ByteString,
                     KnxConverterSceneNumber, KnxConverterSceneControl, KnxConverterSceneInfo,
                     KnxConverterInteger24BitUnsigned>(converter);
}

std::string TypeText(OkaValueType type, OkaDP::OkaValueSubType subType)
{
    std::ostringstream text;
    text << OKAVALUE::GetNameFromValueType(type) << " (" << static_cast<int>(type) << "), "
         << OkaDP::GetNameFromValueSubType(subType) << " (" << static_cast<int>(subType) << ")";
    return text.str();
}

std::string SubText(std::uint16_t sub)
{
    if (sub == 0)
    {
        return ".x";
    }
    std::ostringstream text;
    text << '.' << std::setw(3) << std::setfill('0') << sub;
    return text.str();
}

std::string MapRowsText(const std::vector<const DptValueRow*>& rows)
{
    if (rows.empty())
    {
        return "-";
    }
    std::string text;
    for (const DptValueRow* row : rows)
    {
        const std::unique_ptr<KnxConverter> converter = row->makeConverter();
        if (!text.empty())
        {
            text += "<br>";
        }
        text += "`" + SubText(row->subNumber) + "` " + std::to_string(row->bitSize) + " bits, " +
                TypeText(row->valueType, row->valueSubType) + ", " + ConverterText(*converter);
    }
    return text;
}

std::string MainTypeText(std::uint16_t main)
{
    const MainTypeInfoTable& table = MainTypeInfoTable::Instance();
    const MainTypeInfo* info = table.Find(main);
    if (info == nullptr)
    {
        return "-";
    }
    std::string text = TypeText(info->ivt, info->ist);
    const boost::optional<OKAVALUE> defaultValue = table.DefaultValueForDpt(std::uint32_t{main} << 16);
    text += ", default " + (defaultValue ? defaultValue->ToString() : std::string("none"));
    if (main == (MainTypeInfoTable::kStatusWithModeDpt >> 16))
    {
        const boost::optional<OKAVALUE> own = table.DefaultValueForDpt(MainTypeInfoTable::kStatusWithModeDpt);
        text += "; 6.020 default " + (own ? own->ToString() : std::string("none"));
    }
    return text;
}

std::string BitsText(std::uint16_t main)
{
    const std::uint32_t bits = KnxValueConverter::GetExpectedBitSize(main);
    if (bits == KnxValueConverter::kAnyBitSize)
    {
        return "any";
    }
    return bits == 0 ? "-" : std::to_string(bits);
}

std::string BranchText(const char* name)
{
    return name != nullptr ? "`" + std::string(name) + "`" : "-";
}

std::string RenderPage()
{
    std::map<std::uint16_t, std::vector<const DptValueRow*>> mapRows;
    for (const DptValueRow& row : GetStandardDptValueRows())
    {
        mapRows[row.mainNumber].push_back(&row);
    }

    std::ostringstream page;
    page << "# DPT main numbers: what each path does\n"
            "\n"
            "Generated from the library's own tables by the test `DptMainNumbersPage.MatchesTheLiveTables`;\n"
            "do not edit it by hand. When a table changes, that test fails and writes the new page as\n"
            "`DptMainNumbers.md.new` into its working directory; with `TAV_UPDATE_DOCS=1` set it rewrites\n"
            "this file instead.\n"
            "\n"
            "The library knows a main number through separate tables, one per path, and their differences\n"
            "are deliberate (see [DptValueMap.md](DptValueMap.md), [GroupValueCodec.md](GroupValueCodec.md)\n"
            "and [ObjectModelIds.md](ObjectModelIds.md)). Only main numbers that at least one table knows\n"
            "are listed.\n"
            "\n"
            "- **Size check**: the group value size in bits that `KnxValueConverter::FromKnxValue` expects\n"
            "  (`GetExpectedBitSize`; \"any\" accepts every size, \"-\" means 0).\n"
            "- **DPT value map**: the rows `KnxValueConverter` registers (`detail/DptValueTable.h`): sub\n"
            "  number (`.x` is the main number's wildcard), bit size, value type, sub-type, converter and\n"
            "  its range.\n"
            "- **Main-type table**: value type, sub-type and default value from `MainTypeInfoTable`, which\n"
            "  `KnxLdsMapping` answers from and the group value codec gates on.\n"
            "- **Decode** and **Encode**: the branch that `GroupValueToOkaValue` and `OkaValueToGroupValue`\n"
            "  take. \"-\": decoding gives a present value of type Empty, encoding refuses the main number\n"
            "  as not supported.\n"
            "\n"
            "| Main | Size check | DPT value map | Main-type table | Decode | Encode |\n"
            "|---:|---|---|---|---|---|\n";
    for (unsigned int main = 1; main <= 0xFFFF; ++main)
    {
        const auto number = static_cast<std::uint16_t>(main);
        const auto rows = mapRows.find(number);
        const bool known = KnxValueConverter::GetExpectedBitSize(number) != 0 || rows != mapRows.end() ||
                           MainTypeInfoTable::Instance().Find(number) != nullptr ||
                           detail::GetDecodeBranchName(number) != nullptr ||
                           detail::GetEncodeBranchName(number) != nullptr;
        if (!known)
        {
            continue;
        }
        page << "| " << main << " | " << BitsText(number) << " | "
             << MapRowsText(rows != mapRows.end() ? rows->second : std::vector<const DptValueRow*>()) << " | "
             << MainTypeText(number) << " | " << BranchText(detail::GetDecodeBranchName(number)) << " | "
             << BranchText(detail::GetEncodeBranchName(number)) << " |\n";
    }
    return page.str();
}

// The docs folder of the source tree: found upwards from the test data folder, or from this file.
std::string FindDocsFolder()
{
    std::vector<std::string> starts;
    if (const char* data = std::getenv("TAV_TEST_DATA"))
    {
        starts.emplace_back(data);
    }
    const std::string source = __FILE__;
    starts.push_back(source.substr(0, source.find_last_of('/')));
    for (std::string folder : starts)
    {
        while (!folder.empty())
        {
            if (std::ifstream(folder + "/docs/DptValueMap.md"))
            {
                return folder + "/docs";
            }
            const std::size_t slash = folder.find_last_of('/');
            folder = slash == std::string::npos ? std::string() : folder.substr(0, slash);
        }
    }
    return std::string();
}

std::string ReadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

TEST(DptMainNumbersPage, MatchesTheLiveTables)
{
    const std::string docs = FindDocsFolder();
    ASSERT_FALSE(docs.empty()) << "docs/ not found above the test data or the test source";
    const std::string path = docs + "/" + kPageName;
    const std::string rendered = RenderPage();

    const char* update = std::getenv("TAV_UPDATE_DOCS");
    if (update != nullptr && std::string(update) == "1")
    {
        std::ofstream(path, std::ios::binary) << rendered;
    }
    const std::string committed = ReadFile(path);
    if (committed != rendered)
    {
        std::ofstream(std::string(kPageName) + ".new", std::ios::binary) << rendered;
    }
    EXPECT_EQ(committed, rendered) << path << " is stale: copy " << kPageName
                                   << ".new from the test's working directory over it, or rerun with "
                                      "TAV_UPDATE_DOCS=1";
}
} // namespace
