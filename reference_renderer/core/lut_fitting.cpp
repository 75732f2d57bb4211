#include "reference_renderer/core/lut_fitting.h"

#include "reference_renderer/core/lut_sampling.h"
#include "reference_renderer/core/number_words.h"
#include "reference_renderer/core/record_tables.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace ReferenceRenderer
{

namespace
{

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

std::string TextOf(const StoringError& error, bool behindCurves)
{
    return "the look cannot be stored exactly: " + LargestErrorText(error.size, error.input) +
           (error.atNode && behindCurves ? " behind the 1D LUT" : "");
}

// Cubes are tried at these sizes until the steps are no larger than kCoarsestUnseen.
constexpr std::array<std::uint32_t, 3> kCubeSizes{kStoredCubeSize, 33, 27};
constexpr std::uint32_t kCoarsestUnseen = 12; // values within a 512th: half a code of 8 bits

// `look` with a cube of at most `largestCube` nodes a side.
Look Fitted(const Look& look, std::uint32_t largestCube, std::vector<std::string>& losses)
{
    Look fitted = look;
    if (look.cube && look.cube->size > largestCube)
    {
        losses.push_back("the 3D LUT was resampled from " + std::to_string(look.cube->size) +
                         " to " + std::to_string(largestCube) +
                         " nodes a side, the most that a look holds of it");
        fitted.cube = Resampled(*look.cube, largestCube);
    }
    return fitted;
}

} // namespace

double Difference(const Rgb& left, const Rgb& right) noexcept
{
    return std::max({std::abs(double{left.r} - right.r), std::abs(double{left.g} - right.g),
                     std::abs(double{left.b} - right.b)});
}

std::string LargestErrorText(double size, const Rgb& input)
{
    constexpr double kCodes = 255.0;
    return "largest error " + NumberText(size * kCodes, 2) + " of an 8-bit code, at " +
           NumberText(input.r, 3) + ' ' + NumberText(input.g, 3) + ' ' + NumberText(input.b, 3);
}

StoringError StoreFitted(const Look& look, StoredLook& stored, std::vector<std::string>& warnings)
{
    std::vector<std::string> losses;
    for (const std::uint32_t size : kCubeSizes)
    {
        losses.clear();
        StoreLook(Fitted(look, size, losses), stored);
        if (CubeStepOf(stored) <= kCoarsestUnseen)
        {
            break;
        }
    }
    const StoringError error = LargestError(look, stored);
    constexpr double kCode = 1.0 / 255.0;
    if (error.size > kCode)
    {
        losses.push_back(TextOf(error, look.curves.has_value()));
    }
    warnings.insert(warnings.end(), losses.begin(), losses.end());
    return error;
}

StoringError LargestError(const Look& source, const StoredLook& stored)
{
    const CurveView storedCurves{stored.curveValues.data(), stored.curveSize,
                                 AxesOf(stored.curveDomain, stored.curveSize)};
    const CubeView storedCube{stored.cubeNodes.data(), stored.cubeSize,
                              AxesOf(stored.cubeDomain, stored.cubeSize)};
    StoringError largest;
    const auto compare = [&](const Rgb& exact, const Rgb& kept, const Rgb& input, bool atNode) {
        const double size = Difference(exact, kept);
        if (size > largest.size)
        {
            largest = {size, input, atNode};
        }
    };
    if (source.cube)
    {
        const float* node = source.cube->nodes.data();
        ForEachNode(source.cube->domain, source.cube->size, [&](const Rgb& input) {
            compare({node[0], node[1], node[2]}, storedCube.Sample(input), input, true);
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
            Rgb kept = storedCurves.Sample(input);
            if (source.cube)
            {
                exact = ViewOf(*source.cube).Sample(exact);
                kept = storedCube.Sample(kept);
            }
            compare(exact, kept, input, false);
        }
    }
    return largest;
}

} // namespace ReferenceRenderer
