#include "reference_renderer/editor/pixel_text.h"

#include "tests/reference_renderer/core/look_fixtures.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

namespace ReferenceRenderer
{

namespace
{

template <typename Sample>
PreviewPicture PictureOf(std::array<Sample, 8>& samples, std::uint32_t format, bool linear)
{
    FrameBufferDesc frame{};
    frame.format = format;
    frame.pixels = samples.data();
    frame.width = 2;
    frame.height = 1;
    frame.rowPitch = 2;
    return {&frame, linear};
}

TEST(PixelText, SaysCodesAndSharesBeforeAndAfter)
{
    std::array<std::uint8_t, 8> samples{1, 2, 3, 4, 0, 51, 255, 255};
    const PreviewPicture picture = PictureOf(samples, kFormatBgra8, false);
    const auto inverting = Prepared(CubeLook(CubeOf(2, Inverted)));
    EXPECT_EQ(PixelText(picture, {1, 0}, *inverting),
              "1, 0:  255 51 0 \u2192 0 204 255   1.000 0.200 0.000 \u2192 0.000 0.800 1.000");
}

TEST(PixelText, FloatsAreThoseOfTheFrameWhateverTheyAre)
{
    std::array<float, 8> samples{0.0F, -0.0001F, -0.0F, 1.0F, -0.25F, 1.5F, 123456.0F, 1.0F};
    const PreviewPicture picture = PictureOf(samples, kFormatBgraFloat, false);
    EXPECT_EQ(PixelText(picture, {1, 0}, *Prepared(Look())),
              "1, 0:  255 255 0 \u2192 255 255 0   "
              "1.235e+05 1.500 -0.250 \u2192 1.235e+05 1.500 -0.250");
    EXPECT_EQ(PixelText(picture, {0, 0}, *Prepared(Look())),
              "0, 0:  0 0 0 \u2192 0 0 0   0.000 0.000 0.000 \u2192 0.000 0.000 0.000");
    samples[6] = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(PixelText(PictureOf(samples, kFormatBgraFloat, false), {1, 0}, *Prepared(Look())),
              "1, 0:  0 255 0 \u2192 0 255 0   nan 1.500 -0.250 \u2192 0.000 1.500 -0.250");
}

TEST(PixelText, CodesOfLinearLightAreThoseThatAreShown)
{
    std::array<float, 8> samples{0.5F, 0.5F, 0.5F, 1.0F, 0.0F, 0.0F, 0.0F, 1.0F};
    const PreviewPicture picture = PictureOf(samples, kFormatBgraFloat, true);
    const auto inverting = Prepared(CubeLook(CubeOf(2, Inverted)));
    EXPECT_EQ(PixelText(picture, {0, 0}, *inverting),
              "0, 0:  188 188 188 \u2192 67 67 67   0.500 0.500 0.500 \u2192 0.057 0.057 0.057");
}

} // namespace

} // namespace ReferenceRenderer
