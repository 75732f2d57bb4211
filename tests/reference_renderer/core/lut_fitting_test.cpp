#include "reference_renderer/core/lut_fitting.h"

#include "reference_renderer/core/lut_sampling.h"
#include "tests/reference_renderer/core/look_fixtures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace ReferenceRenderer
{

namespace
{

// A look as it is stored, with what was said about it.
struct Fitting
{
    StoredLook stored;
    std::vector<std::string> warnings;
    StoringError error;

    explicit Fitting(const Look& look) : error(StoreFitted(look, stored, warnings)) {}
};

// Nothing follows from a node's neighbours.
Cube NoiseCube(std::uint32_t size)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<float> value(0.0F, 1.0F);
    return CubeOf(size, [&](const Rgb&) {
        return Rgb{value(random), value(random), value(random)};
    });
}

} // namespace

TEST(LutFitting, CubesOfUpTo65PointsKeepTheirSize)
{
    const Fitting fitting(CubeLook(CubeOf(65, Swirled)));
    EXPECT_TRUE(fitting.warnings.empty());
    EXPECT_EQ(fitting.stored.cubeSize, 65U);
    EXPECT_GT(fitting.error.size, 0.0);
    EXPECT_LT(fitting.error.size, 1.5 / 123000.0) << "half a step of the range";
}

TEST(LutFitting, LargerCubesAreResampled)
{
    const Fitting fitting(CubeLook(CubeOf(67, Swirled)));
    EXPECT_EQ(fitting.stored.cubeSize, 65U);
    ASSERT_EQ(fitting.warnings.size(), 1U);
    EXPECT_EQ(fitting.warnings[0], "the 3D LUT was resampled from 67 to 65 nodes a side, the most "
                                   "that a look holds of it");
    EXPECT_GT(fitting.error.size, 1e-5);
    EXPECT_LT(fitting.error.size, 1e-3);
}

TEST(LutFitting, ACubeWhoseNodesContainTheStoredOnesLosesOnlyRounding)
{
    const auto linear = [](const Rgb& v) { return Rgb{0.5F * v.r, v.g - v.b, v.b + 0.2F}; };
    EXPECT_LT(Fitting(CubeLook(CubeOf(129, linear))).error.size, 2e-5);
}

TEST(LutFitting, ASpikeThatGetsLostIsToldWithItsSizeAndPlace)
{
    Look look = CubeLook(CubeOf(67, Same));
    look.cube->nodes[3 * (33 + 67 * (33 + 67 * 1))] = 0.0F; // between the nodes that are kept
    const Fitting fitting(look);
    ASSERT_EQ(fitting.warnings.size(), 2U);
    EXPECT_EQ(fitting.warnings[1],
              "the look cannot be stored exactly: largest error 7.7 of an 8-bit "
              "code, at 0.5 0.5 0.0152");
}

TEST(LutFitting, ASpikeInACubeThatFitsIsKept)
{
    Look look = CubeLook(CubeOf(65, Same));
    look.cube->nodes[3 * NodeCount(31)] = 1.0F;
    const Fitting fitting(look);
    EXPECT_TRUE(fitting.warnings.empty());
    EXPECT_LT(fitting.error.size, 1.0 / 123000.0);
}

TEST(LutFitting, PrecisionGoesBeforePoints)
{
    const Fitting fitting(CubeLook(NoiseCube(33)));
    EXPECT_EQ(fitting.stored.cubeSize, 33U);
    EXPECT_TRUE(fitting.warnings.empty());
    EXPECT_GT(fitting.error.size, 1.0 / 16384.0);
    EXPECT_LT(fitting.error.size, 1.0 / 510.0);
}

TEST(LutFitting, NoiseOf65PointsLosesPointsAndSaysSo)
{
    const Fitting fitting(CubeLook(NoiseCube(65)));
    EXPECT_EQ(fitting.stored.cubeSize, 33U);
    ASSERT_EQ(fitting.warnings.size(), 2U);
    EXPECT_GT(fitting.error.size, 0.1);
    EXPECT_NE(fitting.warnings[1].find("largest error "), std::string::npos);
}

TEST(LutFitting, CurvesBesideTheLargestCubeKeepTheirEntries)
{
    Look look = CubeLook(CubeOf(65, Swirled));
    look.curves = CurvesOf(65536, [](double x) { return std::sqrt(x); });
    const Fitting fitting(look);
    EXPECT_TRUE(fitting.warnings.empty());
    EXPECT_EQ(fitting.stored.curveSize, 65536U);
    EXPECT_EQ(fitting.stored.cubeSize, 65U);
    EXPECT_LT(fitting.error.size, 1e-4);
}

} // namespace ReferenceRenderer
