#include "tools/glazelhost/commands/picture_difference.h"

#include "tests/tools/glazelhost/media/sample_images.h"

#include <gtest/gtest.h>

#include <limits>

namespace GlazelHost
{

namespace
{

constexpr double kCode = 1.0 / 255.0;

Image Grey(int width, int height, bool hasAlpha = false)
{
    Image image;
    Reshape(image, width, height, SampleType::Float, hasAlpha);
    for (int y = 0; y < height; ++y)
    {
        for (int x = 0; x < width; ++x)
        {
            for (int channel = 0; channel < 4; ++channel)
            {
                SetFloat(image, x, y, channel, 0.5F);
            }
        }
    }
    return image;
}

} // namespace

TEST(PictureDifferences, EqualPicturesHaveNone)
{
    const Image image = RandomImage(5, 4, SampleType::Float, true, 1);
    PictureDifference difference(0.0);
    difference.Add(1, image, image);
    EXPECT_EQ(difference.Frames(), 1);
    EXPECT_EQ(difference.Largest(), 0.0);
    EXPECT_EQ(difference.Mean(), 0.0);
    EXPECT_EQ(difference.Psnr(), std::nullopt);
    EXPECT_EQ(difference.ShareOverThreshold(), 0.0);
    EXPECT_EQ(difference.Worst(), std::nullopt);
}

TEST(PictureDifferences, TheWorstChannelIsNamedWithItsFrameAndValues)
{
    const Image a = Grey(4, 3);
    Image b = a;
    SetFloat(b, 1, 2, 0, 0.75F);
    PictureDifference difference(kCode);
    difference.Add(7, a, a);
    difference.Add(8, a, b);
    SetFloat(b, 3, 0, 2, 0.125F);
    difference.Add(9, a, b);
    difference.Add(10, a, b);
    EXPECT_EQ(difference.Frames(), 4);
    EXPECT_EQ(difference.Largest(), 0.375);
    EXPECT_EQ(difference.Worst(), (PictureDifference::Place{9, 3, 0, 2, 0.5, 0.125}));
}

TEST(PictureDifferences, MeanPsnrAndShareAreOfAllFrames)
{
    const Image a = Grey(2, 2);
    Image b = a;
    SetFloat(b, 0, 0, 1, 0.75F);
    PictureDifference difference(kCode);
    difference.Add(1, a, b);
    difference.Add(2, a, a);
    EXPECT_DOUBLE_EQ(difference.Mean(), 0.25 / 24.0);
    EXPECT_DOUBLE_EQ(difference.Psnr().value(), 10.0 * std::log10(24.0 / 0.0625));
    EXPECT_DOUBLE_EQ(difference.ShareOverThreshold(), 1.0 / 8.0);
}

TEST(PictureDifferences, AlphaCountsWhereOneOfThemHasIt)
{
    const Image a = Grey(1, 1);
    Image b = Grey(1, 1, true);
    SetFloat(b, 0, 0, 3, 0.25F);
    PictureDifference with(kCode);
    with.Add(1, a, b);
    EXPECT_EQ(with.Worst().value().channel, 3);
    b.hasAlpha = false;
    PictureDifference without(kCode);
    without.Add(1, a, b);
    EXPECT_EQ(without.Worst(), std::nullopt);
}

TEST(PictureDifferences, OneStepOfEveryCodeIsNotOverOneStep)
{
    for (unsigned code = 0; code < 255; ++code)
    {
        const auto value = [](unsigned of) { return FloatOf(static_cast<std::uint8_t>(of)); };
        const double step = DistanceOf(value(code), value(code + 1));
        EXPECT_FALSE(IsOver(step, kCode)) << code;
        EXPECT_TRUE(IsOver(step, 0.99 * kCode)) << code;
    }
    EXPECT_TRUE(IsOver(std::numeric_limits<double>::min(), 0.0)) << "nothing is over nothing";
    EXPECT_FALSE(IsOver(0.0, 0.0));
}

TEST(PictureDifferences, WhatIsNoNumberDiffersFromAllElse)
{
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(DistanceOf(kNan, kNan), 0.0);
    EXPECT_EQ(DistanceOf(kInfinity, kInfinity), 0.0);
    EXPECT_EQ(DistanceOf(kNan, 0.5), kInfinity);
    EXPECT_EQ(DistanceOf(-kInfinity, kInfinity), kInfinity);
    const Image a = Grey(2, 1);
    Image b = a;
    SetFloat(b, 1, 0, 0, std::numeric_limits<float>::quiet_NaN());
    PictureDifference difference(kCode);
    difference.Add(1, a, b);
    EXPECT_EQ(difference.Largest(), kInfinity);
    EXPECT_EQ(difference.Worst().value().x, 1);
}

TEST(PictureDifferences, AreDrawnAmplifiedAndOpaque)
{
    const Image a = Grey(2, 1, true);
    Image b = a;
    SetFloat(b, 1, 0, 2, 0.5F + static_cast<float>(2.0 * kCode));
    SetFloat(b, 1, 0, 0, 5.0F);
    SetFloat(b, 1, 0, 3, 0.0F);
    Image drawn;
    DrawDifference(a, b, 16.0, drawn);
    EXPECT_EQ(drawn.type, SampleType::Byte);
    EXPECT_FALSE(drawn.hasAlpha);
    for (int channel = 0; channel < 3; ++channel)
    {
        EXPECT_EQ(ByteAt(drawn, 0, 0, channel), 0);
    }
    EXPECT_EQ(ByteAt(drawn, 1, 0, 0), 255);
    EXPECT_EQ(ByteAt(drawn, 1, 0, 1), 0);
    EXPECT_EQ(ByteAt(drawn, 1, 0, 2), 32);
    EXPECT_EQ(ByteAt(drawn, 1, 0, 3), 255);
}

} // namespace GlazelHost
