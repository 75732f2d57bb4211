#include "effect/surface_memory.h"

#include "effect/frame_buffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <numeric>
#include <vector>

namespace
{

// Three rows of two pixels of format 13 (one byte each) and two bytes of padding.
constexpr std::uint32_t kOneByteFormat = 13;

struct Memory
{
    std::array<std::uint8_t, 12> bytes{};

    Memory() { std::iota(bytes.begin(), bytes.end(), std::uint8_t{0}); }
    SurfaceMemory TopDown() { return {bytes.data(), 4, 2, 3}; }
    SurfaceMemory BottomUp() { return {bytes.data() + 8, -4, 2, 3}; }
};

std::array<std::uint8_t, 6> Copied(const SurfaceMemory& memory)
{
    FrameBuffer target;
    target.Allocate(2, 3, kOneByteFormat);
    CopyRows(memory, target);
    std::array<std::uint8_t, 6> bytes{};
    std::copy_n(static_cast<const std::uint8_t*>(target.pixels), bytes.size(), bytes.begin());
    return bytes;
}

} // namespace

TEST(SurfaceMemory, TopDownRowsAreCopiedInTheirOrder)
{
    Memory memory;
    EXPECT_EQ(Copied(memory.TopDown()), (std::array<std::uint8_t, 6>{0, 1, 4, 5, 8, 9}));
}

TEST(SurfaceMemory, BottomUpRowsAreCopiedTopRowFirst)
{
    Memory memory;
    EXPECT_EQ(Copied(memory.BottomUp()), (std::array<std::uint8_t, 6>{8, 9, 4, 5, 0, 1}));
}

TEST(SurfaceMemory, CopyingStopsAtTheShorterOfBothSides)
{
    Memory memory;
    FrameBuffer small;
    small.Allocate(1, 2, kOneByteFormat);
    CopyRows(memory.TopDown(), small);
    const auto* const pixels = static_cast<const std::uint8_t*>(small.pixels);
    EXPECT_EQ(pixels[0], 0);
    EXPECT_EQ(pixels[1], 4);

    FrameBuffer large;
    large.Allocate(6, 5, kOneByteFormat);
    std::fill_n(static_cast<std::uint8_t*>(large.pixels), 30, std::uint8_t{99});
    CopyRows(memory.BottomUp(), large);
    const auto* const rows = static_cast<const std::uint8_t*>(large.pixels);
    EXPECT_EQ(rows[0], 8);
    EXPECT_EQ(rows[3], 11) << "as many bytes as the pitch holds";
    EXPECT_EQ(rows[4], 99);
    EXPECT_EQ(rows[3 * 6], 99) << "no fourth row";

    std::fill_n(static_cast<std::uint8_t*>(large.pixels), 30, std::uint8_t{99});
    CopyRows(memory.TopDown(), large);
    EXPECT_EQ(rows[3], 3);
    EXPECT_EQ(rows[4], 99) << "a row of the target ends later";
    EXPECT_EQ(rows[6], 4);
}

TEST(SurfaceMemory, LargePicturesAreCopiedByteForByteFromAndToAnyAddress)
{
    constexpr std::uint32_t kRows = 431;
    for (const std::uint32_t padding : {0U, 5U})
    {
        for (const std::uint32_t shift : {0U, 3U})
        {
            const std::uint32_t width = 20011; // no multiple of a line or a page
            std::vector<std::uint8_t> source(std::size_t{width + padding} * kRows + shift);
            std::vector<std::uint8_t> target(std::size_t{width} * kRows + 2 * shift, 99);
            for (std::size_t i = 0; i < source.size(); ++i)
            {
                source[i] = static_cast<std::uint8_t>(i * 2654435761U >> 13);
            }
            const SurfaceMemory memory{source.data() + shift, width + padding, width, kRows};
            FrameBufferDesc desc;
            desc.format = kOneByteFormat;
            desc.pixels = target.data() + shift;
            desc.width = desc.rowPitch = width;
            desc.height = kRows;
            CopyRows(memory, desc);
            for (std::uint32_t row = 0; row < kRows; ++row)
            {
                ASSERT_EQ(std::memcmp(target.data() + shift + std::size_t{row} * width,
                                      memory.firstByte + std::size_t{row} * (width + padding),
                                      width),
                          0)
                    << row << " of rows padded by " << padding << ", shifted by " << shift;
            }
            EXPECT_TRUE(std::all_of(target.end() - shift, target.end(),
                                    [](std::uint8_t byte) { return byte == 99; }));
        }
    }
}

