#include "tools/glazelhost/io/ycbcr_convert.h"

#include "tests/tools/glazelhost/io/sample_images.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

namespace
{

constexpr YCbCrMatrix kMatrices[] = {YCbCrMatrix::Bt601, YCbCrMatrix::Bt709, YCbCrMatrix::Bt2020};
constexpr YCbCrRange kRanges[] = {YCbCrRange::Limited, YCbCrRange::Full};
constexpr ChromaSampling kColourSamplings[] = {
    ChromaSampling::Half420Jpeg, ChromaSampling::Half420Mpeg2, ChromaSampling::Half420Paldv,
    ChromaSampling::Half422, ChromaSampling::Full444};

// The definition, in double and apart from the code under test: codes of a colour, not rounded.
std::array<double, 3> CodesOf(double red, double green, double blue, YCbCrMatrix matrix,
                              YCbCrRange range)
{
    const double kr = matrix == YCbCrMatrix::Bt601   ? 0.299
                      : matrix == YCbCrMatrix::Bt709 ? 0.2126
                                                     : 0.2627;
    const double kb = matrix == YCbCrMatrix::Bt601   ? 0.114
                      : matrix == YCbCrMatrix::Bt709 ? 0.0722
                                                     : 0.0593;
    const double y = kr * red + (1 - kr - kb) * green + kb * blue;
    const double cb = (blue - y) / (2 * (1 - kb));
    const double cr = (red - y) / (2 * (1 - kr));
    if (range == YCbCrRange::Limited)
    {
        return {16 + 219 * y, 128 + 224 * cb, 128 + 224 * cr};
    }
    return {255 * y, 128 + 255 * cb, 128 + 255 * cr};
}

int Nearest(double code)
{
    return static_cast<int>(std::floor(std::clamp(code, 0.0, 255.0) + 0.5));
}

Image Uniform(int width, int height, float red, float green, float blue)
{
    Image image;
    Reshape(image, width, height, SampleType::Float, false);
    for (int y = 0; y < height; ++y)
    {
        for (int x = 0; x < width; ++x)
        {
            SetFloat(image, x, y, 0, blue);
            SetFloat(image, x, y, 1, green);
            SetFloat(image, x, y, 2, red);
            SetFloat(image, x, y, 3, 1.0F);
        }
    }
    return image;
}

std::vector<std::uint8_t> Encoded(const Image& image, const YCbCrEncoding& encoding)
{
    YCbCrConverter converter(image.width, image.height, encoding);
    std::vector<std::uint8_t> planes(converter.FrameBytes());
    converter.Encode(image, planes.data());
    return planes;
}

Image Decoded(std::vector<std::uint8_t> planes, int width, int height,
              const YCbCrEncoding& encoding, SampleType type)
{
    Image image;
    YCbCrConverter converter(width, height, encoding);
    EXPECT_EQ(planes.size(), converter.FrameBytes());
    converter.Decode(planes.data(), image, type);
    return image;
}

// An image of 4:4:4 whose columns run through all Cb codes and whose rows through all Cr codes.
std::vector<std::uint8_t> AllChroma(std::uint8_t luma)
{
    constexpr std::size_t kArea = 256 * 256;
    std::vector<std::uint8_t> planes(3 * kArea, luma);
    for (std::size_t i = 0; i < kArea; ++i)
    {
        planes[kArea + i] = static_cast<std::uint8_t>(i % 256);
        planes[2 * kArea + i] = static_cast<std::uint8_t>(i / 256);
    }
    return planes;
}

} // namespace

TEST(YCbCrConvert, EveryCodeSurvivesTheWayThroughFloats)
{
    for (const YCbCrMatrix matrix : kMatrices)
    {
        for (const YCbCrRange range : kRanges)
        {
            const YCbCrEncoding encoding{ChromaSampling::Full444, range, matrix};
            for (int luma = 0; luma < 256; luma += 15)
            {
                const auto planes = AllChroma(static_cast<std::uint8_t>(luma));
                const Image image = Decoded(planes, 256, 256, encoding, SampleType::Float);
                ASSERT_EQ(Encoded(image, encoding), planes) << "luma " << luma;
            }
        }
    }
}

