#include "tools/glazelhost/media/dither.h"

#include "tests/tools/glazelhost/media/sample_images.h"
#include "tests/tools/glazelhost/media/spectrum.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <random>
#include <vector>

namespace GlazelHost
{

namespace
{

constexpr int kColours = 3;

// Floats whose colours are what `value` says of column and row, opaque.
Image Floats(int width, int height, const std::function<float(int, int)>& value)
{
    Image image;
    Reshape(image, width, height, SampleType::Float, false);
    for (int y = 0; y < height; ++y)
    {
        for (int x = 0; x < width; ++x)
        {
            for (int channel = 0; channel < 4; ++channel)
            {
                SetFloat(image, x, y, channel, channel < kColours ? value(x, y) : 1.0F);
            }
        }
    }
    return image;
}

Image Grey(int side, float code)
{
    return Floats(side, side, [code](int, int) { return code / 255.0F; });
}

Image Dithered(const Dither& dither, const Image& floats, std::int64_t frame = 0)
{
    Image bytes;
    dither.ToBytes(floats, frame, bytes);
    return bytes;
}

Image Dithered(const Image& floats, std::int64_t frame = 0)
{
    static const Dither dither(1);
    return Dithered(dither, floats, frame);
}

// Keeps the pictures that it gets.
class KeepingSink final : public FrameSink
{
public:
    explicit KeepingSink(std::vector<Image>& kept) : m_kept(kept) {}
    void Write(const Image& image) override { m_kept.push_back(image); }
    void Pass() override { m_kept.emplace_back(); }
    void Finish() override {}

private:
    std::vector<Image>& m_kept;
};

} // namespace

TEST(Dithering, LeavesValuesThatAreCodesAsTheyAre)
{
    const Image image =
        Floats(256, 64, [](int x, int) { return FloatOf(static_cast<std::uint8_t>(x)); });
    for (std::int64_t frame = 0; frame < 4; ++frame)
    {
        const Image bytes = Dithered(image, frame);
        for (int x = 0; x < 256; ++x)
        {
            for (int y = 0; y < 64; ++y)
            {
                ASSERT_EQ(ByteAt(bytes, x, y, y % 4), y % 4 == 3 ? 255 : x);
            }
        }
    }
}

TEST(Dithering, MovesNoValueByAWholeCode)
{
    const Image image = RandomImage(97, 83, SampleType::Float, false, 12);
    EXPECT_LT(Distance(image, Dithered(image)), 1.0F / 255.0F);
}

TEST(Dithering, KeepsTheMeanOfASlowGradient)
{
    constexpr int kWidth = 1024;
    constexpr int kStep = 64;
    const Image image = Floats(kWidth, kStep, [](int x, int) {
        return (100.0F + 3.0F * static_cast<float>(x) / kWidth) / 255.0F;
    });
    const Image bytes = Dithered(image);
    for (int channel = 0; channel < kColours; ++channel)
    {
        for (int left = 0; left < kWidth; left += kStep)
        {
            double error = 0.0;
            for (int y = 0; y < kStep; ++y)
            {
                for (int x = left; x < left + kStep; ++x)
                {
                    error += ByteAt(bytes, x, y, channel) -
                             255.0 * static_cast<double>(FloatAt(image, x, y, channel));
                }
            }
            EXPECT_LT(std::abs(error) / (kStep * kStep), 1.0 / 16.0) << left << ' ' << channel;
        }
    }
}

TEST(Dithering, HasFarLessSlowWavesThanWhiteNoise)
{
    constexpr int kSide = 64;
    constexpr int kSlow = 6;
    std::mt19937 random(2);
    for (const float code : {10.1F, 100.5F, 200.7F})
    {
        const Image bytes = Dithered(Grey(kSide, code));
        std::vector<double> blue;
        std::vector<double> white;
        for (int y = 0; y < kSide; ++y)
        {
            for (int x = 0; x < kSide; ++x)
            {
                blue.push_back(ByteAt(bytes, x, y, 1) - static_cast<double>(code));
                const double threshold = static_cast<double>(random()) / 4294967296.0;
                white.push_back(std::floor(static_cast<double>(code) + threshold) -
                                static_cast<double>(code));
            }
        }
        EXPECT_LT(SlowEnergy(blue, kSide, kSlow), SlowEnergy(white, kSide, kSlow) / 20) << code;
    }
}

TEST(Dithering, GivesTheNearestEndForWhatLiesOutsideAndBlackForNaN)
{
    const float values[] = {-1e30F, -0.001F, 1.001F, 1e30F,
                            std::numeric_limits<float>::quiet_NaN()};
    const int codes[] = {0, 0, 255, 255, 0};
    const Image bytes =
        Dithered(Floats(5, 64, [&](int x, int) { return values[static_cast<std::size_t>(x)]; }));
    for (int x = 0; x < 5; ++x)
    {
        for (int y = 0; y < 64; ++y)
        {
            ASSERT_EQ(ByteAt(bytes, x, y, 0), codes[x]) << x;
        }
    }
}

TEST(Dithering, RoundsAlphaToTheNearestCode)
{
    Image image = Grey(64, 10.4F);
    image.hasAlpha = true;
    for (int y = 0; y < 64; ++y)
    {
        for (int x = 0; x < 64; ++x)
        {
            SetFloat(image, x, y, 3, 200.4F / 255.0F);
        }
    }
    const Image bytes = Dithered(image);
    EXPECT_TRUE(bytes.hasAlpha);
    for (int y = 0; y < 64; ++y)
    {
        for (int x = 0; x < 64; ++x)
        {
            ASSERT_EQ(ByteAt(bytes, x, y, 3), 200);
        }
    }
}

TEST(Dithering, DiffersFromFrameToFrameAndIsTheSameForOneFrameAndSeed)
{
    const Image grey = Grey(64, 77.5F);
    EXPECT_EQ(Dithered(Dither(1), grey, 9).pixels, Dithered(grey, 9).pixels);
    EXPECT_NE(Dithered(Dither(2), grey, 9).pixels, Dithered(grey, 9).pixels);
    for (std::int64_t frame = 0; frame < 50; ++frame)
    {
        EXPECT_NE(Dithered(grey, frame).pixels, Dithered(grey, frame + 1).pixels) << frame;
    }
}

TEST(Dithering, DiffersFromColourToColour)
{
    const Image bytes = Dithered(Grey(64, 77.5F));
    int equal = 0;
    for (int y = 0; y < 64; ++y)
    {
        for (int x = 0; x < 64; ++x)
        {
            equal += ByteAt(bytes, x, y, 0) == ByteAt(bytes, x, y, 2) ? 1 : 0;
        }
    }
    EXPECT_NEAR(equal, 64 * 64 / 2, 64 * 8);
}

TEST(Dithering, NumbersFramesOfASinkWhetherTheyAreWrittenOrPassedOver)
{
    const Image grey = Grey(64, 77.5F);
    std::vector<Image> kept;
    DitheredSink sink(std::make_unique<KeepingSink>(kept), 1);
    sink.Write(grey);
    sink.Pass();
    sink.Write(grey);
    ASSERT_EQ(kept.size(), 3U);
    EXPECT_EQ(kept[0].pixels, Dithered(grey, 0).pixels);
    EXPECT_EQ(kept[2].pixels, Dithered(grey, 2).pixels);
}

TEST(Dithering, LeavesPicturesOfBytesAsTheyAre)
{
    const Image image = RandomImage(9, 7, SampleType::Byte, true, 6);
    std::vector<Image> kept;
    DitheredSink(std::make_unique<KeepingSink>(kept), 1).Write(image);
    EXPECT_EQ(kept.at(0).pixels, image.pixels);
    EXPECT_TRUE(kept.at(0).hasAlpha);
}

} // namespace GlazelHost
