// One 8-bit sample and the arithmetic of its alpha channel.
// Pure: no windows.h. Tests: tests/tools/glazelhost/surface/sample_test.cpp.
#pragma once

#include <algorithm>
#include <cstdint>

namespace GlazelHost
{

// In memory order, as 0xAARRGGBB in a little-endian word. Straight or premultiplied: the name of
// whatever holds it says which.
struct Sample
{
    std::uint8_t blue = 0;
    std::uint8_t green = 0;
    std::uint8_t red = 0;
    std::uint8_t alpha = 0;

    friend bool operator==(const Sample&, const Sample&) = default;
};
static_assert(sizeof(Sample) == 4);

// channel * share / 255, rounded to nearest. 255 is odd, so there are no ties.
constexpr std::uint8_t ShareOf(std::uint8_t channel, std::uint8_t share) noexcept
{
    return static_cast<std::uint8_t>((unsigned{channel} * share + 127U) / 255U);
}

constexpr Sample Premultiplied(Sample straight) noexcept
{
    return {ShareOf(straight.blue, straight.alpha), ShareOf(straight.green, straight.alpha),
            ShareOf(straight.red, straight.alpha), straight.alpha};
}

// channel * 255 / alpha, rounded to nearest and limited to 255; nothing is left of a colour whose
// alpha is 0.
constexpr std::uint8_t FullOf(std::uint8_t channel, std::uint8_t alpha) noexcept
{
    if (alpha == 0)
    {
        return 0;
    }
    return static_cast<std::uint8_t>(
        std::min((unsigned{channel} * 255U + alpha / 2U) / alpha, 255U));
}

constexpr Sample Straight(Sample premultiplied) noexcept
{
    return {FullOf(premultiplied.blue, premultiplied.alpha),
            FullOf(premultiplied.green, premultiplied.alpha),
            FullOf(premultiplied.red, premultiplied.alpha), premultiplied.alpha};
}

// top + below * (255 - top's alpha) / 255, all premultiplied. A sum above 255, which only samples
// brighter than their own alpha give, is limited.
constexpr Sample Over(Sample top, Sample below) noexcept
{
    const auto rest = static_cast<std::uint8_t>(255 - top.alpha);
    const auto blend = [rest](std::uint8_t above, std::uint8_t under) {
        return static_cast<std::uint8_t>(std::min(unsigned{above} + ShareOf(under, rest), 255U));
    };
    return {blend(top.blue, below.blue), blend(top.green, below.green), blend(top.red, below.red),
            blend(top.alpha, below.alpha)};
}

} // namespace GlazelHost
