#include <TavObjectModel/Utilities.h>

#include <gtest/gtest.h>

#include <boost/filesystem.hpp>

#include <fstream>
#include <string>
#include <vector>

using Okaro::Latin1ToUTF8;
using Okaro::LoadFile;
using Okaro::RepairUTF8;
using Okaro::UTF8ToLatin1;

namespace
{
std::string Text(const char* bytes, std::size_t count) { return std::string(bytes, count); }

class TempDir
{
public:
    TempDir() : path_(boost::filesystem::temp_directory_path() / boost::filesystem::unique_path("tav-%%%%-%%%%-%%%%"))
    {
        boost::filesystem::create_directories(path_);
    }
    ~TempDir()
    {
        boost::system::error_code ignored;
        boost::filesystem::remove_all(path_, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    std::string Write(const std::string& name, const std::string& bytes) const
    {
        const std::string file = (path_ / name).string();
        std::ofstream(file, std::ios::binary) << bytes;
        return file;
    }
    std::string PathOf(const std::string& name) const { return (path_ / name).string(); }

private:
    boost::filesystem::path path_;
};
} // namespace

TEST(RepairUTF8, ValidTextIsReturnedUnchanged)
{
    EXPECT_EQ(RepairUTF8("abc"), "abc");
    EXPECT_EQ(RepairUTF8(""), "");
    EXPECT_EQ(RepairUTF8("caf\xc3\xa9 \xe2\x82\xac \xf0\x9f\x98\x80"), "caf\xc3\xa9 \xe2\x82\xac \xf0\x9f\x98\x80");
}

TEST(RepairUTF8, AnInvalidLeadByteBecomesOneQuestionMark)
{
    EXPECT_EQ(RepairUTF8(Text("\x61\xff\x62", 3)), Text("\x61\x3f\x62", 3));
}

TEST(RepairUTF8, EachStrayByteCostsOneQuestionMark)
{
    // 0x80 cannot start a sequence either: each stray byte is its own "?".
    EXPECT_EQ(RepairUTF8("\xff\x80\x80"), "???");
}

TEST(RepairUTF8, ASequenceCutOffAtTheEndBecomesOneQuestionMarkWithoutZeroByte)
{
    const std::string repaired = RepairUTF8(Text("\x61\xe2\x82", 3));
    EXPECT_EQ(repaired, Text("\x61\x3f", 2));
    EXPECT_EQ(repaired.size(), 2u);
}

TEST(RepairUTF8, AnIncompleteSequenceSkipsItsContinuationBytes)
{
    // E2 82 followed by "b": one "?" for the lead byte and its one continuation byte.
    EXPECT_EQ(RepairUTF8("a\xe2\x82" "b"), "a?b");
}

TEST(RepairUTF8, AnOverlongSequenceBecomesOneQuestionMark)
{
    EXPECT_EQ(RepairUTF8(Text("\xc0\xaf", 2)), "?");
}

TEST(RepairUTF8, ASurrogateBecomesOneQuestionMark)
{
    EXPECT_EQ(RepairUTF8(Text("\xed\xa0\x80", 3)), "?");
}

TEST(RepairUTF8, ACodePointAboveTheUnicodeRangeBecomesOneQuestionMark)
{
    EXPECT_EQ(RepairUTF8("\xf4\x90\x80\x80" "z"), "?z");
}

TEST(RepairUTF8, ValidTextEndingInAZeroByteIsUnchanged)
{
    EXPECT_EQ(RepairUTF8(Text("ab\0", 3)), Text("ab\0", 3));
}

TEST(RepairUTF8, InvalidTextEndingInAZeroByteKeepsItBecauseOnlyTheSentinelIsRemoved)
{
    EXPECT_EQ(RepairUTF8(Text("\x61\xff\x00", 3)), Text("\x61\x3f\x00", 3));
}

TEST(RepairUTF8, ValidSequencesAroundBadOnesAreKept)
{
    EXPECT_EQ(RepairUTF8("\xc3\xa9\xff\xe2\x82\xac"), "\xc3\xa9?\xe2\x82\xac");
}

TEST(Latin1ToUTF8, HighBytesBecomeTwoBytes)
{
    EXPECT_EQ(Latin1ToUTF8("\xe9"), "\xc3\xa9");
    EXPECT_EQ(Latin1ToUTF8("a\x80\xff" "b"), "a\xc2\x80\xc3\xbf" "b");
    EXPECT_EQ(Latin1ToUTF8("plain"), "plain");
    EXPECT_EQ(Latin1ToUTF8(""), "");
}

TEST(UTF8ToLatin1, TwoByteSequencesBecomeOneByte)
{
    EXPECT_EQ(UTF8ToLatin1("\xc3\xa9"), "\xe9");
    EXPECT_EQ(UTF8ToLatin1("caf\xc3\xa9!"), "caf\xe9!");
    EXPECT_EQ(UTF8ToLatin1(""), "");
}

TEST(UTF8ToLatin1, IsLossyOnPurpose)
{
    // U+0101 (C4 81): (0xC4 << 6) truncated to 8 bits is 0x00, | (0x81 & 0x3F) gives 0x01.
    EXPECT_EQ(UTF8ToLatin1("\xc4\x81"), Text("\x01", 1));
    // Longer sequences are copied byte by byte.
    EXPECT_EQ(UTF8ToLatin1("\xe2\x82\xac"), "\xe2\x82\xac");
    // A two-byte lead joins whatever follows it, without validation: 0xC0 | (0x41 & 0x3F).
    EXPECT_EQ(UTF8ToLatin1("\xc3" "A"), "\xc1");
}

TEST(UTF8ToLatin1, StopsAtTheTerminatorRightAfterALeadByte)
{
    // The buffer continues after the terminator; nothing of it may appear.
    const char bytes[] = {'a', '\xc3', '\0', 'X', 'Y', '\0'};
    EXPECT_EQ(UTF8ToLatin1(bytes), "a\xc3");
}

TEST(LoadFile, MissingFileIsEmpty)
{
    const TempDir dir;
    EXPECT_FALSE(LoadFile(dir.PathOf("missing.xml")));
}

TEST(LoadFile, PathThatOpensButCannotBeReadIsEmpty)
{
    const TempDir dir;
    // A directory opens as a stream but every read fails.
    EXPECT_FALSE(LoadFile(dir.PathOf("")));
}

TEST(LoadFile, EmptyFileIsAPresentEmptyVector)
{
    const TempDir dir;
    const auto bytes = LoadFile(dir.Write("empty.xml", ""));
    ASSERT_TRUE(bytes);
    EXPECT_TRUE(bytes->empty());
}

TEST(LoadFile, ReadsEveryByteOfABinaryFile)
{
    const TempDir dir;
    std::string content;
    for (int round = 0; round < 3; ++round)
    {
        for (int byte = 0; byte < 256; ++byte)
        {
            content += static_cast<char>(byte);
        }
    }
    content += "\r\n\x1a\r";  // bytes a text-mode read would alter or stop at
    const auto bytes = LoadFile(dir.Write("binary.bin", content));
    ASSERT_TRUE(bytes);
    EXPECT_EQ(std::string(bytes->begin(), bytes->end()), content);
}