TEST(YCbCrConvert, Rec709LimitedWhiteAndBlackAreExact)
{
    const YCbCrEncoding encoding{ChromaSampling::Full444, YCbCrRange::Limited, YCbCrMatrix::Bt709};
    EXPECT_EQ(Encoded(Uniform(1, 1, 1, 1, 1), encoding),
              (std::vector<std::uint8_t>{235, 128, 128}));
    EXPECT_EQ(Encoded(Uniform(1, 1, 0, 0, 0), encoding), (std::vector<std::uint8_t>{16, 128, 128}));
    const Image white = Decoded({235, 128, 128}, 1, 1, encoding, SampleType::Float);
    const Image black = Decoded({16, 128, 128}, 1, 1, encoding, SampleType::Float);
    for (int channel = 0; channel < 3; ++channel)
    {
        EXPECT_EQ(FloatAt(white, 0, 0, channel), 1.0F);
        EXPECT_EQ(FloatAt(black, 0, 0, channel), 0.0F);
    }
}

TEST(YCbCrConvert, PrimariesGetTheCodesOfTheDefinition)
{
    for (const YCbCrMatrix matrix : kMatrices)
    {
        for (const YCbCrRange range : kRanges)
        {
            for (int corner = 0; corner < 8; ++corner)
            {
                const auto red = static_cast<float>(corner & 1);
                const auto green = static_cast<float>(corner >> 1 & 1);
                const auto blue = static_cast<float>(corner >> 2 & 1);
                const auto expected = CodesOf(red, green, blue, matrix, range);
                const auto codes = Encoded(Uniform(1, 1, red, green, blue),
                                           {ChromaSampling::Full444, range, matrix});
                for (std::size_t i = 0; i < 3; ++i)
                {
                    // Full-range chroma of primaries lies midway between two codes.
                    EXPECT_NEAR(codes[i], std::clamp(expected[i], 0.0, 255.0), 0.5001)
                        << "corner " << corner;
                }
            }
        }
    }
}

TEST(YCbCrConvert, BytesAreTheNearestCodesOfTheFloats)
{
    for (const YCbCrMatrix matrix : kMatrices)
    {
        for (const YCbCrRange range : kRanges)
        {
            const YCbCrEncoding encoding{ChromaSampling::Full444, range, matrix};
            const Image bytes = Decoded(AllChroma(120), 256, 256, encoding, SampleType::Byte);
            const Image floats = Decoded(AllChroma(120), 256, 256, encoding, SampleType::Float);
            for (int y = 0; y < 256; ++y)
            {
                for (int x = 0; x < 256; ++x)
                {
                    for (int channel = 0; channel < 3; ++channel)
                    {
                        const double exact =
                            std::clamp(FloatAt(floats, x, y, channel) * 255.0, 0.0, 255.0);
                        ASSERT_NEAR(ByteAt(bytes, x, y, channel), exact, 0.5001);
                    }
                    ASSERT_EQ(ByteAt(bytes, x, y, 3), 255);
                }
            }
        }
    }
}

TEST(YCbCrConvert, ByteAndFloatImagesOfOneColourGetTheSameCodes)
{
    const Image bytes = RandomImage(64, 64, SampleType::Byte, false, 11);
    Image floats;
    Reshape(floats, 64, 64, SampleType::Float, false);
    UnpackRow(PixelLayout{}, bytes.pixels.data(), 64 * 64, SampleType::Float, floats.pixels.data());
    const YCbCrEncoding encoding{ChromaSampling::Full444, YCbCrRange::Limited, YCbCrMatrix::Bt709};
    const auto a = Encoded(bytes, encoding);
    const auto b = Encoded(floats, encoding);
    for (std::size_t i = 0; i < a.size(); ++i)
    {
        ASSERT_NEAR(a[i], b[i], 1); // a tie may fall either way
    }
}

TEST(YCbCrConvert, ByteColoursSurviveTheWayThroughFullRange444WithinOneCodeOrTwo)
{
    // 8-bit chroma steps by up to 2 codes of blue; nothing may be worse than that.
    const Image image = RandomImage(64, 64, SampleType::Byte, false, 3);
    const YCbCrEncoding encoding{ChromaSampling::Full444, YCbCrRange::Full, YCbCrMatrix::Bt709};
    const Image again = Decoded(Encoded(image, encoding), 64, 64, encoding, SampleType::Byte);
    EXPECT_LE(Distance(image, again), 2.001F / 255.0F);
}

