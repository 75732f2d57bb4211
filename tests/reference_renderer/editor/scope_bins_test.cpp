#include "reference_renderer/editor/scope_bins.h"

#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>
#include <numeric>

namespace ReferenceRenderer
{

namespace
{

constexpr std::size_t kRowBytes = 4 * kChannels + 8; // pixels and padding

// A picture 4 pixels wide of 0xRRGGBB, its padding white.
std::vector<std::byte> Picture(std::initializer_list<std::uint32_t> pixels)
{
    std::vector<std::byte> bytes(pixels.size() / 4 * kRowBytes, std::byte{0xFF});
    std::size_t i = 0;
    for (const std::uint32_t pixel : pixels)
    {
        std::memcpy(&bytes[i / 4 * kRowBytes + i % 4 * kChannels], &pixel, sizeof pixel);
        ++i;
    }
    return bytes;
}

ScopeBins Counted(ScopeKind kind, std::initializer_list<std::uint32_t> pixels,
                  std::size_t columns = 4)
{
    const std::vector<std::byte> picture = Picture(pixels);
    ScopeBins bins(kind, 4, columns);
    bins.Count(picture.data(), kRowBytes, pixels.size() / 4);
    return bins;
}

constexpr std::initializer_list<std::uint32_t> kTwoRows{0x000000, 0x102030, 0xFFFFFF, 0xFF0000,
                                                        0x000000, 0x102031, 0x808080, 0x00FF00};

TEST(ScopeBins, GreysRunFromBlackToWhiteOfTheLimitedRangeWithoutAColour)
{
    for (std::uint32_t code = 0; code < kLevels; ++code)
    {
        const auto luma = static_cast<std::uint32_t>(16.5 + code * 219.0 / 255.0);
        EXPECT_EQ(LumaCodesOf(code, code, code), (LumaCodes{luma, 128, 128})) << code;
    }
}

TEST(ScopeBins, PrimariesStandAtTheEndsOfTheirDifferences)
{
    EXPECT_EQ(LumaCodesOf(255, 0, 0), (LumaCodes{63, 102, 240}));
    EXPECT_EQ(LumaCodesOf(0, 255, 0), (LumaCodes{173, 42, 26}));
    EXPECT_EQ(LumaCodesOf(0, 0, 255), (LumaCodes{32, 240, 118}));
}

TEST(ScopeBins, HistogramsCountEveryPixelAndNoPadding)
{
    const ScopeBins bins = Counted(ScopeKind::Histogram, kTwoRows);
    EXPECT_EQ(bins.Pixels(), 8U);
    for (std::size_t colour = 0; colour < kColours; ++colour)
    {
        const auto& counts = bins.Histogram(colour);
        EXPECT_EQ(std::accumulate(counts.begin(), counts.end(), 0U), 8U) << colour;
    }
    EXPECT_EQ(bins.Histogram(0)[0xFF], 2U);
    EXPECT_EQ(bins.Histogram(1)[0x20], 2U);
    EXPECT_EQ(bins.Histogram(2)[0x31], 1U);
    EXPECT_EQ(bins.Histogram(2)[0], 4U);
}

TEST(ScopeBins, AParadeCountsTheLevelsOfEachColourInEachColumn)
{
    const ScopeBins bins = Counted(ScopeKind::Parade, kTwoRows);
    EXPECT_EQ(bins.Levels(0, 0)[0], 2U);
    EXPECT_EQ(bins.Levels(0, 1)[0x10], 2U);
    EXPECT_EQ(bins.Levels(1, 2)[0x80], 1U);
    EXPECT_EQ(bins.Levels(2, 1)[0x30], 1U);
    EXPECT_EQ(bins.Levels(2, 1)[0x31], 1U);
    EXPECT_EQ(bins.Levels(2, 3)[0], 2U);
}

TEST(ScopeBins, AWaveformCountsLumaAndThePixelsWithACodeAtItsEnd)
{
    const ScopeBins bins = Counted(ScopeKind::Waveform, kTwoRows);
    EXPECT_EQ(bins.Levels(0, 0)[16], 2U);
    EXPECT_EQ(bins.Levels(0, 2)[235], 1U);
    EXPECT_EQ(bins.AtEnd(false, 0), 2U);
    EXPECT_EQ(bins.AtEnd(true, 0), 0U);
    EXPECT_EQ(bins.AtEnd(false, 1), 0U);
    EXPECT_EQ(bins.AtEnd(true, 2), 1U);
    EXPECT_EQ(bins.AtEnd(true, 3), 2U) << "red, green";
    EXPECT_EQ(bins.AtEnd(false, 3), 2U);
}

TEST(ScopeBins, VectorsAreCountedByBlueAndRedDifference)
{
    const ScopeBins bins = Counted(ScopeKind::Vectors, kTwoRows);
    EXPECT_EQ(bins.Vector(128, 128), 4U);
    EXPECT_EQ(bins.Vector(102, 240), 1U) << "red";
    EXPECT_EQ(bins.Vector(42, 26), 1U) << "green";
}

TEST(ScopeBins, FewerColumnsShareThoseOfThePicture)
{
    const ScopeBins bins = Counted(ScopeKind::Parade, kTwoRows, 3);
    EXPECT_EQ(bins.Columns(), 3U);
    EXPECT_EQ(bins.PixelsIn(0) + bins.PixelsIn(1) + bins.PixelsIn(2), 8U);
    for (std::size_t column = 0; column < 3; ++column)
    {
        const auto levels = bins.Levels(0, column);
        EXPECT_EQ(std::accumulate(levels.begin(), levels.end(), 0U), bins.PixelsIn(column));
    }
    EXPECT_EQ(bins.Levels(0, 0)[0x10], 2U) << "the second column of the picture is in the first";
}

} // namespace

} // namespace ReferenceRenderer
