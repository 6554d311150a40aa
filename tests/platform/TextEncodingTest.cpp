#include <platform/TextEncoding.h>

#include <gtest/gtest.h>

#include <string>

using Okaro::getLatin1FromUTF8Lossy;
using Okaro::getUTF8FromLatin1;
using Okaro::KnxStyleString;
using Okaro::UTF8String;

namespace
{
std::string Latin1Of(const std::string& utf8) { return getLatin1FromUTF8Lossy(UTF8String(utf8)); }
std::string Utf8Of(const std::string& latin1) { return getUTF8FromLatin1(KnxStyleString(latin1)); }
} // namespace

TEST(TextEncoding, AsciiPassesBothWays)
{
    EXPECT_EQ(Utf8Of("Hello, 21 C"), "Hello, 21 C");
    EXPECT_EQ(Latin1Of("Hello, 21 C"), "Hello, 21 C");
    EXPECT_EQ(Utf8Of(""), "");
    EXPECT_EQ(Latin1Of(""), "");
}

TEST(TextEncoding, EveryLatin1ByteBecomesItsUtf8Sequence)
{
    EXPECT_EQ(Utf8Of("\xe9"), "\xc3\xa9");
    EXPECT_EQ(Utf8Of("\x80"), "\xc2\x80");
    EXPECT_EQ(Utf8Of("\xff"), "\xc3\xbf");
    EXPECT_EQ(Utf8Of("\x7f"), "\x7f");
    EXPECT_EQ(Utf8Of(std::string("a\0b", 3)), std::string("a\0b", 3));
}

TEST(TextEncoding, AllLatin1BytesRoundTrip)
{
    std::string all;
    for (int byte = 0; byte < 256; ++byte)
    {
        all += static_cast<char>(byte);
    }
    const std::string utf8 = Utf8Of(all);
    EXPECT_EQ(utf8.size(), 128u + 2u * 128u);
    EXPECT_EQ(Latin1Of(utf8), all);
}

TEST(TextEncoding, CharactersAboveLatin1BecomeOneQuestionMark)
{
    EXPECT_EQ(Latin1Of("\xe2\x82\xac"), "?");                // euro sign U+20AC
    EXPECT_EQ(Latin1Of("a\xf0\x9f\x98\x80" "b"), "a?b");     // U+1F600
    EXPECT_EQ(Latin1Of("\xc4\x80"), "?");                    // U+0100, just above Latin-1
    EXPECT_EQ(Latin1Of("\xc3\xbf"), "\xff");                 // U+00FF, the last one inside
}

TEST(TextEncoding, EachInvalidSequenceBecomesOneQuestionMark)
{
    EXPECT_EQ(Latin1Of("a\xff" "b"), "a?b");          // invalid lead byte
    EXPECT_EQ(Latin1Of("\xff\xfe"), "??");            // two invalid lead bytes
    EXPECT_EQ(Latin1Of("\x80\x80"), "??");            // stray continuation bytes
    EXPECT_EQ(Latin1Of("a\xe2\x82" "b"), "a?b");      // incomplete sequence
    EXPECT_EQ(Latin1Of("a\xe2\x82"), "a?");           // cut off at the end
    EXPECT_EQ(Latin1Of("\xc0\xaf"), "?");             // overlong "/"
    EXPECT_EQ(Latin1Of("\xed\xa0\x80"), "?");         // surrogate
    EXPECT_EQ(Latin1Of("\xf4\x90\x80\x80"), "?");     // above U+10FFFF
}
