#include "reference_renderer/core/chain_error.h"

#include "reference_renderer/core/colour_math.h"
#include "reference_renderer/core/lut_sampling.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace ReferenceRenderer
{

namespace
{

Rgb Graded(const Look& look, const Rgb& input)
{
    Rgb value = input;
    const auto correct = [&]<CdlMode Mode>() {
        value =
            ApplySaturation<Mode>(look.cdl, Rgb{ApplySlopeOffsetPower<Mode>(look.cdl, 0, value.r),
                                                ApplySlopeOffsetPower<Mode>(look.cdl, 1, value.g),
                                                ApplySlopeOffsetPower<Mode>(look.cdl, 2, value.b)});
    };
    if (look.cdlMode == CdlMode::Clamped)
    {
        correct.operator()<CdlMode::Clamped>();
    }
    else if (look.cdlMode == CdlMode::Unclamped)
    {
        correct.operator()<CdlMode::Unclamped>();
    }
    value = look.curves ? ViewOf(*look.curves).Sample(value) : value;
    return look.cube ? ViewOf(*look.cube).Sample(value) : value;
}

// Points of `count` in the unit cube, evenly strewn: multiples of the powers of a root.
template <typename Visit>
void ForEachStrewn(std::uint32_t count, Visit&& visit)
{
    constexpr double kRoot = 1.2207440846057596; // of x^4 = x + 1
    for (std::uint32_t i = 1; i <= count; ++i)
    {
        const auto part = [i](double step) {
            const double multiple = 0.5 + i * step;
            return multiple - std::floor(multiple);
        };
        visit(Triple{part(1.0 / kRoot), part(1.0 / (kRoot * kRoot)),
                     part(1.0 / (kRoot * kRoot * kRoot))});
    }
}

// Calls `visit` with the points of curves, and with the middles between them.
template <typename Visit>
void ForEachPoint(const CurveStep& curves, Visit&& visit)
{
    const auto& [red, green, blue] = curves.channels;
    const std::size_t count = std::max({red.size(), green.size(), blue.size()});
    for (std::size_t i = 0; i < 2 * count - 1; ++i)
    {
        const auto at = [i](const std::vector<CurvePoint>& points) {
            const std::size_t last = points.size() - 1;
            const double a = points[std::min(i / 2, last)].input;
            const double b = points[std::min((i + 1) / 2, last)].input;
            return static_cast<float>(a + (b - a) / 2.0);
        };
        visit(Rgb{at(red), at(green), at(blue)});
    }
}

} // namespace

ChainError LargestChainError(const ColourChain& chain, const Look& look, const Domain& domain,
                             bool mixes)
{
    constexpr std::uint32_t kCount = 1U << 16;
    constexpr double kNoNumber = std::numeric_limits<double>::infinity();
    ChainError largest;
    const auto compare = [&](const Rgb& input) {
        const Triple exact = Applied(chain, {input.r, input.g, input.b});
        const Rgb kept = Graded(look, input);
        for (const double error : {exact[0] - kept.r, exact[1] - kept.g, exact[2] - kept.b})
        {
            const double size = error == error ? std::abs(error) : kNoNumber;
            if (size > largest.size)
            {
                largest = {size, input};
            }
        }
    };
    const auto compareAt = [&](const Triple& place) {
        const auto at = [&](std::size_t axis) {
            const Interval& whole = domain[axis];
            return static_cast<float>(whole.low + (double{whole.high} - whole.low) * place[axis]);
        };
        compare({at(0), at(1), at(2)});
    };
    for (std::uint32_t i = 0; i <= kCount; ++i)
    {
        const double place = static_cast<double>(i) / kCount;
        compareAt({place, place, place});
    }
    const auto* const curves = chain.empty() ? nullptr : std::get_if<CurveStep>(&chain.front());
    if (curves != nullptr)
    {
        ForEachPoint(*curves, compare);
    }
    if (mixes)
    {
        ForEachStrewn(kCount, compareAt);
    }
    return largest;
}

} // namespace ReferenceRenderer
