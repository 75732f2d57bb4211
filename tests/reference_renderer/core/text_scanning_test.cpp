#include "reference_renderer/core/text_scanning.h"

#include <gtest/gtest.h>

#include <clocale>
#include <string>
#include <vector>

namespace ReferenceRenderer
{

TEST(TextScanning, LinesEndWithAnyOfTheThreeEndings)
{
    LineScanner lines("one\r\ntwo\nthree\rfour\n\nlast");
    std::vector<std::string> found;
    for (std::string_view line; lines.Next(line);)
    {
        found.emplace_back(line);
    }
    EXPECT_EQ(found, (std::vector<std::string>{"one", "two", "three", "four", "", "last"}));
    EXPECT_EQ(lines.Number(), 6U);
}

TEST(TextScanning, WordsArePartedByAnyWhiteSpace)
{
    std::string_view text = " \t a  bc\t";
    EXPECT_EQ(TakeWord(text), "a");
    EXPECT_EQ(TakeWord(text), "bc");
    EXPECT_EQ(TakeWord(text), "");
}

TEST(TextScanning, NumbersMayHaveSignsFractionsAndExponents)
{
    EXPECT_EQ(ParseNumber("1"), 1.0F);
    EXPECT_EQ(ParseNumber("+0.5"), 0.5F);
    EXPECT_EQ(ParseNumber("-.25"), -0.25F);
    EXPECT_EQ(ParseNumber("3."), 3.0F);
    EXPECT_EQ(ParseNumber("1e-2"), 0.01F);
    EXPECT_EQ(ParseNumber("2.5E+1"), 25.0F);
    EXPECT_EQ(ParseNumber("1e-400"), 0.0F);
}

TEST(TextScanning, WhatIsNoUsableNumberIsNone)
{
    for (const char* word : {"", "+", "-", "+-1", "1,5", "0x10", "1e", "nan", "inf", "-INF", "1e31",
                             "1e999", "1.0f", "abc", "1 "})
    {
        EXPECT_FALSE(ParseNumber(word)) << "'" << word << "'";
    }
}

TEST(TextScanning, NumbersDoNotDependOnTheLocale)
{
    const std::string before = std::setlocale(LC_ALL, nullptr);
    for (const char* locale : {"de_DE.UTF-8", "German_Germany.1252", "fr_FR.UTF-8"})
    {
        std::setlocale(LC_ALL, locale); // where the system lacks one, the next is tried
        EXPECT_EQ(ParseNumber("0.5"), 0.5F);
        EXPECT_FALSE(ParseNumber("0,5"));
    }
    std::setlocale(LC_ALL, before.c_str());
}

TEST(TextScanning, CountsAreWholeAndUnsigned)
{
    EXPECT_EQ(ParseCount("33"), 33U);
    EXPECT_FALSE(ParseCount("-2"));
    EXPECT_FALSE(ParseCount("2.0"));
    EXPECT_FALSE(ParseCount("4294967296"));
    EXPECT_FALSE(ParseCount(""));
}

TEST(TextScanning, CleanTextKeepsUtf8AndReplacesTheRest)
{
    EXPECT_EQ(CleanText("Gr\xC3\xBC\xC3\x9F \xF0\x9F\x8E\xA8"),
              "Gr\xC3\xBC\xC3\x9F \xF0\x9F\x8E\xA8");
    EXPECT_EQ(CleanText("a\x80z\xC3"), "a?z?");
    EXPECT_EQ(CleanText("a\tb\x7F"), "a?b?");
    EXPECT_EQ(CleanText("\xC0\xAF"), "??") << "overlong form";
    EXPECT_EQ(CleanText("\xED\xA0\x80"), "???") << "surrogate";
}

TEST(TextScanning, CleanTextIsCutBetweenCharacters)
{
    EXPECT_EQ(CleanText("ab\xC3\xBC", 3), "ab");
    EXPECT_EQ(CleanText("ab\xC3\xBC", 4), "ab\xC3\xBC");
}

} // namespace ReferenceRenderer
