#include "tools/glazelhost/page/display_picture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <set>

namespace GlazelHost
{

namespace
{

Image OnePixel(std::array<float, 4> channels, bool hasAlpha)
{
    Image image{1, 1, SampleType::Float, hasAlpha, PixelBuffer(16, std::byte{0})};
    std::memcpy(image.pixels.data(), channels.data(), 16);
    return image;
}

} // namespace

TEST(Placements, AreInTheMiddleAndKeepTheProportions)
{
    EXPECT_EQ(PlacementOf({200, 100}, 1.0, {100, 100}), (Geometry::Rect{0, 25, 100, 50}));
    EXPECT_EQ(PlacementOf({100, 200}, 1.0, {100, 100}), (Geometry::Rect{25, 0, 50, 100}));
}

TEST(Placements, NeverEnlarge)
{
    EXPECT_EQ(PlacementOf({10, 20}, 1.0, {100, 100}), (Geometry::Rect{45, 40, 10, 20}));
}

TEST(Placements, WidenPixelsThatAreNotSquare)
{
    EXPECT_EQ(PlacementOf({720, 576}, 2.0, {1440, 1440}).Size(), (Geometry::Extent{1440, 576}));
    EXPECT_EQ(PlacementOf({720, 576}, 0.0, {1440, 1440}).Size(), (Geometry::Extent{720, 576}));
    EXPECT_EQ(PlacementOf({720, 576}, NAN, {1440, 1440}).Size(), (Geometry::Extent{720, 576}));
}

TEST(Placements, ShowAtLeastOnePixelOfAStrip)
{
    EXPECT_EQ(PlacementOf({10000, 1}, 1.0, {100, 100}).Size(), (Geometry::Extent{100, 1}));
}

TEST(Placements, AreEmptyWithoutRoom)
{
    EXPECT_EQ(PlacementOf({10, 10}, 1.0, {100, 0}), Geometry::Rect{});
    EXPECT_EQ(PlacementOf({10, 10}, 1.0, {-5, 100}), Geometry::Rect{});
}

TEST(DisplayPictures, KeepTheCodesOfAnOpaquePicture)
{
    Image image{2, 1, SampleType::Byte, false, PixelBuffer(8, std::byte{0})};
    const unsigned char codes[]{1, 2, 3, 0, 255, 128, 7, 0}; // an alpha that does not count
    std::memcpy(image.pixels.data(), codes, sizeof codes);
    EXPECT_EQ(DisplayPixels(image), (std::vector<std::uint32_t>{0x030201, 0x0780FF}));
}

TEST(DisplayPictures, LimitFloatsToWhatADisplayShows)
{
    EXPECT_EQ(DisplayPixels(OnePixel({2.0F, -1.0F, 0.5F, 1.0F}, false))[0], 0x8000FFU);
}

TEST(DisplayPictures, ShowAChequeredGroundThroughTransparentPixels)
{
    Image image{16, 16, SampleType::Byte, true,
                PixelBuffer(std::size_t{16} * 16 * 4, std::byte{0})};
    const std::vector<std::uint32_t> shown = DisplayPixels(image);
    EXPECT_EQ(shown[0], 0x666666U);
    EXPECT_EQ(shown[8], 0x999999U);
    EXPECT_EQ(shown[8 * 16], 0x999999U);
    EXPECT_EQ(shown[8 * 16 + 8], 0x666666U);
    EXPECT_EQ(DisplayPixels(OnePixel({1.0F, 1.0F, 1.0F, 0.5F}, true))[0], 0xB3B3B3U);
}

TEST(TestCharts, HoldEveryHueAndElevenGreysInEitherType)
{
    for (const SampleType type : {SampleType::Byte, SampleType::Float})
    {
        const Image chart = TestChart(type);
        EXPECT_EQ(chart.type, type);
        const std::vector<std::uint32_t> shown = DisplayPixels(chart);
        const std::set<std::uint32_t> colours(shown.begin(), shown.end());
        EXPECT_GT(colours.size(), 50000U);
        const std::set<std::uint32_t> greys(shown.end() - chart.width, shown.end());
        EXPECT_EQ(greys.size(), 11U);
        EXPECT_TRUE(greys.contains(0x000000));
        EXPECT_TRUE(greys.contains(0xFFFFFF));
    }
}

} // namespace GlazelHost
