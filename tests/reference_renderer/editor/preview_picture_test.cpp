#include "reference_renderer/editor/preview_picture.h"

#include "reference_renderer/core/colour_math.h"
#include "tests/reference_renderer/core/look_fixtures.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

namespace ReferenceRenderer
{

namespace
{

FrameBufferDesc Describe(std::uint32_t format, void* pixels, std::uint32_t width,
                         std::uint32_t height)
{
    FrameBufferDesc frame{};
    frame.format = format;
    frame.pixels = pixels;
    frame.width = width;
    frame.height = height;
    frame.rowPitch = width;
    return frame;
}

std::vector<std::uint32_t> Original(const PreviewPicture& picture)
{
    std::vector<std::uint32_t> pixels(picture.ScaledSize().width * picture.ScaledSize().height);
    picture.WriteOriginal(pixels);
    return pixels;
}

std::vector<std::uint32_t> Graded(const PreviewPicture& picture, const PreparedLook& look)
{
    std::vector<std::uint32_t> pixels(picture.ScaledSize().width * picture.ScaledSize().height);
    const FrameJob job = picture.GradingJob(look, pixels);
    job.RenderRows(0, job.height);
    return pixels;
}

TEST(PreviewPicture, ShowsBytesAsTheyAreAtTheirOwnSize)
{
    std::vector<std::uint32_t> pixels{0xFF102030, 0x80405060, 0x00708090, 0xFFA0B0C0};
    const FrameBufferDesc frame = Describe(kFormatBgra8, pixels.data(), 2, 2);
    PreviewPicture picture(&frame, false);
    picture.Scale({2, 2});
    EXPECT_EQ(Original(picture), pixels);
}

TEST(PreviewPicture, IsACopyThatTheCallerCannotChange)
{
    std::vector<std::uint32_t> pixels{0xFF102030};
    const FrameBufferDesc frame = Describe(kFormatBgra8, pixels.data(), 1, 1);
    PreviewPicture picture(&frame, false);
    pixels[0] = 0;
    picture.Scale({1, 1});
    EXPECT_EQ(Original(picture)[0], 0xFF102030U);
}

TEST(PreviewPicture, ALargePictureHasACoarseCopyOfItsShapeToo)
{
    std::vector<std::uint32_t> pixels(std::size_t{64} * 36, 0xFF336699);
    const FrameBufferDesc frame = Describe(kFormatBgra8, pixels.data(), 64, 36);
    PreviewPicture picture(&frame, false);
    const auto inverting = Prepared(CubeLook(CubeOf(2, Inverted)));
    for (const PixelSize size :
         {PixelSize{1920, 1080}, PixelSize{3840, 2160}, PixelSize{500000, 1}, PixelSize{1, 500000}})
    {
        picture.Scale(size);
        ASSERT_TRUE(picture.HasCoarse());
        const PixelSize coarse = picture.ScaledSize(Detail::Coarse);
        EXPECT_LE(coarse.width * coarse.height, kMostCoarsePixels);
        EXPECT_GE(coarse.width * coarse.height, kMostCoarsePixels / 2 - 1);
        std::vector<std::uint32_t> shown(coarse.width * coarse.height);
        const FrameJob job = picture.GradingJob(*inverting, shown, Detail::Coarse);
        ASSERT_EQ(job.width, coarse.width);
        ASSERT_EQ(job.height, coarse.height);
        job.RenderRows(0, job.height);
        EXPECT_EQ(shown.front(), 0xFFCC9966U);
        EXPECT_EQ(shown.back(), 0xFFCC9966U);
        EXPECT_EQ(picture.ScaledSize(), size);
    }
}

TEST(PreviewPicture, TheCoarseCopyOfLinearLightIsEncodedOnce)
{
    std::vector<float> pixels(std::size_t{4} * 4 * 4, 0.2158605F); // code 128, encoded
    const FrameBufferDesc frame = Describe(kFormatBgraFloat, pixels.data(), 4, 4);
    PreviewPicture picture(&frame, true);
    picture.Scale({1024, 1024});
    ASSERT_TRUE(picture.HasCoarse());
    const PixelSize coarse = picture.ScaledSize(Detail::Coarse);
    std::vector<std::uint32_t> shown(coarse.width * coarse.height);
    const auto neutral = Prepared(Look{});
    const FrameJob job = picture.GradingJob(*neutral, shown, Detail::Coarse);
    job.RenderRows(0, 1);
    EXPECT_EQ(shown.front() & 0xFFFFFF, 0x808080U);
}

TEST(PreviewPicture, ASmallPictureIsItsOwnCoarseCopy)
{
    std::vector<std::uint32_t> pixels(4, 0xFF336699);
    const FrameBufferDesc frame = Describe(kFormatBgra8, pixels.data(), 2, 2);
    PreviewPicture picture(&frame, false);
    picture.Scale({1024, 512});
    EXPECT_TRUE(picture.HasCoarse());
    picture.Scale({512, 288});
    EXPECT_FALSE(picture.HasCoarse());
    EXPECT_EQ(picture.ScaledSize(Detail::Coarse), (PixelSize{512, 288}));
}

TEST(PreviewPicture, LeavesThePaddingOfRowsOut)
{
    std::vector<std::uint32_t> pixels{1, 2, 99, 3, 4}; // the last row has no padding behind it
    FrameBufferDesc frame = Describe(kFormatBgra8, pixels.data(), 2, 2);
    frame.rowPitch = 3;
    PreviewPicture picture(&frame, false);
    picture.Scale({2, 2});
    EXPECT_EQ(Original(picture), (std::vector<std::uint32_t>{1, 2, 3, 4}));
}

TEST(PreviewPicture, GradesBytesAsAFrameIsRendered)
{
    std::vector<std::uint32_t> pixels{0xFF102030, 0x80405060, 0x00708090, 0xFFA0B0C0};
    const auto look = Prepared(CubeLook(CubeOf(9, Swirled)));
    FrameBufferDesc frame = Describe(kFormatBgra8, pixels.data(), 4, 1);
    PreviewPicture picture(&frame, false);
    picture.Scale({4, 1});
    std::vector<std::uint32_t> rendered(4);
    const FrameBufferDesc target = Describe(kFormatBgra8, rendered.data(), 4, 1);
    FrameJob job;
    ASSERT_EQ(DescribeFrame(&frame, &target, look.get(), 0x31, job), RendererAPI::kFrameRendered);
    job.RenderRows(0, 1);
    EXPECT_EQ(Graded(picture, *look), rendered);
}

class FloatPicture : public testing::TestWithParam<bool>
{
};

TEST_P(FloatPicture, IsGradedAsAFrameIsRenderedAndThenEncodedForTheDisplay)
{
    const bool linear = GetParam();
    constexpr std::uint32_t kWidth = 600; // more than one piece
    std::vector<float> pixels;
    for (std::uint32_t i = 0; i < kWidth * 4; ++i)
    {
        pixels.push_back(static_cast<float>(i % 97) / 80.0F - 0.05F);
    }
    const auto look = Prepared(CubeLook(CubeOf(9, Swirled)));
    const FrameBufferDesc frame = Describe(kFormatBgraFloat, pixels.data(), kWidth, 1);
    PreviewPicture picture(&frame, linear);
    picture.Scale({kWidth, 1});
    EXPECT_EQ(picture.IsLinear(), linear);
    const std::vector<std::uint32_t> shown = Graded(picture, *look);

    std::vector<float> rendered(pixels.size());
    look->RowFloat(linear)(*look, reinterpret_cast<const std::byte*>(pixels.data()),
                           reinterpret_cast<std::byte*>(rendered.data()), kWidth);
    for (std::size_t i = 0; i < kWidth; ++i)
    {
        for (unsigned channel = 0; channel < 3; ++channel)
        {
            const float value = rendered[i * 4 + channel];
            const auto expected = static_cast<int>(Code8(linear ? EncodeSrgb(value) : value));
            EXPECT_NEAR(static_cast<int>(shown[i] >> (8 * channel) & 0xFF), expected, 1) << i;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(BothEncodings, FloatPicture, testing::Bool());

TEST(PreviewPicture, AveragesLinearLightAsLight)
{
    std::vector<float> pixels{0.0F, 0.0F, 0.0F, 1.0F, 1.0F, 1.0F, 1.0F, 1.0F};
    const FrameBufferDesc frame = Describe(kFormatBgraFloat, pixels.data(), 2, 1);
    PreviewPicture light(&frame, true);
    light.Scale({1, 1});
    EXPECT_EQ(Original(light)[0], 0xFFBCBCBCU) << "half the light is code 188";
    PreviewPicture display(&frame, false);
    display.Scale({1, 1});
    EXPECT_EQ(Original(display)[0], 0xFF808080U);
}

TEST(PreviewPicture, LinearCountsForFloatsOnly)
{
    std::uint32_t pixel = 0xFF808080;
    const FrameBufferDesc frame = Describe(kFormatBgra8, &pixel, 1, 1);
    PreviewPicture picture(&frame, true);
    EXPECT_FALSE(picture.IsLinear());
    picture.Scale({1, 1});
    EXPECT_EQ(Original(picture)[0], pixel);
}

TEST(PreviewPicture, ShowsFloatsThatAreNoNumbersToo)
{
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    std::vector<float> pixels{std::nanf(""), kInfinity, -kInfinity, 1.0F,
                              std::nanf(""), kInfinity, -kInfinity, 1.0F};
    const FrameBufferDesc frame = Describe(kFormatBgraFloat, pixels.data(), 2, 1);
    PreviewPicture picture(&frame, true);
    picture.Scale({1, 1});
    EXPECT_EQ(Original(picture)[0], 0xFF00FF00U);
}

TEST(PreviewPicture, WithoutReadablePixelsThereIsNone)
{
    std::uint32_t pixel = 0;
    FrameBufferDesc frame = Describe(kFormatBgra8, &pixel, 1, 1);
    EXPECT_FALSE(PreviewPicture(&frame, false).IsEmpty());
    EXPECT_TRUE(PreviewPicture(nullptr, false).IsEmpty());
    frame.format = 4;
    EXPECT_TRUE(PreviewPicture(&frame, false).IsEmpty());
    frame = Describe(kFormatBgra8, nullptr, 1, 1);
    frame.texture = 5;
    EXPECT_TRUE(PreviewPicture(&frame, false).IsEmpty());
    frame = Describe(kFormatBgra8, &pixel, 0, 1);
    EXPECT_TRUE(PreviewPicture(&frame, false).IsEmpty());
}

TEST(PreviewPicture, HasTheShapeThatItsPixelAspectGivesIt)
{
    std::vector<std::uint32_t> pixels(std::size_t{72} * 40);
    FrameBufferDesc frame = Describe(kFormatBgra8, pixels.data(), 72, 40);
    EXPECT_DOUBLE_EQ(PreviewPicture(&frame, false).Shape(), 1.8);
    frame.aspect = 2.0F;
    EXPECT_DOUBLE_EQ(PreviewPicture(&frame, false).Shape(), 3.6);
    frame.aspect = std::nanf("");
    EXPECT_DOUBLE_EQ(PreviewPicture(&frame, false).Shape(), 1.8);
}

TEST(PreviewPicture, APartHasThePixelsThatTheWholeHasThere)
{
    std::vector<std::uint32_t> pixels(std::size_t{40} * 30);
    for (std::size_t i = 0; i < pixels.size(); ++i)
    {
        pixels[i] = static_cast<std::uint32_t>(i * 2654435761U);
    }
    const FrameBufferDesc frame = Describe(kFormatBgra8, pixels.data(), 40, 30);
    for (const PixelSize whole : {PixelSize{17, 13}, PixelSize{40, 30}, PixelSize{95, 71}})
    {
        PreviewPicture all(&frame, false);
        all.Scale(whole);
        std::vector<std::uint32_t> expected(whole.width * whole.height);
        all.WriteOriginal(expected);
        PreviewPicture picture(&frame, false);
        const PixelPart part{5, 3, {9, 7}};
        picture.Scale(whole, part);
        EXPECT_EQ(picture.ScaledSize(), part.size);
        std::vector<std::uint32_t> found(part.size.width * part.size.height);
        picture.WriteOriginal(found);
        for (std::size_t i = 0; i < found.size(); ++i)
        {
            const std::size_t y = part.top + i / part.size.width;
            const std::size_t x = part.left + i % part.size.width;
            ASSERT_EQ(found[i], expected[y * whole.width + x]) << whole.width << " at " << i;
        }
    }
}

TEST(PreviewPicture, RowsOfThePictureItselfAreReadInStepsWithoutAnAverage)
{
    std::vector<std::uint32_t> pixels(std::size_t{10} * 3);
    for (std::uint32_t i = 0; i < pixels.size(); ++i)
    {
        pixels[i] = i % 2 == 0 ? 0xFFFFFFFF : i;
    }
    const FrameBufferDesc frame = Describe(kFormatBgra8, pixels.data(), 10, 3);
    PreviewPicture picture(&frame, false);
    picture.Scale({5, 2}); // means, which must not be seen here
    std::array<std::uint32_t, 3> read{};
    auto* const bytes = reinterpret_cast<std::byte*>(read.data());
    picture.ReadRow(1, 1, 3, 3, bytes);
    EXPECT_EQ(read, (std::array{pixels[11], pixels[14], pixels[17]}));
    picture.ReadRow(2, 7, 1, 3, bytes);
    EXPECT_EQ(read, (std::array{pixels[27], pixels[28], pixels[29]}));
    const auto inverting = Prepared(CubeLook(CubeOf(2, Inverted)));
    picture.WriteCodes(inverting.get(), bytes, bytes, 3);
    EXPECT_EQ(read[1], (pixels[28] & 0xFF000000U) | (~pixels[28] & 0xFFFFFFU));
}

} // namespace

} // namespace ReferenceRenderer
