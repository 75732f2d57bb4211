#include "reference_renderer/core/look_icon.h"

#include "reference_renderer/core/colour_math.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace ReferenceRenderer
{

namespace
{

constexpr float kCornerRadius = 6.0F; // pixels
constexpr int kSamplesPerSide = 3;    // of the scene, within a pixel, against jagged hills
constexpr float kPatchesTop = 0.78F;  // share of the height
constexpr float kWidth = kIconWidth;
constexpr float kHeight = kIconHeight;

// Deep and light skin, foliage, sky, a red, then greys: what an eye judges a grade by.
constexpr std::array<Rgb, 8> kPatches{{
    {0.45F, 0.32F, 0.27F},
    {0.76F, 0.58F, 0.50F},
    {0.34F, 0.43F, 0.26F},
    {0.38F, 0.48F, 0.61F},
    {0.69F, 0.20F, 0.23F},
    {0.20F, 0.20F, 0.20F},
    {0.50F, 0.50F, 0.50F},
    {0.95F, 0.95F, 0.95F},
}};

constexpr Rgb kSkyTop{0.16F, 0.33F, 0.62F};
constexpr Rgb kSkyHorizon{0.96F, 0.79F, 0.58F};
constexpr Rgb kSun{1.0F, 0.95F, 0.80F};
constexpr Rgb kFarHills{0.36F, 0.40F, 0.50F};
constexpr Rgb kNearHills{0.22F, 0.33F, 0.20F};
constexpr Rgb kMeadow{0.52F, 0.54F, 0.22F};

Rgb Mix(const Rgb& from, const Rgb& to, float share) noexcept
{
    const float t = Clamp01(share);
    return {from.r + t * (to.r - from.r), from.g + t * (to.g - from.g),
            from.b + t * (to.b - from.b)};
}

// The scene at a point, both coordinates as shares of the icon from its top left corner.
Rgb SceneAt(float x, float y) noexcept
{
    if (y >= kPatchesTop)
    {
        const auto patch = static_cast<std::size_t>(x * static_cast<float>(kPatches.size()));
        return kPatches[std::min(patch, kPatches.size() - 1)];
    }
    const float farCrest = 0.46F - 0.05F * std::sin(x * 7.0F + 0.6F) - 0.03F * std::sin(x * 17.0F);
    const float nearCrest = 0.60F + 0.07F * std::sin(x * 5.0F + 2.2F);
    if (y >= nearCrest)
    {
        return Mix(kMeadow, kNearHills, (y - nearCrest) * 5.0F);
    }
    if (y >= farCrest)
    {
        return Mix(kFarHills, Mix(kFarHills, kSkyHorizon, 0.45F), (y - farCrest) * 5.0F);
    }
    const Rgb sky = Mix(kSkyTop, kSkyHorizon, y * y * 4.2F);
    const float dx = (x - 0.70F) * kWidth;
    const float dy = (y - 0.30F) * kHeight;
    const float distance = std::sqrt(dx * dx + dy * dy); // pixels
    const Rgb glowing = Mix(sky, kSun, 0.75F * std::exp(-distance * 0.13F));
    return Mix(kSun, glowing, (distance - 3.2F) * 2.0F);
}

Rgb PixelOf(std::uint32_t column, std::uint32_t row) noexcept
{
    constexpr float kStep = 1.0F / kSamplesPerSide;
    Rgb sum;
    for (int i = 0; i < kSamplesPerSide; ++i)
    {
        const float y = static_cast<float>(row) + (static_cast<float>(i) + 0.5F) * kStep;
        for (int j = 0; j < kSamplesPerSide; ++j)
        {
            const float x = static_cast<float>(column) + (static_cast<float>(j) + 0.5F) * kStep;
            const Rgb point = SceneAt(x / kWidth, y / kHeight);
            sum = {sum.r + point.r, sum.g + point.g, sum.b + point.b};
        }
    }
    constexpr float kShare = kStep * kStep;
    return {sum.r * kShare, sum.g * kShare, sum.b * kShare};
}

// How much of a pixel lies inside the rounded rectangle, 0..1.
float CoverageOf(std::uint32_t column, std::uint32_t row) noexcept
{
    const float x = static_cast<float>(column) + 0.5F;
    const float y = static_cast<float>(row) + 0.5F;
    const float dx = std::max({kCornerRadius - x, x - (kWidth - kCornerRadius), 0.0F});
    const float dy = std::max({kCornerRadius - y, y - (kHeight - kCornerRadius), 0.0F});
    return Clamp01(kCornerRadius - std::sqrt(dx * dx + dy * dy) + 0.5F);
}

} // namespace

void DrawLookIcon(const PreparedLook& look, std::span<std::uint32_t, kIconPixels> pixels) noexcept
{
    for (std::uint32_t row = 0; row < kIconHeight; ++row)
    {
        for (std::uint32_t column = 0; column < kIconWidth; ++column)
        {
            const Rgb graded = look.Grade(PixelOf(column, row));
            pixels[std::size_t{row} * kIconWidth + column] = Code8(CoverageOf(column, row)) << 24 |
                                                             Code8(graded.r) << 16 |
                                                             Code8(graded.g) << 8 | Code8(graded.b);
        }
    }
}

} // namespace ReferenceRenderer
