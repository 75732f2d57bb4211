#include "reference_renderer/core/cube_writer.h"

#include "reference_renderer/core/cube_reader.h"
#include "reference_renderer/core/number_words.h"
#include "tests/reference_renderer/core/look_fixtures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace ReferenceRenderer
{

namespace
{

const Domain kWide{Interval{-0.0730594F, 1.0947F}, Interval{-0.0730594F, 1.0947F},
                   Interval{-0.0730594F, 1.0947F}};
const Domain kUneven{Interval{-0.5F, 1.5F}, Interval{0.0F, 4.0F}, Interval{0.1F, 0.7F}};

Look ReadBack(const Look& look)
{
    std::vector<std::string> warnings;
    const Look read = ReadCube(CubeFileText(look), "written.cube", warnings);
    EXPECT_TRUE(warnings.empty());
    return read;
}

void ExpectSameTables(const Look& left, const Look& right)
{
    ASSERT_EQ(left.curves.has_value(), right.curves.has_value());
    ASSERT_EQ(left.cube.has_value(), right.cube.has_value());
    if (left.curves)
    {
        EXPECT_EQ(left.curves->domain, right.curves->domain);
        EXPECT_EQ(left.curves->values, right.curves->values);
    }
    if (left.cube)
    {
        EXPECT_EQ(left.cube->domain, right.cube->domain);
        EXPECT_EQ(left.cube->nodes, right.cube->nodes);
    }
}

} // namespace

TEST(CubeWriter, TheTextOfACubeIsTheOneThatEveryProgramReads)
{
    Look look = CubeLook(CubeOf(2, Inverted));
    look.title = "Turned";
    EXPECT_EQ(CubeFileText(look), "TITLE \"Turned\"\nLUT_3D_SIZE 2\n"
                                  "1 1 1\n0 1 1\n1 0 1\n0 0 1\n1 1 0\n0 1 0\n1 0 0\n0 0 0\n");
}

TEST(CubeWriter, ADomainStandsInAFileOnlyWhereItIsNotTheUsualOne)
{
    EXPECT_EQ(CubeFileText(CubeLook(CubeOf(2, Same))).find("DOMAIN"), std::string::npos);
    const std::string text = CubeFileText(CubeLook(CubeOf(2, Same, kUneven)));
    EXPECT_NE(text.find("DOMAIN_MIN -0.5 0 0.1\nDOMAIN_MAX 1.5 4 0.7\n"), std::string::npos);
}

TEST(CubeWriter, TablesOfEveryKindReadBackToTheLastBit)
{
    for (const Domain& domain : {Domain{}, kWide, kUneven})
    {
        const Look cube = CubeLook(CubeOf(9, Swirled, domain));
        ExpectSameTables(ReadBack(cube), cube);
        const Look curves = CurveLook(CurvesOf(
            777, [](double x) { return std::cbrt(x) * 1.1 - 0.05; }, domain));
        ExpectSameTables(ReadBack(curves), curves);
    }
    Look both = CubeLook(CubeOf(5, Swirled, kWide));
    both.curves = CurvesOf(33, [](double x) { return std::sqrt(std::abs(x)); },
                           {Interval{0, 16}, Interval{0, 16}, Interval{0, 16}});
    ASSERT_TRUE(FitsCubeFile(both));
    ExpectSameTables(ReadBack(both), both);
}

TEST(CubeWriter, TwoTablesWithDomainsThatDifferByChannelDoNotFit)
{
    Look both = CubeLook(CubeOf(2, Same, kUneven));
    EXPECT_TRUE(FitsCubeFile(both));
    both.curves = CurvesOf(2, [](double x) { return x; });
    EXPECT_FALSE(FitsCubeFile(both));
}

TEST(CubeWriter, ATitleKeepsToItsQuotesAndItsLine)
{
    Look look = CubeLook(CubeOf(2, Same));
    look.title = "a \"big\"\nlook \xC3\xA9";
    EXPECT_EQ(CubeFileText(look).substr(0, 25), "TITLE \"a 'big'?look \xC3\xA9\"\nL");
    EXPECT_EQ(ReadBack(look).title, "a 'big'?look \xC3\xA9");
}

TEST(CubeWriter, NumbersHaveNoExponentAndReadBackToTheLastBit)
{
    std::mt19937 random(5);
    for (int i = 0; i < 20000; ++i)
    {
        const auto bits = static_cast<std::uint32_t>(random());
        const float number =
            i == 0 ? std::numeric_limits<float>::denorm_min() : std::bit_cast<float>(bits);
        if (!(std::abs(number) <= kLargestNumber))
        {
            continue;
        }
        std::string text;
        AppendFloat(text, number);
        EXPECT_EQ(text.find_first_of("eE"), std::string::npos) << text;
        EXPECT_EQ(std::strtof(text.c_str(), nullptr), number) << text;
    }
}

} // namespace ReferenceRenderer