TEST(SurfaceMemory, NothingIsWrittenBehindALargePictureOfWholePages)
{
    constexpr std::uint32_t kRow = 4096;
    constexpr std::uint32_t kRows = 2048;
    const std::vector<std::uint8_t> source(std::size_t{kRow} * kRows, 1);
    std::vector<std::uint8_t> target(source.size() + kRow, 99);
    const SurfaceMemory memory{const_cast<std::uint8_t*>(source.data()), kRow, kRow, kRows};
    FrameBufferDesc desc;
    desc.format = kOneByteFormat;
    desc.pixels = target.data();
    desc.width = desc.rowPitch = kRow;
    desc.height = kRows;
    CopyRows(memory, desc);
    EXPECT_EQ(std::count(target.begin(), target.end(), std::uint8_t{1}),
              static_cast<std::ptrdiff_t>(source.size()));
}

TEST(SurfaceMemory, NothingIsCopiedFromOrToNowhere)
{
    Memory memory;
    SurfaceMemory nowhere = memory.TopDown();
    nowhere.firstByte = nullptr;
    FrameBuffer target;
    target.Allocate(2, 3, kOneByteFormat);
    std::fill_n(static_cast<std::uint8_t*>(target.pixels), 6, std::uint8_t{99});
    CopyRows(nowhere, target);
    EXPECT_EQ(*static_cast<std::uint8_t*>(target.pixels), 99);
    CopyRows(memory.TopDown(), FrameBufferDesc{}); // must not write through a null pointer
}

TEST(SurfaceMemory, IsDescribedFromItsLowestAddressedRow)
{
    std::array<float, 4 * 6 * 3> floats{};
    auto* const bytes = reinterpret_cast<std::uint8_t*>(floats.data());
    const SurfaceMemory topDown{bytes, 96, 5, 3};
    const FrameBufferDesc desc = Describe(topDown, kFormatBgraFloat, 1.5F);
    EXPECT_EQ(desc.pixels, bytes);
    EXPECT_EQ(desc.format, kFormatBgraFloat);
    EXPECT_EQ(desc.width, 5U);
    EXPECT_EQ(desc.height, 3U);
    EXPECT_EQ(desc.rowPitch, 6U);
    EXPECT_EQ(desc.aspect, 1.5F);
    EXPECT_EQ(desc.scale, 1.0F);
    EXPECT_EQ(desc.sw, 0U);
    EXPECT_EQ(desc.texture, 0U);
    EXPECT_EQ(desc.minValue, -1000.0F);
    EXPECT_EQ(desc.maxValue, 1000.0F);

    const SurfaceMemory bottomUp{bytes + 2 * 96, -96, 5, 3};
    EXPECT_TRUE(bottomUp.IsBottomUp());
    EXPECT_EQ(Describe(bottomUp, kFormatBgraFloat, 1.0F).pixels, bytes);
    EXPECT_EQ(Describe(bottomUp, kFormatBgraFloat, 1.0F).rowPitch, 6U);
    EXPECT_EQ((SurfaceMemory{bytes, -96, 5, 0}.LowestRow()), bytes) << "no row lies below it";
}

TEST(SurfaceMemory, APitchBetweenTwoPixelsIsCutToWholePixels)
{
    std::array<std::uint8_t, 22> bytes{};
    const SurfaceMemory memory{bytes.data(), 11, 2, 2};
    EXPECT_EQ(Describe(memory, kFormatBgra8, 1.0F).rowPitch, 2U);
}
