#include "reference_renderer/editor/reset_glyph.h"

#include "reference_renderer/editor/pixel_mix.h"

#include <cmath>

namespace ReferenceRenderer
{

namespace
{

constexpr int kSamplesPerSide = 4; // within a pixel, against jagged edges

// Shares of the sign's size, from its centre; y points down.
constexpr double kRadius = 0.25;
constexpr double kHalfStroke = 0.045;
constexpr double kHeadReach = 0.17; // of the arrow's head, along and across the ring
constexpr double kGapFrom = -2.36;  // radians: where the ring ends, at the upper left
constexpr double kGapLength = 0.95;

bool IsOnRing(double x, double y) noexcept
{
    constexpr double kTurn = 6.283185307179586;
    const double distance = std::sqrt(x * x + y * y);
    const double behind = std::fmod(std::atan2(y, x) - kGapFrom + kTurn, kTurn);
    return std::abs(distance - kRadius) <= kHalfStroke && behind > kGapLength;
}

// A triangle at the ring's upper left end that points to the left and down.
bool IsOnHead(double x, double y) noexcept
{
    const double headX = kRadius * std::cos(kGapFrom);
    const double headY = kRadius * std::sin(kGapFrom);
    const double right = x - (headX - kHeadReach * 0.35);
    const double down = y - (headY - kHeadReach * 0.75);
    return right >= 0.0 && down >= 0.0 && right <= kHeadReach * 1.5 && down <= kHeadReach * 1.5 &&
           right <= down;
}

} // namespace

void DrawResetGlyph(std::span<std::uint32_t> pixels, int size, std::uint32_t ground,
                    std::uint32_t ink) noexcept
{
    const double step = 1.0 / (size * kSamplesPerSide);
    for (int row = 0; row < size; ++row)
    {
        for (int column = 0; column < size; ++column)
        {
            int hits = 0;
            for (int sample = 0; sample < kSamplesPerSide * kSamplesPerSide; ++sample)
            {
                const int sampleRow = sample / kSamplesPerSide;
                const double inX = sample % kSamplesPerSide + 0.5;
                const double inY = sampleRow + 0.5;
                const double x = (column * kSamplesPerSide + inX) * step - 0.5;
                const double y = (row * kSamplesPerSide + inY) * step - 0.5;
                hits += IsOnRing(x, y) || IsOnHead(x, y) ? 1 : 0;
            }
            const double share = hits / double{kSamplesPerSide * kSamplesPerSide};
            const int pixel = row * size + column;
            pixels[static_cast<std::size_t>(pixel)] = Mixed(ground, ink, share);
        }
    }
}

} // namespace ReferenceRenderer
