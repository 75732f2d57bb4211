#include "propertypage/press_tracker.h"

#include <gtest/gtest.h>

namespace
{

constexpr Geometry::Point kOnEdit{10, 30};
constexpr Geometry::Point kOnCheckBox{50, 75};
constexpr Geometry::Point kElsewhere{300, 50};

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
        toggles += move.toggleCheck ? 1 : 0;
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
    EXPECT_TRUE(mouse.Down(kOnEdit).editChanged);
    EXPECT_TRUE(mouse.tracker.EditPressed());
    const PressTracker::Release release = mouse.Up();
    EXPECT_TRUE(release.wasPressed);
    EXPECT_TRUE(release.editClicked);
    EXPECT_FALSE(mouse.tracker.EditPressed());
    EXPECT_FALSE(mouse.tracker.IsTracking());
}

TEST(PressTracker, APressThatStaysOnEditRedrawsItOnce)
{
    Mouse mouse;
    mouse.Down(kOnEdit);
    EXPECT_FALSE(mouse.MoveTo({11, 31}).editChanged);
    EXPECT_TRUE(mouse.tracker.EditPressed());
}

TEST(PressTracker, LeavingEditBeforeTheReleaseCancelsTheClick)
{
    Mouse mouse;
    mouse.Down(kOnEdit);
    EXPECT_TRUE(mouse.MoveTo(kElsewhere).editChanged);
    EXPECT_FALSE(mouse.tracker.EditPressed());
    const PressTracker::Release release = mouse.Up();
    EXPECT_TRUE(release.wasPressed);
    EXPECT_FALSE(release.editClicked);
}

TEST(PressTracker, ComingBackToEditBeforeTheReleaseClicksIt)
{
    Mouse mouse;
    mouse.Down(kOnEdit);
    mouse.MoveTo(kElsewhere);
    EXPECT_TRUE(mouse.MoveTo(kOnEdit).editChanged);
    EXPECT_TRUE(mouse.Up().editClicked);
}

TEST(PressTracker, APressElsewhereThatIsDraggedOntoEditClicksIt)
{
    Mouse mouse;
    EXPECT_FALSE(mouse.Down(kElsewhere).editChanged);
    mouse.MoveTo(kOnEdit);
    EXPECT_TRUE(mouse.Up().editClicked);
}

TEST(PressTracker, TheCheckBoxTogglesOnThePress)
{
    Mouse mouse;
    EXPECT_TRUE(mouse.Down(kOnCheckBox).toggleCheck);
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
    EXPECT_FALSE(mouse.Up().editClicked);
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
    EXPECT_TRUE(mouse.MoveTo(kOnEdit).editChanged);
    EXPECT_EQ(mouse.toggles, 1);
    EXPECT_TRUE(mouse.Up().editClicked);
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
        EXPECT_FALSE(move.editChanged);
        EXPECT_FALSE(move.toggleCheck);
    }
    EXPECT_FALSE(mouse.tracker.EditPressed());
}

TEST(PressTracker, AReleaseWithoutAPressDoesNothing)
{
    Mouse mouse;
    const PressTracker::Release release = mouse.Up();
    EXPECT_FALSE(release.wasPressed);
    EXPECT_FALSE(release.editClicked);
}

TEST(PressTracker, NothingOfAPressIsLeftAfterItsRelease)
{
    Mouse mouse;
    mouse.Down(kOnCheckBox);
    mouse.MoveTo(kOnEdit);
    mouse.Up();
    EXPECT_FALSE(mouse.tracker.IsTracking());
    EXPECT_FALSE(mouse.tracker.EditPressed());
    EXPECT_FALSE(mouse.MoveTo(kOnCheckBox).toggleCheck) << "not pressed";
    EXPECT_TRUE(mouse.Down(kOnCheckBox).toggleCheck) << "not latched";
}
