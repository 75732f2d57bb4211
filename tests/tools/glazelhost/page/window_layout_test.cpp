#include "tools/glazelhost/page/window_layout.h"

#include <gtest/gtest.h>

namespace GlazelHost
{

namespace
{

constexpr int kPageHeight = 90;

} // namespace

TEST(WindowLayouts, PutPicturePageAndBarBelowEachOther)
{
    const WindowLayout layout = LayoutOf({800, 600}, kPageHeight);
    EXPECT_EQ(layout.picture.y, 0);
    EXPECT_EQ(layout.picture.size.height, layout.page.y);
    EXPECT_EQ(layout.page.size, (Extent{800, kPageHeight}));
    const int bar = layout.page.y + layout.page.size.height;
    EXPECT_GE(layout.status.y, bar);
    EXPECT_LE(layout.status.x + layout.status.size.width, layout.saveLook.x);
    EXPECT_LE(layout.saveLook.x + layout.saveLook.size.width, layout.copyCommand.x);
    EXPECT_LE(layout.copyCommand.x + layout.copyCommand.size.width, 800);
    EXPECT_LE(layout.copyCommand.y + layout.copyCommand.size.height, 600);
}

TEST(WindowLayouts, ShowTheWholePictureWhereThereIsRoom)
{
    const Extent client = ClientFor({640, 360}, kPageHeight, {1920, 1080});
    EXPECT_EQ(LayoutOf(client, kPageHeight).picture.size, (Extent{640, 360}));
}

TEST(WindowLayouts, StayOnTheScreen)
{
    EXPECT_EQ(ClientFor({6000, 4000}, kPageHeight, {1280, 1024}), (Extent{1280, 1024}));
}

TEST(WindowLayouts, KeepRoomForTheButtonsBelowATinyPicture)
{
    const Extent client = ClientFor({16, 16}, kPageHeight, {1280, 1024});
    EXPECT_GT(LayoutOf(client, kPageHeight).status.size.width, 100);
}

TEST(WindowLayouts, ShowEveryPartInTheSmallestWindow)
{
    const WindowLayout layout = LayoutOf(LeastClient(kPageHeight), kPageHeight);
    EXPECT_GT(layout.picture.size.height, 0);
    EXPECT_EQ(layout.page.size.height, kPageHeight);
    EXPECT_GT(layout.status.size.width, 100);
    EXPECT_GE(layout.saveLook.x, 0);
}

TEST(WindowLayouts, NeverHaveNegativeSizes)
{
    for (int side = 0; side < 200; side += 7)
    {
        const WindowLayout layout = LayoutOf({side, side}, kPageHeight);
        EXPECT_GE(layout.picture.size.height, 0);
        EXPECT_GE(layout.page.size.height, 0);
        EXPECT_GE(layout.status.size.width, 0);
    }
}

} // namespace GlazelHost
