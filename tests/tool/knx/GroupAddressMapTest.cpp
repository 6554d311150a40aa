#include "knx/DptText.h"
#include "knx/GroupAddressMap.h"
#include "knx/KnxAddress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace
{
using TavKnx::GroupAddressMap;
using TavKnx::MapProblem;
using testing::ElementsAre;
using testing::IsEmpty;

// Problems as "line: message", so a whole list compares and prints in one go.
std::vector<std::string> Listed(const std::vector<MapProblem>& problems)
{
    std::vector<std::string> lines;
    for (const MapProblem& problem : problems)
    {
        lines.push_back(std::to_string(problem.line) + ": " + problem.message);
    }
    return lines;
}

// The DPT the map gives a group address ("9.1"), "none" when it names none; the size must be 0.
std::string DptOf(const GroupAddressMap& map, const std::string& address)
{
    const auto parsed = TavKnx::ParseGroupAddress(address);
    if (!parsed)
    {
        return "bad test address";
    }
    const KNXDPT* dpt = map.Find(*parsed);
    if (dpt == nullptr)
    {
        return "none";
    }
    return TavKnx::FormatDpt(*dpt) + (dpt->size == 0 ? "" : " size " + std::to_string(dpt->size));
}

struct Parsed
{
    GroupAddressMap map;
    std::vector<std::string> problems;
};

Parsed ParseText(const std::string& content)
{
    std::vector<MapProblem> problems;
    GroupAddressMap map = GroupAddressMap::Parse(content, problems);
    return Parsed{map, Listed(problems)};
}

std::string DataFile(const std::string& name)
{
    const char* directory = std::getenv("TAV_TEST_DATA");
    return std::string(directory == nullptr ? "tests/tool/data" : directory) + "/" + name;
}

const std::string kMalformedLine = "malformed line, expected \"group address;DPT\": ";

// ---------------------------------------------------------------- simple format

TEST(GroupAddressMapSimpleTest, ReadsEntriesWithBlanksAndComments)
{
    const Parsed parsed = ParseText("# lights\n"
                                    "\n"
                                    "1/1/1;1.001\n"
                                    "  1/1/2 ;\t1.001   # status\n"
                                    "   \t \n"
                                    "    # indented comment\n"
                                    "2/0/3;9.001#no blank before the comment\n");
    EXPECT_THAT(parsed.problems, IsEmpty());
    EXPECT_EQ(parsed.map.Size(), 3u);
    EXPECT_EQ(DptOf(parsed.map, "1/1/1"), "1.1");
    EXPECT_EQ(DptOf(parsed.map, "1/1/2"), "1.1");
    EXPECT_EQ(DptOf(parsed.map, "2/0/3"), "9.1");
    EXPECT_EQ(DptOf(parsed.map, "2/0/4"), "none");
}

TEST(GroupAddressMapSimpleTest, ReadsEveryDptForm)
{
    const Parsed parsed = ParseText("1/0/1;9.001\n"
                                    "1/0/2;9.1\n"
                                    "1/0/3;9\n"
                                    "1/0/4;DPST-9-1\n"
                                    "1/0/5;DPT-9\n"
                                    "1/0/6;DPST-232-600\n"
                                    "1/0/7;65535.65535\n"
                                    "1/0/8;0009.00010\n");
    EXPECT_THAT(parsed.problems, IsEmpty());
    EXPECT_EQ(DptOf(parsed.map, "1/0/1"), "9.1");
    EXPECT_EQ(DptOf(parsed.map, "1/0/2"), "9.1");
    EXPECT_EQ(DptOf(parsed.map, "1/0/3"), "9.0");
    EXPECT_EQ(DptOf(parsed.map, "1/0/4"), "9.1");
    EXPECT_EQ(DptOf(parsed.map, "1/0/5"), "9.0");
    EXPECT_EQ(DptOf(parsed.map, "1/0/6"), "232.600");
    EXPECT_EQ(DptOf(parsed.map, "1/0/7"), "65535.65535");
    EXPECT_EQ(DptOf(parsed.map, "1/0/8"), "9.10");
}

TEST(GroupAddressMapSimpleTest, ReadsTwoLevelAddresses)
{
    const Parsed parsed = ParseText("4/1024;14.068\n1/515;5.001\n");
    EXPECT_THAT(parsed.problems, IsEmpty());
    EXPECT_EQ(DptOf(parsed.map, "4/4/0"), "14.68");
    EXPECT_EQ(DptOf(parsed.map, "1/2/3"), "5.1");
}

TEST(GroupAddressMapSimpleTest, ReportsBadDpts)
{
    const std::vector<std::string> bad = {"DPST-9", "DPST-9-1-2", "DPT-9-1", "DPST-9.1-1", "9.",      ".1",
                                          "x",      "65536",      "9.65536", "DPT-",       "DPST--1", "9.1.1",
                                          "-9",     "+9",         "9 .1",    "DPST-x-1",   "9,1,1",   "DPT9-1"};
    std::string content;
    std::vector<std::string> expected;
    for (std::size_t i = 0; i < bad.size(); ++i)
    {
        content += "1/1/" + std::to_string(i) + ";" + bad[i] + "\n";
        expected.push_back(std::to_string(i + 1) + ": bad DPT '" + bad[i] + "'");
    }
    const Parsed parsed = ParseText(content);
    EXPECT_EQ(parsed.problems, expected);
    EXPECT_EQ(parsed.map.Size(), 0u);
}

TEST(GroupAddressMapSimpleTest, ReadsTheDptFormsOfTheCommandLine)
{
    const Parsed parsed = ParseText("1/1/1;dpst-9-1\n1/1/2;DPT-9.001\n1/1/3;9,001\n1/1/4;DPT9.001\n1/1/5;dpt-5\n");
    EXPECT_THAT(parsed.problems, ElementsAre());
    EXPECT_EQ(DptOf(parsed.map, "1/1/1"), "9.1");
    EXPECT_EQ(DptOf(parsed.map, "1/1/2"), "9.1");
    EXPECT_EQ(DptOf(parsed.map, "1/1/3"), "9.1");
    EXPECT_EQ(DptOf(parsed.map, "1/1/4"), "9.1");
    EXPECT_EQ(DptOf(parsed.map, "1/1/5"), "5.0");
}

TEST(GroupAddressMapSimpleTest, RefusesMainNumberZero)
{
    const Parsed parsed = ParseText("1/1/1;0\n1/1/2;0.5\n1/1/3;DPT-0\n1/1/4;DPST-0-1\n1/1/5;000.000\n");
    EXPECT_THAT(parsed.problems, ElementsAre("1: bad DPT '0': main number 0 is no DPT",
                                             "2: bad DPT '0.5': main number 0 is no DPT",
                                             "3: bad DPT 'DPT-0': main number 0 is no DPT",
                                             "4: bad DPT 'DPST-0-1': main number 0 is no DPT",
                                             "5: bad DPT '000.000': main number 0 is no DPT"));
    EXPECT_EQ(parsed.map.Size(), 0u);
}

TEST(GroupAddressMapSimpleTest, ReportsBadAddresses)
{
    const Parsed parsed = ParseText("1/8/0;1.001\n"
                                    "32/0/0;1.001\n"
                                    "1/2/256;1.001\n"
                                    "1/2/3/4;1.001\n"
                                    "1//3;1.001\n"
                                    "1/-/-;1.001\n"
                                    "1/2048;1.001\n"
                                    "one;1.001\n");
    EXPECT_THAT(parsed.problems,
                ElementsAre("1: bad group address '1/8/0'", "2: bad group address '32/0/0'",
                            "3: bad group address '1/2/256'", "4: bad group address '1/2/3/4'",
                            "5: bad group address '1//3'", "6: bad group address '1/-/-'",
                            "7: bad group address '1/2048'", "8: bad group address 'one'"));
    EXPECT_EQ(parsed.map.Size(), 0u);
}

TEST(GroupAddressMapSimpleTest, ReportsMalformedLines)
{
    const Parsed parsed = ParseText("1/2/3\n"
                                    "1/2/3;9.001;extra   # comment\n"
                                    ";9.001\n"
                                    "1/2/3;\n"
                                    " ; \n"
                                    "1/2/3 9.001\n"
                                    "1/2/3#;9.001\n"
                                    "1/2/4;9.001\n");
    EXPECT_THAT(parsed.problems,
                ElementsAre("1: " + kMalformedLine + "'1/2/3'", "2: " + kMalformedLine + "'1/2/3;9.001;extra'",
                            "3: " + kMalformedLine + "';9.001'", "4: " + kMalformedLine + "'1/2/3;'",
                            "5: " + kMalformedLine + "';'", "6: " + kMalformedLine + "'1/2/3 9.001'",
                            "7: " + kMalformedLine + "'1/2/3'"));
    EXPECT_EQ(parsed.map.Size(), 1u);
    EXPECT_EQ(DptOf(parsed.map, "1/2/4"), "9.1");
}

TEST(GroupAddressMapSimpleTest, KeepsTheFirstOfTwoEntriesForOneAddress)
{
    const Parsed parsed = ParseText("# twice\n"
                                    "1/2/3;9.001\n"
                                    "1/2/4;1.001\n"
                                    "1/515;5.001\n"
                                    "01/2/3;9.001\n");
    EXPECT_THAT(parsed.problems, ElementsAre("4: group address 1/2/3 given again (first on line 2)",
                                             "5: group address 1/2/3 given again (first on line 2)"));
    EXPECT_EQ(parsed.map.Size(), 2u);
    EXPECT_EQ(DptOf(parsed.map, "1/2/3"), "9.1");
}

TEST(GroupAddressMapSimpleTest, TakesCrLfAndAByteOrderMark)
{
    const Parsed parsed = ParseText("\xEF\xBB\xBF# map\r\n1/1/1;1.001\r\n\r\n2/0/3 ; 9.001 # temperature\r\n1/1/9\r\n");
    EXPECT_THAT(parsed.problems, ElementsAre("5: " + kMalformedLine + "'1/1/9'"));
    EXPECT_EQ(parsed.map.Size(), 2u);
    EXPECT_EQ(DptOf(parsed.map, "1/1/1"), "1.1");
    EXPECT_EQ(DptOf(parsed.map, "2/0/3"), "9.1");
}

TEST(GroupAddressMapSimpleTest, TakesAByteOrderMarkBeforeAnEntry)
{
    const Parsed parsed = ParseText("\xEF\xBB\xBF" "1/1/1;1.001");
    EXPECT_THAT(parsed.problems, IsEmpty());
    EXPECT_EQ(DptOf(parsed.map, "1/1/1"), "1.1");
}

TEST(GroupAddressMapSimpleTest, TakesAByteOrderMarkOnlyAtTheStart)
{
    const Parsed parsed = ParseText("1/1/1;1.001\n\xEF\xBB\xBF" "1/1/2;1.001\n");
    EXPECT_THAT(parsed.problems, ElementsAre("2: bad group address '\xEF\xBB\xBF" "1/1/2'"));
    EXPECT_EQ(parsed.map.Size(), 1u);
}

TEST(GroupAddressMapSimpleTest, QuotesOffendingTextCutAndWithoutControlBytes)
{
    const std::string longAddress(50, '9');
    const Parsed parsed = ParseText(longAddress + ";9.001\n" + "1/1/1;9\x01\x7F" "1\n" +
                                    std::string("1/1/\0" "2;9.001\n", 13) + "1/1/3;\t9.001\r\r\n");
    EXPECT_THAT(parsed.problems,
                ElementsAre("1: bad group address '" + std::string(40, '9') + "...'", "2: bad DPT '9??1'",
                            "3: bad group address '1/1/?2'", "4: bad DPT '9.001?'"));
}

TEST(GroupAddressMapSimpleTest, ReadsEmptyAndBlankContentAsAnEmptyMap)
{
    for (const std::string content : {"", "\n", "\r\n", "\xEF\xBB\xBF", "  \t\n\n# only a comment\n"})
    {
        const Parsed parsed = ParseText(content);
        EXPECT_THAT(parsed.problems, IsEmpty());
        EXPECT_EQ(parsed.map.Size(), 0u);
    }
}

TEST(GroupAddressMapSimpleTest, AddsToTheProblemsAlreadyThere)
{
    std::vector<MapProblem> problems{MapProblem{7, "earlier"}};
    const GroupAddressMap map = GroupAddressMap::Parse("x\n", problems);
    EXPECT_THAT(Listed(problems), ElementsAre("7: earlier", "1: " + kMalformedLine + "'x'"));
    EXPECT_EQ(map.Size(), 0u);
}

TEST(GroupAddressMapSimpleTest, ReadsALastLineWithoutNewline)
{
    const Parsed parsed = ParseText("1/1/1;1.001\n1/1/2;DPT-1");
    EXPECT_THAT(parsed.problems, IsEmpty());
    EXPECT_EQ(DptOf(parsed.map, "1/1/2"), "1.0");
}

// ---------------------------------------------------------------- CSV export

const std::string kExportHeader =
    "\"Group name\";\"Address\";\"Central\";\"Unfiltered\";\"Description\";\"DatapointType\";\"Security\"";

TEST(GroupAddressMapExportTest, ReadsARealisticExport)
{
    const Parsed parsed = ParseText("\xEF\xBB\xBF" + kExportHeader +
                                    "\r\n"
                                    "\"Lighting\";\"1/-/-\";\"\";\"\";\"\";\"\";\"Auto\"\r\n"
                                    "\"Ground floor\";\"1/1/-\";\"\";\"\";\"\";\"\";\"Auto\"\r\n"
                                    "\"Kitchen light\";\"1/1/1\";\"\";\"\";\"\";\"DPST-1-1\";\"Auto\"\r\n"
                                    "\"Climate\";\"2/-/-\";\"\";\"\";\"\";\"\";\"Auto\"\r\n"
                                    "\"Living room\";\"2/0/-\";\"\";\"\";\"\";\"\";\"Auto\"\r\n"
                                    "\"Temperature\";\"2/0/3\";\"\";\"\";\"\";\"DPST-9-1\";\"Auto\"\r\n"
                                    "\"Spare\";\"2/0/5\";\"\";\"\";\"\";\"\";\"Auto\"\r\n"
                                    "\"Fan level\";\"3/0/1\";\"\";\"\";\"\";\"DPT-5\";\"Auto\"\r\n");
    EXPECT_THAT(parsed.problems, IsEmpty());
    EXPECT_EQ(parsed.map.Size(), 3u);
    EXPECT_EQ(DptOf(parsed.map, "1/1/1"), "1.1");
    EXPECT_EQ(DptOf(parsed.map, "2/0/3"), "9.1");
    EXPECT_EQ(DptOf(parsed.map, "3/0/1"), "5.0");
    EXPECT_EQ(DptOf(parsed.map, "2/0/5"), "none");
    EXPECT_EQ(DptOf(parsed.map, "1/0/0"), "none");
    EXPECT_EQ(DptOf(parsed.map, "1/1/0"), "none");
}

TEST(GroupAddressMapExportTest, ReadsACommaSeparatedExport)
{
    const Parsed parsed =
        ParseText("\"Group name\",\"Address\",\"Central\",\"Unfiltered\",\"Description\",\"DatapointType\",\"Security\"\n"
                  "\"Lighting\",\"1/-/-\",\"\",\"\",\"\",\"\",\"Auto\"\n"
                  "\"Kitchen light, ceiling\",\"1/1/1\",\"\",\"\",\"a; b\",\"DPST-1-1\",\"Auto\"\n"
                  "\"Temperature\",\"2/0/3\",\"\",\"\",\"\",\"DPST-9-1\",\"Auto\"\n");
    EXPECT_THAT(parsed.problems, IsEmpty());
    EXPECT_EQ(parsed.map.Size(), 2u);
    EXPECT_EQ(DptOf(parsed.map, "1/1/1"), "1.1");
    EXPECT_EQ(DptOf(parsed.map, "2/0/3"), "9.1");
}

TEST(GroupAddressMapExportTest, KeepsSeparatorsAndDoubledQuotesInsideQuotes)
{
    const Parsed parsed = ParseText(kExportHeader +
                                    "\n"
                                    "\"Dimmer; \"\"main\"\"\";\"1/2/1\";\"\";\"\";\"x;y;\"\"z\"\"\";\"DPST-5-1\";\"Auto\"\n"
                                    "\"a\"\"\";\"1/2/2\";\"\";\"\";\"\";\"DPST-5-1\";\"Auto\"\n");
    EXPECT_THAT(parsed.problems, IsEmpty());
    EXPECT_EQ(DptOf(parsed.map, "1/2/1"), "5.1");
    EXPECT_EQ(DptOf(parsed.map, "1/2/2"), "5.1");
}

TEST(GroupAddressMapExportTest, FindsTheColumnsByTheirPlaceInTheHeader)
{
    const Parsed parsed = ParseText("datapointtype;x;ADDRESS\n"
                                    "DPST-9-1;1/1/1;2/0/3\n"
                                    "9.001;;2/0/4\n");
    EXPECT_THAT(parsed.problems, IsEmpty());
    EXPECT_EQ(parsed.map.Size(), 2u);
    EXPECT_EQ(DptOf(parsed.map, "2/0/3"), "9.1");
    EXPECT_EQ(DptOf(parsed.map, "2/0/4"), "9.1");
    EXPECT_EQ(DptOf(parsed.map, "1/1/1"), "none");
}

TEST(GroupAddressMapExportTest, FindsAHeaderWithBlanksAndWithoutQuotes)
{
    const Parsed parsed = ParseText("# exported\n"
                                    "\n"
                                    " Group name , \"Address\" ,Central,  \" DatapointType \"\t\n"
                                    "Kitchen , 1/1/1 ,, DPST-1-1 \n"
                                    "Hall,\" 1/1/2\t\", ,\" DPST-1-1 \" \n");
    EXPECT_THAT(parsed.problems, IsEmpty());
    EXPECT_EQ(DptOf(parsed.map, "1/1/1"), "1.1");
    EXPECT_EQ(DptOf(parsed.map, "1/1/2"), "1.1");
}

TEST(GroupAddressMapExportTest, ReadsAHeaderWithoutRowsAsAnEmptyMap)
{
    const Parsed parsed = ParseText("\"Address\";\"DatapointType\"\r\n");
    EXPECT_THAT(parsed.problems, IsEmpty());
    EXPECT_EQ(parsed.map.Size(), 0u);
}

TEST(GroupAddressMapExportTest, ReadsAHeaderWithOnlyOneOfTheColumnsAsTheSimpleFormat)
{
    const Parsed parsed = ParseText("\"Group name\";\"Address\";\"Description\"\n1/1/1;1.001\n");
    EXPECT_THAT(parsed.problems,
                ElementsAre("1: " + kMalformedLine + "'\"Group name\";\"Address\";\"Description\"'"));
    EXPECT_EQ(DptOf(parsed.map, "1/1/1"), "1.1");
}

TEST(GroupAddressMapExportTest, TakesRowsWithMoreFieldsOrJustEnough)
{
    const Parsed parsed = ParseText(kExportHeader +
                                    "\n"
                                    "\"A\";\"1/1/1\";\"\";\"\";\"\";\"DPST-1-1\";\"Auto\";\"extra\";\"more\"\n"
                                    "\"B\";\"1/1/2\";\"\";\"\";\"\";\"DPST-1-1\"\n");
    EXPECT_THAT(parsed.problems, IsEmpty());
    EXPECT_EQ(parsed.map.Size(), 2u);
}

TEST(GroupAddressMapExportTest, SkipsRangesAndRowsWithoutDptSilently)
{
    const Parsed parsed = ParseText("Address;DatapointType\n"
                                    "1/-/-;\n"
                                    "1/2/-;\n"
                                    "1/-;\n"
                                    "1/-/-;DPST-1-1\n"
                                    "1/2/3;\n"
                                    "1/2/4;  \n"
                                    ";\n"
                                    "  \t\n"
                                    "\n");
    EXPECT_THAT(parsed.problems, IsEmpty());
    EXPECT_EQ(parsed.map.Size(), 0u);
}

TEST(GroupAddressMapExportTest, ReportsRangesThatAreNoGroups)
{
    const Parsed parsed = ParseText("Address;DatapointType\n"
                                    "32/-/-;DPST-1-1\n"
                                    "1/8/-;DPST-1-1\n"
                                    "-/-/-;DPST-1-1\n"
                                    "1/-/3;DPST-1-1\n"
                                    "1/2/3/-;DPST-1-1\n"
                                    "1/-2/-;DPST-1-1\n");
    EXPECT_THAT(parsed.problems,
                ElementsAre("2: bad group address '32/-/-'", "3: bad group address '1/8/-'",
                            "4: bad group address '-/-/-'", "5: bad group address '1/-/3'",
                            "6: bad group address '1/2/3/-'", "7: bad group address '1/-2/-'"));
}

TEST(GroupAddressMapExportTest, ReportsMalformedRows)
{
    const Parsed parsed = ParseText(kExportHeader +
                                    "\n"
                                    "\"Kitchen light\";\"1/1/1\";\"\";\"\";\"\";\"DPST-1-1\";\"Auto\"\n"
                                    "\"Short row\";\"1/1/2\";\"DPST-1-1\"\n"
                                    "\"Bad address\";\"1/8/0\";\"\";\"\";\"\";\"DPST-1-1\";\"Auto\"\n"
                                    "\"Bad DPT\";\"1/1/3\";\"\";\"\";\"\";\"DPST-x-1\";\"Auto\"\n"
                                    "\"Again\";\"1/1/1\";\"\";\"\";\"\";\"DPST-5-1\";\"Auto\"\n"
                                    "\"Open quote\";\"1/1/4\";\"\";\"\";\"\";\"DPST-1-1\";\"Auto\n"
                                    "# a comment is a row here\n"
                                    "\"No address\";\"\";\"\";\"\";\"\";\"DPST-1-1\";\"Auto\"\n"
                                    "\"Main zero\";\"1/1/5\";\"\";\"\";\"\";\"DPT-0\";\"Auto\"\n"
                                    "\"Temperature\";\"2/0/3\";\"\";\"\";\"\";\"DPST-9-1\";\"Auto\"\n");
    EXPECT_THAT(parsed.problems,
                ElementsAre("3: row has 3 fields, the header has 7: '\"Short row\";\"1/1/2\";\"DPST-1-1\"'",
                            "4: bad group address '1/8/0'", "5: bad DPT 'DPST-x-1'",
                            "6: group address 1/1/1 given again (first on line 2)",
                            "7: row has an unclosed quote: '\"Open quote\";\"1/1/4\";\"\";\"\";\"\";\"DPST-1-1\"...'",
                            "8: row has 1 field, the header has 7: '# a comment is a row here'",
                            "9: bad group address ''", "10: bad DPT 'DPT-0': main number 0 is no DPT"));
    EXPECT_EQ(parsed.map.Size(), 2u);
    EXPECT_EQ(DptOf(parsed.map, "1/1/1"), "1.1");
    EXPECT_EQ(DptOf(parsed.map, "2/0/3"), "9.1");
}

TEST(GroupAddressMapExportTest, TakesTheDptsOfTheSimpleFormatToo)
{
    const Parsed parsed = ParseText("Address,DatapointType\n1/1/1,9.001\n1/1/2,9\n");
    EXPECT_THAT(parsed.problems, IsEmpty());
    EXPECT_EQ(DptOf(parsed.map, "1/1/1"), "9.1");
    EXPECT_EQ(DptOf(parsed.map, "1/1/2"), "9.0");
}

// ---------------------------------------------------------------- garbage

TEST(GroupAddressMapGarbageTest, ReportsBinaryInputReadably)
{
    std::string content;
    for (int i = 0; i < 4096; ++i)
    {
        content += static_cast<char>((i * 131 + 7) % 256);
    }
    content += std::string("\0\0;\0\n\0", 6);
    std::vector<MapProblem> problems;
    const GroupAddressMap map = GroupAddressMap::Parse(content, problems);
    EXPECT_EQ(map.Size(), 0u);
    ASSERT_FALSE(problems.empty());
    for (const MapProblem& problem : problems)
    {
        for (char c : problem.message)
        {
            const auto byte = static_cast<unsigned char>(c);
            EXPECT_FALSE(byte < 0x20 || byte == 0x7F) << problem.line << ": " << problem.message;
        }
    }
}

TEST(GroupAddressMapGarbageTest, ReadsNulBytesAsText)
{
    const Parsed parsed = ParseText(std::string("1/1/1;1.001\n\0\n1/1/2;1.001\0\n", 27));
    EXPECT_THAT(parsed.problems,
                ElementsAre("2: " + kMalformedLine + "'?'", "3: bad DPT '1.001?'"));
    EXPECT_EQ(parsed.map.Size(), 1u);
}

// A quadratic step would take minutes on these; linear work takes milliseconds.
double SecondsToParse(const std::string& content, std::vector<MapProblem>& problems)
{
    const auto start = std::chrono::steady_clock::now();
    GroupAddressMap::Parse(content, problems);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

TEST(GroupAddressMapGarbageTest, ReadsAHugeLineQuickly)
{
    const std::size_t size = 10u * 1024u * 1024u;
    for (const char filler : {'x', ';', '/', '"', '#', '\0', '-', '1'})
    {
        std::vector<MapProblem> problems;
        EXPECT_LT(SecondsToParse(std::string(size, filler), problems), 5.0) << filler;
        EXPECT_LE(problems.size(), 1u);
    }
    std::vector<MapProblem> problems;
    EXPECT_LT(SecondsToParse("1/2/3;" + std::string(size, '9'), problems), 5.0);
    EXPECT_THAT(Listed(problems), ElementsAre("1: bad DPT '" + std::string(40, '9') + "...'"));
}

TEST(GroupAddressMapGarbageTest, ReadsAHugeExportRowQuickly)
{
    const std::size_t size = 10u * 1024u * 1024u;
    // Empty address and DPT fields (skipped), one field of quotes, an unclosed quote, one field.
    const std::vector<std::pair<std::string, std::size_t>> rows = {
        {std::string(size, ';'), 0}, {std::string(size, '"'), 1}, {"\"" + std::string(size, ';'), 1},
        {std::string(size, ','), 1}};
    for (const auto& row : rows)
    {
        std::vector<MapProblem> problems;
        EXPECT_LT(SecondsToParse(kExportHeader + "\n" + row.first, problems), 5.0);
        EXPECT_EQ(problems.size(), row.second) << row.first.substr(0, 2);
    }
    // A header as long as that finds its columns among the first thousand fields only.
    std::vector<MapProblem> problems;
    EXPECT_LT(SecondsToParse("Address;DatapointType" + std::string(size, ';') + "\n1/1/1;1.001;x\n", problems), 5.0);
    EXPECT_EQ(problems.size(), 0u);
}

TEST(GroupAddressMapGarbageTest, ListsTheFirstHundredProblemsAndCountsTheRest)
{
    std::string content = "1/1/1;1.001\n";
    for (int i = 0; i < 200000; ++i)
    {
        content += i % 2 == 0 ? "x\n" : "1/1/2;nope\n";
    }
    std::vector<MapProblem> problems;
    EXPECT_LT(SecondsToParse(content, problems), 10.0);
    ASSERT_EQ(problems.size(), 101u);
    EXPECT_EQ(Listed(problems)[0], "2: " + kMalformedLine + "'x'");
    EXPECT_EQ(Listed(problems)[99], "101: bad DPT 'nope'");
    EXPECT_EQ(Listed(problems)[100], "102: too many problems: 199900 more not listed");
}

// ---------------------------------------------------------------- files

TEST(GroupAddressMapLoadTest, LoadsTheSimpleSample)
{
    std::vector<MapProblem> problems;
    const GroupAddressMap map = GroupAddressMap::Load(DataFile("map-simple.txt"), problems);
    EXPECT_THAT(Listed(problems), IsEmpty());
    EXPECT_EQ(map.Size(), 9u);
    EXPECT_EQ(DptOf(map, "1/1/1"), "1.1");
    EXPECT_EQ(DptOf(map, "1/1/2"), "1.1");
    EXPECT_EQ(DptOf(map, "1/2/1"), "5.1");
    EXPECT_EQ(DptOf(map, "2/0/3"), "9.1");
    EXPECT_EQ(DptOf(map, "2/0/4"), "9.1");
    EXPECT_EQ(DptOf(map, "3/0/1"), "5.0");
    EXPECT_EQ(DptOf(map, "3/1/0"), "10.1");
    EXPECT_EQ(DptOf(map, "3/1/1"), "11.1");
    EXPECT_EQ(DptOf(map, "4/4/0"), "14.68");
}

TEST(GroupAddressMapLoadTest, LoadsTheExportSamples)
{
    for (const char* name : {"map-export.csv", "map-export-comma.csv"})
    {
        std::vector<MapProblem> problems;
        const GroupAddressMap map = GroupAddressMap::Load(DataFile(name), problems);
        EXPECT_THAT(Listed(problems), IsEmpty()) << name;
        EXPECT_EQ(map.Size(), 5u) << name;
        EXPECT_EQ(DptOf(map, "1/1/1"), "1.1") << name;
        EXPECT_EQ(DptOf(map, "1/1/2"), "1.1") << name;
        EXPECT_EQ(DptOf(map, "1/2/1"), "5.1") << name;
        EXPECT_EQ(DptOf(map, "2/0/3"), "9.1") << name;
        EXPECT_EQ(DptOf(map, "3/0/1"), "5.0") << name;
        EXPECT_EQ(DptOf(map, "2/0/5"), "none") << name;
    }
}

TEST(GroupAddressMapLoadTest, LoadsTheMalformedSamples)
{
    std::vector<MapProblem> problems;
    GroupAddressMap map = GroupAddressMap::Load(DataFile("map-malformed.txt"), problems);
    EXPECT_THAT(Listed(problems),
                ElementsAre("3: " + kMalformedLine + "'1/1/1'", "4: bad group address '1/8/0'",
                            "5: bad DPT 'DPST-x-1'", "6: " + kMalformedLine + "'1/1/4;9.001;extra'",
                            "7: group address 1/1/1 given again (first on line 2)", "8: bad group address '32/0/0'",
                            "9: bad DPT '0.0': main number 0 is no DPT", "11: " + kMalformedLine + "'garbage'"));
    EXPECT_EQ(map.Size(), 2u);
    EXPECT_EQ(DptOf(map, "1/1/1"), "1.1");
    EXPECT_EQ(DptOf(map, "2/0/3"), "9.1");

    problems.clear();
    map = GroupAddressMap::Load(DataFile("map-export-malformed.csv"), problems);
    EXPECT_THAT(Listed(problems),
                ElementsAre("3: row has 3 fields, the header has 7: '\"Short row\";\"1/1/2\";\"DPST-1-1\"'",
                            "4: bad group address '1/8/0'", "5: bad DPT 'DPST-x-1'",
                            "6: group address 1/1/1 given again (first on line 2)",
                            "7: row has an unclosed quote: '\"Open quote\";\"1/1/4\";\"\";\"\";\"\";\"DPST-1-1\"...'"));
    EXPECT_EQ(map.Size(), 2u);
    EXPECT_EQ(DptOf(map, "1/1/1"), "1.1");
    EXPECT_EQ(DptOf(map, "2/0/3"), "9.1");
}

TEST(GroupAddressMapLoadTest, ThrowsForAMissingFile)
{
    const std::string path = DataFile("no-such-map.txt");
    std::vector<MapProblem> problems;
    try
    {
        GroupAddressMap::Load(path, problems);
        FAIL() << "no exception";
    }
    catch (const std::runtime_error& error)
    {
        EXPECT_EQ(std::string(error.what()), "cannot read map file '" + path + "': No such file or directory");
    }
    EXPECT_THAT(problems, IsEmpty());
}

TEST(GroupAddressMapLoadTest, ThrowsForADirectory)
{
    const std::string path = DataFile("");
    std::vector<MapProblem> problems;
    try
    {
        GroupAddressMap::Load(path, problems);
        FAIL() << "no exception";
    }
    catch (const std::runtime_error& error)
    {
        EXPECT_EQ(std::string(error.what()), "cannot read map file '" + path + "': Is a directory");
    }
}

// A file of `size` bytes, all zero (sparse, so it costs no disk).
class SizedFile
{
public:
    explicit SizedFile(off_t size) : path_(testing::TempDir() + "tavknx-map-" + std::to_string(::getpid()) + ".bin")
    {
        const int file = ::open(path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        EXPECT_GE(file, 0);
        EXPECT_EQ(::ftruncate(file, size), 0);
        ::close(file);
    }
    ~SizedFile() { ::unlink(path_.c_str()); }
    const std::string& Path() const { return path_; }

private:
    std::string path_;
};

TEST(GroupAddressMapLoadTest, RefusesAFileOverSixteenMebibytes)
{
    const SizedFile file(16 * 1024 * 1024 + 1);
    std::vector<MapProblem> problems;
    try
    {
        GroupAddressMap::Load(file.Path(), problems);
        FAIL() << "no exception";
    }
    catch (const std::runtime_error& error)
    {
        EXPECT_EQ(std::string(error.what()), "map file '" + file.Path() + "' is too large: more than 16 MiB");
    }
    EXPECT_THAT(problems, IsEmpty());
}

TEST(GroupAddressMapLoadTest, ReadsAFileOfSixteenMebibytes)
{
    const SizedFile file(16 * 1024 * 1024);
    std::vector<MapProblem> problems;
    const GroupAddressMap map = GroupAddressMap::Load(file.Path(), problems);
    EXPECT_EQ(map.Size(), 0u);
    EXPECT_THAT(Listed(problems), ElementsAre("1: " + kMalformedLine + "'" + std::string(40, '?') + "...'"));
}
} // namespace

namespace
{
TEST(GroupAddressMapTabTest, ReadsATabSeparatedExportWithQuotedAndEmptyFields)
{
    const Parsed parsed = ParseText("\"Group name\"\tAddress\tCentral\tDescription\tDatapointType\r\n"
                                    "Lighting\t1/-/-\t\t\t\r\n"
                                    "\"Kitchen light\"\t1/1/1\t\"\"\t\"a\tb\"\tDPST-1-1\r\n"
                                    "Temperature\t 2/0/3 \t\t\"\"\"x\"\"\"\tDPT-9.001\r\n"
                                    "Short\t1/1/2\r\n");
    EXPECT_THAT(parsed.problems, ElementsAre("5: row has 2 fields, the header has 5: 'Short?1/1/2'"));
    EXPECT_EQ(parsed.map.Size(), 2u);
    EXPECT_EQ(DptOf(parsed.map, "1/1/1"), "1.1");
    EXPECT_EQ(DptOf(parsed.map, "2/0/3"), "9.1");
}
} // namespace
