#include "reference_renderer/core/look_explanation.h"

#include "reference_renderer/core/colour_math.h"
#include "tests/reference_renderer/core/look_fixtures.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>

namespace ReferenceRenderer
{

namespace
{

const Cdl kStrong{{1.3F, 0.85F, 1.05F}, {-0.04F, 0.08F, 0.01F}, {0.7F, 1.4F, 1.0F}, 1.3F};
const Domain kUneven{Interval{-0.5F, 1.5F}, Interval{0.0F, 4.0F}, Interval{0.1F, 0.7F}};

// Looks of every combination of steps.
std::vector<Look> Looks()
{
    std::vector<Look> looks;
    for (const CdlMode mode : {CdlMode::None, CdlMode::Clamped, CdlMode::Unclamped})
    {
        for (const float strength : {1.0F, 0.35F})
        {
            for (const bool curves : {false, true})
            {
                for (const bool cube : {false, true})
                {
                    Look look = CdlLook(mode == CdlMode::None ? Cdl{} : kStrong, mode);
                    look.strength = strength;
                    if (curves)
                    {
                        look.curves = CurvesOf(
                            9, [](double x) { return std::cbrt(x) - 0.1; }, kUneven);
                    }
                    if (cube)
                    {
                        look.cube = CubeOf(6, Swirled, kUneven);
                    }
                    looks.push_back(std::move(look));
                }
            }
        }
    }
    Cdl extreme = kStrong;
    extreme.slope = {1e30F, 1e30F, 0.0F};
    extreme.saturation = 1e20F;
    looks.push_back(CdlLook(extreme, CdlMode::Unclamped));
    looks.back().cube = CubeOf(2, Inverted);
    looks.back().strength = 0.5F;
    return looks;
}

// Bit for bit: also where both are infinite.
bool IsSame(float left, float right)
{
    return std::bit_cast<std::uint32_t>(left) == std::bit_cast<std::uint32_t>(right);
}

float ValueOf(std::mt19937& random)
{
    constexpr std::array kOdd{0.0F,
                              -0.0F,
                              1.0F,
                              0.25F,
                              std::numeric_limits<float>::quiet_NaN(),
                              std::numeric_limits<float>::infinity(),
                              -std::numeric_limits<float>::infinity(),
                              kLargestFloat,
                              1e-45F};
    const auto number = static_cast<std::uint32_t>(random());
    if (number % 8 == 0)
    {
        return kOdd[number / 8 % kOdd.size()];
    }
    return static_cast<float>(number) / 1e9F - 1.0F;
}

} // namespace

TEST(LookExplanation, ItsResultIsThatOfRenderedFloatsToTheLastBit)
{
    std::mt19937 random(21);
    for (const Look& look : Looks())
    {
        const auto prepared = Prepared(look);
        for (int i = 0; i < 400; ++i)
        {
            for (const PixelKind kind : {PixelKind::Floats, PixelKind::LinearFloats})
            {
                const Rgb input{ValueOf(random), ValueOf(random), ValueOf(random)};
                std::array<float, 4> pixel{input.b, input.g, input.r, 1.0F};
                auto* const bytes = reinterpret_cast<std::byte*>(pixel.data());
                prepared->RowFloat(kind == PixelKind::LinearFloats)(*prepared, bytes, bytes, 1);
                const Rgb told = Explain(*prepared, kind, input).result;
                ASSERT_TRUE(IsSame(told.r, pixel[2]) && IsSame(told.g, pixel[1]) &&
                            IsSame(told.b, pixel[0]))
                    << input.r << ' ' << input.g << ' ' << input.b;
            }
        }
    }
}

TEST(LookExplanation, ItsCodesAreThoseOfRenderedCodes)
{
    std::mt19937 random(22);
    for (const Look& look : Looks())
    {
        const auto prepared = Prepared(look);
        for (int i = 0; i < 400; ++i)
        {
            const auto code = [&random] { return static_cast<std::uint8_t>(random()); };
            std::array<std::uint8_t, 4> pixel{code(), code(), code(), 7};
            const Rgb input{static_cast<float>(pixel[2]) / 255.0F,
                            static_cast<float>(pixel[1]) / 255.0F,
                            static_cast<float>(pixel[0]) / 255.0F};
            const LookExplanation told = Explain(*prepared, PixelKind::Codes, input);
            auto* const bytes = reinterpret_cast<std::byte*>(pixel.data());
            prepared->Row8()(*prepared, bytes, bytes, 1);
            ASSERT_EQ(told.codes, (std::array<std::uint32_t, 3>{pixel[2], pixel[1], pixel[0]}));
            ASSERT_NEAR(told.codes[0], 255.0F * Clamp01(told.result.r), 0.52);
            ASSERT_NEAR(told.codes[1], 255.0F * Clamp01(told.result.g), 0.52);
            ASSERT_NEAR(told.codes[2], 255.0F * Clamp01(told.result.b), 0.52);
        }
    }
}

TEST(LookExplanation, EveryStepOfACorrectionIsThere)
{
    const Cdl cdl{{2.0F, 0.5F, 1.0F}, {0.25F, 0.125F, -0.5F}, {2.0F, 2.0F, 1.0F}, 0.5F};
    const auto told = Explain(*Prepared(CdlLook(cdl)), PixelKind::Floats, {0.5F, 0.25F, 0.25F});
    ASSERT_TRUE(told.cdl);
    EXPECT_EQ(Distance(told.cdl->slope, {1.0F, 0.125F, 0.25F}), 0.0);
    EXPECT_EQ(Distance(told.cdl->offset, {1.25F, 0.25F, -0.25F}), 0.0);
    EXPECT_EQ(Distance(told.cdl->limited, {1.0F, 0.25F, 0.0F}), 0.0);
    EXPECT_LT(Distance(told.cdl->power, {1.0F, 0.0625F, 0.0F}), 1e-6);
    EXPECT_NEAR(told.cdl->luma, 0.2126 + 0.7152 * 0.0625, 1e-6);
    EXPECT_NEAR(told.cdl->saturation.b, 0.5 * told.cdl->luma, 1e-6);
    EXPECT_EQ(Distance(told.cdl->result, told.result), 0.0);
    EXPECT_FALSE(told.encoded || told.curves || told.cube || told.mixed || told.decoded);

    const auto free = Explain(*Prepared(CdlLook(cdl, CdlMode::Unclamped)), PixelKind::Floats,
                              {0.5F, 0.25F, 0.25F});
    EXPECT_EQ(Distance(free.cdl->limited, free.cdl->offset), 0.0);
    EXPECT_EQ(free.cdl->power.b, -0.25F);
}

TEST(LookExplanation, EntriesNodesAndWeightsAreThoseThatTheValueLiesBetween)
{
    Look look = CubeLook(CubeOf(5, Swirled));
    look.curves = CurvesOf(3, [](double x) { return x; });
    look.strength = 0.5F;
    const auto prepared = Prepared(look);
    const auto told = Explain(*prepared, PixelKind::Floats, {0.75F, 0.3F, 1.0F});
    ASSERT_TRUE(told.curves && told.cube && told.mixed);
    EXPECT_EQ(told.curves->places[0].entry, 1U);
    EXPECT_NEAR(told.curves->places[0].fraction, 0.5, 1e-5);
    EXPECT_EQ(told.curves->places[0].low, prepared->Stored().curveValues[1]);
    EXPECT_EQ(told.curves->places[2].high, prepared->Stored().curveValues[8]);
    EXPECT_EQ(told.cube->place.cell[1], 1U);
    EXPECT_EQ(told.cube->place.cell[2], 3U) << "the end of the last cell";
    float sum = 0.0F;
    Rgb mean;
    for (const CubeCorner& corner : told.cube->corners)
    {
        const auto& [r, g, b] = corner.node;
        const float* const node =
            prepared->Stored().cubeNodes.data() + std::size_t{3} * (r + 5 * (g + 5 * b));
        EXPECT_EQ(Distance(corner.value, {node[0], node[1], node[2]}), 0.0);
        sum += corner.weight;
        mean = {mean.r + corner.weight * node[0], mean.g + corner.weight * node[1],
                mean.b + corner.weight * node[2]};
    }
    EXPECT_NEAR(sum, 1.0, 1e-6);
    EXPECT_LT(Distance(mean, told.cube->result), 1e-6);
    EXPECT_NEAR(told.mixed->r, 0.5 * 0.75 + 0.5 * told.cube->result.r, 1e-6);
}

TEST(LookExplanation, LinearLightIsEncodedAndDecoded)
{
    const auto told = Explain(*Prepared(CubeLook(CubeOf(2, Inverted))), PixelKind::LinearFloats,
                              {DecodeSrgb(0.25F), 1.0F, 0.0F});
    ASSERT_TRUE(told.encoded && told.decoded);
    EXPECT_NEAR(told.encoded->r, 0.25, 1e-5);
    EXPECT_NEAR(told.mixed->r, 0.75, 1e-5);
    EXPECT_NEAR(told.result.r, DecodeSrgb(0.75F), 1e-5);
}

} // namespace ReferenceRenderer
