// Reads curves and cubes between their entries: linear along a curve, tetrahedral inside a cube.
// Any input is safe: values beyond a domain count as its nearest end, NaN as its low end.
// Pure: no windows.h. Tests: tests/reference_renderer/core/lut_sampling_test.cpp.
#pragma once

#include "reference_renderer/core/four_floats.h"
#include "reference_renderer/core/look.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace ReferenceRenderer
{

// Value of an entry among `size` evenly spaced ones.
inline float EntryValue(const Interval& domain, std::uint32_t entry, std::uint32_t size) noexcept
{
    const double share = static_cast<double>(entry) / (size - 1);
    return static_cast<float>(domain.low + (double{domain.high} - domain.low) * share);
}

// Calls `visit` with the input of every node, in the order of the nodes.
template <typename Visit>
void ForEachNode(const Domain& domain, std::uint32_t size, Visit&& visit)
{
    Rgb input;
    for (std::uint32_t b = 0; b < size; ++b)
    {
        input.b = EntryValue(domain[2], b, size);
        for (std::uint32_t g = 0; g < size; ++g)
        {
            input.g = EntryValue(domain[1], g, size);
            for (std::uint32_t r = 0; r < size; ++r)
            {
                input.r = EntryValue(domain[0], r, size);
                visit(input);
            }
        }
    }
}

// Turns a value into a position between the entries of one axis.
struct Axis
{
    float low = 0.0F;
    float scale = 1.0F; // entries per unit of value
    float last = 1.0F;  // number of the last entry

    Axis() = default;
    Axis(const Interval& domain, std::uint32_t size) noexcept
        : low(domain.low), scale(static_cast<float>(size - 1) / (domain.high - domain.low)),
          last(static_cast<float>(size - 1))
    {
    }

    float PositionOf(float value) const noexcept
    {
        const float position = (value - low) * scale;
        const float fromFirst = position > 0.0F ? position : 0.0F; // NaN becomes 0
        return fromFirst < last ? fromFirst : last;
    }
};

using Axes = std::array<Axis, 3>;

inline Axes AxesOf(const Domain& domain, std::uint32_t size) noexcept
{
    return {Axis(domain[0], size), Axis(domain[1], size), Axis(domain[2], size)};
}

// Between which two entries of a curve a value lies.
struct CurvePlace
{
    std::uint32_t entry = 0; // the lower one
    float fraction = 0.0F;   // 0..1 of the way to the next one
    float low = 0.0F;        // values of the two
    float high = 0.0F;

    float Value() const noexcept { return low + fraction * (high - low); }
};

// Looks at curves that somebody else owns.
struct CurveView
{
    const float* values = nullptr; // all of red, then green, then blue
    std::uint32_t size = 0;
    Axes axes;

    CurvePlace PlaceOf(std::size_t channel, float value) const noexcept
    {
        const float position = axes[channel].PositionOf(value);
        const auto entry = std::min(static_cast<std::uint32_t>(position), size - 2);
        const float* const curve = values + channel * size;
        return {entry, position - static_cast<float>(entry), curve[entry], curve[entry + 1]};
    }

    float Sample(std::size_t channel, float value) const noexcept
    {
        return PlaceOf(channel, value).Value();
    }

    Rgb Sample(const Rgb& value) const noexcept
    {
        return {Sample(0, value.r), Sample(1, value.g), Sample(2, value.b)};
    }
};

// The four nodes of a cube that a value lies between: the corners of one of the six tetrahedra into
// which a cell is cut along its diagonal.
struct CubePlace
{
    std::array<std::uint32_t, 3> cell{};  // of red, green, blue
    std::array<float, 3> fractions{};     // 0..1 within the cell
    std::array<std::size_t, 4> corners{}; // floats before each node
    std::array<float, 4> weights{};       // which add up to 1
};

// Looks at a cube that somebody else owns.
struct CubeView
{
    const float* nodes = nullptr; // as in Cube, padding included
    std::uint32_t size = 0;
    Axes axes;

    CubePlace PlaceOf(const Rgb& value) const noexcept;
    Rgb At(const CubePlace& place) const noexcept;
    Rgb Sample(const Rgb& value) const noexcept { return At(PlaceOf(value)); }
};

inline CurveView ViewOf(const Curves& curves) noexcept
{
    return {curves.values.data(), curves.size, AxesOf(curves.domain, curves.size)};
}

inline CubeView ViewOf(const Cube& cube) noexcept
{
    return {cube.nodes.data(), cube.size, AxesOf(cube.domain, cube.size)};
}

// Which tetrahedron holds the point follows from the order of the three fractions. Selecting the
// corners by that order takes no jump.
[[gnu::always_inline]] inline CubePlace CubeView::PlaceOf(const Rgb& value) const noexcept
{
    const std::size_t stepR = 3;
    const std::size_t stepG = stepR * size;
    const std::size_t stepB = stepG * size;

    const float positionR = axes[0].PositionOf(value.r);
    const float positionG = axes[1].PositionOf(value.g);
    const float positionB = axes[2].PositionOf(value.b);
    const std::uint32_t lastCell = size - 2;
    const auto cellR = std::min(static_cast<std::uint32_t>(positionR), lastCell);
    const auto cellG = std::min(static_cast<std::uint32_t>(positionG), lastCell);
    const auto cellB = std::min(static_cast<std::uint32_t>(positionB), lastCell);
    const float r = positionR - static_cast<float>(cellR);
    const float g = positionG - static_cast<float>(cellG);
    const float b = positionB - static_cast<float>(cellB);

    // Ties go to opposite ends, so that the first and the last axis never coincide.
    const float largest = std::max(std::max(r, g), b);
    const float smallest = std::min(std::min(r, g), b);
    const float middle = std::max(std::min(r, g), std::min(std::max(r, g), b));
    const bool redFirst = (r >= g) & (r >= b);
    const bool blueLast = (b <= r) & (b <= g);
    const std::size_t firstStep = redFirst ? stepR : (g >= b ? stepG : stepB);
    const std::size_t lastStep = blueLast ? stepB : (g <= r ? stepG : stepR);
    const std::size_t allSteps = stepR + stepG + stepB;

    const std::size_t corner = cellR * stepR + cellG * stepG + cellB * stepB;
    return {{cellR, cellG, cellB},
            {r, g, b},
            {corner, corner + firstStep, corner + (allSteps - lastStep), corner + allSteps},
            {1.0F - largest, largest - middle, middle - smallest, smallest}};
}

[[gnu::always_inline]] inline Rgb CubeView::At(const CubePlace& place) const noexcept
{
    const FourFloats sum = LoadFour(nodes + place.corners[0]) * place.weights[0] +
                           LoadFour(nodes + place.corners[1]) * place.weights[1] +
                           LoadFour(nodes + place.corners[2]) * place.weights[2] +
                           LoadFour(nodes + place.corners[3]) * place.weights[3];
    return {sum[0], sum[1], sum[2]};
}

} // namespace ReferenceRenderer
