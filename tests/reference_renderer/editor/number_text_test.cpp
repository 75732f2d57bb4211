#include "reference_renderer/editor/number_text.h"

#include <gtest/gtest.h>

#include <clocale>

namespace ReferenceRenderer
{

namespace
{

TEST(NumberText, HasThreeDecimalsAndUpToFiveWhereTheValueHasThem)
{
    EXPECT_EQ(NumberText(1.0F), "1.000");
    EXPECT_EQ(NumberText(-0.25F), "-0.250");
    EXPECT_EQ(NumberText(0.01234F), "0.01234");
    EXPECT_EQ(NumberText(0.0125F), "0.0125");
    EXPECT_EQ(NumberText(100.0F), "100.000");
}

TEST(NumberText, ValuesThatRoundToZeroHaveNoMinus)
{
    EXPECT_EQ(NumberText(-0.0F), "0.000");
    EXPECT_EQ(NumberText(-1e-7F), "0.000");
}

TEST(NumberText, TheLargestNumberOfALookIsWrittenInFull)
{
    EXPECT_EQ(NumberText(-1e30F), "-1000000015047466219876688855040.000");
}

TEST(NumberText, WhatIsWrittenReadsAsTheSameNumber)
{
    for (int i = -2000; i <= 2000; ++i)
    {
        const float value = static_cast<float>(i) / 1000.0F;
        EXPECT_EQ(TypedNumber(NumberText(value)), value);
    }
}

TEST(NumberText, APointOrOneCommaPartsTheDecimals)
{
    EXPECT_EQ(TypedNumber("1.25"), 1.25F);
    EXPECT_EQ(TypedNumber("1,25"), 1.25F);
    EXPECT_EQ(TypedNumber(" +.5 "), 0.5F);
    EXPECT_EQ(TypedNumber("-2e-1"), -0.2F);
}

TEST(NumberText, AShortTextHasNoZerosBehindTheLastDecimal)
{
    EXPECT_EQ(ShortNumberText(1.0F), "1");
    EXPECT_EQ(ShortNumberText(100.0F), "100");
    EXPECT_EQ(ShortNumberText(-0.25F), "-0.25");
    EXPECT_EQ(ShortNumberText(0.01F), "0.01");
    EXPECT_EQ(ShortNumberText(0.0F), "0");
}

TEST(NumberText, AnythingElseIsNoNumber)
{
    for (const char* text : {"", " ", "-", ".", "1,2,3", "1,000.5", "1.2.3", "one", "1 2", "nan",
                             "inf", "0x10", "1e99"})
    {
        EXPECT_FALSE(TypedNumber(text)) << text;
    }
}

TEST(NumberText, TheLocaleOfTheProgramDoesNotMatter)
{
    for (const char* name : {"de_DE.UTF-8", "German_Germany"})
    {
        if (std::setlocale(LC_ALL, name) != nullptr)
        {
            break;
        }
    }
    EXPECT_EQ(NumberText(1.5F), "1.500");
    EXPECT_EQ(TypedNumber("1.5"), 1.5F);
    std::setlocale(LC_ALL, "C");
}

} // namespace

} // namespace ReferenceRenderer
