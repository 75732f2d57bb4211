#include "reference_renderer/core/xml_depth.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include <rapidxml/rapidxml.hpp>

namespace ReferenceRenderer
{

namespace
{

std::size_t DepthOf(const rapidxml::xml_node<>* node)
{
    std::size_t deepest = 0;
    for (; node != nullptr; node = node->next_sibling())
    {
        if (node->type() == rapidxml::node_element)
        {
            deepest = std::max(deepest, 1 + DepthOf(node->first_node()));
        }
    }
    return deepest;
}

} // namespace

TEST(XmlDepth, ElementsAreCountedAndSiblingsAreNot)
{
    EXPECT_EQ(DeepestElement("<a><b><c/></b><b/><b></b></a>"), 3U);
    EXPECT_EQ(DeepestElement("no element"), 0U);
}

TEST(XmlDepth, WhatOnlyLooksLikeATagIsNotCounted)
{
    EXPECT_EQ(DeepestElement("<a><!-- <b><c> --><![CDATA[<d><e>]]></a>"), 1U);
    EXPECT_EQ(DeepestElement("<?xml <x> ?><a b='/>' c=\"<d>\"></a>"), 1U);
}

TEST(XmlDepth, TricksWithQuotesHideNoElement)
{
    EXPECT_GE(DeepestElement("<a'><b><c><d>"), 4U);
    EXPECT_GE(DeepestElement("<a b'='x'><c><d>"), 3U);
    EXPECT_GE(DeepestElement("<!--> <a x=\"--> <b><c>"), 2U);
}

TEST(XmlDepth, DocumentTypesAreNotFollowed)
{
    EXPECT_EQ(DeepestElement("<!DOCTYPE a><a/>"), kNotCountable);
}

// Random texts made of pieces that matter to a parser: whatever it accepts, it went no deeper than
// was counted.
TEST(XmlDepth, NoTextThatTheParserAcceptsIsDeeperThanCounted)
{
    const char* const pieces[] = {"<a>",       "</a>", "<a'>", "</a'>", "<a b='", "'>",
                                  "'",         "\"",   "=",    "/>",    "<!--",   "-->",
                                  "<![CDATA[", "]]>",  "<?x",  "?>",    " ",      "<a/>",
                                  "<a b=\"",   "\">",  ">",    "/",     "x"};
    std::mt19937 random(7);
    std::uniform_int_distribution<std::size_t> piece(0, std::size(pieces) - 1);
    int accepted = 0;
    for (int i = 0; i < 200000; ++i)
    {
        std::string text = "<a>";
        for (int length = 1 + i % 9; length > 0; --length)
        {
            text += pieces[piece(random)];
        }
        text += "</a>";
        const std::size_t counted = DeepestElement(text);
        std::string consumed = text;
        rapidxml::xml_document<> document;
        try
        {
            document.parse<rapidxml::parse_validate_closing_tags>(consumed.data());
        }
        catch (const rapidxml::parse_error&)
        {
            continue;
        }
        ++accepted;
        ASSERT_GE(counted, DepthOf(document.first_node())) << text;
    }
    EXPECT_GT(accepted, 1000);
}

} // namespace ReferenceRenderer
