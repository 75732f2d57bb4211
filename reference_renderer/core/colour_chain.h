// A colour transform as a file states it: steps one after the other, each applied as its format
// says, in double, whatever a look can hold of it. chain_fitting.h makes looks of chains. Pure: no
// windows.h. Tests: tests/reference_renderer/core/colour_chain_test.cpp.
#pragma once

#include "reference_renderer/core/look.h"

#include <array>
#include <functional>
#include <variant>
#include <vector>

namespace ReferenceRenderer
{

using Triple = std::array<double, 3>; // red, green, blue

// A matrix, then an offset.
struct AffineStep
{
    std::array<Triple, 3> rows{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    Triple offset{};
};

struct CurvePoint
{
    double input;
    double output;
};

// One curve per channel, straight between its points, constant beyond the ends. An end at
// +-kLargestNumber stands for none: no number of a look lies beyond.
struct CurveStep
{
    std::array<std::vector<CurvePoint>, 3> channels; // at least 2 points each, their inputs rise
};

// Any function for each channel.
struct FunctionStep
{
    std::array<std::function<double(double)>, 3> channels;
};

struct CdlStep
{
    Cdl cdl;
    CdlMode mode = CdlMode::Clamped; // not None
    bool reverse = false;            // slope and saturation are above 0 then
};

struct CubeStep
{
    Cube cube;
    bool trilinear = false; // else tetrahedral
};

using ChainStep = std::variant<AffineStep, CurveStep, FunctionStep, CdlStep, CubeStep>;
using ColourChain = std::vector<ChainStep>;

Triple Applied(const ChainStep& step, const Triple& value);
Triple Applied(const ColourChain& chain, Triple value);

// Whether each channel goes into its own alone.
bool IsDiagonal(const AffineStep& step) noexcept;

// Whether no channel of the step's result depends on another channel.
bool IsSeparable(const ChainStep& step) noexcept;

} // namespace ReferenceRenderer
