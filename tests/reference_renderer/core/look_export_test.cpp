#include "reference_renderer/core/look_export.h"

#include "reference_renderer/core/cube_writer.h"
#include "reference_renderer/core/lut_fitting.h"
#include "reference_renderer/core/lut_sampling.h"
#include "tests/doubles/under_sanitizers.h"
#include "tests/reference_renderer/core/look_fixtures.h"
#include "tests/reference_renderer/core/lut_set.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <random>

namespace ReferenceRenderer
{

namespace
{

constexpr double kUnseen = 1.0 / 4096.0;
const Cdl kGentle{{0.9F, 0.95F, 0.8F}, {0.02F, 0.01F, 0.1F}, {1.0F, 1.1F, 1.05F}, 0.8F};

// Values over -1..2 that a look does not limit.
const Domain kBeyond{Interval{-1.0F, 2.0F}, Interval{-1.0F, 2.0F}, Interval{-1.0F, 2.0F}};

GradeColours GradeOf(const PreparedLook& look)
{
    return [&look](std::span<Rgb> colours) {
        for (Rgb& colour : colours)
        {
            colour = look.Grade(colour);
        }
    };
}

CubeExport Export(const Look& look, std::optional<std::uint32_t> points = {})
{
    const auto prepared = Prepared(look);
    return ExportTables(&prepared->Stored(), points, GradeOf(*prepared));
}

// The largest difference that grading with the exported tables makes at random values of `domain`.
double ErrorOf(const Look& look, const Look& tables, const Domain& domain)
{
    const auto exact = Prepared(look);
    const auto kept = Prepared(tables);
    std::mt19937 random(3);
    std::uniform_real_distribution<float> share(0.0F, 1.0F);
    const auto value = [&](const Interval& interval) {
        return interval.low + (interval.high - interval.low) * share(random);
    };
    double largest = 0.0;
    for (int i = 0; i < 20000; ++i)
    {
        const Rgb input{value(domain[0]), value(domain[1]), value(domain[2])};
        largest = std::max(largest, Difference(exact->Grade(input), kept->Grade(input)));
    }
    return largest;
}

bool Tells(const CubeExport& exported, const std::string& words)
{
    return std::ranges::any_of(exported.losses, [&](const std::string& loss) {
        return loss.find(words) != std::string::npos;
    });
}

} // namespace

TEST(LookExport, TheNodesOfACubeAreThoseOfTheLook)
{
    const Domain video{Interval{-0.073F, 1.095F}, Interval{-0.073F, 1.095F}, Interval{0.0F, 0.7F}};
    constexpr std::array kSizes{2U, 26U, 33U, 65U};
    for (std::size_t i = 0; i < UnderSanitizers<std::size_t>(2, kSizes.size()); ++i)
    {
        const std::uint32_t size = kSizes[i];
        const Look look = CubeLook(CubeOf(size, Swirled, video));
        const auto stored = Prepared(look);
        for (const auto& points : {std::optional<std::uint32_t>(), std::optional(size)})
        {
            const CubeExport exported = Export(look, points);
            ASSERT_FALSE(exported.tables.curves);
            ASSERT_EQ(exported.tables.cube->size, size);
            EXPECT_TRUE(std::equal(exported.tables.cube->nodes.begin(),
                                   exported.tables.cube->nodes.end() - kNodePadding,
                                   stored->Stored().cubeNodes.begin()));
            EXPECT_EQ(exported.largestError, 0.0);
        }
    }
}

TEST(LookExport, TheCubeOfAnotherSizeIsSampledOverTheLooksOwnDomain)
{
    const Domain domain{Interval{-0.1F, 1.1F}, Interval{0.0F, 2.0F}, Interval{0.2F, 0.9F}};
    const Look look = CubeLook(CubeOf(9, Swirled, domain));
    const CubeExport exported = Export(look, 17);
    EXPECT_EQ(exported.tables.cube->size, 17U);
    EXPECT_EQ(exported.tables.cube->domain, domain);
    EXPECT_LT(exported.largestError, 1e-5) << "every second node is a node of the look";
    EXPECT_LT(ErrorOf(look, exported.tables, kBeyond), kUnseen);
}

TEST(LookExport, CurvesAloneAndCurvesBeforeACubeStayAsTheyAre)
{
    const Look curves = CurveLook(CurvesOf(4096, [](double x) { return std::cbrt(x); }));
    const CubeExport alone = Export(curves);
    EXPECT_TRUE(alone.tables.curves && !alone.tables.cube);
    EXPECT_TRUE(alone.losses.empty());
    EXPECT_LT(ErrorOf(curves, alone.tables, kBeyond), 1e-5);

    Look shaped = CubeLook(CubeOf(17, Inverted));
    shaped.curves = SetShaper();
    const CubeExport both = Export(shaped);
    EXPECT_TRUE(both.tables.curves && both.tables.cube);
    EXPECT_LT(ErrorOf(shaped, both.tables, shaped.curves->domain), 1e-5);
    EXPECT_TRUE(Tells(both, "a 1D LUT before a 3D LUT"));
    EXPECT_EQ(both.losses.size(), 1U);
}

TEST(LookExport, AskedForPointsTheyBecomeOneCubeAndTheErrorIsTold)
{
    const Look look = CurveLook(CurvesOf(4096, [](double x) { return std::cbrt(x); }));
    const CubeExport exported = Export(look, 33);
    EXPECT_FALSE(exported.tables.curves);
    EXPECT_EQ(exported.tables.cube->size, 33U);
    const double error = ErrorOf(look, exported.tables, {});
    EXPECT_GT(error, 0.05);
    EXPECT_NEAR(exported.largestError, error, 0.02);
    EXPECT_TRUE(Tells(exported, "largest error ") && Tells(exported, " of an 8-bit code, at "));
}

TEST(LookExport, ACorrectionGetsAsManyPointsAsItNeeds)
{
    Cdl scaled = kGentle;
    scaled.power = Cdl{}.power;
    const CubeExport straight = Export(CdlLook(scaled));
    EXPECT_EQ(straight.tables.cube->size, 33U);
    EXPECT_LT(straight.largestError, kUnseen);
    EXPECT_LT(ErrorOf(CdlLook(scaled), straight.tables, {}), kUnseen);
}

TEST(LookExport, ACorrectionThatNoCubeFollowsIsCarriedByCurves)
{
    const std::array<Cdl, 6> corrections{
        {{{0.74F, 0.84F, 1.04F}, {0.0F, 0.006F, 0.022F}, {1.28F, 1.2F, 1.08F}, 0.72F},
         {{4.0F, 0.1F, 1.0F}, {-1.0F, 0.5F, -0.3F}, {1.0F, 1.0F, 1.0F}, 0.5F},
         {{1.1F, 1.0F, 0.9F}, {-0.1F, 0.02F, 0.0F}, {0.7F, 1.4F, 3.0F}, 0.0F},
         {{10.0F, 3.0F, 0.9F}, {-5.0F, 0.3F, 0.05F}, {0.9F, 1.1F, 2.2F}, 0.9F},
         {{1.2F, 1.0F, 0.9F}, {-0.1F, 0.02F, 0.1F}, {1.5F, 1.4F, 0.65F}, 1.0F},
         {{0.9F, 1.0F, 1.3F}, {0.1F, -0.02F, 0.0F}, {1.2F, 0.8F, 1.0F}, 1.0F}}};
    for (std::size_t i = 0; i < corrections.size(); i += UnderSanitizers(5U, 1U))
    {
        const Cdl& cdl = corrections[i];
        const Look look = CdlLook(cdl);
        const CubeExport exported = Export(look);
        ASSERT_TRUE(exported.tables.curves);
        EXPECT_EQ(exported.tables.cube.has_value(), cdl.saturation != 1.0F);
        EXPECT_LT(exported.largestError, kUnseen);
        EXPECT_FALSE(Tells(exported, "largest error "));
        EXPECT_LT(ErrorOf(look, exported.tables, {}), kUnseen) << "power " << cdl.power[0];
    }
    // Rises too steeply out of black for the first two entries.
    const CubeExport root = Export(CdlLook({{1, 1, 1}, {0, 0, 0}, {0.5F, 0.5F, 0.5F}, 1.0F}));
    EXPECT_NEAR(root.largestError, 1.0 / 1024.0, 1e-5);
    EXPECT_TRUE(Tells(root, "largest error 0.25 of an 8-bit code, at "));
}

TEST(LookExport, TheErrorToldIsThatOfItsVeryPlace)
{
    // A peak between the nodes of all cubes, which no regular samples meet at its top.
    const GradeColours peak = [](std::span<Rgb> colours) {
        for (Rgb& colour : colours)
        {
            const float distance =
                std::max({std::abs(colour.r - 32.5F / 64.0F), std::abs(colour.g - 15.5F / 64.0F),
                          std::abs(colour.b - 48.5F / 64.0F)});
            colour.r += 0.5F * std::max(0.0F, 1.0F - 160.0F * distance);
        }
    };
    EXPECT_NEAR(ExportTables(nullptr, {}, peak).largestError, 0.5, 0.02);
}

TEST(LookExport, TheErrorToldIsThatOfTheHighestOfManyPeaks)
{
    // Found with four hundred thousand random colours, evaluated apart from this program.
    const CubeExport saturated =
        Export(CdlLook({{1.1F, 1.05F, 0.95F}, {-0.02F, 0, 0.01F}, {0.9F, 1, 1.1F}, 1.3F}));
    EXPECT_NEAR(saturated.largestError, 1.91 / 255.0, 0.02 / 255.0);
}

TEST(LookExport, CurvesReachAsFarAsAClampedCorrectionDoes)
{
    Cdl dark;
    dark.slope = {0.74F, 0.9F, 1.1F};
    dark.offset = {0.0F, 0.2F, -0.05F};
    dark.power = {1.3F, 1.2F, 1.1F};
    const CubeExport exported = Export(CdlLook(dark));
    EXPECT_LT(ErrorOf(CdlLook(dark), exported.tables, kBeyond), kUnseen);
    EXPECT_FALSE(Tells(exported, "outside"));
    dark.slope[0] = 0.1F;
    const CubeExport farther = Export(CdlLook(dark));
    EXPECT_LT(ErrorOf(CdlLook(dark), farther.tables, {}), kUnseen);
    EXPECT_TRUE(Tells(farther, "outside -0.222 to 2 the cube clips"));
}

TEST(LookExport, WithoutClampsMoreColourIsCarriedByCurvesToo)
{
    Cdl cdl{{1.2F, 1.0F, 0.9F}, {-0.1F, 0.02F, 0.1F}, {1.5F, 1.4F, 0.65F}, 1.5F};
    const Look unclamped = CdlLook(cdl, CdlMode::Unclamped);
    const CubeExport exported = Export(unclamped);
    EXPECT_LT(exported.largestError, kUnseen);
    EXPECT_LT(ErrorOf(unclamped, exported.tables, {}), kUnseen);
    EXPECT_GE(*std::ranges::min_element(exported.tables.curves->values), 0.0F)
        << "some programs limit what is between the tables";

    const Look clamped = CdlLook(cdl);
    const CubeExport cut = Export(clamped);
    EXPECT_GT(cut.largestError, kUnseen) << "the clamp runs across the cells of a cube";
    EXPECT_TRUE(Tells(cut, "largest error "));
    EXPECT_LE(ErrorOf(clamped, cut.tables, {}), cut.largestError + kUnseen);
    EXPECT_LE(cut.largestError, Export(clamped, 65).largestError);
}

TEST(LookExport, ACubeBehindACorrectionKeepsItsNodesBehindCurves)
{
    Look look = CdlLook({{1.1F, 1.0F, 0.9F}, {-0.1F, 0.02F, 0.1F}, {0.7F, 1.4F, 1.2F}, 1.0F});
    look.cube = CubeOf(17, Swirled);
    const CubeExport exported = Export(look);
    EXPECT_EQ(exported.tables.cube->size, 17U);
    EXPECT_LT(ErrorOf(look, exported.tables, {}), kUnseen);
    look.curves = CurvesOf(64, [](double x) { return x * x; });
    EXPECT_LT(ErrorOf(look, Export(look).tables, {}), kUnseen);
    look.strength = 0.5F;
    EXPECT_LE(Export(look).largestError, Export(look, 65).largestError);
    look.cube.reset();
    const CubeExport curves = Export(look);
    EXPECT_FALSE(curves.tables.cube);
    EXPECT_LT(ErrorOf(look, curves.tables, {}), kUnseen);
}

TEST(LookExport, WhatALookDoesOutsideTheRangeOfACubeIsTold)
{
    EXPECT_TRUE(
        Tells(Export(CdlLook(kGentle, CdlMode::Unclamped)), "outside 0 to 1 the cube clips"));
    EXPECT_TRUE(Tells(Export(CdlLook(kGentle)), "outside 0 to 1 the cube clips"))
        << "a slope below 1 reaches white above it";
    EXPECT_TRUE(Tells(Export(Look{}), "outside 0 to 1 the cube clips"));
    Cdl steep;
    steep.slope = {1.5F, 1.0F, 2.0F};
    EXPECT_FALSE(Tells(Export(CdlLook(steep)), "outside")) << "black and white stay where they are";
    EXPECT_TRUE(Tells(Export(CdlLook(steep, CdlMode::Unclamped)), "outside"));
}

TEST(LookExport, ValuesBeyondBlackAndWhiteAreKeptAndTold)
{
    const Look look = CubeLook(CubeOf(5, Swirled));
    const CubeExport exported = Export(look);
    EXPECT_LT(ErrorOf(look, exported.tables, {}), 1e-5);
    EXPECT_TRUE(Tells(exported, "it holds values from -0.1 to 1.2, which some programs limit"));
}

TEST(LookExport, AWeakerCubeIsSampledAtItsOwnPoints)
{
    Look look = CubeLook(CubeOf(9, Inverted));
    look.strength = 0.5F;
    const CubeExport exported = Export(look);
    EXPECT_EQ(exported.tables.cube->size, 9U);
    EXPECT_LT(ErrorOf(look, exported.tables, {}), kUnseen);
    EXPECT_TRUE(Tells(exported, "outside 0 to 1")) << "half of the input goes on there";
}

TEST(LookExport, ALookOfWhichNothingIsKnownIsSampled)
{
    const Look look = CubeLook(CubeOf(33, Inverted));
    const auto prepared = Prepared(look);
    const CubeExport exported = ExportTables(nullptr, {}, GradeOf(*prepared));
    EXPECT_EQ(exported.tables.cube->size, 33U);
    EXPECT_LT(ErrorOf(look, exported.tables, kBeyond), kUnseen);
    EXPECT_TRUE(exported.losses.empty());
}

TEST(LookExport, TablesOfNoStrengthLeaveACorrection)
{
    Look look = CdlLook(kGentle);
    EXPECT_TRUE(IsCorrection(Prepared(look)->Stored()));
    EXPECT_TRUE(IsCorrection(Prepared(Look{})->Stored()));
    look.cube = CubeOf(2, Inverted);
    EXPECT_FALSE(IsCorrection(Prepared(look)->Stored()));
    look.strength = 0.0F;
    EXPECT_TRUE(IsCorrection(Prepared(look)->Stored()));
}

} // namespace ReferenceRenderer
