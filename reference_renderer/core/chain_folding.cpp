#include "reference_renderer/core/chain_folding.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

namespace ReferenceRenderer
{

namespace
{

bool IsNeutral(const AffineStep& step) noexcept
{
    const AffineStep neutral;
    return step.rows == neutral.rows && step.offset == neutral.offset;
}

struct Range
{
    double low;
    double high;
};

using Ranges = std::array<Range, 3>;

bool Encloses(const Ranges& outer, const Ranges& inner) noexcept
{
    return std::equal(
        outer.begin(), outer.end(), inner.begin(),
        [](const Range& o, const Range& i) { return o.low <= i.low && i.high <= o.high; });
}

// Inputs beyond these change nothing any more; nothing for steps that have no ends.
std::optional<Ranges> InputsOf(const ChainStep& step) noexcept
{
    Ranges ranges{};
    for (std::size_t i = 0; i < 3; ++i)
    {
        if (const auto* const curves = std::get_if<CurveStep>(&step))
        {
            ranges[i] = {curves->channels[i].front().input, curves->channels[i].back().input};
        }
        else if (const auto* const cube = std::get_if<CubeStep>(&step))
        {
            ranges[i] = {cube->cube.domain[i].low, cube->cube.domain[i].high};
        }
        else
        {
            return {};
        }
    }
    return ranges;
}

std::optional<Ranges> OutputsOf(const ChainStep& step) noexcept
{
    Ranges ranges{{{0.0, 1.0}, {0.0, 1.0}, {0.0, 1.0}}};
    const auto enclose = [&](std::size_t channel, double value, bool isFirst) {
        Range& range = ranges[channel];
        range = isFirst ? Range{value, value}
                        : Range{std::min(range.low, value), std::max(range.high, value)};
    };
    if (const auto* const curves = std::get_if<CurveStep>(&step))
    {
        for (std::size_t i = 0; i < 3; ++i)
        {
            for (const CurvePoint& point : curves->channels[i])
            {
                enclose(i, point.output, &point == curves->channels[i].data());
            }
        }
        return ranges;
    }
    if (const auto* const cube = std::get_if<CubeStep>(&step))
    {
        const std::vector<float>& nodes = cube->cube.nodes;
        for (std::size_t i = 0; i + kNodePadding < nodes.size(); ++i)
        {
            enclose(i % 3, nodes[i], i < 3);
        }
        return ranges;
    }
    const auto* const cdl = std::get_if<CdlStep>(&step);
    return cdl != nullptr && cdl->mode == CdlMode::Clamped ? std::optional(ranges) : std::nullopt;
}

// What curves of one straight piece each do between their ends.
std::optional<AffineStep> StraightPartOf(const ChainStep& step) noexcept
{
    const auto* const curves = std::get_if<CurveStep>(&step);
    AffineStep affine;
    for (std::size_t i = 0; curves != nullptr && i < 3; ++i)
    {
        const std::vector<CurvePoint>& points = curves->channels[i];
        if (points.size() != 2 || !(points[0].output < points[1].output))
        {
            return {};
        }
        affine.rows[i][i] =
            (points[1].output - points[0].output) / (points[1].input - points[0].input);
        affine.offset[i] = points[0].output - affine.rows[i][i] * points[0].input;
    }
    return curves != nullptr ? std::optional(affine) : std::nullopt;
}

// `step` behind `affine`, whose channels are apart and rise: its inputs move.
bool MoveInputs(const AffineStep& affine, ChainStep& step)
{
    const auto moved = [&](std::size_t channel, double input) {
        return (input - affine.offset[channel]) / affine.rows[channel][channel];
    };
    const auto* const correction = std::get_if<CdlStep>(&step);
    const bool isMovable =
        correction != nullptr ? !correction->reverse : InputsOf(step).has_value();
    if (!isMovable || !IsDiagonal(affine) ||
        !(affine.rows[0][0] > 0.0 && affine.rows[1][1] > 0.0 && affine.rows[2][2] > 0.0))
    {
        return false;
    }
    if (auto* const cube = std::get_if<CubeStep>(&step))
    {
        Domain domain = cube->cube.domain;
        for (std::size_t i = 0; i < 3; ++i)
        {
            domain[i] = {static_cast<float>(moved(i, domain[i].low)),
                         static_cast<float>(moved(i, domain[i].high))};
            if (!(domain[i].low < domain[i].high))
            {
                return false;
            }
        }
        cube->cube.domain = domain;
        return true;
    }
    if (auto* const cdl = std::get_if<CdlStep>(&step))
    {
        for (std::size_t i = 0; i < 3; ++i)
        {
            const double slope = cdl->cdl.slope[i];
            cdl->cdl.slope[i] = static_cast<float>(slope * affine.rows[i][i]);
            cdl->cdl.offset[i] =
                static_cast<float>(slope * affine.offset[i] + double{cdl->cdl.offset[i]});
        }
        return true;
    }
    for (std::size_t i = 0; i < 3; ++i)
    {
        for (CurvePoint& point : std::get<CurveStep>(step).channels[i])
        {
            point.input = moved(i, point.input);
        }
    }
    return true;
}

// `affine` behind `step`: its outputs move, as interpolation allows.
bool MoveOutputs(ChainStep& step, const AffineStep& affine)
{
    if (auto* const cube = std::get_if<CubeStep>(&step))
    {
        std::vector<float>& nodes = cube->cube.nodes;
        for (std::size_t i = 0; i + kNodePadding < nodes.size(); i += 3)
        {
            const Triple node = Applied(affine, Triple{nodes[i], nodes[i + 1], nodes[i + 2]});
            std::transform(node.begin(), node.end(), nodes.begin() + static_cast<std::ptrdiff_t>(i),
                           [](double value) { return static_cast<float>(value); });
        }
        return true;
    }
    auto* const curves = std::get_if<CurveStep>(&step);
    for (std::size_t i = 0; curves != nullptr && IsDiagonal(affine) && i < 3; ++i)
    {
        for (CurvePoint& point : curves->channels[i])
        {
            point.output = affine.rows[i][i] * point.output + affine.offset[i];
        }
    }
    return curves != nullptr && IsDiagonal(affine);
}

AffineStep Product(const AffineStep& first, const AffineStep& second)
{
    AffineStep both;
    both.offset = Applied(second, first.offset);
    for (std::size_t row = 0; row < 3; ++row)
    {
        for (std::size_t column = 0; column < 3; ++column)
        {
            both.rows[row][column] = 0.0;
            for (std::size_t i = 0; i < 3; ++i)
            {
                both.rows[row][column] += second.rows[row][i] * first.rows[i][column];
            }
        }
    }
    return both;
}

// `second` behind `first`: its inputs move.
bool FoldForward(const ChainStep& first, ChainStep& second)
{
    if (const auto* const affine = std::get_if<AffineStep>(&first))
    {
        return MoveInputs(*affine, second);
    }
    const std::optional<AffineStep> straight = StraightPartOf(first);
    const std::optional<Ranges> outputs = OutputsOf(first);
    const std::optional<Ranges> inputs = InputsOf(second);
    // The ends must not cut off what the second step would tell apart.
    return straight && outputs && inputs && Encloses(*outputs, *inputs) &&
           MoveInputs(*straight, second);
}

// `second` behind `first`, whose outputs move.
bool FoldBackward(ChainStep& first, const ChainStep& second)
{
    if (const auto* const affine = std::get_if<AffineStep>(&second))
    {
        return MoveOutputs(first, *affine);
    }
    const std::optional<AffineStep> straight = StraightPartOf(second);
    const std::optional<Ranges> outputs = OutputsOf(first);
    const std::optional<Ranges> inputs = InputsOf(second);
    return straight && outputs && inputs && Encloses(*inputs, *outputs) &&
           (IsNeutral(*straight) || MoveOutputs(first, *straight));
}

// Makes `first` both of them, when that is exact.
bool Fold(ChainStep& first, ChainStep& second)
{
    auto* const before = std::get_if<AffineStep>(&first);
    const auto* const after = std::get_if<AffineStep>(&second);
    if (before != nullptr && after != nullptr)
    {
        *before = Product(*before, *after);
        return true;
    }
    if (FoldForward(first, second))
    {
        first = std::move(second);
        return true;
    }
    return FoldBackward(first, second);
}

} // namespace

ColourChain Folded(ColourChain chain)
{
    ColourChain folded;
    for (ChainStep& step : chain)
    {
        folded.push_back(std::move(step));
        while (folded.size() > 1 && Fold(folded[folded.size() - 2], folded.back()))
        {
            folded.pop_back();
        }
        const auto* const affine = std::get_if<AffineStep>(&folded.back());
        if (affine != nullptr && IsNeutral(*affine))
        {
            folded.pop_back();
        }
    }
    return folded;
}

} // namespace ReferenceRenderer
