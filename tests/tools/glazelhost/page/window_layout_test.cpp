#include "tools/glazelhost/page/window_layout.h"

#include <gtest/gtest.h>

namespace GlazelHost
{

namespace
{

constexpr int kPageHeight = 90;
constexpr PartHeights kHeights{kPageHeight};

} // namespace

TEST(WindowLayouts, PutPicturePageAndBarBelowEachOther)
{
    const WindowLayout layout = LayoutOf({800, 600}, kHeights);
    EXPECT_EQ(layout.picture.top, 0);
    EXPECT_EQ(layout.picture.height, layout.page.top);
    EXPECT_EQ(layout.page.Size(), (Geometry::Extent{800, kPageHeight}));
    const int bar = layout.page.Bottom();
    EXPECT_GE(layout.status.top, bar);
    EXPECT_LE(layout.status.Bottom(), layout.saveLook.top);
    EXPECT_LE(layout.status.Right(), 800);
    EXPECT_LE(layout.saveLook.Right(), layout.copyCommand.left);
    EXPECT_LE(layout.copyCommand.Right(), 800);
    EXPECT_LE(layout.copyCommand.Bottom(), 600);
}

TEST(WindowLayouts, ShowTheWholePictureWhereThereIsRoom)
{
    const Geometry::Extent client = ClientFor({640, 360}, kHeights, {1920, 1080});
    EXPECT_EQ(LayoutOf(client, kHeights).picture.Size(), (Geometry::Extent{640, 360}));
}

TEST(WindowLayouts, StayOnTheScreen)
{
    EXPECT_EQ(ClientFor({6000, 4000}, kHeights, {1280, 1024}), (Geometry::Extent{1280, 1024}));
}

TEST(WindowLayouts, KeepRoomForTheButtonsBelowATinyPicture)
{
    const Geometry::Extent client = ClientFor({16, 16}, kHeights, {1280, 1024});
    EXPECT_GT(LayoutOf(client, kHeights).status.width, 100);
}

TEST(WindowLayouts, ShowEveryPartInTheSmallestWindow)
{
    const WindowLayout layout = LayoutOf(LeastClient(kHeights), kHeights);
    EXPECT_GT(layout.picture.height, 0);
    EXPECT_EQ(layout.page.height, kPageHeight);
    EXPECT_GT(layout.status.width, 100);
    EXPECT_GE(layout.saveLook.left, 0);
}

TEST(WindowLayouts, NeverHaveNegativeSizes)
{
    for (int side = 0; side < 200; side += 7)
    {
        const WindowLayout layout = LayoutOf({side, side}, kHeights);
        EXPECT_GE(layout.picture.height, 0);
        EXPECT_GE(layout.page.height, 0);
        EXPECT_GE(layout.status.width, 0);
    }
}

TEST(WindowLayouts, GrowWithTheFont)
{
    constexpr PartHeights kLarge{kPageHeight, 21};
    const WindowLayout layout = LayoutOf(LeastClient(kLarge), kLarge);
    EXPECT_EQ(layout.status.height, 42) << "two lines";
    EXPECT_EQ(layout.copyCommand.Size(), (Geometry::Extent{180, 39}));
    EXPECT_GE(layout.saveLook.left, 0);
    EXPECT_LE(layout.copyCommand.Bottom(), LeastClient(kLarge).height);
}

} // namespace GlazelHost
