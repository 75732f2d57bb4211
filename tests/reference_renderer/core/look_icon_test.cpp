#include "reference_renderer/core/look_icon.h"

#include "tests/reference_renderer/core/look_fixtures.h"

#include <gtest/gtest.h>

namespace ReferenceRenderer
{

namespace
{

std::vector<std::uint32_t> IconOf(const Look& look)
{
    std::vector<std::uint32_t> pixels(kIconPixels);
    DrawLookIcon(*Prepared(look),
                 std::span<std::uint32_t, kIconPixels>(pixels.data(), kIconPixels));
    return pixels;
}

std::uint32_t AlphaAt(const std::vector<std::uint32_t>& pixels, std::size_t x, std::size_t y)
{
    return pixels[y * kIconWidth + x] >> 24;
}

} // namespace

TEST(LookIcon, TheMiddleIsOpaqueAndTheCornersAreEmpty)
{
    const auto pixels = IconOf({});
    EXPECT_EQ(AlphaAt(pixels, kIconWidth / 2, kIconHeight / 2), 255U);
    EXPECT_EQ(AlphaAt(pixels, kIconWidth / 2, 0), 255U);
    for (const std::size_t x : {0U, kIconWidth - 1})
    {
        for (const std::size_t y : {0U, kIconHeight - 1})
        {
            EXPECT_EQ(AlphaAt(pixels, x, y), 0U);
        }
    }
}

TEST(LookIcon, TheCornersFade)
{
    const auto pixels = IconOf({});
    unsigned fading = 0;
    for (std::size_t y = 0; y < 6; ++y)
    {
        for (std::size_t x = 0; x < 6; ++x)
        {
            const std::uint32_t alpha = AlphaAt(pixels, x, y);
            fading += alpha > 0 && alpha < 255 ? 1U : 0U;
            EXPECT_EQ(alpha, AlphaAt(pixels, kIconWidth - 1 - x, y));
            EXPECT_EQ(alpha, AlphaAt(pixels, x, kIconHeight - 1 - y));
        }
    }
    EXPECT_GT(fading, 4U);
}

TEST(LookIcon, TheSceneIsGradedByTheLook)
{
    const auto plain = IconOf({});
    const auto inverted = IconOf(CubeLook(CubeOf(2, Inverted)));
    for (std::size_t i = 0; i < kIconPixels; ++i)
    {
        for (const unsigned shift : {0U, 8U, 16U})
        {
            const unsigned sum = (plain[i] >> shift & 0xFF) + (inverted[i] >> shift & 0xFF);
            ASSERT_TRUE(sum >= 254 && sum <= 256) << i;
        }
    }
}

} // namespace ReferenceRenderer
