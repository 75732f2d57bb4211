#include "samples/renderer/lut_fitting.h"

#include "samples/renderer/lut_sampling.h"
#include "tests/samples/renderer/look_fixtures.h"

#include <gtest/gtest.h>

#include <cmath>

TEST(LutFitting, TablesThatFitStayAsTheyAre)
{
    std::vector<std::string> warnings;
    Look look = CubeLook(CubeOf(27, Swirled));
    look.curves = CurvesOf(2048, [](double x) { return x; });
    const Look fitted = Fitted(look, warnings);
    EXPECT_TRUE(warnings.empty());
    EXPECT_EQ(fitted.cube->nodes, look.cube->nodes);
    EXPECT_EQ(fitted.curves->values, look.curves->values);
}

TEST(LutFitting, LargerCubesAreResampledAndTheErrorIsMeasured)
{
    std::vector<std::string> warnings;
    const Look look = CubeLook(CubeOf(33, Swirled));
    const Look fitted = Fitted(look, warnings);
    EXPECT_EQ(fitted.cube->size, 27U);
    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_EQ(warnings[0], "the 3D LUT was resampled from 33 to 27 nodes a side, the most that a "
                           "look holds");
    const double error = LargestError(look, Prepared(fitted)->Stored());
    EXPECT_GT(error, 1e-5);
    EXPECT_LT(error, 2e-3);
}

TEST(LutFitting, ACubeWhoseNodesContainTheStoredOnesLosesOnlyRounding)
{
    std::vector<std::string> warnings;
    const auto linear = [](const Rgb& v) { return Rgb{0.5F * v.r, v.g - v.b, v.b + 0.2F}; };
    const Look look = CubeLook(CubeOf(65, linear));
    EXPECT_LT(LargestError(look, Prepared(Fitted(look, warnings))->Stored()), 2e-5);
}

TEST(LutFitting, LargerCurvesKeepAsManyEntriesAsFit)
{
    std::vector<std::string> warnings;
    const auto function = [](double x) { return std::sqrt(x); };
    const Look alone = CurveLook(CurvesOf(65536, function));
    EXPECT_EQ(Fitted(alone, warnings).curves->size, 21731U);
    Look beside = CubeLook(CubeOf(17, Same));
    beside.curves = CurvesOf(65536, function);
    EXPECT_EQ(Fitted(beside, warnings).curves->size, 21731U - 17 * 17 * 17);
    EXPECT_EQ(warnings.size(), 2U);
    // A square root between its first two stored entries.
    const double error = LargestError(alone, Prepared(Fitted(alone, warnings))->Stored());
    EXPECT_GT(error, 1e-4);
    EXPECT_LT(error, 3e-3);
}

TEST(LutFitting, RoundingAloneIsAHalfStepOfTheRange)
{
    const Look look = CubeLook(CubeOf(9, Swirled));
    const double error = LargestError(look, Prepared(look)->Stored());
    EXPECT_GT(error, 0.0);
    EXPECT_LT(error, 1.5 / 131070.0 + 1e-7);
}
