#include "contract/frame_buffer_desc.h"

#include <gtest/gtest.h>

#include <limits>

TEST(FrameBufferDesc, BytesPerPixelFollowsTheFormatTable)
{
    constexpr std::uint32_t expected[]{3, 4, 4, 4, 6, 8, 8, 6, 8, 8, 12, 16, 16, 1, 2, 2, 4, 16};
    for (std::uint32_t format = 0; format < std::size(expected); ++format)
    {
        EXPECT_EQ(BytesPerPixel(format), expected[format]) << "format " << format;
    }
}

TEST(FrameBufferDesc, AFormatThatIsNotListedTakesFourBytes)
{
    EXPECT_EQ(BytesPerPixel(18), 4U);
    EXPECT_EQ(BytesPerPixel(std::numeric_limits<std::uint32_t>::max()), 4U);
}

TEST(FrameBufferDesc, ANewRecordIsEmptyAndHasTheRenderersDefaults)
{
    FrameBufferDesc desc;
    EXPECT_EQ(desc.format, 1U);
    EXPECT_EQ(desc.pixels, nullptr);
    EXPECT_EQ(desc.scale, 1.0F);
    EXPECT_EQ(desc.aspect, 1.0F);
    EXPECT_EQ(desc.minValue, -1000.0F);
    EXPECT_EQ(desc.maxValue, 1000.0F);
    EXPECT_FALSE(desc.IsValid());
}

TEST(FrameBufferDesc, AnImageIsValidWithPixelsAndPitchOrWithATexture)
{
    std::uint32_t pixel = 0;
    FrameBufferDesc desc;
    desc.width = 1;
    desc.height = 1;
    EXPECT_FALSE(desc.IsValid());
    desc.pixels = &pixel;
    EXPECT_FALSE(desc.IsValid()) << "a pitch of 0 cannot be walked";
    desc.rowPitch = 1;
    EXPECT_TRUE(desc.IsValid());
    desc.height = 0;
    EXPECT_FALSE(desc.IsValid());
    desc.height = 1;
    desc.pixels = nullptr;
    desc.texture = 7;
    EXPECT_TRUE(desc.IsValid());
}

TEST(FrameBufferDesc, RowBytesCountsThePitchInPixelsOfTheFormat)
{
    FrameBufferDesc desc;
    desc.rowPitch = 10;
    desc.format = kFormatBgra8;
    EXPECT_EQ(desc.RowBytes(), 40U);
    desc.format = kFormatBgraFloat;
    EXPECT_EQ(desc.RowBytes(), 160U);
}
