#include "propertypage/press_tracker.h"

#include <gtest/gtest.h>

namespace
{

constexpr Geometry::Point kOnEdit{10, 30};
constexpr Geometry::Point kOnCheckBox{50, 75};
constexpr Geometry::Point kElsewhere{300, 50};

bool Has(const PanelControls& controls, PanelControl control)
{
    return controls[static_cast<std::size_t>(control)];
}

// A left button that goes down at a point, moves and comes up.
class Mouse
{
public:
    PressTracker::Move Down(Geometry::Point pointer)
    {
        tracker.Press();
        return MoveTo(pointer);
    }
    PressTracker::Move MoveTo(Geometry::Point pointer)
    {
        const PressTracker::Move move = tracker.MoveTo(pointer);
        toggles += Has(move.act, PanelControl::LinearGamma) ? 1 : 0;
        return move;
    }
    PressTracker::Release Up() { return tracker.ReleaseButton(); }

    PressTracker tracker;
    int toggles = 0;
};

} // namespace

TEST(PressTracker, APressOnEditAndItsReleaseClickIt)
{
    Mouse mouse;
    EXPECT_TRUE(Has(mouse.Down(kOnEdit).redraw, PanelControl::Edit));
    EXPECT_TRUE(mouse.tracker.IsPressed(PanelControl::Edit));
    const PressTracker::Release release = mouse.Up();
    EXPECT_TRUE(release.wasPressed);
    EXPECT_TRUE(Has(release.act, PanelControl::Edit));
    EXPECT_FALSE(mouse.tracker.IsPressed(PanelControl::Edit));
    EXPECT_FALSE(mouse.tracker.IsTracking());
}

TEST(PressTracker, APressThatStaysOnEditRedrawsItOnce)
{
    Mouse mouse;
    mouse.Down(kOnEdit);
    EXPECT_FALSE(Has(mouse.MoveTo({11, 31}).redraw, PanelControl::Edit));
    EXPECT_TRUE(mouse.tracker.IsPressed(PanelControl::Edit));
}

TEST(PressTracker, LeavingEditBeforeTheReleaseCancelsTheClick)
{
    Mouse mouse;
    mouse.Down(kOnEdit);
    EXPECT_TRUE(Has(mouse.MoveTo(kElsewhere).redraw, PanelControl::Edit));
    EXPECT_FALSE(mouse.tracker.IsPressed(PanelControl::Edit));
    const PressTracker::Release release = mouse.Up();
    EXPECT_TRUE(release.wasPressed);
    EXPECT_FALSE(Has(release.act, PanelControl::Edit));
}

TEST(PressTracker, ComingBackToEditBeforeTheReleaseClicksIt)
{
    Mouse mouse;
    mouse.Down(kOnEdit);
    mouse.MoveTo(kElsewhere);
    EXPECT_TRUE(Has(mouse.MoveTo(kOnEdit).redraw, PanelControl::Edit));
    EXPECT_TRUE(Has(mouse.Up().act, PanelControl::Edit));
}

TEST(PressTracker, APressElsewhereThatIsDraggedOntoEditClicksIt)
{
    Mouse mouse;
    EXPECT_FALSE(Has(mouse.Down(kElsewhere).redraw, PanelControl::Edit));
    mouse.MoveTo(kOnEdit);
    EXPECT_TRUE(Has(mouse.Up().act, PanelControl::Edit));
}

TEST(PressTracker, TheCheckBoxTogglesOnThePress)
{
    Mouse mouse;
    EXPECT_TRUE(Has(mouse.Down(kOnCheckBox).act, PanelControl::LinearGamma));
}

TEST(PressTracker, DraggingIntoTheCheckBoxTogglesItOnceInAPress)
{
    Mouse mouse;
    mouse.Down(kElsewhere);
    EXPECT_EQ(mouse.toggles, 0);
    for (int round = 0; round < 3; ++round)
    {
        mouse.MoveTo(kOnCheckBox);
        mouse.MoveTo(kElsewhere);
    }
    EXPECT_EQ(mouse.toggles, 1);
    EXPECT_FALSE(Has(mouse.Up().act, PanelControl::Edit));
}

TEST(PressTracker, EveryPressMayToggleTheCheckBoxAgain)
{
    Mouse mouse;
    for (int press = 1; press <= 4; ++press)
    {
        mouse.Down(kOnCheckBox);
        mouse.Up();
        EXPECT_EQ(mouse.toggles, press);
    }
}

TEST(PressTracker, OnePressCanToggleTheCheckBoxAndClickEdit)
{
    Mouse mouse;
    mouse.Down(kOnCheckBox);
    EXPECT_TRUE(Has(mouse.MoveTo(kOnEdit).redraw, PanelControl::Edit));
    EXPECT_EQ(mouse.toggles, 1);
    EXPECT_TRUE(Has(mouse.Up().act, PanelControl::Edit));
}

TEST(PressTracker, ASecondPressWithoutAReleaseDoesNotToggleAgain)
{
    Mouse mouse;
    mouse.Down(kOnCheckBox);
    mouse.Down(kOnCheckBox);
    EXPECT_EQ(mouse.toggles, 1);
}

TEST(PressTracker, MovesWithoutAPressDoNothing)
{
    Mouse mouse;
    for (const Geometry::Point point : {kOnEdit, kOnCheckBox, kElsewhere})
    {
        const PressTracker::Move move = mouse.MoveTo(point);
        EXPECT_FALSE(Has(move.redraw, PanelControl::Edit));
        EXPECT_FALSE(Has(move.act, PanelControl::LinearGamma));
    }
    EXPECT_FALSE(mouse.tracker.IsPressed(PanelControl::Edit));
}

TEST(PressTracker, AReleaseWithoutAPressDoesNothing)
{
    Mouse mouse;
    const PressTracker::Release release = mouse.Up();
    EXPECT_FALSE(release.wasPressed);
    EXPECT_FALSE(Has(release.act, PanelControl::Edit));
}

TEST(PressTracker, NothingOfAPressIsLeftAfterItsRelease)
{
    Mouse mouse;
    mouse.Down(kOnCheckBox);
    mouse.MoveTo(kOnEdit);
    mouse.Up();
    EXPECT_FALSE(mouse.tracker.IsTracking());
    EXPECT_FALSE(mouse.tracker.IsPressed(PanelControl::Edit));
    EXPECT_FALSE(Has(mouse.MoveTo(kOnCheckBox).act, PanelControl::LinearGamma)) << "not pressed";
    EXPECT_TRUE(Has(mouse.Down(kOnCheckBox).act, PanelControl::LinearGamma)) << "not latched";
}
