#include "support/LogCapture.h"

#include <platform/OkaString.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace
{
std::string Bytes(const oka_string& s) { return std::string(s.c_str(), s.length()); }
} // namespace

TEST(OkaString, DefaultIsEmptyInlineAndTerminated)
{
    oka_string s;
    EXPECT_TRUE(s.IsInline());
    EXPECT_EQ(s.length(), 0u);
    EXPECT_EQ(s.capacity(), 3u);
    EXPECT_STREQ(s.c_str(), "");
}

TEST(OkaString, ThreeCharactersStayInlineAndAFourthMovesToTheHeap)
{
    TavTest::LogCapture capture;
    oka_string s;
    s.append('a');
    s.append('b');
    s.append('c');
    EXPECT_TRUE(s.IsInline());
    EXPECT_EQ(s.capacity(), 3u);
    EXPECT_STREQ(s.c_str(), "abc");

    s.append('d');
    EXPECT_FALSE(s.IsInline());
    EXPECT_GE(s.capacity(), 4u);
    EXPECT_EQ(s.length(), 4u);
    EXPECT_STREQ(s.c_str(), "abcd");

    s.Free();
    EXPECT_TRUE(s.IsInline());
    EXPECT_EQ(s.capacity(), 3u);
    EXPECT_EQ(s.length(), 0u);
    EXPECT_STREQ(s.c_str(), "");
    EXPECT_TRUE(capture.Lines().empty());
}

TEST(OkaString, AssignOfFourCharactersGoesToTheHeapAndThreeFitInline)
{
    oka_string three("xyz");
    EXPECT_TRUE(three.IsInline());
    oka_string four("wxyz");
    EXPECT_FALSE(four.IsInline());
    EXPECT_STREQ(four.c_str(), "wxyz");
}

TEST(OkaString, GrowthIsGeometric)
{
    oka_string s;
    std::size_t reallocations = 0;
    const char* previous = s.c_str();
    for (int i = 0; i < 1000; ++i)
    {
        s.append(static_cast<char>('a' + i % 26));
        if (s.c_str() != previous)
        {
            ++reallocations;
            previous = s.c_str();
        }
    }
    EXPECT_EQ(s.length(), 1000u);
    EXPECT_LE(reallocations, 10u);
    EXPECT_EQ(s.c_str()[1000], '\0');
}

TEST(OkaString, ClearKeepsTheHeapBuffer)
{
    oka_string s("a longer text");
    const std::size_t capacity = s.capacity();
    s.clear();
    EXPECT_EQ(s.length(), 0u);
    EXPECT_STREQ(s.c_str(), "");
    EXPECT_FALSE(s.IsInline());
    EXPECT_EQ(s.capacity(), capacity);
}

TEST(OkaString, FreeOnAnInlineStringEmptiesIt)
{
    oka_string s("ab");
    s.Free();
    EXPECT_TRUE(s.IsInline());
    EXPECT_STREQ(s.c_str(), "");
}

TEST(OkaString, HoldsZeroBytes)
{
    const char bytes[] = {'a', '\0', 'b', '\0', '%'};
    oka_string s(bytes, sizeof bytes);
    EXPECT_EQ(s.length(), 5u);
    EXPECT_EQ(Bytes(s), std::string(bytes, sizeof bytes));
    EXPECT_EQ(s.c_str()[5], '\0');
}

TEST(OkaString, AssignFromCStringStopsAtTheFirstZero)
{
    oka_string s;
    s.assign("ab\0cd");
    EXPECT_EQ(s.length(), 2u);
    s.assign(static_cast<const char*>(nullptr));
    EXPECT_EQ(s.length(), 0u);
}

TEST(OkaString, AssignCharReplacesTheText)
{
    oka_string s("a long text");
    s.assign('Q');
    EXPECT_EQ(Bytes(s), "Q");
}

TEST(OkaString, CopyIsDeep)
{
    oka_string original("heap allocated text");
    oka_string copy(original);
    EXPECT_NE(copy.c_str(), original.c_str());
    EXPECT_EQ(copy, original);
    original.append('!');
    EXPECT_EQ(Bytes(copy), "heap allocated text");

    oka_string assigned;
    assigned = original;
    EXPECT_EQ(Bytes(assigned), "heap allocated text!");
    EXPECT_NE(assigned.c_str(), original.c_str());

    oka_string small("ab");
    oka_string smallCopy(small);
    EXPECT_TRUE(smallCopy.IsInline());
    EXPECT_EQ(smallCopy, small);
}

TEST(OkaString, SelfAssignmentKeepsTheText)
{
    oka_string s("self assigned");
    oka_string& alias = s;
    s = alias;
    EXPECT_EQ(Bytes(s), "self assigned");
    s.assign(s.c_str() + 5, 3);
    EXPECT_EQ(Bytes(s), "ass");
}

TEST(OkaString, EqualityComparesAllBytes)
{
    EXPECT_EQ(oka_string("abc"), oka_string("abc"));
    EXPECT_NE(oka_string("abc"), oka_string("abd"));
    EXPECT_NE(oka_string("ab"), oka_string("ab\0", 3));
}
