#include "tools/glazelhost/media/blue_noise.h"

#include "tests/tools/glazelhost/media/spectrum.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace GlazelHost
{

namespace
{

constexpr int kPlaces = kBlueNoiseSide * kBlueNoiseSide;

// 1 where a place is among the lowest `count`.
std::vector<double> Lowest(const std::vector<std::uint16_t>& ranks, int count)
{
    std::vector<double> lit;
    for (const std::uint16_t rank : ranks)
    {
        lit.push_back(rank < count ? 1.0 : 0.0);
    }
    return lit;
}

} // namespace

TEST(BlueNoise, EachRankStandsOnce)
{
    std::vector<std::uint16_t> ranks = BlueNoiseRanks(1);
    std::ranges::sort(ranks);
    ASSERT_EQ(ranks.size(), static_cast<std::size_t>(kPlaces));
    for (std::size_t rank = 0; rank < ranks.size(); ++rank)
    {
        ASSERT_EQ(ranks[rank], rank);
    }
}

TEST(BlueNoise, OneSeedGivesOneTileAndAnotherSeedAnother)
{
    EXPECT_EQ(BlueNoiseRanks(7), BlueNoiseRanks(7));
    EXPECT_NE(BlueNoiseRanks(7), BlueNoiseRanks(8));
}

TEST(BlueNoise, HasFarLessSlowWavesThanWhiteNoiseHoweverManyPlacesAreLit)
{
    constexpr int kSlow = 6; // cycles along the tile: waves of eleven pixels and more
    const std::vector<std::uint16_t> blue = BlueNoiseRanks(3);
    std::vector<std::uint16_t> white = blue;
    std::mt19937 random(5);
    for (std::size_t last = white.size(); last > 1; --last)
    {
        std::swap(white[last - 1], white[random() % last]);
    }
    for (const int count : {kPlaces / 8, kPlaces / 3, kPlaces / 2, kPlaces * 3 / 4})
    {
        EXPECT_LT(SlowEnergy(Lowest(blue, count), kBlueNoiseSide, kSlow),
                  SlowEnergy(Lowest(white, count), kBlueNoiseSide, kSlow) / 20)
            << count;
    }
}

} // namespace GlazelHost
