#include "reference_renderer/core/colour_chain.h"

#include "reference_renderer/core/lut_sampling.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace ReferenceRenderer
{

namespace
{

constexpr Triple kLuma{0.2126, 0.7152, 0.0722}; // of Rec. 709, as every CDL has it

double LumaOf(const Triple& value) noexcept
{
    return kLuma[0] * value[0] + kLuma[1] * value[1] + kLuma[2] * value[2];
}

double CurveValue(const std::vector<CurvePoint>& points, double value) noexcept
{
    if (!(value > points.front().input))
    {
        return points.front().output;
    }
    if (value >= points.back().input)
    {
        return points.back().output;
    }
    const auto above =
        std::upper_bound(points.begin(), points.end(), value,
                         [](double input, const CurvePoint& point) { return input < point.input; });
    const CurvePoint& next = *above;
    const CurvePoint& last = *(above - 1);
    const double share = (value - last.input) / (next.input - last.input);
    return last.output + share * (next.output - last.output);
}

Rgb ToRgb(const Triple& value) noexcept
{
    return {static_cast<float>(value[0]), static_cast<float>(value[1]),
            static_cast<float>(value[2])};
}

Triple Trilinear(const Cube& cube, const Triple& value) noexcept
{
    std::array<std::size_t, 3> cell{};
    Triple fraction{};
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        const Interval& domain = cube.domain[axis];
        const double last = cube.size - 1.0;
        const double position = (value[axis] - domain.low) / (double{domain.high} - domain.low);
        const double inside = position > 0.0 ? std::min(position * last, last) : 0.0;
        cell[axis] = std::min(static_cast<std::size_t>(inside), std::size_t{cube.size} - 2);
        fraction[axis] = inside - static_cast<double>(cell[axis]);
    }
    Triple result{};
    for (std::size_t corner = 0; corner < 8; ++corner)
    {
        const std::array<std::size_t, 3> side{corner & 1U, corner >> 1U & 1U, corner >> 2U};
        double weight = 1.0;
        std::size_t node = 0;
        for (std::size_t axis = 3; axis-- > 0;)
        {
            weight *= side[axis] != 0 ? fraction[axis] : 1.0 - fraction[axis];
            node = node * cube.size + cell[axis] + side[axis];
        }
        for (std::size_t channel = 0; channel < 3; ++channel)
        {
            result[channel] += weight * double{cube.nodes[3 * node + channel]};
        }
    }
    return result;
}

Triple Clamped(Triple value, CdlMode mode) noexcept
{
    for (double& channel : value)
    {
        channel = mode == CdlMode::Clamped ? std::clamp(channel, 0.0, 1.0) : channel;
    }
    return value;
}

Triple Saturated(const Triple& value, double saturation) noexcept
{
    const double luma = LumaOf(value);
    return {luma + saturation * (value[0] - luma), luma + saturation * (value[1] - luma),
            luma + saturation * (value[2] - luma)};
}

// Negative values have no power: they stay.
double Power(double value, double exponent) noexcept
{
    return value > 0.0 ? std::pow(value, exponent) : value;
}

Triple Apply(const AffineStep& step, const Triple& value)
{
    Triple result = step.offset;
    for (std::size_t row = 0; row < 3; ++row)
    {
        for (std::size_t column = 0; column < 3; ++column)
        {
            result[row] += step.rows[row][column] * value[column];
        }
    }
    return result;
}

Triple Apply(const CurveStep& step, const Triple& value)
{
    return {CurveValue(step.channels[0], value[0]), CurveValue(step.channels[1], value[1]),
            CurveValue(step.channels[2], value[2])};
}

Triple Apply(const FunctionStep& step, const Triple& value)
{
    return {step.channels[0](value[0]), step.channels[1](value[1]), step.channels[2](value[2])};
}

Triple Apply(const CdlStep& step, const Triple& value)
{
    const Cdl& cdl = step.cdl;
    Triple result = value;
    if (step.reverse)
    {
        result = Clamped(Saturated(Clamped(value, step.mode), 1.0 / cdl.saturation), step.mode);
        for (std::size_t i = 0; i < 3; ++i)
        {
            result[i] =
                (Power(result[i], 1.0 / cdl.power[i]) - double{cdl.offset[i]}) / cdl.slope[i];
        }
        return Clamped(result, step.mode);
    }
    for (std::size_t i = 0; i < 3; ++i)
    {
        result[i] = value[i] * cdl.slope[i] + double{cdl.offset[i]};
    }
    result = Clamped(result, step.mode);
    for (std::size_t i = 0; i < 3; ++i)
    {
        result[i] = Power(result[i], cdl.power[i]);
    }
    return Clamped(Saturated(result, cdl.saturation), step.mode);
}

Triple Apply(const CubeStep& step, const Triple& value)
{
    if (step.trilinear)
    {
        return Trilinear(step.cube, value);
    }
    const Rgb result = ViewOf(step.cube).Sample(ToRgb(value));
    return {result.r, result.g, result.b};
}

} // namespace

Triple Applied(const ChainStep& step, const Triple& value)
{
    return std::visit([&](const auto& kind) { return Apply(kind, value); }, step);
}

Triple Applied(const ColourChain& chain, Triple value)
{
    for (const ChainStep& step : chain)
    {
        value = Applied(step, value);
    }
    return value;
}

bool IsDiagonal(const AffineStep& step) noexcept
{
    for (std::size_t i = 0; i < 9; ++i)
    {
        if (i % 4 != 0 && step.rows[i / 3][i % 3] != 0.0)
        {
            return false;
        }
    }
    return true;
}

bool IsSeparable(const ChainStep& step) noexcept
{
    if (const auto* const affine = std::get_if<AffineStep>(&step))
    {
        return IsDiagonal(*affine);
    }
    const auto* const cdl = std::get_if<CdlStep>(&step);
    return cdl != nullptr ? cdl->cdl.saturation == 1.0F : !std::holds_alternative<CubeStep>(step);
}

} // namespace ReferenceRenderer
