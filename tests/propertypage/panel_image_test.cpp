#include "propertypage/panel_image.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <vector>

namespace
{

constexpr Geometry::Extent kLargePage{1000, 100};

FrameBufferDesc Thumbnail(std::vector<std::uint32_t>& pixels, std::uint32_t width)
{
    FrameBufferDesc desc{};
    desc.pixels = pixels.data();
    desc.width = width;
    desc.height = static_cast<std::uint32_t>(pixels.size()) / width;
    return desc;
}

// By its definition: the quotient by 256 rounded down, on doubles.
int Expected(int channel, int alpha)
{
    return alpha == 255 ? channel
                        : 48 + static_cast<int>(std::floor((channel - 48) * alpha / 256.0));
}

std::uint32_t Pixel(std::uint32_t alpha, std::uint32_t red, std::uint32_t green, std::uint32_t blue)
{
    return alpha << 24 | red << 16 | green << 8 | blue;
}

} // namespace

TEST(PanelImage, BlendingFollowsItsDefinitionForEveryChannelAndAlpha)
{
    for (int alpha = 0; alpha < 256; ++alpha)
    {
        for (int channel = 0; channel < 256; ++channel)
        {
            ASSERT_EQ(BlendOverPanel(static_cast<std::uint8_t>(channel),
                                     static_cast<std::uint8_t>(alpha)),
                      Expected(channel, alpha))
                << "channel " << channel << ", alpha " << alpha;
        }
    }
}

TEST(PanelImage, AThumbnailBlendsItsThreeChannelsByTheirOwnValuesForEveryAlpha)
{
    std::vector<std::uint32_t> pixels;
    for (std::uint32_t i = 0; i < 256 * 256; ++i)
    {
        const std::uint32_t channel = i % 256;
        pixels.push_back(Pixel(i / 256, channel, 255 - channel, channel ^ 0x55));
    }
    const PanelImage image = ImageOf(Thumbnail(pixels, 256), {2000, 2000});
    ASSERT_EQ(image.size, (Geometry::Extent{256, 256}));
    for (std::size_t i = 0; i < pixels.size(); ++i)
    {
        const int alpha = static_cast<int>(i / 256);
        const int channel = static_cast<int>(i % 256);
        const auto expected = Pixel(255, static_cast<std::uint32_t>(Expected(channel, alpha)),
                                    static_cast<std::uint32_t>(Expected(255 - channel, alpha)),
                                    static_cast<std::uint32_t>(Expected(channel ^ 0x55, alpha)));
        ASSERT_EQ(image.pixels[i], expected) << "channel " << channel << ", alpha " << alpha;
    }
}

TEST(PanelImage, AThumbnailPixelWithAlpha0ShowsPanelGreyWhateverItsColour)
{
    std::vector<std::uint32_t> pixels{0x00000000, 0x00FFFFFF, 0x00FF0000, 0x0000FF80};
    const PanelImage image = ImageOf(Thumbnail(pixels, 4), kLargePage);
    for (std::size_t i = 0; i < pixels.size(); ++i)
    {
        EXPECT_EQ(image.pixels[i], 0xFF303030);
    }
}

TEST(PanelImage, AnOpaqueThumbnailPixelIsKept)
{
    std::vector<std::uint32_t> pixels{0xFF000000, 0xFFFFFFFF, 0xFF123456};
    const PanelImage image = ImageOf(Thumbnail(pixels, 3), kLargePage);
    for (std::size_t i = 0; i < pixels.size(); ++i)
    {
        EXPECT_EQ(image.pixels[i], pixels[i]);
    }
}

TEST(PanelImage, AThumbnailIsCutOnePixelInsideTheFrameOnTheRightAndBottom)
{
    EXPECT_EQ(VisibleThumbnail(1000, 1000, {200, 100}), (Geometry::Extent{149, 81}));
    EXPECT_EQ(VisibleThumbnail(149, 81, {200, 100}), (Geometry::Extent{149, 81})) << "just fits";
    EXPECT_EQ(VisibleThumbnail(150, 82, {200, 100}), (Geometry::Extent{149, 81})) << "one too many";
    EXPECT_EQ(VisibleThumbnail(10, 20, {200, 100}), (Geometry::Extent{10, 20}));
}

TEST(PanelImage, APageNarrowerThan51OrLowerThan19PixelsShowsNoThumbnail)
{
    std::vector<std::uint32_t> pixels(10000, 0xFFFFFFFF);
    const FrameBufferDesc thumbnail = Thumbnail(pixels, 100);
    for (const Geometry::Extent page :
         {Geometry::Extent{50, 100}, Geometry::Extent{1000, 18}, Geometry::Extent{0, 0},
          Geometry::Extent{51, 100}, Geometry::Extent{1000, 19}})
    {
        EXPECT_EQ(ImageOf(thumbnail, page).pixels, nullptr) << page.width << " x " << page.height;
    }
    const PanelImage smallest = ImageOf(thumbnail, {52, 20});
    ASSERT_NE(smallest.pixels, nullptr);
    EXPECT_EQ(smallest.size, (Geometry::Extent{1, 1}));
}

