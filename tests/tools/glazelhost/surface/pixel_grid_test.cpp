#include "tools/glazelhost/surface/pixel_grid.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

namespace GlazelHost
{

namespace
{

std::vector<Sample> Load(const std::array<float, 4>& pixel, bool premultiplied)
{
    std::vector<Sample> samples(1);
    std::array<std::byte, 16> bytes{};
    std::memcpy(bytes.data(), pixel.data(), sizeof(pixel));
    LoadSamples(bytes.data(), SurfaceFormat::StraightFloat, premultiplied, samples);
    return samples;
}

} // namespace

TEST(PixelGrid, TopDownRowsFollowEachOtherUpwardsInMemory)
{
    const PixelGrid grid({3, 2, SurfaceFormat::Straight8, false});
    EXPECT_EQ(grid.Pitch(), 12);
    EXPECT_EQ(grid.Row(1) - grid.Row(0), 12);
    EXPECT_EQ(grid.At(2, 1) - grid.Row(1), 8);
}

TEST(PixelGrid, BottomUpRowsFollowEachOtherDownwardsInMemory)
{
    const PixelGrid grid({3, 2, SurfaceFormat::StraightFloat, true});
    EXPECT_EQ(grid.Pitch(), -48);
    EXPECT_EQ(grid.Row(1) - grid.Row(0), -48);
}

TEST(PixelGrid, PaddingStandsBehindEachRowInEitherOrientation)
{
    const PixelGrid down({3, 2, SurfaceFormat::Straight8, false, 5});
    EXPECT_EQ(down.Pitch(), 17);
    EXPECT_EQ(down.Row(1), down.Row(0) + 17);
    const PixelGrid up({3, 2, SurfaceFormat::Straight8, true, 5});
    EXPECT_EQ(up.Pitch(), -17);
    EXPECT_EQ(up.Row(0), up.Row(1) + 17);
    up.Row(0)[16] = std::byte{1};
    EXPECT_TRUE(up.GuardsAreIntact());
    up.Row(0)[17] = std::byte{1};
    EXPECT_FALSE(up.GuardsAreIntact());
}

TEST(PixelGrid, ItsPixelsAreZeroAtFirst)
{
    const PixelGrid grid({2, 2, SurfaceFormat::Straight8, false});
    std::array<Sample, 2> samples{Sample{1, 1, 1, 1}, Sample{1, 1, 1, 1}};
    LoadSamples(grid.Row(1), SurfaceFormat::Straight8, false, samples);
    EXPECT_EQ(samples[0], Sample{});
    EXPECT_EQ(samples[1], Sample{});
}

TEST(PixelGrid, AWriteJustBeforeOrAfterThePixelsShows)
{
    for (const int end : {0, 1})
    {
        PixelGrid grid({2, 2, SurfaceFormat::Straight8, false});
        EXPECT_TRUE(grid.GuardsAreIntact());
        std::byte* const first = grid.Row(0);
        (end == 0 ? first[-1] : first[16]) = std::byte{0};
        EXPECT_FALSE(grid.GuardsAreIntact());
        grid.RestoreGuards();
        EXPECT_TRUE(grid.GuardsAreIntact());
    }
}

TEST(PixelGrid, BorrowedPixelsAreGuardedWhereTheyEndNotWhereTheirMemoryEnds)
{
    PixelBuffer buffer;
    buffer.resize(1000); // used before, for a larger picture
    buffer.resize(16);
    PixelGrid grid({2, 2, SurfaceFormat::Straight8, false}, buffer.data());
    EXPECT_EQ(grid.Row(0), buffer.data());
    EXPECT_TRUE(grid.GuardsAreIntact());
    buffer.data()[16] = std::byte{0};
    EXPECT_FALSE(grid.GuardsAreIntact());
    grid.RestoreGuards();
    buffer.data()[-1] = std::byte{0};
    EXPECT_FALSE(grid.GuardsAreIntact());
}

TEST(PixelGrid, WithoutMemoryItSaysSo)
{
    const SurfaceLayout layout{2, 2, SurfaceFormat::Straight8, false};
    EXPECT_FALSE(PixelGrid(layout, nullptr).HasMemory());
    EXPECT_TRUE(PixelGrid(layout).HasMemory());
}

TEST(PixelBuffer, CopiesHaveMemoryOfTheirOwnAndMovedOnesTakeIt)
{
    PixelBuffer first{std::byte{1}, std::byte{2}};
    const PixelBuffer copy = first;
    EXPECT_EQ(copy, first);
    first[0] = std::byte{3};
    EXPECT_EQ(copy[0], std::byte{1});
    const std::byte* const memory = first.data();
    const PixelBuffer moved = std::move(first);
    EXPECT_EQ(moved.data(), memory);
    EXPECT_EQ(moved.size(), 2U);
}

TEST(PixelBuffer, MemoryThatIsEnoughIsUsedAgain)
{
    PixelBuffer buffer;
    buffer.resize(100);
    const std::byte* const memory = buffer.data();
    buffer.resize(10);
    buffer.resize(100);
    EXPECT_EQ(buffer.data(), memory);
}

TEST(PixelGrid, EveryByteSurvivesTheWayThroughFloat)
{
    std::array<std::byte, 16> pixel{};
    for (unsigned value = 0; value < 256; ++value)
    {
        const auto byte = static_cast<std::uint8_t>(value);
        const Sample sample{byte, static_cast<std::uint8_t>(255 - byte), byte, byte};
        StoreSamples(pixel.data(), SurfaceFormat::StraightFloat, false, {&sample, 1});
        Sample back;
        LoadSamples(pixel.data(), SurfaceFormat::StraightFloat, false, {&back, 1});
        EXPECT_EQ(back, sample);
    }
}

TEST(PixelGrid, FloatsOutsideTheRangeReadAsItsEnds)
{
    EXPECT_EQ(Load({-0.5F, 1.5F, std::numeric_limits<float>::infinity(), 1.0F}, false)[0],
              (Sample{0, 255, 255, 255}));
}

TEST(PixelGrid, AFloatThatIsNotANumberReadsAsZero)
{
    const float notANumber = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(Load({notANumber, 0.5F, -notANumber, 1.0F}, false)[0], (Sample{0, 128, 0, 255}));
}

TEST(PixelGrid, StraightFloatsArePremultipliedOnDemand)
{
    EXPECT_EQ(Load({1.0F, 0.5F, 0.0F, 0.5F}, true)[0], (Sample{128, 64, 0, 128}));
}

TEST(PixelGrid, EachEightBitFormatConvertsToTheOther)
{
    const Sample straight{200, 100, 50, 128};
    std::array<std::byte, 4> pixel{};
    StoreSamples(pixel.data(), SurfaceFormat::Premultiplied8, false, {&straight, 1});
    Sample held;
    std::memcpy(&held, pixel.data(), sizeof(held));
    EXPECT_EQ(held, Premultiplied(straight));

    StoreSamples(pixel.data(), SurfaceFormat::Straight8, true, {&held, 1});
    Sample back;
    std::memcpy(&back, pixel.data(), sizeof(back));
    EXPECT_EQ(back, Straight(held));
}

} // namespace GlazelHost
