#include "reference_renderer/editor/reset_glyph.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace ReferenceRenderer
{

namespace
{

TEST(ResetGlyph, KeepsItsEdgeFreeAndInksAThinSign)
{
    for (const int size : {16, 22, 33, 66})
    {
        std::vector<std::uint32_t> pixels(static_cast<std::size_t>(size * size), 0xDEADBEEF);
        DrawResetGlyph(pixels, size, 0x000000, 0xFFFFFF);
        for (int i = 0; i < size; ++i)
        {
            EXPECT_EQ(pixels[static_cast<std::size_t>(i)], 0U);
            EXPECT_EQ(pixels[static_cast<std::size_t>((size - 1) * size + i)], 0U);
            EXPECT_EQ(pixels[static_cast<std::size_t>(i * size)], 0U);
            EXPECT_EQ(pixels[static_cast<std::size_t>(i * size + size - 1)], 0U);
        }
        const auto inked = std::count_if(pixels.begin(), pixels.end(),
                                         [](std::uint32_t pixel) { return pixel > 0x808080; });
        const double share = static_cast<double>(inked) / (size * size);
        EXPECT_GT(share, 0.05) << size;
        EXPECT_LT(share, 0.30) << size;
    }
}

TEST(ResetGlyph, MixesEachChannelBetweenGroundAndInk)
{
    std::vector<std::uint32_t> pixels(22 * 22);
    DrawResetGlyph(pixels, 22, 0x102030, 0x90A0B0);
    for (const std::uint32_t pixel : pixels)
    {
        const std::uint32_t above = (pixel >> 16 & 0xFF) - 0x10;
        EXPECT_LE(above, 0x80U);
        EXPECT_EQ((pixel >> 8 & 0xFF) - 0x20, above);
        EXPECT_EQ((pixel & 0xFF) - 0x30, above);
    }
}

} // namespace

} // namespace ReferenceRenderer
