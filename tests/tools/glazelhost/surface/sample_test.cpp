#include "tools/glazelhost/surface/sample.h"

#include <gtest/gtest.h>

#include <cmath>

namespace GlazelHost
{

TEST(Sample, PremultiplyingRoundsEveryProductToNearest)
{
    for (int alpha = 0; alpha < 256; ++alpha)
    {
        for (int channel = 0; channel < 256; ++channel)
        {
            const auto expected = std::lround(channel * alpha / 255.0);
            ASSERT_EQ(ShareOf(static_cast<std::uint8_t>(channel), static_cast<std::uint8_t>(alpha)),
                      expected)
                << channel << " * " << alpha;
        }
    }
}

TEST(Sample, UnpremultiplyingRoundsToNearestAndLimits)
{
    for (int alpha = 1; alpha < 256; ++alpha)
    {
        for (int channel = 0; channel < 256; ++channel)
        {
            const auto expected = std::min(std::lround(channel * 255.0 / alpha), 255L);
            ASSERT_EQ(FullOf(static_cast<std::uint8_t>(channel), static_cast<std::uint8_t>(alpha)),
                      expected)
                << channel << " / " << alpha;
        }
    }
}

TEST(Sample, NothingIsLeftOfAColourWithoutAlpha)
{
    EXPECT_EQ(Straight(Sample{10, 20, 30, 0}), (Sample{0, 0, 0, 0}));
    EXPECT_EQ(Premultiplied(Sample{10, 20, 30, 0}), (Sample{0, 0, 0, 0}));
}

TEST(Sample, OpaqueColoursSurviveBothConversions)
{
    const Sample sample{1, 128, 254, 255};
    EXPECT_EQ(Premultiplied(sample), sample);
    EXPECT_EQ(Straight(sample), sample);
}

TEST(Sample, AnOpaqueTopCoversAndAClearOneShowsWhatIsBelow)
{
    const Sample below{10, 20, 30, 200};
    EXPECT_EQ(Over(Sample{1, 2, 3, 255}, below), (Sample{1, 2, 3, 255}));
    EXPECT_EQ(Over(Sample{0, 0, 0, 0}, below), below);
}

TEST(Sample, HalfOverOpaqueAddsTheRestOfWhatIsBelow)
{
    EXPECT_EQ(Over(Sample{100, 50, 0, 128}, Sample{255, 255, 255, 255}),
              (Sample{227, 177, 127, 255}));
}

TEST(Sample, ASumAboveFullIsLimited)
{
    EXPECT_EQ(Over(Sample{255, 255, 255, 0}, Sample{255, 255, 255, 255}),
              (Sample{255, 255, 255, 255}));
}

} // namespace GlazelHost
