#include "tools/glazelhost/io/ratio.h"

#include <gtest/gtest.h>

#include <limits>
#include <numeric>

TEST(Ratio, ARatioThatWentThroughADoubleComesBackInLowestTerms)
{
    for (std::uint32_t numerator = 1; numerator <= 2000; numerator += 7)
    {
        for (std::uint32_t denominator = 1; denominator <= 2000; denominator += 11)
        {
            const std::uint32_t common = std::gcd(numerator, denominator);
            EXPECT_EQ(RatioOf(Ratio{numerator, denominator}.Value()),
                      (Ratio{numerator / common, denominator / common}));
        }
    }
    EXPECT_EQ(RatioOf(Ratio{10000000, 417083}.Value()), (Ratio{10000000, 417083}));
}

TEST(Ratio, WhatIsNoPositiveNumberIsNotSaid)
{
    for (const double value : {0.0, -1.0, 1e9, std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::quiet_NaN(), 1e-300})
    {
        EXPECT_EQ(RatioOf(value), Ratio{}) << value;
        EXPECT_EQ(FrameRateOf(value), Ratio{}) << value;
    }
    EXPECT_EQ(Ratio{}.Value(), 0.0);
}

TEST(Ratio, WrittenTelevisionRatesMeanTheirExactRatios)
{
    EXPECT_EQ(FrameRateOf(23.976), (Ratio{24000, 1001}));
    EXPECT_EQ(FrameRateOf(23.98), (Ratio{24000, 1001}));
    EXPECT_EQ(FrameRateOf(29.97), (Ratio{30000, 1001}));
    EXPECT_EQ(FrameRateOf(59.94), (Ratio{60000, 1001}));
    EXPECT_EQ(FrameRateOf(119.88), (Ratio{120000, 1001}));
}

TEST(Ratio, WholeAndOtherRatesStayWhatTheyAre)
{
    EXPECT_EQ(FrameRateOf(24.0), (Ratio{24, 1}));
    EXPECT_EQ(FrameRateOf(25.0), (Ratio{25, 1}));
    EXPECT_EQ(FrameRateOf(12.5), (Ratio{25, 2}));
}
