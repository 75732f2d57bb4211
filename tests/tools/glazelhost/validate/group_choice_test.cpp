#include "tools/glazelhost/validate/group_choice.h"

#include <gtest/gtest.h>

#include <string>

namespace GlazelHost
{

namespace
{

constexpr CheckGroup kGroup{"renderer.frames", 4, "", nullptr};

} // namespace

TEST(GroupChoice, AStarStandsForAnyCharactersAndAQuestionMarkForOne)
{
    EXPECT_TRUE(Matches("renderer.frames", "renderer.frames"));
    EXPECT_TRUE(Matches("*", "renderer.frames"));
    EXPECT_TRUE(Matches("*.f*s", "renderer.frames"));
    EXPECT_TRUE(Matches("render?r.*", "renderer.frames"));
    EXPECT_TRUE(Matches("renderer.frames**", "renderer.frames"));
    EXPECT_FALSE(Matches("renderer.frame", "renderer.frames"));
    EXPECT_FALSE(Matches("renderer.frames?", "renderer.frames"));
    EXPECT_FALSE(Matches("*.f*t", "renderer.frames"));
    EXPECT_FALSE(Matches("", "renderer.frames"));
    EXPECT_TRUE(Matches("", ""));
}

TEST(GroupChoice, AStarThatTookTooLittleIsTriedAgain)
{
    EXPECT_TRUE(Matches("*ab", "aaab"));
    EXPECT_TRUE(Matches("a*b*c", "axbbxc"));
    EXPECT_FALSE(Matches(std::string(30, '*') + "b", std::string(2000, 'a')));
}

TEST(GroupChoice, TakesGroupsUpToTheLevel)
{
    ValidateOptions options;
    options.level = 4;
    EXPECT_TRUE(IsChosen(kGroup, options));
    options.level = 3;
    EXPECT_FALSE(IsChosen(kGroup, options));
}

TEST(GroupChoice, SkipIsStrongerThanOnly)
{
    ValidateOptions options;
    options.only = {"plugin.*", "renderer.*"};
    EXPECT_TRUE(IsChosen(kGroup, options));
    options.skip = {"*frames"};
    EXPECT_FALSE(IsChosen(kGroup, options));
    options = {};
    options.only = {"plugin.*"};
    EXPECT_FALSE(IsChosen(kGroup, options));
}

TEST(GroupChoice, EachGroupAndEachSeedHaveTheirOwnRandomNumbers)
{
    EXPECT_EQ(SeedOf("a.b", 1), SeedOf("a.b", 1));
    EXPECT_NE(SeedOf("a.b", 1), SeedOf("a.b", 2));
    EXPECT_NE(SeedOf("a.b", 1), SeedOf("a.c", 1));
}

} // namespace GlazelHost