TEST(YCbCrConvert, OneColourStaysOneColourAtEverySamplingAndOddSize)
{
    for (const ChromaSampling sampling : kColourSamplings)
    {
        for (const auto& [width, height] :
             {std::pair{1, 1}, {2, 1}, {1, 2}, {3, 5}, {7, 4}, {8, 9}})
        {
            const YCbCrEncoding encoding{sampling, YCbCrRange::Limited, YCbCrMatrix::Bt601};
            const auto expected = CodesOf(0.7F, 0.3F, 0.1F, encoding.matrix, encoding.range);
            const auto planes = Encoded(Uniform(width, height, 0.7F, 0.3F, 0.1F), encoding);
            const std::size_t luma = static_cast<std::size_t>(width * height);
            const std::size_t chroma = (planes.size() - luma) / 2;
            for (std::size_t i = 0; i < planes.size(); ++i)
            {
                const std::size_t plane = i < luma ? 0 : i < luma + chroma ? 1 : 2;
                ASSERT_EQ(planes[i], Nearest(expected[plane])) << width << " x " << height;
            }
            const Image image = Decoded(planes, width, height, encoding, SampleType::Byte);
            for (int y = 0; y < height; ++y)
            {
                for (int x = 0; x < width; ++x)
                {
                    ASSERT_NEAR(ByteAt(image, x, y, 2), 178.5, 2.0);
                    ASSERT_NEAR(ByteAt(image, x, y, 1), 76.5, 2.0);
                    ASSERT_NEAR(ByteAt(image, x, y, 0), 25.5, 2.0);
                }
            }
        }
    }
}

// Chroma that rises evenly from left to right and from top to bottom is interpolated without error
// only if every sample is taken to be where it is.
TEST(YCbCrConvert, LinearChromaIsReproducedAtItsSite)
{
    constexpr int kSide = 32;
    for (const ChromaSampling sampling : kColourSamplings)
    {
        const YCbCrEncoding encoding{sampling, YCbCrRange::Full, YCbCrMatrix::Bt709};
        const bool halfWidth = sampling != ChromaSampling::Full444;
        const bool halfHeight = halfWidth && sampling != ChromaSampling::Half422;
        const double left = sampling == ChromaSampling::Half420Jpeg ? 0.5 : 0.0;
        const bool palDv = sampling == ChromaSampling::Half420Paldv;
        const int columns = halfWidth ? kSide / 2 : kSide;
        const int rows = halfHeight ? kSide / 2 : kSide;
        std::vector<std::uint8_t> planes(kSide * kSide, 128);
        for (int plane = 0; plane < 2; ++plane)
        {
            const double top = !halfHeight ? 0.0 : palDv ? (plane == 0 ? 1.0 : 0.0) : 0.5;
            for (int row = 0; row < rows; ++row)
            {
                for (int column = 0; column < columns; ++column)
                {
                    const double x = halfWidth ? 2 * column + left : column;
                    const double y = halfHeight ? 2 * row + top : row;
                    // Multiples of a quarter in codes would be rounded: four codes per pixel are
                    // not.
                    planes.push_back(static_cast<std::uint8_t>(std::lround(20 + 2 * x + 4 * y)));
                }
            }
        }
        const Image image = Decoded(planes, kSide, kSide, encoding, SampleType::Float);
        for (int y = 2; y < kSide - 2; ++y)
        {
            for (int x = 2; x < kSide - 2; ++x)
            {
                const double chroma = (20 + 2 * x + 4 * y - 128) / 255.0;
                const double luma = 128.0 / 255.0;
                ASSERT_NEAR(FloatAt(image, x, y, 0), luma + chroma * 2 * (1 - 0.0722), 1e-5)
                    << SamplingName(sampling) << " at " << x << ", " << y;
                ASSERT_NEAR(FloatAt(image, x, y, 2), luma + chroma * 2 * (1 - 0.2126), 1e-5)
                    << SamplingName(sampling) << " at " << x << ", " << y;
            }
        }
    }
}

