#include "propertypage/panel_layout.h"

#include <gtest/gtest.h>

TEST(PanelLayout, TheEditButtonStandsFrom5And25To45And45)
{
    EXPECT_EQ(RowOf(PanelControl::Edit).rect, (Geometry::Rect{5, 25, 40, 20}));
}

TEST(PanelLayout, TheCheckBoxStandsFrom7And70To132And86)
{
    EXPECT_EQ(RowOf(PanelControl::LinearGamma).rect, (Geometry::Rect{7, 70, 125, 16}));
}

TEST(PanelLayout, TheThumbnailBeginsAt50And18)
{
    EXPECT_EQ(kThumbnailOrigin, (Geometry::Point{50, 18}));
}

TEST(PanelLayout, ARectangleHoldsItsLeftAndTopEdgesButNotItsRightAndBottomOnes)
{
    for (const Geometry::Rect& rect :
         {RowOf(PanelControl::Edit).rect, RowOf(PanelControl::LinearGamma).rect})
    {
        EXPECT_TRUE(rect.Contains({rect.left, rect.top}));
        EXPECT_TRUE(rect.Contains({rect.Right() - 1, rect.Bottom() - 1}));
        EXPECT_FALSE(rect.Contains({rect.left - 1, rect.top}));
        EXPECT_FALSE(rect.Contains({rect.left, rect.top - 1}));
        EXPECT_FALSE(rect.Contains({rect.Right(), rect.top}));
        EXPECT_FALSE(rect.Contains({rect.left, rect.Bottom()}));
    }
}

TEST(PanelLayout, NoPointIsInBothControls)
{
    for (int y = -1; y < 100; ++y)
    {
        for (int x = -1; x < 200; ++x)
        {
            ASSERT_FALSE(RowOf(PanelControl::Edit).rect.Contains({x, y}) &&
                         RowOf(PanelControl::LinearGamma).rect.Contains({x, y}))
                << x << ", " << y;
        }
    }
}
