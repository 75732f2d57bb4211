#include "support/geometry.h"

#include <gtest/gtest.h>

TEST(Rects, AreEmptyAtTheOriginUnlessSaidOtherwise)
{
    EXPECT_EQ(Geometry::Point(), (Geometry::Point{0, 0}));
    EXPECT_EQ(Geometry::Extent(), (Geometry::Extent{0, 0}));
    EXPECT_EQ(Geometry::Rect(), (Geometry::Rect{0, 0, 0, 0}));
}

TEST(Rects, DoNotHoldTheirRightColumnAndBottomRow)
{
    constexpr Geometry::Rect rect = Geometry::RectAt({5, 25}, {40, 20});
    EXPECT_EQ(rect, (Geometry::Rect{5, 25, 40, 20}));
    EXPECT_EQ(rect.Size(), (Geometry::Extent{40, 20}));
    for (const Geometry::Point inside : {Geometry::Point{5, 25}, {44, 25}, {5, 44}, {44, 44}})
    {
        EXPECT_TRUE(rect.Contains(inside)) << inside.x << ' ' << inside.y;
    }
    for (const Geometry::Point outside : {Geometry::Point{4, 25}, {5, 24}, {45, 30}, {10, 45}})
    {
        EXPECT_FALSE(rect.Contains(outside)) << outside.x << ' ' << outside.y;
    }
    EXPECT_FALSE(Geometry::Rect().Contains({0, 0}));
}
