#include "tools/glazelhost/media/ycbcr_rows.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <random>
#include <vector>

namespace GlazelHost
{

namespace
{

using Codes = std::vector<std::uint16_t>;

constexpr std::array kWeights{LumaWeights{}, LumaWeights{0.299, 0.114},
                              LumaWeights{0.2627, 0.0593}};
constexpr std::size_t kMost = 40; // more than is taken at once, and a rest

// Any of them, most of which stand for no colour of RGB.
Codes AnyCodes(std::size_t count, unsigned seed)
{
    std::mt19937 engine(seed);
    Codes codes(count);
    for (std::uint16_t& code : codes)
    {
        code = static_cast<std::uint16_t>(engine());
    }
    return codes;
}

// Luma, blue and red difference of one pixel.
std::array<std::uint16_t, 3> CodesOf(float blue, float green, float red, LumaWeights weights = {})
{
    const std::array<float, 4> pixel{blue, green, red, 0.5F};
    std::array<std::uint16_t, 3> codes{};
    SplitYcbcr(pixel.data(), 1, weights, {&codes[0], &codes[1], &codes[2]});
    return codes;
}

} // namespace

TEST(YcbcrRows, PixelsAreWhatTheDefinitionOfTheMatrixSays)
{
    for (const LumaWeights& weights : kWeights)
    {
        const Codes codes = AnyCodes(3 * kMost, 1);
        std::vector<float> joined(4 * kMost);
        JoinYcbcr({codes.data(), codes.data() + kMost, codes.data() + 2 * kMost}, kMost, weights,
                  joined.data());
        for (std::size_t x = 0; x < kMost; ++x)
        {
            const double luma = (codes[x] - 4096.0) / 56064.0;
            const double blue =
                luma + (codes[kMost + x] - 32768.0) / 57344.0 * 2.0 * (1.0 - weights.blue);
            const double red =
                luma + (codes[2 * kMost + x] - 32768.0) / 57344.0 * 2.0 * (1.0 - weights.red);
            const double green = (luma - weights.blue * blue - weights.red * red) / weights.Green();
            ASSERT_NEAR(joined[4 * x], blue, 1e-6);
            ASSERT_NEAR(joined[4 * x + 1], green, 1e-6);
            ASSERT_NEAR(joined[4 * x + 2], red, 1e-6);
            ASSERT_EQ(joined[4 * x + 3], 1.0F);
        }
    }
}

TEST(YcbcrRows, CodesOfEveryWidthComeBackAndNothingBesideThem)
{
    constexpr std::uint16_t kUntouched = 77;
    for (const LumaWeights& weights : kWeights)
    {
        for (std::size_t pixels = 0; pixels <= kMost; ++pixels)
        {
            const std::size_t shift = pixels % 3;
            const Codes codes = AnyCodes(3 * kMost + shift, static_cast<unsigned>(pixels));
            const std::uint16_t* const first = codes.data() + shift;
            std::vector<float> joined(4 * kMost + 1, 77.0F);
            JoinYcbcr({first, first + kMost, first + 2 * kMost}, pixels, weights, joined.data());
            EXPECT_EQ(joined[4 * pixels], 77.0F);
            Codes split(codes.size() + 1, kUntouched);
            std::uint16_t* const back = split.data() + shift;
            SplitYcbcr(joined.data(), pixels, weights, {back, back + kMost, back + 2 * kMost});
            for (std::size_t index = 0; index < 3 * kMost; ++index)
            {
                ASSERT_EQ(back[index], index % kMost < pixels ? first[index] : kUntouched)
                    << pixels << " pixels, " << index;
            }
        }
    }
}

TEST(YcbcrRows, BlackWhiteAndThePrimariesHaveTheirCodes)
{
    EXPECT_EQ(CodesOf(0, 0, 0), (std::array<std::uint16_t, 3>{4096, 32768, 32768}));
    EXPECT_EQ(CodesOf(1, 1, 1), (std::array<std::uint16_t, 3>{60160, 32768, 32768}));
    EXPECT_EQ(CodesOf(1, 0, 0)[1], 61440);
    EXPECT_EQ(CodesOf(0, 0, 1)[2], 61440);
    EXPECT_EQ(CodesOf(0, 0, 1, {0.299, 0.114})[0], 4096 + 16763); // 0.299 of the way to white
}

TEST(YcbcrRows, WhatNoCodeStandsForBecomesTheNearestAndWhatIsNoNumberZero)
{
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(CodesOf(1e30F, 0, 0), (std::array<std::uint16_t, 3>{65535, 65535, 0}));
    EXPECT_EQ(CodesOf(-1e30F, 0, 0), (std::array<std::uint16_t, 3>{0, 0, 65535}));
    EXPECT_EQ(CodesOf(0, kInfinity, 0), (std::array<std::uint16_t, 3>{65535, 0, 0}));
    EXPECT_EQ(CodesOf(0, kNaN, 0), (std::array<std::uint16_t, 3>{0, 0, 0}));
}

} // namespace GlazelHost
