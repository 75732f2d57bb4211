#include "reference_renderer/core/chain_fitting.h"

#include "reference_renderer/core/chain_error.h"
#include "reference_renderer/core/import_error.h"
#include "tests/reference_renderer/core/look_fixtures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace ReferenceRenderer
{

namespace
{

AffineStep Scaled(double scale, double offset)
{
    return {{{{scale, 0, 0}, {0, scale, 0}, {0, 0, scale}}}, {offset, offset, offset}};
}

const AffineStep kMixing{{{{0.9, 0.1, 0.0}, {0.2, 0.7, 0.1}, {0.0, 0.3, 0.7}}}, {0.0, 0.01, 0.02}};

CurveStep Through(const std::vector<CurvePoint>& points)
{
    return {{points, points, points}};
}

FunctionStep Each(double (*function)(double))
{
    return {{function, function, function}};
}

double Root(double value)
{
    return std::sqrt(std::max(value, 0.0));
}

const CdlStep kCdl{{{1.1F, 0.9F, 1}, {0.05F, 0, 0}, {1.2F, 1, 1}, 0.8F}};

// The largest difference between the chain and its look, by the renderer's own pixels.
double LargestRendered(const ColourChain& chain, const ReadLook& read, double low = 0.0,
                       double high = 1.0)
{
    const auto prepared = Prepared(read.look);
    std::mt19937 random(3);
    std::uniform_real_distribution<float> value(static_cast<float>(low), static_cast<float>(high));
    double largest = 0.0;
    for (int i = 0; i < 20000; ++i)
    {
        const Rgb input{value(random), value(random), value(random)};
        const Triple exact = Applied(chain, {input.r, input.g, input.b});
        const Rgb kept = prepared->Grade(input);
        largest = std::max({largest, std::abs(exact[0] - kept.r), std::abs(exact[1] - kept.g),
                            std::abs(exact[2] - kept.b)});
    }
    return largest;
}

// The look of a chain that a look holds exactly.
Look Exact(const ColourChain& chain, double low = -0.25, double high = 1.25)
{
    const ReadLook read = LookOfChain(chain, "test");
    EXPECT_TRUE(read.warnings.empty()) << read.warnings[0];
    EXPECT_LT(read.largestError, 1e-6);
    EXPECT_LT(LargestRendered(chain, read, low, high), 3e-5) << "the steps of the record";
    return read.look;
}

} // namespace

TEST(ChainFitting, ChainsThatLooksHoldAreHeldStepByStep)
{
    const CurveStep bent = Through({{0, 0.1}, {0.25, 0.5}, {1, 0.9}});
    const CubeStep cube{CubeOf(9, Swirled), false};
    const Look whole = Exact({kCdl, bent, cube});
    EXPECT_EQ(whole.cdlMode, CdlMode::Clamped);
    EXPECT_EQ(whole.cdl.slope, kCdl.cdl.slope);
    EXPECT_EQ(whole.curves->size, 5U) << "the fewest with an entry at each point";
    EXPECT_EQ(whole.cube->size, 9U);

    EXPECT_FALSE(Exact({cube}).curves);
    EXPECT_FALSE(Exact({bent}).cube);
    EXPECT_EQ(Exact({Scaled(2.0, -0.5)}).cdlMode, CdlMode::Unclamped);
    const Look neutral = Exact({AffineStep{}});
    EXPECT_TRUE(neutral.cdlMode == CdlMode::None && !neutral.curves && !neutral.cube);
}

TEST(ChainFitting, ScalesGoIntoTheTablesBesideThem)
{
    const ColourChain chain{Scaled(2.0, -0.5), CubeStep{CubeOf(9, Swirled), false}, kMixing};
    const Look look = Exact(chain);
    EXPECT_EQ(look.cube->domain[0], (Interval{0.25F, 0.75F}));
    EXPECT_EQ(look.cdlMode, CdlMode::None);
}

TEST(ChainFitting, AMatrixAloneIsACubeOfTwoPoints)
{
    const ReadLook read = LookOfChain({kMixing}, "test");
    EXPECT_EQ(read.look.cube->size, 2U);
    EXPECT_LT(LargestRendered({kMixing}, read), 3e-5);
    ASSERT_EQ(read.warnings.size(), 1U);
    EXPECT_EQ(read.warnings[0], "values beyond 0 to 1 are limited to these: the first step of the "
                                "file has no end, and a look holds it as a table");
}

TEST(ChainFitting, BehindAClampedCorrectionNothingIsLimited)
{
    const ColourChain chain{kCdl, kMixing};
    EXPECT_EQ(Exact(chain, -1.0, 2.0).cube->size, 2U);
}

TEST(ChainFitting, FunctionsBecomeFineCurves)
{
    const ColourChain chain{Through({{0, 0}, {1, 1}}), Each(Root)};
    const ReadLook read = LookOfChain(chain, "test");
    EXPECT_EQ(read.look.curves->size, 65536U);
    EXPECT_FALSE(read.look.cube);
    EXPECT_LT(read.largestError, 1e-3);
    EXPECT_GT(read.largestError, 1e-5) << "the root is steep at 0";
}

TEST(ChainFitting, ChainsThatMixInTheMiddleAreSampledAsFineAsTheyNeed)
{
    const ColourChain chain{Through({{0, 0}, {1, 1}}), kMixing,
                            Each([](double x) { return x * x; })};
    const ReadLook read = LookOfChain(chain, "test");
    EXPECT_TRUE(read.warnings.empty());
    EXPECT_LE(read.look.cube->size, 65U);
    EXPECT_GE(read.look.cube->size, 17U);
    EXPECT_LT(read.largestError, 1.0 / 8192.0);
    EXPECT_LT(LargestRendered(chain, read, -0.1, 1.1), 1.0 / 8000.0);
}

TEST(ChainFitting, OfTwoWaysToSampleTheNearerIsTaken)
{
    // Decoded light is far from display values: the cube must not work on it.
    const CurveStep decode = [] {
        std::vector<CurvePoint> points;
        for (int i = 0; i < 256; ++i)
        {
            points.push_back({i / 255.0, std::pow(i / 255.0, 2.4)});
        }
        return Through(points);
    }();
    const ColourChain chain{decode, kMixing,
                            Each([](double x) { return std::pow(std::max(x, 0.0), 1 / 2.4); })};
    const ReadLook read = LookOfChain(chain, "test");
    EXPECT_FALSE(read.look.curves);
    EXPECT_EQ(read.look.cube->size, 65U);
    EXPECT_LT(LargestRendered(chain, read), read.largestError * 1.2 + 3e-5);
    EXPECT_LT(read.largestError, 0.02);
}

TEST(ChainFitting, ACurveThatHelpsTheCubeIsKept)
{
    // Steep at black, and a bend that no cube meets.
    const CurveStep steep = Through({{0, 0}, {0.001, 0.5}, {1, 1}});
    const ColourChain chain{steep, kMixing, Each([](double x) { return std::abs(x - 0.503); })};
    const ReadLook read = LookOfChain(chain, "test");
    EXPECT_TRUE(read.look.curves);
    EXPECT_LT(LargestRendered(chain, read), 0.01);
}

TEST(ChainFitting, TheErrorIsMeasuredAndToldWithItsPlace)
{
    const ColourChain chain{Through({{0, 0}, {1, 1}}), kMixing,
                            Each([](double x) { return x < 0.503 ? 0.0 : 1.0; })};
    const ReadLook read = LookOfChain(chain, "test");
    ASSERT_EQ(read.warnings.size(), 1U);
    EXPECT_EQ(read.warnings[0].find("the steps of the file cannot be kept exactly: largest error "),
              0U)
        << read.warnings[0];
    EXPECT_GT(read.largestError, 0.5);
    EXPECT_GE(read.largestError * 1.05, LargestRendered(chain, read));
}

TEST(ChainFitting, ATrilinearCubeIsFollowedByAFinerOne)
{
    const ColourChain chain{CubeStep{CubeOf(9,
                                            [](const Rgb& v) {
                                                return Rgb{v.r * v.g * v.b, v.g * v.b, v.b};
                                            }),
                                     true}};
    const ReadLook read = LookOfChain(chain, "test");
    EXPECT_EQ(read.look.cube->size, 65U);
    EXPECT_LT(LargestRendered(chain, read), 1.0 / 4096.0);
    // Where both interpolations agree the cube is taken as it is.
    const ColourChain same{CubeStep{CubeOf(9, Inverted), true}};
    EXPECT_EQ(Exact(same).cube->size, 9U);
}

TEST(ChainFitting, ACubeBeforeOtherStepsKeepsItsNodes)
{
    Cube spiked = CubeOf(17, Same);
    spiked.nodes[3 * (8 + 17 * (8 + 17 * 8))] = 2.0F;
    const ColourChain chain{CubeStep{spiked, false}, Each([](double x) { return x * x; })};
    const ReadLook read = LookOfChain(chain, "test");
    EXPECT_EQ(read.look.cube->size, 65U) << "4 * 16 + 1";
    EXPECT_NEAR(Prepared(read.look)->Grade({0.5F, 0.5F, 0.5F}).r, 4.0, 1e-4);
}

TEST(ChainFitting, NumbersThatNoLookHoldsAreRefused)
{
    for (double (*const function)(double) : {+[](double x) { return std::pow(10.0, 1000.0 * x); },
                                             +[](double) { return std::nan(""); }})
    {
        try
        {
            LookOfChain({Each(function)}, "test.clf");
            ADD_FAILURE() << "it was taken";
        }
        catch (const ImportError& error)
        {
            EXPECT_EQ(error.message.find("test.clf: its steps give numbers that no look holds"), 0U)
                << error.message;
        }
    }
}

} // namespace ReferenceRenderer
