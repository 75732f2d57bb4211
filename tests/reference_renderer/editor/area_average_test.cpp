#include "reference_renderer/editor/area_average.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <numeric>
#include <random>

namespace ReferenceRenderer
{

namespace
{

struct Floats final : PixelRows, PixelSink
{
    Floats(std::size_t w, std::size_t h) : width(w), height(h), values(w * h * 4) {}

    std::size_t Width() const noexcept override { return width; }
    std::size_t Height() const noexcept override { return height; }
    void ReadRow(std::size_t row, float* floats) const noexcept override
    {
        std::memcpy(floats, values.data() + row * width * 4, width * 4 * sizeof(float));
    }
    void WriteRow(std::size_t row, const float* floats) noexcept override
    {
        std::memcpy(values.data() + row * width * 4, floats, width * 4 * sizeof(float));
    }

    std::size_t width;
    std::size_t height;
    std::vector<float> values;
};

Floats RandomPicture(std::size_t width, std::size_t height)
{
    Floats picture(width, height);
    std::mt19937 random(7); // NOLINT(bugprone-random-generator-seed): the same picture each time
    std::uniform_real_distribution<float> value(0.0F, 255.0F);
    std::generate(picture.values.begin(), picture.values.end(), [&] { return value(random); });
    return picture;
}

Floats Scaled(const Floats& source, std::size_t width, std::size_t height)
{
    Floats target(width, height);
    ScaleByArea(source, {width, height}, {0, 0, {width, height}}, target);
    return target;
}

// The mean over the area of one target pixel, by the overlap with every source pixel.
double MeanOver(const Floats& source, const Floats& target, std::size_t x, std::size_t y,
                std::size_t channel)
{
    const auto overlap = [](std::size_t at, std::size_t from, std::size_t length,
                            std::size_t targetLength) {
        const double scale = static_cast<double>(length) / static_cast<double>(targetLength);
        const double begin = std::max(static_cast<double>(at) * scale, static_cast<double>(from));
        const double end =
            std::min(static_cast<double>(at + 1) * scale, static_cast<double>(from + 1));
        return std::max(end - begin, 0.0) / scale;
    };
    double sum = 0.0;
    for (std::size_t row = 0; row < source.height; ++row)
    {
        for (std::size_t column = 0; column < source.width; ++column)
        {
            sum += overlap(x, column, source.width, target.width) *
                   overlap(y, row, source.height, target.height) *
                   source.values[(row * source.width + column) * 4 + channel];
        }
    }
    return sum;
}

class AreaAverage : public testing::TestWithParam<std::pair<std::size_t, std::size_t>>
{
};

TEST_P(AreaAverage, EachPixelIsTheMeanOfTheAreaItCovers)
{
    const Floats source = RandomPicture(13, 11);
    const Floats target = Scaled(source, GetParam().first, GetParam().second);
    for (std::size_t y = 0; y < target.height; ++y)
    {
        for (std::size_t x = 0; x < target.width; ++x)
        {
            for (std::size_t channel = 0; channel < 4; ++channel)
            {
                EXPECT_NEAR(target.values[(y * target.width + x) * 4 + channel],
                            MeanOver(source, target, x, y, channel), 1e-3);
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Sizes, AreaAverage,
                         testing::Values(std::pair<std::size_t, std::size_t>{1, 1},
                                         std::pair<std::size_t, std::size_t>{5, 3},
                                         std::pair<std::size_t, std::size_t>{12, 11},
                                         std::pair<std::size_t, std::size_t>{13, 1},
                                         std::pair<std::size_t, std::size_t>{30, 4},
                                         std::pair<std::size_t, std::size_t>{29, 31}));

TEST(AreaAverage, TheSameSizeIsACopyBitForBit)
{
    const Floats source = RandomPicture(17, 9);
    EXPECT_EQ(Scaled(source, 17, 9).values, source.values);
}

TEST(AreaAverage, TheSharesOfAPixelAddUpToOneAndStayInside)
{
    for (const std::size_t source : {1U, 2U, 7U, 1920U, 4096U})
    {
        for (const std::size_t target : {1U, 3U, 8U, 853U, 1921U})
        {
            const AreaAxis axis(source, target, 0, target);
            for (std::size_t i = 0; i < target; ++i)
            {
                const AreaAxis::Cover cover = axis.Of(i);
                EXPECT_LE(cover.first + cover.count, source);
                EXPECT_NEAR(std::accumulate(cover.shares, cover.shares + cover.count, 0.0), 1.0,
                            1e-4);
            }
        }
    }
}

} // namespace

} // namespace ReferenceRenderer
