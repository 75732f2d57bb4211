#include "reference_renderer/core/colour_chain.h"

#include "tests/reference_renderer/core/look_fixtures.h"

#include <gtest/gtest.h>

#include <cmath>

namespace ReferenceRenderer
{

namespace
{

void ExpectNear(const Triple& value, const Triple& expected, double tolerance = 1e-6)
{
    for (std::size_t i = 0; i < 3; ++i)
    {
        EXPECT_NEAR(value[i], expected[i], tolerance) << "channel " << i;
    }
}

CurveStep OneCurve(const std::vector<CurvePoint>& points)
{
    return {{points, points, points}};
}

} // namespace

TEST(ColourChain, AMatrixMixesAndThenMoves)
{
    const AffineStep matrix{{{{1, 2, 3}, {0, 1, 0}, {-1, 0, 0.5}}}, {0.1, 0.2, 0.3}};
    ExpectNear(Applied(matrix, {1.0, 10.0, 100.0}), {321.1, 10.2, 49.3});
    EXPECT_FALSE(IsSeparable(matrix));
    EXPECT_TRUE(IsSeparable(AffineStep{}));
}

TEST(ColourChain, CurvesAreStraightBetweenPointsAndConstantBeyond)
{
    const CurveStep curve = OneCurve({{-1, 2}, {0, 4}, {4, 0}});
    ExpectNear(Applied(curve, {-0.5, 1.0, 3.0}), {3.0, 3.0, 1.0});
    ExpectNear(Applied(curve, {-9.0, 9.0, 0.0}), {2.0, 0.0, 4.0});
    EXPECT_EQ(Applied(curve, {std::nan(""), 0, 0})[0], 2.0);
}

TEST(ColourChain, StepsWorkInTheirOrder)
{
    const FunctionStep square{{[](double x) { return x * x; }, [](double x) { return x + 1; },
                               [](double x) { return -x; }}};
    const ColourChain chain{square, OneCurve({{0, 0}, {100, 50}})};
    ExpectNear(Applied(chain, {4.0, 4.0, -4.0}), {8.0, 2.5, 2.0});
    EXPECT_TRUE(IsSeparable(square));
}

TEST(ColourChain, ACorrectionClampsOrDoesNot)
{
    const Cdl cdl{{2.0F, 0.5F, 1.0F}, {-0.25F, 0.0F, 0.5F}, {2.0F, 1.0F, 0.5F}, 1.0F};
    ExpectNear(Applied(CdlStep{cdl, CdlMode::Clamped}, {0.5, 0.6, -1.0}), {0.5625, 0.3, 0.0});
    ExpectNear(Applied(CdlStep{cdl, CdlMode::Unclamped}, {2.0, 0.6, -1.0}), {14.0625, 0.3, -0.5});
}

TEST(ColourChain, SaturationIsAroundTheLumaOfRec709)
{
    Cdl cdl;
    cdl.saturation = 0.0F;
    const double luma = 0.2126 * 0.8 + 0.7152 * 0.4 + 0.0722 * 0.2;
    ExpectNear(Applied(CdlStep{cdl}, {0.8, 0.4, 0.2}), {luma, luma, luma});
    EXPECT_FALSE(IsSeparable(CdlStep{cdl}));
    EXPECT_TRUE(IsSeparable(CdlStep{}));
}

TEST(ColourChain, AReversedCorrectionTakesItBack)
{
    const Cdl cdl{{1.2F, 0.9F, 1.1F}, {-0.05F, 0.02F, 0.01F}, {1.3F, 0.8F, 1.1F}, 0.7F};
    for (const CdlMode mode : {CdlMode::Clamped, CdlMode::Unclamped})
    {
        const ColourChain there{CdlStep{cdl, mode}, CdlStep{cdl, mode, true}};
        ExpectNear(Applied(there, {0.6, 0.4, 0.3}), {0.6, 0.4, 0.3});
    }
    const ColourChain unclamped{CdlStep{cdl, CdlMode::Unclamped, false},
                                CdlStep{cdl, CdlMode::Unclamped, true}};
    ExpectNear(Applied(unclamped, {-0.4, 3.0, 1.5}), {-0.4, 3.0, 1.5});
}

TEST(ColourChain, ACubeIsTetrahedralOrTrilinear)
{
    // A cell of one corner: its product is trilinear, its smallest fraction tetrahedral.
    Cube cube = CubeOf(2, [](const Rgb& v) {
        const float corner = v.r * v.g * v.b;
        return Rgb{corner, 2.0F * corner, v.b};
    });
    ExpectNear(Applied(CubeStep{cube, true}, {0.5, 0.25, 0.75}), {0.09375, 0.1875, 0.75});
    ExpectNear(Applied(CubeStep{cube, false}, {0.5, 0.25, 0.75}), {0.25, 0.5, 0.75});
}

TEST(ColourChain, ATrilinearCubeHoldsWhatItsNodesHold)
{
    const Domain domain{Interval{-1, 1}, Interval{0, 2}, Interval{0, 4}};
    // Linear along each axis, so exact between nodes.
    const auto grading = [](const Rgb& v) { return Rgb{v.r * v.g, v.g * v.b + 1, v.r - v.b}; };
    const CubeStep step{CubeOf(5, grading, domain), true};
    for (const Rgb& v : {Rgb{0.3F, 0.7F, 3.1F}, Rgb{-0.95F, 1.99F, 0.1F}, Rgb{1.0F, 2.0F, 4.0F}})
    {
        const Rgb exact = grading(v);
        ExpectNear(Applied(step, {v.r, v.g, v.b}), {exact.r, exact.g, exact.b});
    }
    const Rgb corner = grading({1.0F, 0.0F, 4.0F});
    ExpectNear(Applied(step, {7.0, -3.0, 9.0}), {corner.r, corner.g, corner.b});
}

} // namespace ReferenceRenderer
