#include "reference_renderer/core/frame_render.h"

#include "contract/entry_points.h"
#include "tests/reference_renderer/core/look_fixtures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace ReferenceRenderer
{

namespace
{

using namespace RendererAPI;

// An image with room beside its rows, filled with `fill`.
struct Image
{
    Image(std::uint32_t width, std::uint32_t height, std::uint32_t pitch, std::uint32_t format,
          std::uint8_t fill)
        : bytes(std::size_t{pitch} * height * BytesPerPixel(format), fill)
    {
        desc.format = format;
        desc.pixels = bytes.data();
        desc.width = width;
        desc.height = height;
        desc.rowPitch = pitch;
    }

    std::vector<std::uint8_t> bytes;
    FrameBufferDesc desc{};
};

std::int32_t Render(Image& source, Image& target, const PreparedLook* look,
                    std::uint32_t flags = 0x31)
{
    FrameJob job;
    const std::int32_t result = DescribeFrame(&source.desc, &target.desc, look, flags, job);
    if (result == kFrameRendered)
    {
        job.RenderRows(0, job.height);
    }
    return result;
}

std::vector<std::uint8_t> PaddingOf(const Image& image)
{
    std::vector<std::uint8_t> padding;
    const std::size_t pixel = BytesPerPixel(image.desc.format);
    for (std::size_t row = 0; row < image.desc.height; ++row)
    {
        const std::size_t end = (row + 1) * image.desc.rowPitch * pixel;
        for (std::size_t i = end - (image.desc.rowPitch - image.desc.width) * pixel; i < end; ++i)
        {
            padding.push_back(image.bytes[i]);
        }
    }
    return padding;
}

} // namespace

TEST(FrameRender, RowsOfAnyPitchAreRenderedAndPaddingIsLeftAlone)
{
    const auto look = Prepared(CubeLook(CubeOf(2, Inverted)));
    Image source(5, 3, 8, kFormatBgra8, 10);
    Image target(5, 3, 6, kFormatBgra8, 77);
    ASSERT_EQ(Render(source, target, look.get()), kFrameRendered);
    EXPECT_EQ(target.bytes[0], 245);
    EXPECT_EQ(target.bytes[3], 10) << "alpha";
    EXPECT_EQ(target.bytes[64], 245) << "the last pixel";
    for (const std::uint8_t byte : PaddingOf(target))
    {
        EXPECT_EQ(byte, 77);
    }
}

TEST(FrameRender, SourceAndDestinationMayBeTheSameMemory)
{
    const auto look = Prepared(CubeLook(CubeOf(2, Inverted)));
    Image image(4, 4, 4, kFormatBgra8, 10);
    ASSERT_EQ(Render(image, image, look.get()), kFrameRendered);
    EXPECT_EQ(image.bytes[0], 245);
    EXPECT_EQ(image.bytes[62], 245);
    EXPECT_EQ(image.bytes[63], 10);
}

TEST(FrameRender, WithoutALookTheSourceIsCopied)
{
    Image source(4, 2, 5, kFormatBgraFloat, 0x3E);
    Image target(4, 2, 4, kFormatBgraFloat, 0);
    ASSERT_EQ(Render(source, target, nullptr), kFrameRendered);
    EXPECT_EQ(target.bytes, std::vector<std::uint8_t>(target.bytes.size(), 0x3E));
    EXPECT_EQ(Render(source, source, nullptr), kFrameRendered);
}

TEST(FrameRender, TheLinearFlagCountsForFloatsOnly)
{
    const auto look = Prepared(CubeLook(CubeOf(2, Inverted)));
    Image eight(1, 1, 1, kFormatBgra8, 100);
    Render(eight, eight, look.get(), kRenderFrame | kRenderLinear);
    EXPECT_EQ(eight.bytes[0], 155);
    Image floats(1, 1, 1, kFormatBgraFloat, 0);
    Render(floats, floats, look.get(), kRenderFrame | kRenderLinear);
    float blue = 0.0F;
    std::memcpy(&blue, floats.bytes.data(), 4);
    EXPECT_NEAR(blue, 1.0F, 1e-5);
}

TEST(FrameRender, UnalignedRowsAreRendered)
{
    const auto look = Prepared(CubeLook(CubeOf(2, Inverted)));
    std::vector<std::uint8_t> memory(3 * 16 + 1);
    Image image(3, 1, 3, kFormatBgraFloat, 0);
    image.desc.pixels = memory.data() + 1;
    ASSERT_EQ(Render(image, image, look.get()), kFrameRendered);
    float red = 0.0F;
    std::memcpy(&red, memory.data() + 1 + 40, 4);
    EXPECT_NEAR(red, 1.0F, 1e-5);
}

TEST(FrameRender, WhatCannotBeRenderedIsLeftUntouched)
{
    const auto look = Prepared({});
    Image source(4, 4, 4, kFormatBgra8, 1);
    Image target(4, 4, 4, kFormatBgra8, 2);
    const auto refused = [&](auto change) {
        Image changed(4, 4, 4, kFormatBgra8, 2);
        change(changed.desc);
        const std::int32_t result = Render(source, changed, look.get());
        EXPECT_EQ(changed.bytes, target.bytes);
        return result;
    };
    EXPECT_EQ(refused([](FrameBufferDesc& d) { d.pixels = nullptr; }), kFrameInvalid);
    EXPECT_EQ(refused([](FrameBufferDesc& d) { d.width = 0; }), kFrameInvalid);
    EXPECT_EQ(refused([](FrameBufferDesc& d) { d.height = 0; }), kFrameInvalid);
    EXPECT_EQ(refused([](FrameBufferDesc& d) { d.rowPitch = 3; }), kFrameInvalid);
    EXPECT_EQ(refused([](FrameBufferDesc& d) { d.format = 17; }), kFrameFormatRefused);
    EXPECT_EQ(refused([](FrameBufferDesc& d) { d.width = 3; }), kFrameSizesDiffer);
    EXPECT_EQ(refused([](FrameBufferDesc& d) { d.height = 3; }), kFrameSizesDiffer);
    source.desc.format = target.desc.format = 12;
    EXPECT_EQ(Render(source, target, look.get()), kFrameFormatRefused);
    FrameJob job;
    EXPECT_EQ(DescribeFrame(nullptr, &target.desc, look.get(), 0, job), kFrameInvalid);
    EXPECT_EQ(DescribeFrame(&source.desc, nullptr, look.get(), 0, job), kFrameInvalid);
}

} // namespace ReferenceRenderer
