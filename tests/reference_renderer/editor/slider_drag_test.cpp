#include "reference_renderer/editor/slider_drag.h"

#include <gtest/gtest.h>

namespace ReferenceRenderer
{

namespace
{

constexpr int kKnob = 10;
const SliderTrack kTrack = TrackOf(110, kKnob); // its way has 100 pixels and begins at 5

TEST(SliderDrag, ThePositionsOfATrackRunBetweenTheCentresOfTheKnob)
{
    EXPECT_EQ(kTrack.PixelOf(0.0), 5.0);
    EXPECT_EQ(kTrack.PixelOf(1.0), 105.0);
    EXPECT_EQ(kTrack.PositionOf(55.0), 0.5);
}

TEST(SliderDrag, ASliderNarrowerThanItsKnobStillHasATrack)
{
    EXPECT_GT(TrackOf(3, kKnob).length, 0.0);
}

TEST(SliderDrag, APressOnTheKnobMovesNothing)
{
    EXPECT_EQ(SliderDrag(kTrack, 0.5, kKnob, 52).Position(), 0.5);
}

TEST(SliderDrag, APressBesideTheKnobBringsItThere)
{
    EXPECT_EQ(SliderDrag(kTrack, 0.5, kKnob, 80).Position(), 0.75);
}

TEST(SliderDrag, TheKnobKeepsItsPlaceUnderTheMouse)
{
    SliderDrag drag(kTrack, 0.5, kKnob, 52);
    EXPECT_DOUBLE_EQ(drag.Moved(62, false), 0.6);
    EXPECT_DOUBLE_EQ(drag.Moved(42, false), 0.4);
}

TEST(SliderDrag, FineMovesGoATenthOfTheWayWithoutAJump)
{
    SliderDrag drag(kTrack, 0.5, kKnob, 55);
    EXPECT_DOUBLE_EQ(drag.Moved(65, true), 0.51);
    EXPECT_DOUBLE_EQ(drag.Moved(75, false), 0.61);
}

TEST(SliderDrag, TheKnobWaitsAtTheEndUntilTheMouseComesBack)
{
    SliderDrag drag(kTrack, 0.5, kKnob, 55);
    EXPECT_EQ(drag.Moved(205, false), 1.0);
    EXPECT_EQ(drag.Moved(125, false), 1.0);
    EXPECT_DOUBLE_EQ(drag.Moved(95, false), 0.9);
}

} // namespace

} // namespace ReferenceRenderer
