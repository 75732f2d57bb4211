#include "reference_renderer/editor/editor_control.h"

#include <gtest/gtest.h>

#include <cmath>

namespace ReferenceRenderer
{

namespace
{

TEST(EditorControl, EveryNeutralValueIsWithinItsSliderAndItsLimits)
{
    for (const ControlFacts& facts : kControls)
    {
        EXPECT_LE(facts.lowest, facts.sliderLow) << facts.name;
        EXPECT_LE(facts.sliderLow, facts.neutral) << facts.name;
        EXPECT_LE(facts.neutral, facts.sliderHigh) << facts.name;
        EXPECT_LE(facts.sliderHigh, facts.highest) << facts.name;
    }
}

TEST(EditorControl, TheEndsOfASliderAreItsValues)
{
    for (const ControlFacts& facts : kControls)
    {
        EXPECT_FLOAT_EQ(ValueAt(facts, 0.0), facts.sliderLow) << facts.name;
        EXPECT_FLOAT_EQ(ValueAt(facts, 1.0), facts.sliderHigh) << facts.name;
        EXPECT_NEAR(PositionOf(facts, facts.sliderLow), 0.0, 1e-9) << facts.name;
        EXPECT_NEAR(PositionOf(facts, facts.sliderHigh), 1.0, 1e-9) << facts.name;
    }
}

TEST(EditorControl, EachThousandthComesBackFromItsPosition)
{
    for (const ControlFacts& facts : kControls)
    {
        for (int i = 0; i <= 1000; ++i)
        {
            const float value = ValueAt(facts, i / 1000.0);
            EXPECT_EQ(ValueAt(facts, PositionOf(facts, value)), value) << facts.name << " " << i;
        }
    }
}

TEST(EditorControl, CentredSlidersStandInTheMiddleWhenNeutral)
{
    for (const ControlFacts& facts : kControls)
    {
        const double expected = facts.control == Control::Strength ? 1.0 : 0.5;
        EXPECT_NEAR(PositionOf(facts, facts.neutral), expected, 1e-7) << facts.name;
    }
}

TEST(EditorControl, PowerGivesEqualRatiosEqualLengths)
{
    const ControlFacts& power = FactsOf(Control::PowerRed);
    EXPECT_NEAR(PositionOf(power, 2.0F) - PositionOf(power, 1.0F),
                PositionOf(power, 1.0F) - PositionOf(power, 0.5F), 1e-9);
}

TEST(EditorControl, ValuesBeyondASliderShowAtItsEnd)
{
    const ControlFacts& slope = FactsOf(Control::SlopeRed);
    EXPECT_EQ(ShownPosition(slope, 50.0F), 1.0);
    EXPECT_GT(PositionOf(slope, 50.0F), 1.0);
}

TEST(EditorControl, NudgingStopsAtTheLimits)
{
    const ControlFacts& slope = FactsOf(Control::SlopeRed);
    EXPECT_EQ(Nudged(slope, 0.004F, -kKeyStep), 0.0F);
    EXPECT_EQ(Nudged(slope, slope.highest, kPageStep), slope.highest);
    EXPECT_FLOAT_EQ(Nudged(slope, 1.0F, kFineStep), 1.001F);
}

TEST(EditorControl, ShiftMakesArrowKeysFineAndCtrlCoarseAndBothTakeAllChannelsAlong)
{
    EXPECT_EQ(ArrowStep(false, false), (KeyStep{0.01F, false}));
    EXPECT_EQ(ArrowStep(true, false), (KeyStep{0.001F, false}));
    EXPECT_EQ(ArrowStep(false, true), (KeyStep{0.1F, false}));
    EXPECT_EQ(ArrowStep(true, true), (KeyStep{0.01F, true}));
}

TEST(EditorControl, NudgingBackToZeroLeavesNoMinus)
{
    const float zero = Nudged(FactsOf(Control::OffsetRed), 0.01F, -kKeyStep);
    EXPECT_EQ(zero, 0.0F);
    EXPECT_FALSE(std::signbit(zero));
}

TEST(EditorControl, AStepFromBeyondTheLimitsDoesNotGoTheOtherWay)
{
    const ControlFacts& slope = FactsOf(Control::SlopeRed);
    EXPECT_EQ(Nudged(slope, 150.0F, 0.01F), 150.0F);
    EXPECT_EQ(Nudged(slope, 150.0F, -0.01F), 100.0F);
}

} // namespace

} // namespace ReferenceRenderer
