#include "reference_renderer/editor/colour_pad.h"

#include <gtest/gtest.h>

#include <cmath>

namespace ReferenceRenderer
{

namespace
{

TEST(ColourPad, StandsInTheMiddleWhereTheChannelsAreEqual)
{
    GradeNumbers numbers;
    numbers.cdl.slope = {1.3F, 1.3F, 1.3F};
    numbers.cdl.power = {0.7F, 0.7F, 0.7F};
    for (const PadFacts& pad : kPads)
    {
        EXPECT_NEAR(PadPointOf(numbers, pad).x, 0.0, 1e-6) << pad.name;
        EXPECT_NEAR(PadPointOf(numbers, pad).y, 0.0, 1e-6) << pad.name;
    }
}

TEST(ColourPad, ShowsThePointThatItWasMovedTo)
{
    for (const PadFacts& pad : kPads)
    {
        for (const PadPoint point : {PadPoint{0.5, 0.2}, PadPoint{-0.7, 0.3}, PadPoint{0.0, -0.9}})
        {
            GradeNumbers numbers;
            MoveToPadPoint(numbers, pad, point);
            EXPECT_NEAR(PadPointOf(numbers, pad).x, point.x, 0.01) << pad.name;
            EXPECT_NEAR(PadPointOf(numbers, pad).y, point.y, 0.01) << pad.name;
        }
    }
}

TEST(ColourPad, KeepsTheMeanOfTheChannels)
{
    GradeNumbers numbers;
    numbers.cdl.slope = {1.2F, 0.9F, 0.9F};
    MoveToPadPoint(numbers, kPads[4], {0.4, -0.6});
    const auto& slope = numbers.cdl.slope;
    EXPECT_NEAR(slope[0] + slope[1] + slope[2], 3.0, 0.003);
}

// The channel that a move to the left of the top makes stronger is red's, at the right blue's.
TEST(ColourPad, LeadsTowardsTheHueThatItShows)
{
    const struct
    {
        PadPoint point;
        std::size_t channel;
    } ways[] = {{{-0.2, 0.9}, 0}, {{-0.6, -0.6}, 1}, {{0.9, -0.3}, 2}};
    for (const auto& [point, channel] : ways)
    {
        const auto colour = ColourAt(point);
        for (const PadFacts& pad : kPads)
        {
            GradeNumbers numbers;
            MoveToPadPoint(numbers, pad, point);
            const auto grey = [&](std::size_t i) {
                const Cdl& cdl = numbers.cdl;
                return std::pow(0.5 * cdl.slope[i] + cdl.offset[i], cdl.power[i]);
            };
            for (std::size_t other = 0; other < 3; ++other)
            {
                EXPECT_TRUE(other == channel || grey(channel) > grey(other)) << pad.name;
                EXPECT_TRUE(other == channel || colour[channel] > colour[other]) << pad.name;
            }
        }
    }
}

TEST(ColourPad, GoesAsFarAsALookCanAndKeepsTheMeanThereToo)
{
    GradeNumbers numbers;
    numbers.cdl.slope = {0.1F, 0.1F, 0.1F};
    MoveToPadPoint(numbers, kPads[4], {0.0, 1.0});
    const auto& slope = numbers.cdl.slope;
    EXPECT_NEAR(slope[0] + slope[1] + slope[2], 0.3, 0.003);
    EXPECT_GT(slope[0], 0.15F);
    EXPECT_LT(slope[1], 0.06F);
}

} // namespace

} // namespace ReferenceRenderer
