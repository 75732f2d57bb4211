#include "reference_renderer/core/lut_sampling.h"

#include "tests/reference_renderer/core/look_fixtures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>

namespace ReferenceRenderer
{

namespace
{

// The textbook form: one branch for each order of the three fractions.
Rgb Reference(const Cube& cube, const Rgb& input)
{
    const std::array<double, 3> value{input.r, input.g, input.b};
    std::array<std::uint32_t, 3> cell{};
    std::array<double, 3> fraction{};
    for (std::size_t i = 0; i < 3; ++i)
    {
        const Interval& domain = cube.domain[i];
        const double clamped = std::clamp(value[i], double{domain.low}, double{domain.high});
        const double position =
            (clamped - domain.low) / (double{domain.high} - domain.low) * (cube.size - 1);
        cell[i] = std::min(static_cast<std::uint32_t>(position), cube.size - 2);
        fraction[i] = position - cell[i];
    }
    std::array<std::size_t, 3> order{0, 1, 2};
    std::sort(order.begin(), order.end(),
              [&](std::size_t a, std::size_t b) { return fraction[a] > fraction[b]; });
    std::array<double, 3> sum{};
    const auto add = [&](double weight) {
        const std::size_t node =
            3 * (cell[0] + std::size_t{cube.size} * (cell[1] + std::size_t{cube.size} * cell[2]));
        for (std::size_t i = 0; i < 3; ++i)
        {
            sum[i] += weight * cube.nodes[node + i];
        }
    };
    add(1.0 - fraction[order[0]]);
    ++cell[order[0]];
    add(fraction[order[0]] - fraction[order[1]]);
    ++cell[order[1]];
    add(fraction[order[1]] - fraction[order[2]]);
    ++cell[order[2]];
    add(fraction[order[2]]);
    return {static_cast<float>(sum[0]), static_cast<float>(sum[1]), static_cast<float>(sum[2])};
}

} // namespace

TEST(LutSampling, CubesAreReadTetrahedrallyOverTheirDomain)
{
    const Domain domain{Interval{-0.5F, 1.5F}, Interval{0.0F, 4.0F}, Interval{0.25F, 0.75F}};
    const Cube cube = CubeOf(7, Swirled, domain);
    const CubeView view = ViewOf(cube);
    std::mt19937 random(1);
    std::uniform_real_distribution<float> value(-1.0F, 5.0F);
    for (int i = 0; i < 20000; ++i)
    {
        const Rgb input{value(random), value(random), value(random)};
        ASSERT_LT(Distance(view.Sample(input), Reference(cube, input)), 2e-5)
            << input.r << " " << input.g << " " << input.b;
    }
}

TEST(LutSampling, EveryOrderOfTheFractionsIsRightTiesIncluded)
{
    const Cube cube = CubeOf(2, Swirled);
    const CubeView view = ViewOf(cube);
    for (const float r : {0.0F, 0.25F, 0.5F, 1.0F})
    {
        for (const float g : {0.0F, 0.25F, 0.5F, 1.0F})
        {
            for (const float b : {0.0F, 0.25F, 0.5F, 1.0F})
            {
                EXPECT_LT(Distance(view.Sample({r, g, b}), Reference(cube, {r, g, b})), 1e-6)
                    << r << " " << g << " " << b;
            }
        }
    }
}

TEST(LutSampling, NodesComeBackAsTheyAre)
{
    const Cube cube = CubeOf(5, Swirled);
    EXPECT_LT(Distance(ViewOf(cube).Sample({1.0F, 1.0F, 1.0F}), Swirled({1.0F, 1.0F, 1.0F})), 1e-7);
    EXPECT_LT(Distance(ViewOf(cube).Sample({0.25F, 0.5F, 0.75F}), Swirled({0.25F, 0.5F, 0.75F})),
              1e-7);
}

TEST(LutSampling, ValuesBeyondTheDomainCountAsItsEnds)
{
    const Cube cube = CubeOf(3, Same, {Interval{0.2F, 0.8F}, Interval{0.2F, 0.8F}, Interval{}});
    const Rgb low = ViewOf(cube).Sample({-7.0F, -kLargestNumber, 0.5F});
    EXPECT_LT(Distance(low, {0.2F, 0.2F, 0.5F}), 1e-6);
    const Rgb high = ViewOf(cube).Sample({7.0F, kLargestNumber, 0.5F});
    EXPECT_LT(Distance(high, {0.8F, 0.8F, 0.5F}), 1e-6);
}

TEST(LutSampling, NaNCountsAsTheLowEndAndInfinitiesAsEnds)
{
    const float nan = std::nanf("");
    const float infinity = std::numeric_limits<float>::infinity();
    const Cube cube = CubeOf(4, Same, {Interval{0.1F, 1.0F}, Interval{}, Interval{}});
    EXPECT_LT(Distance(ViewOf(cube).Sample({nan, infinity, -infinity}), {0.1F, 1.0F, 0.0F}), 1e-6);
    const Curves curves = CurvesOf(4, [](double x) { return 2.0 * x + 0.5; });
    EXPECT_EQ(ViewOf(curves).Sample(0, nan), 0.5F);
    EXPECT_EQ(ViewOf(curves).Sample(1, infinity), 2.5F);
    EXPECT_EQ(ViewOf(curves).Sample(2, -infinity), 0.5F);
}

TEST(LutSampling, CurvesAreStraightBetweenEntries)
{
    Curves curves{3, {}, {0.0F, 1.0F, 0.5F, 0.0F, 0.1F, 1.0F, 1.0F, 0.0F, -1.0F}};
    const CurveView view = ViewOf(curves);
    EXPECT_FLOAT_EQ(view.Sample(0, 0.25F), 0.5F);
    EXPECT_FLOAT_EQ(view.Sample(0, 0.75F), 0.75F);
    EXPECT_FLOAT_EQ(view.Sample(1, 0.5F), 0.1F);
    EXPECT_FLOAT_EQ(view.Sample(2, 1.0F), -1.0F);
}

} // namespace ReferenceRenderer