TEST(PanelImage, ACutThumbnailKeepsItsFirstColumnsAndRows)
{
    std::vector<std::uint32_t> pixels;
    for (std::uint32_t i = 0; i < 40 * 30; ++i)
    {
        pixels.push_back(0xFF000000 | i);
    }
    const PanelImage image = ImageOf(Thumbnail(pixels, 40), {50 + 1 + 7, 18 + 1 + 5});
    ASSERT_EQ(image.size, (Geometry::Extent{7, 5}));
    for (std::size_t y = 0; y < 5; ++y)
    {
        for (std::size_t x = 0; x < 7; ++x)
        {
            EXPECT_EQ(image.pixels[y * 7 + x], pixels[y * 40 + x]);
        }
    }
}

TEST(PanelImage, TheRowsOfAThumbnailFollowEachOtherWhateverItsPitchSays)
{
    std::vector<std::uint32_t> pixels{0xFF000001, 0xFF000002, 0xFF000003, 0xFF000004};
    FrameBufferDesc thumbnail = Thumbnail(pixels, 2);
    thumbnail.rowPitch = 1000;
    const PanelImage image = ImageOf(thumbnail, kLargePage);
    ASSERT_EQ(image.size, (Geometry::Extent{2, 2}));
    EXPECT_EQ(image.pixels[2], 0xFF000003);
}

TEST(PanelImage, AThumbnailNeedNotBeAligned)
{
    std::array<std::byte, 9> bytes{};
    const std::array<std::uint32_t, 2> pixels{0xFF010203, 0xFF040506};
    std::memcpy(bytes.data() + 1, pixels.data(), sizeof pixels);
    FrameBufferDesc thumbnail{};
    thumbnail.pixels = bytes.data() + 1;
    thumbnail.width = 2;
    thumbnail.height = 1;
    const PanelImage image = ImageOf(thumbnail, kLargePage);
    ASSERT_NE(image.pixels, nullptr);
    EXPECT_EQ(image.pixels[0], pixels[0]);
    EXPECT_EQ(image.pixels[1], pixels[1]);
}

TEST(PanelImage, AThumbnailWithoutPixelsOrSizeIsNoImage)
{
    std::vector<std::uint32_t> pixels(4, 0xFFFFFFFF);
    FrameBufferDesc noPixels = Thumbnail(pixels, 2);
    noPixels.pixels = nullptr;
    FrameBufferDesc noWidth = Thumbnail(pixels, 2);
    noWidth.width = 0;
    FrameBufferDesc noHeight = Thumbnail(pixels, 2);
    noHeight.height = 0;
    for (const FrameBufferDesc& thumbnail : {noPixels, noWidth, noHeight})
    {
        EXPECT_EQ(ImageOf(thumbnail, kLargePage).pixels, nullptr);
    }
}

TEST(PanelImage, AThumbnailOfTheLargestSizeIsCutToThePage)
{
    constexpr std::uint32_t largest = std::numeric_limits<std::uint32_t>::max();
    EXPECT_EQ(VisibleThumbnail(largest, largest, kLargePage), (Geometry::Extent{949, 81}));
    EXPECT_EQ(VisibleThumbnail(largest, largest, {32767, 32767}), (Geometry::Extent{32716, 32748}));
}

TEST(PanelImage, ABgraButtonIsCopiedAsItStands)
{
    for (const bool pressed : {false, true})
    {
        const ButtonImage button = PictureOf(PanelControl::Edit, pressed);
        const PanelImage image = ImageOf(button);
        ASSERT_EQ(image.size, button.size);
        EXPECT_EQ(std::memcmp(image.pixels.get(), button.bytes.data(), button.bytes.size()), 0);
    }
}

TEST(PanelImage, AnRgbButtonBecomesOpaqueBgra)
{
    const ButtonImage button = PictureOf(PanelControl::LinearGamma, true);
    const PanelImage image = ImageOf(button);
    ASSERT_EQ(image.size, button.size);
    std::array<std::uint8_t, 4> pixel{};
    for (std::size_t i = 0; i < button.bytes.size() / 3; ++i)
    {
        std::memcpy(pixel.data(), &image.pixels[i], pixel.size());
        const auto rgb = button.bytes.subspan(i * 3, 3);
        ASSERT_EQ(pixel, (std::array<std::uint8_t, 4>{rgb[2], rgb[1], rgb[0], 255})) << i;
    }
}
