#include "tools/glazelhost/io/chroma_resample.h"

#include <algorithm>
#include <cassert>
#include <cstddef>

UpsampleTaps UpsampleTapsAt(ChromaSite site, int position, int halfCount) noexcept
{
    const int half = position / 2;
    const bool odd = position % 2 != 0;
    UpsampleTaps taps{half, half, 0.0F};
    switch (site)
    {
    case ChromaSite::Between:
        taps = odd ? UpsampleTaps{half, half + 1, 0.25F} : UpsampleTaps{half - 1, half, 0.75F};
        break;
    case ChromaSite::OnEven:
        taps = odd ? UpsampleTaps{half, half + 1, 0.5F} : UpsampleTaps{half, half, 0.0F};
        break;
    case ChromaSite::OnOdd:
        taps = odd ? UpsampleTaps{half, half, 0.0F} : UpsampleTaps{half - 1, half, 0.5F};
        break;
    }
    taps.lower = std::clamp(taps.lower, 0, halfCount - 1);
    taps.upper = std::clamp(taps.upper, 0, halfCount - 1);
    return taps;
}

DownsampleTaps DownsampleTapsAt(ChromaSite site, int halfPosition, int fullCount) noexcept
{
    const int even = 2 * halfPosition;
    DownsampleTaps taps{{even, even + 1, even + 1}, {0.5F, 0.5F, 0.0F}};
    if (site != ChromaSite::Between)
    {
        const int centre = site == ChromaSite::OnEven ? even : even + 1;
        taps = {{centre - 1, centre, centre + 1}, {0.25F, 0.5F, 0.25F}};
    }
    for (int& index : taps.index)
    {
        index = std::clamp(index, 0, fullCount - 1);
    }
    return taps;
}

void UpsampleRow(ChromaSite site, const float* half, int width, float* full) noexcept
{
    assert(site != ChromaSite::OnOdd);
    const int halfCount = (width + 1) / 2;
    const auto one = [&](int x) {
        const UpsampleTaps taps = UpsampleTapsAt(site, x, halfCount);
        full[x] =
            half[taps.lower] * (1.0F - taps.upperWeight) + half[taps.upper] * taps.upperWeight;
    };
    // The ends by the general rule; between them all neighbours exist and no test is needed.
    for (int x = 0; x < std::min(2, width); ++x)
    {
        one(x);
    }
    const int inner = std::max(1, halfCount - 1);
    if (site == ChromaSite::Between)
    {
        for (std::ptrdiff_t k = 1; k < inner; ++k)
        {
            full[2 * k] = half[k - 1] * 0.25F + half[k] * 0.75F;
            full[2 * k + 1] = half[k] * 0.75F + half[k + 1] * 0.25F;
        }
    }
    else
    {
        for (std::ptrdiff_t k = 1; k < inner; ++k)
        {
            full[2 * k] = half[k];
            full[2 * k + 1] = half[k] * 0.5F + half[k + 1] * 0.5F;
        }
    }
    for (int x = 2 * inner; x < width; ++x)
    {
        one(x);
    }
}

void DownsampleRow(ChromaSite site, const float* full, int width, float* half) noexcept
{
    assert(site != ChromaSite::OnOdd);
    const int halfCount = (width + 1) / 2;
    const auto one = [&](int k) {
        const DownsampleTaps taps = DownsampleTapsAt(site, k, width);
        half[k] = full[taps.index[0]] * taps.weight[0] + full[taps.index[1]] * taps.weight[1] +
                  full[taps.index[2]] * taps.weight[2];
    };
    one(0);
    const int inner = std::max(1, halfCount - 1);
    if (site == ChromaSite::Between)
    {
        for (std::ptrdiff_t k = 1; k < inner; ++k)
        {
            half[k] = full[2 * k] * 0.5F + full[2 * k + 1] * 0.5F;
        }
    }
    else
    {
        for (std::ptrdiff_t k = 1; k < inner; ++k)
        {
            half[k] = full[2 * k - 1] * 0.25F + full[2 * k] * 0.5F + full[2 * k + 1] * 0.25F;
        }
    }
    for (int k = inner; k < halfCount; ++k)
    {
        one(k);
    }
}