// A picture whose chroma rises evenly has, averaged around a sample's site, the value at that site.
TEST(YCbCrConvert, AveragedChromaHasTheValueOfItsSite)
{
    constexpr int kSide = 32;
    Image image;
    Reshape(image, kSide, kSide, SampleType::Float, false);
    for (int y = 0; y < kSide; ++y)
    {
        for (int x = 0; x < kSide; ++x)
        {
            // Grey plus a blue that carries Cb and a red that carries Cr.
            const double cb = (2.0 * x + 4.0 * y - 90.0) / 255.0;
            const double cr = (4.0 * x + 2.0 * y - 90.0) / 255.0;
            const double luma = 0.5;
            SetFloat(image, x, y, 0, static_cast<float>(luma + cb * 2 * (1 - 0.0722)));
            SetFloat(image, x, y, 2, static_cast<float>(luma + cr * 2 * (1 - 0.2126)));
            SetFloat(image, x, y, 1,
                     static_cast<float>(luma - cb * 2 * (1 - 0.0722) * 0.0722 / 0.7152 -
                                        cr * 2 * (1 - 0.2126) * 0.2126 / 0.7152));
            SetFloat(image, x, y, 3, 1.0F);
        }
    }
    for (const ChromaSampling sampling : kColourSamplings)
    {
        const bool halfWidth = sampling != ChromaSampling::Full444;
        const bool halfHeight = halfWidth && sampling != ChromaSampling::Half422;
        const double left = sampling == ChromaSampling::Half420Jpeg ? 0.5 : 0.0;
        const bool palDv = sampling == ChromaSampling::Half420Paldv;
        const int columns = halfWidth ? kSide / 2 : kSide;
        const int rows = halfHeight ? kSide / 2 : kSide;
        const auto planes = Encoded(image, {sampling, YCbCrRange::Full, YCbCrMatrix::Bt709});
        for (int plane = 0; plane < 2; ++plane)
        {
            const double top = !halfHeight ? 0.0 : palDv ? (plane == 0 ? 1.0 : 0.0) : 0.5;
            for (int row = 1; row < rows - 1; ++row)
            {
                for (int column = 1; column < columns - 1; ++column)
                {
                    const double x = halfWidth ? 2 * column + left : column;
                    const double y = halfHeight ? 2 * row + top : row;
                    const double exact = 38.0 + (plane == 0 ? 2 * x + 4 * y : 4 * x + 2 * y);
                    const int code = planes[static_cast<std::size_t>(
                        kSide * kSide + (plane * rows + row) * columns + column)];
                    ASSERT_NEAR(code, exact, 0.501) << SamplingName(sampling) << " plane " << plane;
                }
            }
        }
    }
}

TEST(YCbCrConvert, FloatsKeepWhatLiesOutsideTheNominalRangeAndBytesAreClamped)
{
    const YCbCrEncoding encoding{ChromaSampling::Full444, YCbCrRange::Limited, YCbCrMatrix::Bt709};
    const Image above = Decoded({254, 128, 128}, 1, 1, encoding, SampleType::Float);
    const Image below = Decoded({1, 128, 128}, 1, 1, encoding, SampleType::Float);
    EXPECT_FLOAT_EQ(FloatAt(above, 0, 0, 1), 238.0F / 219.0F);
    EXPECT_FLOAT_EQ(FloatAt(below, 0, 0, 1), -15.0F / 219.0F);
    EXPECT_EQ(ByteAt(Decoded({254, 128, 128}, 1, 1, encoding, SampleType::Byte), 0, 0, 1), 255);
    EXPECT_EQ(ByteAt(Decoded({1, 128, 128}, 1, 1, encoding, SampleType::Byte), 0, 0, 1), 0);
}

TEST(YCbCrConvert, ValuesThatNoCodeHoldsAreClampedAndNanIsZero)
{
    const YCbCrEncoding encoding{ChromaSampling::Full444, YCbCrRange::Limited, YCbCrMatrix::Bt709};
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(Encoded(Uniform(1, 1, 9, 9, 9), encoding)[0], 255);
    EXPECT_EQ(Encoded(Uniform(1, 1, -9, -9, -9), encoding)[0], 0);
    EXPECT_EQ(Encoded(Uniform(1, 1, nan, nan, nan), encoding)[0], 0);
    EXPECT_EQ(Encoded(Uniform(1, 1, infinity, infinity, infinity), encoding)[0], 255);
}

TEST(YCbCrConvert, MonochromeIsGreyAndKeepsItsLuma)
{
    const YCbCrEncoding encoding{ChromaSampling::Mono, YCbCrRange::Full, YCbCrMatrix::Bt709};
    const Image image = Decoded({0, 100, 200, 255, 7, 8}, 3, 2, encoding, SampleType::Byte);
    EXPECT_EQ(ByteAt(image, 1, 0, 0), 100);
    EXPECT_EQ(ByteAt(image, 1, 0, 1), 100);
    EXPECT_EQ(ByteAt(image, 1, 0, 2), 100);
    EXPECT_EQ(Encoded(image, encoding), (std::vector<std::uint8_t>{0, 100, 200, 255, 7, 8}));
}

TEST(YCbCrConvert, FrameBytesCountOddSidesUpwards)
{
    EXPECT_EQ(YCbCrFrameBytes(5, 3, ChromaSampling::Half420Jpeg), 15U + 2 * 3 * 2);
    EXPECT_EQ(YCbCrFrameBytes(5, 3, ChromaSampling::Half422), 15U + 2 * 3 * 3);
    EXPECT_EQ(YCbCrFrameBytes(5, 3, ChromaSampling::Full444), 45U);
    EXPECT_EQ(YCbCrFrameBytes(5, 3, ChromaSampling::Mono), 15U);
}
