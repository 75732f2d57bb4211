#include "effect/frame_buffer.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

TEST(FrameBuffer, TheSameSizeAndFormatTwiceGivesTheSameMemory)
{
    FrameBuffer buffer;
    void* const first = buffer.Allocate(8, 4, kFormatBgra8);
    ASSERT_NE(first, nullptr);
    std::memset(first, 0x5A, 8 * 4 * 4);
    EXPECT_EQ(buffer.Allocate(8, 4, kFormatBgra8), first);
    EXPECT_EQ(static_cast<std::uint8_t*>(first)[127], 0x5A);
}

TEST(FrameBuffer, AllocatingDescribesAnImageWithoutRowPadding)
{
    FrameBuffer buffer;
    void* const pixels = buffer.Allocate(8, 4, kFormatBgraFloat);
    EXPECT_EQ(buffer.pixels, pixels);
    EXPECT_EQ(buffer.format, kFormatBgraFloat);
    EXPECT_EQ(buffer.width, 8U);
    EXPECT_EQ(buffer.height, 4U);
    EXPECT_EQ(buffer.rowPitch, 8U);
    EXPECT_TRUE(buffer.IsValid());
    std::memset(pixels, 0, 8 * 4 * 16); // all of it is there, says the address sanitizer
}

TEST(FrameBuffer, AChangeOfWidthHeightOrFormatReallocates)
{
    FrameBuffer buffer;
    ASSERT_NE(buffer.Allocate(8, 4, kFormatBgra8), nullptr);
    std::memset(buffer.Allocate(9, 4, kFormatBgra8), 1, 9 * 4 * 4);
    EXPECT_EQ(buffer.width, 9U);
    std::memset(buffer.Allocate(9, 5, kFormatBgra8), 1, 9 * 5 * 4);
    EXPECT_EQ(buffer.height, 5U);
    std::memset(buffer.Allocate(9, 5, kFormatBgraFloat), 1, 9 * 5 * 16);
    EXPECT_EQ(buffer.format, kFormatBgraFloat);
}

TEST(FrameBuffer, ReleasingKeepsFormatAspectTextureAndBounds)
{
    FrameBuffer buffer;
    ASSERT_NE(buffer.Allocate(8, 4, kFormatBgra8), nullptr);
    buffer.SetAspect(1.5F);
    buffer.sw = 3;
    buffer.scale = 2.0F;
    buffer.texture = 9;
    buffer.minValue = -1.0F;
    buffer.maxValue = 2.0F;
    buffer.Release();
    EXPECT_EQ(buffer.pixels, nullptr);
    EXPECT_EQ(buffer.width, 0U);
    EXPECT_EQ(buffer.height, 0U);
    EXPECT_EQ(buffer.rowPitch, 0U);
    EXPECT_EQ(buffer.sw, 0U);
    EXPECT_EQ(buffer.scale, 1.0F);
    EXPECT_EQ(buffer.format, kFormatBgra8);
    EXPECT_EQ(buffer.aspect, 1.5F);
    EXPECT_EQ(buffer.texture, 9U);
    EXPECT_EQ(buffer.minValue, -1.0F);
    EXPECT_EQ(buffer.maxValue, 2.0F);
}

TEST(FrameBuffer, AnImageWithoutPixelsIsAllocatedAndNotValid)
{
    FrameBuffer buffer;
    ASSERT_NE(buffer.Allocate(8, 4, kFormatBgra8), nullptr);
    EXPECT_NE(buffer.Allocate(0, 4, kFormatBgra8), nullptr);
    EXPECT_FALSE(buffer.IsValid());
}

TEST(FrameBuffer, AnImageBeyondMemoryLeavesTheBufferEmpty)
{
    FrameBuffer buffer;
    ASSERT_NE(buffer.Allocate(8, 4, kFormatBgra8), nullptr);
    constexpr std::uint32_t kHuge = std::numeric_limits<std::uint32_t>::max();
    EXPECT_EQ(buffer.Allocate(kHuge, kHuge, kFormatBgraFloat), nullptr);
    EXPECT_FALSE(buffer.IsValid());
}

TEST(FrameBuffer, TheRoomAroundAnImageIsZeroAndKeptWhileItIsEnough)
{
    FrameBuffer buffer;
    auto* const image =
        static_cast<std::uint8_t*>(buffer.Allocate(2, 1, kFormatBgra8, {.before = 3, .behind = 5}));
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(buffer.pixels, image);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(image) % 16, 0U) << "for vector code";
    std::memset(image, 7, 8);
    EXPECT_EQ(std::vector<std::uint8_t>(image - 3, image), std::vector<std::uint8_t>(3, 0));
    EXPECT_EQ(std::vector<std::uint8_t>(image + 8, image + 13), std::vector<std::uint8_t>(5, 0));
    EXPECT_EQ(buffer.Allocate(2, 1, kFormatBgra8), image);
    EXPECT_EQ(buffer.Allocate(2, 1, kFormatBgra8, {.before = 3, .behind = 4}), image);
    ASSERT_NE(buffer.Allocate(2, 1, kFormatBgra8, {.before = 3, .behind = 4096}), nullptr);
    EXPECT_EQ(static_cast<std::uint8_t*>(buffer.pixels)[8 + 4095], 0);
    ASSERT_NE(buffer.Allocate(2, 1, kFormatBgra8, {.before = 4096, .behind = 0}), nullptr);
    EXPECT_EQ((static_cast<std::uint8_t*>(buffer.pixels) - 4096)[0], 0);
}

TEST(FrameBuffer, RoomBeyondMemoryLeavesTheBufferEmpty)
{
    FrameBuffer buffer;
    constexpr std::size_t kHuge = std::numeric_limits<std::size_t>::max();
    EXPECT_EQ(buffer.Allocate(2, 1, kFormatBgra8, {.before = kHuge, .behind = 0}), nullptr);
    EXPECT_EQ(buffer.Allocate(2, 1, kFormatBgra8, {.before = 0, .behind = kHuge}), nullptr);
    EXPECT_FALSE(buffer.IsValid());
}
