#include "reference_renderer/core/colour_math.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace ReferenceRenderer
{

namespace
{

constexpr float kInfinity = std::numeric_limits<float>::infinity();
const float kNan = std::nanf("");

} // namespace

TEST(ColourMath, PowersAgreeWithTheExactOnes)
{
    for (const float exponent : {0.1F, 1.0F / 2.4F, 0.5F, 0.9F, 1.1F, 2.0F, 2.4F, 4.0F})
    {
        for (float base = 0.001F; base < 20.0F; base *= 1.013F)
        {
            const double exact = std::pow(double{base}, double{exponent});
            if (exact > 1e-4 && exact < 1e4)
            {
                ASSERT_NEAR(PowerOf(base, exponent) / exact, 1.0, 2e-6) << base << "^" << exponent;
            }
        }
    }
}

TEST(ColourMath, ThePowerOfOneGivesBackTheBase)
{
    EXPECT_EQ(PowerOf(0.1F, 1.0F), 0.1F);
    EXPECT_EQ(PowerOf(12345.678F, 1.0F), 12345.678F);
}

TEST(ColourMath, BasesWithoutAPowerGiveZero)
{
    EXPECT_EQ(PowerOf(0.0F, 0.4F), 0.0F);
    EXPECT_EQ(PowerOf(-0.5F, 2.0F), 0.0F);
    EXPECT_EQ(PowerOf(kNan, 2.0F), 0.0F);
    EXPECT_EQ(PowerOf(1e-42F, 0.4F), 0.0F);
}

TEST(ColourMath, PowersStayFinite)
{
    EXPECT_TRUE(std::isfinite(PowerOf(kLargestFloat, 30.0F)));
    EXPECT_TRUE(std::isfinite(PowerOf(kInfinity, 2.0F)));
    EXPECT_TRUE(std::isfinite(PowerOf(1e-30F, 1e30F)));
}

TEST(ColourMath, TheCurveForDisplayIsThatOfSrgb)
{
    EXPECT_NEAR(EncodeSrgb(0.18F), 0.461356, 1e-5);
    EXPECT_NEAR(EncodeSrgb(0.001F), 0.01292, 1e-7);
    EXPECT_NEAR(EncodeSrgb(1.0F), 1.0, 1e-6);
    EXPECT_NEAR(DecodeSrgb(0.5F), 0.214041, 1e-6);
}

TEST(ColourMath, TheCurveForDisplayAndItsInverseAreWithinAMillionthForValuesOfAnySize)
{
    for (float value = 1e-30F; value < 1e15F; value *= 1.0003F)
    {
        const double linear = value;
        const double encoded =
            linear <= 0.0031308 ? linear * 12.92 : 1.055 * std::pow(linear, 1.0 / 2.4) - 0.055;
        const double decoded =
            linear <= 0.04045 ? linear / 12.92 : std::pow((linear + 0.055) / 1.055, 2.4);
        ASSERT_NEAR(EncodeSrgb(value), encoded, 1e-6 * encoded) << value;
        ASSERT_NEAR(DecodeSrgb(value), decoded, 1e-6 * decoded) << value;
    }
    EXPECT_EQ(DecodeSrgb(kLargestFloat), kLargestFloat);
    EXPECT_EQ(DecodeSrgb(-1e30F), -kLargestFloat);
    EXPECT_TRUE(std::signbit(EncodeSrgb(-0.0F)));
}

TEST(ColourMath, TheCurveForDisplayIsMirroredAndGoesOnAboveOne)
{
    EXPECT_EQ(EncodeSrgb(-0.18F), -EncodeSrgb(0.18F));
    EXPECT_EQ(DecodeSrgb(-0.5F), -DecodeSrgb(0.5F));
    EXPECT_NEAR(EncodeSrgb(4.0F), 1.055 * std::pow(4.0, 1.0 / 2.4) - 0.055, 1e-5);
}

TEST(ColourMath, DecodingUndoesEncoding)
{
    for (float value = -4.0F; value < 16.0F; value += 0.0137F)
    {
        ASSERT_NEAR(DecodeSrgb(EncodeSrgb(value)), value, 5e-6F * (1.0F + std::abs(value)));
    }
}

TEST(ColourMath, WhatIsNoNumberBecomesOne)
{
    EXPECT_EQ(Finite(kNan), 0.0F);
    EXPECT_EQ(Finite(kInfinity), kLargestFloat);
    EXPECT_EQ(Finite(-kInfinity), -kLargestFloat);
    EXPECT_EQ(Clamp01(kNan), 0.0F);
    EXPECT_EQ(Clamp01(kInfinity), 1.0F);
}

TEST(ColourMath, AClampedCorrectionFollowsThePublishedSteps)
{
    const Cdl cdl{{1.2F, 0.9F, 1.0F}, {0.05F, -0.1F, 0.0F}, {0.8F, 1.3F, 2.2F}, 1.4F};
    const double exact = std::pow(0.3 * 1.2 + 0.05, 0.8);
    EXPECT_NEAR(ApplySlopeOffsetPower<CdlMode::Clamped>(cdl, 0, 0.3F), exact, 1e-6);
    EXPECT_EQ(ApplySlopeOffsetPower<CdlMode::Clamped>(cdl, 0, 2.0F), 1.0F);
    EXPECT_EQ(ApplySlopeOffsetPower<CdlMode::Clamped>(cdl, 1, 0.05F), 0.0F);

    const Rgb saturated = ApplySaturation<CdlMode::Clamped>(cdl, {0.9F, 0.2F, 0.0F});
    const double luma = 0.2126 * 0.9 + 0.7152 * 0.2;
    EXPECT_EQ(saturated.r, 1.0F);
    EXPECT_NEAR(saturated.g, luma + 1.4 * (0.2 - luma), 1e-6);
    EXPECT_EQ(saturated.b, 0.0F);
}

TEST(ColourMath, AnUnclampedCorrectionKeepsValuesOutsideTheRange)
{
    const Cdl cdl{{1.0F, 1.0F, 1.0F}, {-0.5F, 0.0F, 0.0F}, {2.0F, 2.0F, 2.0F}, 1.0F};
    EXPECT_EQ(ApplySlopeOffsetPower<CdlMode::Unclamped>(cdl, 0, 0.25F), -0.25F);
    EXPECT_NEAR(ApplySlopeOffsetPower<CdlMode::Unclamped>(cdl, 1, 3.0F), 9.0, 1e-4);
}

} // namespace ReferenceRenderer
