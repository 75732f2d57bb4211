#include "reference_renderer/core/prepared_look.h"

#include "reference_renderer/core/colour_math.h"
#include "tests/reference_renderer/core/look_fixtures.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

namespace ReferenceRenderer
{

namespace
{

using Pixel8 = std::array<std::uint8_t, 4>;
using PixelFloat = std::array<float, 4>;

Pixel8 Render8(const PreparedLook& look, Pixel8 pixel)
{
    auto* const bytes = reinterpret_cast<std::byte*>(pixel.data());
    look.Row8()(look, bytes, bytes, 1);
    return pixel;
}

PixelFloat RenderFloat(const PreparedLook& look, PixelFloat pixel, bool linear = false)
{
    auto* const bytes = reinterpret_cast<std::byte*>(pixel.data());
    look.RowFloat(linear)(look, bytes, bytes, 1);
    return pixel;
}

// The published formula in double precision.
std::array<double, 3> CdlReference(const Cdl& cdl, const std::array<double, 3>& rgb, bool clamped)
{
    const auto limit = [&](double v) { return clamped ? std::min(std::max(v, 0.0), 1.0) : v; };
    std::array<double, 3> out{};
    for (std::size_t i = 0; i < 3; ++i)
    {
        const double moved = limit(rgb[i] * cdl.slope[i] + cdl.offset[i]);
        out[i] = moved > 0.0 ? std::pow(moved, double{cdl.power[i]}) : moved;
    }
    const double luma = 0.2126 * out[0] + 0.7152 * out[1] + 0.0722 * out[2];
    for (double& value : out)
    {
        value = limit(luma + cdl.saturation * (value - luma));
    }
    return out;
}

const Cdl kStrong{{1.3F, 0.85F, 1.05F}, {-0.04F, 0.08F, 0.01F}, {0.7F, 1.4F, 1.0F}, 1.3F};

double HalfOf(double value)
{
    return 0.5 * value + 0.1;
}

// A look of the given steps: curves that give HalfOf, a cube that gives Inverted.
Look Combination(CdlMode mode, bool curves, bool cube)
{
    Look look = CdlLook(mode == CdlMode::None ? Cdl{} : kStrong, mode);
    if (curves)
    {
        look.curves = CurvesOf(5, HalfOf);
    }
    if (cube)
    {
        look.cube = CubeOf(3, Inverted);
    }
    return look;
}

} // namespace

TEST(PreparedLook, EightBitChannelsAreBlueGreenRedAlpha)
{
    const Cdl redUp{{0.0F, 1.0F, 1.0F}, {1.0F, 0.0F, 0.0F}, {1.0F, 1.0F, 1.0F}, 1.0F};
    EXPECT_EQ(Render8(*Prepared(CdlLook(redUp)), {10, 20, 30, 40}), (Pixel8{10, 20, 255, 40}));
}

TEST(PreparedLook, FloatChannelsAreBlueGreenRedAlphaToo)
{
    const Cdl redUp{{0.0F, 1.0F, 1.0F}, {1.0F, 0.0F, 0.0F}, {1.0F, 1.0F, 1.0F}, 1.0F};
    const PixelFloat out = RenderFloat(*Prepared(CdlLook(redUp)), {0.1F, 0.2F, 0.3F, 0.4F});
    EXPECT_FLOAT_EQ(out[0], 0.1F);
    EXPECT_FLOAT_EQ(out[1], 0.2F);
    EXPECT_FLOAT_EQ(out[2], 1.0F);
    EXPECT_EQ(out[3], 0.4F);
}

TEST(PreparedLook, EightBitCorrectionsAgreeWithTheFormulaWithinOneCode)
{
    const auto look = Prepared(CdlLook(kStrong));
    std::mt19937 random(11);
    for (int i = 0; i < 20000; ++i)
    {
        const std::uint32_t bits = static_cast<std::uint32_t>(random());
        Pixel8 pixel{};
        std::memcpy(pixel.data(), &bits, 4);
        const Pixel8 out = Render8(*look, pixel);
        const auto exact =
            CdlReference(kStrong, {pixel[2] / 255.0, pixel[1] / 255.0, pixel[0] / 255.0}, true);
        ASSERT_NEAR(out[2], exact[0] * 255.0, 0.501);
        ASSERT_NEAR(out[1], exact[1] * 255.0, 0.501);
        ASSERT_NEAR(out[0], exact[2] * 255.0, 0.501);
        ASSERT_EQ(out[3], pixel[3]);
    }
}

TEST(PreparedLook, FloatCorrectionsAgreeWithTheFormulaClampedOrNot)
{
    std::mt19937 random(12);
    std::uniform_real_distribution<float> value(-1.0F, 4.0F);
    for (const CdlMode mode : {CdlMode::Clamped, CdlMode::Unclamped})
    {
        const auto look = Prepared(CdlLook(kStrong, mode));
        for (int i = 0; i < 5000; ++i)
        {
            const PixelFloat pixel{value(random), value(random), value(random), 1.0F};
            const PixelFloat out = RenderFloat(*look, pixel);
            const auto exact =
                CdlReference(kStrong, {pixel[2], pixel[1], pixel[0]}, mode == CdlMode::Clamped);
            ASSERT_NEAR(out[2], exact[0], 2e-5);
            ASSERT_NEAR(out[1], exact[1], 2e-5);
            ASSERT_NEAR(out[0], exact[2], 2e-5);
        }
    }
}

TEST(PreparedLook, WithoutAPowerFloatCorrectionsAgreeWithTheFormulaToo)
{
    Cdl cdl = kStrong;
    cdl.power = Cdl{}.power;
    cdl.saturation = 1.0F;
    const auto clampedLook = Prepared(CdlLook(cdl));
    const auto freeLook = Prepared(CdlLook(cdl, CdlMode::Unclamped));
    std::mt19937 random(13);
    std::uniform_real_distribution<float> value(-1.0F, 4.0F);
    for (int i = 0; i < 5000; ++i)
    {
        const PixelFloat pixel{value(random), value(random), value(random), 1.0F};
        const PixelFloat clamped = RenderFloat(*clampedLook, pixel);
        const PixelFloat free = RenderFloat(*freeLook, pixel);
        const auto exact = CdlReference(cdl, {pixel[2], pixel[1], pixel[0]}, true);
        const auto exactFree = CdlReference(cdl, {pixel[2], pixel[1], pixel[0]}, false);
        for (std::size_t channel = 0; channel < 3; ++channel)
        {
            ASSERT_NEAR(clamped[2 - channel], exact[channel], 1e-6);
            ASSERT_NEAR(free[2 - channel], exactFree[channel], 1e-6);
        }
    }
}

TEST(PreparedLook, ALookWithoutAnyStepKeepsEveryEightBitCode)
{
    const auto look = Prepared({});
    for (unsigned code = 0; code < 256; ++code)
    {
        const auto c = static_cast<std::uint8_t>(code);
        ASSERT_EQ(Render8(*look, {c, c, c, c}), (Pixel8{c, c, c, c}));
    }
}

TEST(PreparedLook, AnIdentityCubeKeepsEveryEightBitCode)
{
    const auto look = Prepared(CubeLook(CubeOf(27, Same)));
    for (unsigned code = 0; code < 256; ++code)
    {
        const auto c = static_cast<std::uint8_t>(code);
        const auto d = static_cast<std::uint8_t>(255 - code);
        ASSERT_EQ(Render8(*look, {c, d, c, 7}), (Pixel8{c, d, c, 7}));
    }
}

TEST(PreparedLook, EveryCombinationOfStepsIsAppliedInOrder)
{
    const Rgb input{0.2F, 0.6F, 0.9F};
    for (const CdlMode mode : {CdlMode::None, CdlMode::Clamped, CdlMode::Unclamped})
    {
        for (const bool curves : {false, true})
        {
            for (const bool cube : {false, true})
            {
                const Look look = Combination(mode, curves, cube);
                std::array<double, 3> exact{input.r, input.g, input.b};
                if (mode != CdlMode::None)
                {
                    exact = CdlReference(kStrong, exact, mode == CdlMode::Clamped);
                }
                for (double& v : exact)
                {
                    v = curves ? HalfOf(std::min(std::max(v, 0.0), 1.0)) : v;
                    v = cube ? 1.0 - std::min(std::max(v, 0.0), 1.0) : v;
                }
                const Rgb out = Prepared(look)->Grade(input);
                EXPECT_LT(Distance(out, {static_cast<float>(exact[0]), static_cast<float>(exact[1]),
                                         static_cast<float>(exact[2])}),
                          3e-5)
                    << static_cast<int>(mode) << curves << cube;
            }
        }
    }
}

TEST(PreparedLook, StrengthMixesTheTablesWithTheirInput)
{
    Look look = CubeLook(CubeOf(2, Inverted));
    look.strength = 0.25F;
    EXPECT_LT(Distance(Prepared(look)->Grade({1.0F, 0.0F, 0.5F}), {0.75F, 0.25F, 0.5F}), 1e-6);
}

TEST(PreparedLook, LinearPicturesAreGradedAsTheyAreDisplayed)
{
    const auto look = Prepared(CubeLook(CubeOf(2, Inverted)));
    const PixelFloat out = RenderFloat(*look, {0.0F, DecodeSrgb(0.25F), 1.0F, 0.5F}, true);
    EXPECT_NEAR(out[0], 1.0F, 1e-5);
    EXPECT_NEAR(out[1], DecodeSrgb(0.75F), 1e-5);
    EXPECT_NEAR(out[2], 0.0F, 1e-5);
    EXPECT_EQ(out[3], 0.5F);
}

TEST(PreparedLook, LinearValuesOutsideTheRangeSurviveAnUnclampedLook)
{
    const auto look = Prepared(CdlLook({}, CdlMode::Unclamped));
    const PixelFloat out = RenderFloat(*look, {-0.5F, 8.0F, 100.0F, 1.0F}, true);
    EXPECT_NEAR(out[0], -0.5F, 1e-5);
    EXPECT_NEAR(out[1], 8.0F, 1e-4);
    EXPECT_NEAR(out[2], 100.0F, 1e-2);
}

TEST(PreparedLook, NaNAndInfinitiesNeverComeOut)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    Cdl extreme = kStrong;
    extreme.slope = {1e30F, 1e30F, 0.0F};
    extreme.power = {20.0F, 1.0F, 0.1F};
    extreme.saturation = 1e20F;
    for (const CdlMode mode : {CdlMode::None, CdlMode::Clamped, CdlMode::Unclamped})
    {
        for (const bool cube : {false, true})
        {
            Look look = CdlLook(extreme, mode);
            look.strength = 0.5F;
            if (cube)
            {
                look.cube = CubeOf(3, Swirled);
            }
            const auto prepared = Prepared(look);
            for (const PixelFloat& pixel :
                 {PixelFloat{nan, infinity, -infinity, 1}, PixelFloat{infinity, infinity, nan, 1},
                  PixelFloat{kLargestFloat, -kLargestFloat, 1e-45F, 1}})
            {
                for (const bool linear : {false, true})
                {
                    const PixelFloat out = RenderFloat(*prepared, pixel, linear);
                    EXPECT_TRUE(std::isfinite(out[0]) && std::isfinite(out[1]) &&
                                std::isfinite(out[2]));
                }
            }
        }
    }
}

TEST(PreparedLook, AlphaPassesBitForBit)
{
    const auto look = Prepared(CubeLook(CubeOf(2, Inverted)));
    PixelFloat pixel{0, 0, 0, 0};
    const std::uint32_t signalling = 0x7F800001U;
    std::memcpy(&pixel[3], &signalling, 4);
    std::array<std::byte, 16> out{};
    look->RowFloat(true)(*look, reinterpret_cast<const std::byte*>(pixel.data()), out.data(), 1);
    EXPECT_EQ(std::memcmp(out.data() + 12, &signalling, 4), 0);
}

TEST(PreparedLook, ARecordThatCannotBeUsedLeavesANeutralLook)
{
    PreparedLook look;
    look.Read(RecordOf(CubeLook(CubeOf(2, Inverted))));
    EXPECT_EQ(look.Read({}), RecordState::Empty);
    EXPECT_EQ(Render8(look, {1, 2, 3, 4}), (Pixel8{1, 2, 3, 4}));
}

} // namespace ReferenceRenderer
