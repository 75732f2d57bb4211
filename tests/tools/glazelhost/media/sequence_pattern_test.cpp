#include "tools/glazelhost/media/sequence_pattern.h"

#include "tools/glazelhost/host_error.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace GlazelHost
{

TEST(SequencePattern, NumbersGetTheirZeros)
{
    const auto pattern = SequencePattern::Parse("C:\\shots/a_%04d.png");
    ASSERT_TRUE(pattern.has_value());
    EXPECT_EQ(pattern->PathOf(7), "C:\\shots/a_0007.png");
    EXPECT_EQ(pattern->PathOf(123456), "C:\\shots/a_123456.png");
    EXPECT_EQ(pattern->Folder(), "C:\\shots/");
}

TEST(SequencePattern, ANumberWithoutAWidthHasNoZeros)
{
    EXPECT_EQ(SequencePattern::Parse("%d.tif")->PathOf(7), "7.tif");
    EXPECT_EQ(SequencePattern::Parse("%d.tif")->Folder(), "");
    EXPECT_EQ(SequencePattern::Parse("#.tif")->PathOf(7), "7.tif");
}

TEST(SequencePattern, ARunOfNumberSignsIsANumberOfSoManyDigits)
{
    const auto pattern = SequencePattern::Parse("shots/50%%_a_####.png");
    ASSERT_TRUE(pattern.has_value());
    EXPECT_EQ(pattern->PathOf(12), "shots/50%_a_0012.png");
    EXPECT_EQ(pattern->NumberOf("50%_A_12345.png"), 12345);
    EXPECT_FALSE(pattern->NumberOf("50%_a_012.png").has_value());
}

TEST(SequencePattern, TwoPerCentSignsAreOne)
{
    EXPECT_EQ(SequencePattern::Parse("50%%_%02d%%.png")->PathOf(3), "50%_03%.png");
}

TEST(SequencePattern, NamesWithoutANumberAreOrdinaryPaths)
{
    for (const char* const path :
         {"a.png", "100%.png", "%s.png", "a%%d.png", "%", "%0", "dir%04d/a.png", ""})
    {
        EXPECT_FALSE(SequencePattern::Parse(path).has_value()) << path;
    }
}

TEST(SequencePattern, UnclearNumbersAreWrongUsage)
{
    for (const char* const path : {"%d_%d.png", "%5d.png", "%00d.png", "%099d.png", "%0d.png",
                                   "#_#.png", "#_%d.png", "###################.png"})
    {
        EXPECT_THROW(SequencePattern::Parse(path), HostError) << path;
    }
}

TEST(SequencePattern, OnlyNamesThatTheNumberWouldGetBelongToTheSequence)
{
    const auto pattern = SequencePattern::Parse("x/shot_%04d.png");
    EXPECT_EQ(pattern->NumberOf("shot_0012.png"), 12);
    EXPECT_EQ(pattern->NumberOf("SHOT_0012.PNG"), 12);
    EXPECT_EQ(pattern->NumberOf("shot_12345.png"), 12345);
    for (const char* const name : {"shot_012.png", "shot_00012.png", "shot_.png", "shot_0012.jpg",
                                   "hot_0012.png", "shot_00a2.png", "shot_-012.png", "",
                                   "shot_0012.png.tmp", "shot_99999999999999999999.png"})
    {
        EXPECT_FALSE(pattern->NumberOf(name).has_value()) << name;
    }
}

TEST(SequencePattern, EveryPathOfTheSequenceGivesItsNumberBack)
{
    constexpr unsigned kSeed = 99;
    std::mt19937_64 random(kSeed);
    const auto padded = SequencePattern::Parse("s%06d_v2.png");
    const auto plain = SequencePattern::Parse("s%d.png");
    for (int round = 0; round < 1000; ++round)
    {
        const auto number = static_cast<std::int64_t>(random() % 100'000'000);
        EXPECT_EQ(padded->NumberOf(padded->PathOf(number)), number);
        EXPECT_EQ(plain->NumberOf(plain->PathOf(number)), number);
    }
}

} // namespace GlazelHost
