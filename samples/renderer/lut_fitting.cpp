#include "samples/renderer/lut_fitting.h"

#include "samples/renderer/lut_sampling.h"

#include <algorithm>
#include <cmath>

namespace
{

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

Cube Resampled(const Cube& source, std::uint32_t size)
{
    const CubeView view = ViewOf(source);
    Cube cube{size, source.domain, {}};
    cube.nodes.reserve(3 * NodeCount(size) + kNodePadding);
    ForEachNode(source.domain, size, [&](const Rgb& input) {
        const Rgb node = view.Sample(input);
        cube.nodes.insert(cube.nodes.end(), {node.r, node.g, node.b});
    });
    cube.nodes.resize(cube.nodes.size() + kNodePadding);
    return cube;
}

Curves Resampled(const Curves& source, std::uint32_t size)
{
    const CurveView view = ViewOf(source);
    Curves curves{size, source.domain, {}};
    curves.values.reserve(std::size_t{3} * size);
    for (std::size_t channel = 0; channel < 3; ++channel)
    {
        for (std::uint32_t i = 0; i < size; ++i)
        {
            curves.values.push_back(
                view.Sample(channel, EntryValue(source.domain[channel], i, size)));
        }
    }
    return curves;
}

double Difference(const Rgb& left, const Rgb& right) noexcept
{
    return std::max({std::abs(double{left.r} - right.r), std::abs(double{left.g} - right.g),
                     std::abs(double{left.b} - right.b)});
}

std::string Resized(const char* table, std::uint32_t from, std::uint32_t to, const char* unit)
{
    return std::string("the ") + table + " was resampled from " + std::to_string(from) + " to " +
           std::to_string(to) + unit + ", the most that a look holds";
}

} // namespace

Look Fitted(const Look& look, std::vector<std::string>& warnings)
{
    Look fitted;
    fitted.cdlMode = look.cdlMode;
    fitted.cdl = look.cdl;
    fitted.strength = look.strength;
    fitted.title = look.title;
    if (look.cube && look.cube->size > kStoredCubeSize)
    {
        warnings.push_back(Resized("3D LUT", look.cube->size, kStoredCubeSize, " nodes a side"));
        fitted.cube = Resampled(*look.cube, kStoredCubeSize);
    }
    else
    {
        fitted.cube = look.cube;
    }
    const std::uint32_t capacity = CurveCapacity(fitted.cube ? fitted.cube->size : 0);
    if (look.curves && look.curves->size > capacity)
    {
        warnings.push_back(Resized("1D LUT", look.curves->size, capacity, " entries"));
        fitted.curves = Resampled(*look.curves, capacity);
    }
    else
    {
        fitted.curves = look.curves;
    }
    return fitted;
}

double LargestError(const Look& source, const StoredLook& stored)
{
    const CurveView storedCurves{stored.curveValues.data(), stored.curveSize,
                                 AxesOf(stored.curveDomain, stored.curveSize)};
    const CubeView storedCube{stored.cubeNodes.data(), stored.cubeSize,
                              AxesOf(stored.cubeDomain, stored.cubeSize)};
    double largest = 0.0;
    if (source.cube)
    {
        const float* node = source.cube->nodes.data();
        ForEachNode(source.cube->domain, source.cube->size, [&](const Rgb& input) {
            const Rgb exact{node[0], node[1], node[2]};
            largest = std::max(largest, Difference(exact, storedCube.Sample(input)));
            node += 3;
        });
    }
    if (source.curves)
    {
        const CurveView curves = ViewOf(*source.curves);
        const Domain& domain = source.curves->domain;
        const std::uint32_t size = source.curves->size;
        for (std::uint32_t i = 0; i < size; ++i)
        {
            const Rgb input{EntryValue(domain[0], i, size), EntryValue(domain[1], i, size),
                            EntryValue(domain[2], i, size)};
            Rgb exact = curves.Sample(input);
            Rgb rounded = storedCurves.Sample(input);
            if (source.cube)
            {
                exact = ViewOf(*source.cube).Sample(exact);
                rounded = storedCube.Sample(rounded);
            }
            largest = std::max(largest, Difference(exact, rounded));
        }
    }
    return largest;
}
