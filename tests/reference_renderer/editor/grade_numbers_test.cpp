#include "reference_renderer/editor/grade_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace ReferenceRenderer
{

namespace
{

// A correction of which no number is neutral.
GradeNumbers Graded()
{
    GradeNumbers numbers;
    numbers.cdl.slope = {1.2F, 0.9F, 0.7F};
    numbers.cdl.offset = {0.02F, -0.03F, 0.05F};
    numbers.cdl.power = {0.8F, 1.1F, 1.3F};
    numbers.cdl.saturation = 1.25F;
    return numbers;
}

double Corrected(const Cdl& cdl, std::size_t channel, double value)
{
    return std::pow(value * cdl.slope[channel] + cdl.offset[channel], cdl.power[channel]);
}

TEST(GradeNumbers, AllAreNeutralWhereTheLookIs)
{
    for (const ControlFacts& facts : kControls)
    {
        EXPECT_EQ(NumberOf({}, facts.control), facts.neutral) << facts.name;
        EXPECT_TRUE(IsNeutral({}, facts.control)) << facts.name;
    }
}

TEST(GradeNumbers, WhatIsSetIsWhatIsRead)
{
    for (const ControlFacts& facts : kControls)
    {
        for (const double position : {0.3, 0.45, 0.6, 0.75})
        {
            GradeNumbers numbers = Graded();
            const float value = ValueAt(facts, position);
            ASSERT_TRUE(SetNumber(numbers, facts.control, value)) << facts.name << " " << value;
            EXPECT_NEAR(NumberOf(numbers, facts.control), value, 2e-6) << facts.name;
        }
    }
}

TEST(GradeNumbers, ThoseOfTheSameViewStayWhenOneIsSet)
{
    for (const View view : {View::Light, View::Wheels, View::Cdl})
    {
        for (const ControlFacts& facts : kControls)
        {
            if (!IsIn(facts.step, view))
            {
                continue;
            }
            GradeNumbers numbers = Graded();
            ASSERT_TRUE(SetNumber(numbers, facts.control, ValueAt(facts, 0.55)));
            for (const ControlFacts& other : kControls)
            {
                if (IsIn(other.step, view) && other.control != facts.control)
                {
                    EXPECT_NEAR(NumberOf(numbers, other.control), NumberOf(Graded(), other.control),
                                3e-6)
                        << facts.name << " moved " << other.name;
                }
            }
        }
    }
}

TEST(GradeNumbers, AWayAndTheWayBackMeet)
{
    for (const ControlFacts& facts : kControls)
    {
        GradeNumbers numbers;
        ASSERT_TRUE(SetNumber(numbers, facts.control, ValueAt(facts, 0.37)));
        EXPECT_FALSE(IsNeutral(numbers, facts.control)) << facts.name;
        ASSERT_TRUE(SetNumber(numbers, facts.control, facts.neutral));
        const Cdl neutral;
        EXPECT_EQ(numbers.cdl.slope, neutral.slope) << facts.name;
        EXPECT_EQ(numbers.cdl.offset, neutral.offset) << facts.name;
        EXPECT_EQ(numbers.cdl.power, neutral.power) << facts.name;
    }
}

TEST(GradeNumbers, LiftIsWhereBlackGoesAndGainWhereWhiteDoes)
{
    GradeNumbers numbers;
    ASSERT_TRUE(SetNumber(numbers, Control::LiftGreen, 0.1F));
    ASSERT_TRUE(SetNumber(numbers, Control::GainGreen, 0.8F));
    EXPECT_NEAR(Corrected(numbers.cdl, 1, 0.0), 0.1, 1e-6);
    EXPECT_NEAR(Corrected(numbers.cdl, 1, 1.0), 0.8, 1e-6);
    ASSERT_TRUE(SetNumber(numbers, Control::GammaGreen, 2.0F));
    EXPECT_NEAR(Corrected(numbers.cdl, 1, 0.5), std::sqrt(0.45), 1e-6);
}

TEST(GradeNumbers, AStopDoublesTheLightOfAllChannels)
{
    GradeNumbers numbers;
    ASSERT_TRUE(SetNumber(numbers, Control::Exposure, 1.0F));
    for (std::size_t i = 0; i < 3; ++i)
    {
        EXPECT_NEAR(std::pow(Corrected(numbers.cdl, i, 0.3), 2.2), 2.0 * std::pow(0.3, 2.2), 1e-6);
    }
}

TEST(GradeNumbers, ContrastTurnsAboutThePivotAndLeavesBlack)
{
    GradeNumbers numbers;
    ASSERT_TRUE(SetNumber(numbers, Control::Pivot, 0.3F));
    ASSERT_TRUE(SetNumber(numbers, Control::Contrast, 1.6F));
    EXPECT_NEAR(Corrected(numbers.cdl, 2, 0.3), 0.3, 1e-6);
    EXPECT_NEAR(Corrected(numbers.cdl, 2, 0.0), 0.0, 1e-6);
    EXPECT_GT(Corrected(numbers.cdl, 2, 0.5), 0.6);
    EXPECT_LT(Corrected(numbers.cdl, 2, 0.1), 0.06);
    ASSERT_TRUE(SetNumber(numbers, Control::Pivot, 0.6F));
    EXPECT_NEAR(Corrected(numbers.cdl, 2, 0.6), 0.6, 1e-6) << "and goes with it";
    EXPECT_NEAR(NumberOf(numbers, Control::Contrast), 1.6, 1e-6);
}

TEST(GradeNumbers, TemperatureWarmsAndTintTurnsToMagentaAtTheSameExposure)
{
    GradeNumbers warm;
    ASSERT_TRUE(SetNumber(warm, Control::Temperature, 0.5F));
    EXPECT_GT(warm.cdl.slope[0], 1.0F);
    EXPECT_EQ(warm.cdl.slope[1], 1.0F);
    EXPECT_LT(warm.cdl.slope[2], 1.0F);
    EXPECT_NEAR(NumberOf(warm, Control::Exposure), 0.0, 1e-6);
    GradeNumbers magenta;
    ASSERT_TRUE(SetNumber(magenta, Control::Tint, 0.5F));
    EXPECT_GT(magenta.cdl.slope[0], 1.0F);
    EXPECT_LT(magenta.cdl.slope[1], 1.0F);
    EXPECT_EQ(magenta.cdl.slope[0], magenta.cdl.slope[2]);
    EXPECT_NEAR(NumberOf(magenta, Control::Exposure), 0.0, 1e-6);
}

TEST(GradeNumbers, WhatNoLookCanHaveIsNotSet)
{
    GradeNumbers numbers;
    ASSERT_TRUE(SetNumber(numbers, Control::LiftRed, 0.5F));
    EXPECT_FALSE(SetNumber(numbers, Control::GainRed, 0.3F)) << "a slope below 0";
    EXPECT_NEAR(NumberOf(numbers, Control::GainRed), 1.0, 1e-6) << "nothing changed";
    EXPECT_FALSE(SetNumber(numbers, Control::Exposure, 20.0F)) << "a slope above 100";
    EXPECT_FALSE(SetNumber(numbers, Control::GainRed, std::numeric_limits<float>::quiet_NaN()));
}

TEST(GradeNumbers, WhatCannotBeReachedIsApproached)
{
    GradeNumbers numbers;
    ASSERT_TRUE(SetNumber(numbers, Control::LiftRed, 0.5F));
    Approach(numbers, Control::GainRed, 0.3F);
    EXPECT_NEAR(NumberOf(numbers, Control::GainRed), 0.5, 1e-5);
    EXPECT_NEAR(NumberOf(numbers, Control::LiftRed), 0.5, 1e-5);
    EXPECT_GE(numbers.cdl.slope[0], 0.0F);
    Approach(numbers, Control::GainRed, 0.8F);
    EXPECT_NEAR(NumberOf(numbers, Control::GainRed), 0.8, 1e-5);
}

TEST(GradeNumbers, ManyStepsThereAndBackLeaveNoLook)
{
    for (const Control control : {Control::Temperature, Control::Tint, Control::Exposure,
                                  Control::Contrast, Control::Pivot})
    {
        const ControlFacts& facts = FactsOf(control);
        GradeNumbers numbers;
        for (int i = 1; i <= 137; ++i)
        {
            ASSERT_TRUE(SetNumber(numbers, control, ValueAt(facts, 0.5 + i / 300.0)));
        }
        ASSERT_TRUE(SetNumber(numbers, control, facts.neutral));
        EXPECT_EQ(numbers.cdl.slope, Cdl().slope) << facts.name;
        EXPECT_EQ(numbers.cdl.power, Cdl().power) << facts.name;
    }
}

TEST(GradeNumbers, LowContrastKeepsTheWhiteBalance)
{
    GradeNumbers numbers;
    ASSERT_TRUE(SetNumber(numbers, Control::Temperature, 0.5F));
    ASSERT_TRUE(SetNumber(numbers, Control::Contrast, 0.07F));
    EXPECT_NEAR(NumberOf(numbers, Control::Temperature), 0.5, 1e-4);
    ASSERT_TRUE(SetNumber(numbers, Control::Contrast, 1.0F));
    EXPECT_NEAR(NumberOf(numbers, Control::Temperature), 0.5, 1e-4);
    EXPECT_NEAR(NumberOf(numbers, Control::Exposure), 0.0, 1e-4);
    EXPECT_FALSE(SetNumber(numbers, Control::Contrast, 0.02F)) << "black, and no way back";
}

TEST(GradeNumbers, ALookOfExtremeNumbersHasNumbersInEveryView)
{
    GradeNumbers numbers;
    numbers.cdl.slope = {0.0F, kLargestNumber, 1.0F};
    numbers.cdl.offset = {-kLargestNumber, kLargestNumber, 0.0F};
    numbers.cdl.power = {1e-30F, 1e30F, 1.0F};
    for (const ControlFacts& facts : kControls)
    {
        EXPECT_TRUE(std::isfinite(NumberOf(numbers, facts.control))) << facts.name;
        Approach(numbers, facts.control, facts.neutral);
    }
}

TEST(GradeNumbers, ANumberThatNobodyCouldTypeStaysWhileOthersMove)
{
    GradeNumbers numbers;
    numbers.cdl.slope[2] = 150.0F;
    EXPECT_TRUE(SetNumber(numbers, Control::GainRed, 1.5F));
    EXPECT_TRUE(SetNumber(numbers, Control::GammaBlue, 1.5F));
    EXPECT_EQ(numbers.cdl.slope[2], 150.0F);
}

} // namespace

} // namespace ReferenceRenderer
