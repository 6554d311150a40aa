#include <TavObjectModel/XmlNesting.h>

#include <gtest/gtest.h>
#include <rapidxml/rapidxml.hpp>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

using Okaro::XmlNestingDepth;

namespace
{
constexpr std::size_t NoStop = 1000000;

std::string Nested(std::size_t levels, const std::string& open = "<a>", const std::string& close = "</a>")
{
    std::string text;
    for (std::size_t i = 0; i < levels; ++i)
    {
        text += open;
    }
    for (std::size_t i = 0; i < levels; ++i)
    {
        text += close;
    }
    return text;
}

std::size_t TreeDepth(const rapidxml::xml_node<char>& node)
{
    std::size_t deepest = 0;
    for (const auto* child = node.first_node(); child != nullptr; child = child->next_sibling())
    {
        if (child->type() == rapidxml::node_element)
        {
            deepest = std::max(deepest, 1 + TreeDepth(*child));
        }
    }
    return deepest;
}
} // namespace

TEST(XmlNestingDepth, EmptyTextHasNoElement)
{
    EXPECT_EQ(XmlNestingDepth("", NoStop), 0u);
    EXPECT_EQ(XmlNestingDepth("  \n", NoStop), 0u);
}

TEST(XmlNestingDepth, SiblingsDoNotAddUp)
{
    EXPECT_EQ(XmlNestingDepth("<a><b/><b></b><b x='1'/></a><c/>", NoStop), 2u);
}

TEST(XmlNestingDepth, CountsNestedElements)
{
    EXPECT_EQ(XmlNestingDepth(Nested(5).c_str(), NoStop), 5u);
    EXPECT_EQ(XmlNestingDepth(Nested(3, "<a x=\"1\" y='2' >", "</a >").c_str(), NoStop), 3u);
}

TEST(XmlNestingDepth, StopsOnceTheLimitIsExceeded)
{
    EXPECT_EQ(XmlNestingDepth(Nested(100000).c_str(), 64), 65u);
    EXPECT_EQ(XmlNestingDepth(Nested(64).c_str(), 64), 64u);
}

TEST(XmlNestingDepth, UnclosedElementsStillCount)
{
    EXPECT_EQ(XmlNestingDepth("<a><a><a>", NoStop), 3u);
}

TEST(XmlNestingDepth, CloseMarksInsideAttributeValuesDoNotClose)
{
    EXPECT_EQ(XmlNestingDepth("<a x=\"/>\"><b y='</a>'><c/></b></a>", NoStop), 3u);
}

TEST(XmlNestingDepth, QuoteInsideAnElementNameDoesNotHideChildren)
{
    // The parser takes '"' as part of the name, so the children below are real.
    EXPECT_EQ(XmlNestingDepth(Nested(10, "<a\"b>", "</a\"b>").c_str(), NoStop), 10u);
}

TEST(XmlNestingDepth, MarkupThatHoldsNoElementsIsSkipped)
{
    EXPECT_EQ(XmlNestingDepth("<?xml version='1.0'?><!-- <a><a> --><!DOCTYPE r [<!ELEMENT a (#PCDATA)>]>"
                              "<r><![CDATA[<a><a>]]><?pi <a>?><!other <a></r>",
                              NoStop),
              1u);
}

TEST(XmlNestingDepth, ByteOrderMarkIsSkipped)
{
    EXPECT_EQ(XmlNestingDepth(("\xEF\xBB\xBF" + Nested(7)).c_str(), NoStop), 7u);
}

TEST(XmlNestingDepth, CharacterDataBetweenElements)
{
    EXPECT_EQ(XmlNestingDepth("<a>text &amp; more<b>x</b> tail</a>", NoStop), 2u);
}

TEST(XmlNestingDepth, StopsWhereTheParserFails)
{
    // Text before the first element: the parser gives up at once.
    EXPECT_EQ(XmlNestingDepth(("x" + Nested(10)).c_str(), NoStop), 0u);
    // A missing '=' ends the parse after the first element.
    EXPECT_EQ(XmlNestingDepth(("<a x>" + Nested(10)).c_str(), NoStop), 1u);
}

TEST(XmlNestingDepth, AgreesWithTheParserOnTextsItAccepts)
{
    const std::vector<std::string> pieces = {"<a", "<b", ">", "/>", "</a>", "</b>", "'", "\"", "=", " ", "x", "&amp;",
                                             "<!--", "-->", "<?", "?>", "<![CDATA[", "]]>", "<!DOCTYPE ", "[", "]",
                                             "<!", "\xEF\xBB\xBF", "\n"};
    std::mt19937 random(20240601u);
    auto document = std::make_unique<rapidxml::xml_document<char>>();
    std::size_t parsed = 0;
    for (int round = 0; round < 200000; ++round)
    {
        std::string text;
        const std::size_t count = 1 + random() % 24;
        for (std::size_t i = 0; i < count; ++i)
        {
            text += pieces[random() % pieces.size()];
        }
        std::vector<char> buffer(text.begin(), text.end());
        buffer.push_back('\0');
        try
        {
            document->parse<rapidxml::parse_default>(buffer.data());
        }
        catch (const rapidxml::parse_error&)
        {
            continue;
        }
        ++parsed;
        ASSERT_EQ(XmlNestingDepth(text.c_str(), NoStop), TreeDepth(*document)) << text;
    }
    EXPECT_GT(parsed, 1000u);
}
