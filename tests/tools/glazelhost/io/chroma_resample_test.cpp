#include "tools/glazelhost/io/chroma_resample.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace
{

constexpr ChromaSite kSites[] = {ChromaSite::Between, ChromaSite::OnEven, ChromaSite::OnOdd};

double PlaceOf(ChromaSite site, int half)
{
    return 2.0 * half + (site == ChromaSite::Between ? 0.5 : site == ChromaSite::OnOdd ? 1.0 : 0.0);
}

} // namespace

TEST(ChromaResample, UpsamplingReproducesALinearRampAtEverySite)
{
    constexpr int kHalfCount = 10;
    for (const ChromaSite site : kSites)
    {
        for (int position = 2; position < 2 * kHalfCount - 2; ++position)
        {
            const UpsampleTaps taps = UpsampleTapsAt(site, position, kHalfCount);
            EXPECT_DOUBLE_EQ(PlaceOf(site, taps.lower) * (1.0 - taps.upperWeight) +
                                 PlaceOf(site, taps.upper) * taps.upperWeight,
                             position);
        }
    }
}

TEST(ChromaResample, DownsamplingIsCentredOnTheSite)
{
    constexpr int kFullCount = 20;
    for (const ChromaSite site : kSites)
    {
        for (int half = 1; half < kFullCount / 2 - 1; ++half)
        {
            const DownsampleTaps taps = DownsampleTapsAt(site, half, kFullCount);
            double centre = 0.0;
            for (int tap = 0; tap < 3; ++tap)
            {
                centre += taps.index[tap] * static_cast<double>(taps.weight[tap]);
            }
            EXPECT_DOUBLE_EQ(centre, PlaceOf(site, half));
        }
    }
}

TEST(ChromaResample, WeightsSumToOneAndIndicesStayInside)
{
    for (const ChromaSite site : kSites)
    {
        for (int fullCount = 1; fullCount <= 7; ++fullCount)
        {
            const int halfCount = (fullCount + 1) / 2;
            for (int half = 0; half < halfCount; ++half)
            {
                const DownsampleTaps taps = DownsampleTapsAt(site, half, fullCount);
                EXPECT_EQ(taps.weight[0] + taps.weight[1] + taps.weight[2], 1.0F);
                for (const int index : taps.index)
                {
                    EXPECT_TRUE(index >= 0 && index < fullCount);
                }
            }
            for (int position = 0; position < fullCount; ++position)
            {
                const UpsampleTaps taps = UpsampleTapsAt(site, position, halfCount);
                EXPECT_TRUE(taps.lower >= 0 && taps.lower < halfCount);
                EXPECT_TRUE(taps.upper >= 0 && taps.upper < halfCount);
            }
        }
    }
}

TEST(ChromaResample, RowsFollowTheGeneralRuleAtEveryWidth)
{
    for (const ChromaSite site : {ChromaSite::Between, ChromaSite::OnEven})
    {
        for (int width = 1; width <= 19; ++width)
        {
            const int halfCount = (width + 1) / 2;
            std::vector<float> half(static_cast<std::size_t>(halfCount));
            std::vector<float> full(static_cast<std::size_t>(width));
            for (int k = 0; k < halfCount; ++k)
            {
                half[static_cast<std::size_t>(k)] = static_cast<float>((k * 37) % 101);
            }
            UpsampleRow(site, half.data(), width, full.data());
            for (int x = 0; x < width; ++x)
            {
                const UpsampleTaps taps = UpsampleTapsAt(site, x, halfCount);
                EXPECT_EQ(full[static_cast<std::size_t>(x)],
                          half[static_cast<std::size_t>(taps.lower)] * (1.0F - taps.upperWeight) +
                              half[static_cast<std::size_t>(taps.upper)] * taps.upperWeight)
                    << "column " << x << " of " << width;
            }
            std::vector<float> down(static_cast<std::size_t>(halfCount));
            DownsampleRow(site, full.data(), width, down.data());
            for (int k = 0; k < halfCount; ++k)
            {
                const DownsampleTaps taps = DownsampleTapsAt(site, k, width);
                float expected = 0.0F;
                for (int tap = 0; tap < 3; ++tap)
                {
                    expected += full[static_cast<std::size_t>(taps.index[tap])] * taps.weight[tap];
                }
                EXPECT_EQ(down[static_cast<std::size_t>(k)], expected)
                    << "sample " << k << " of width " << width;
            }
        }
    }
}
