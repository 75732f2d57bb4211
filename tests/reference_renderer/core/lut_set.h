// Cubes as people use them, made from formulas, to measure what a look keeps of them.
#pragma once

#include "tests/reference_renderer/core/look_fixtures.h"

#include <string>
#include <vector>

namespace ReferenceRenderer
{

struct LutOfSet
{
    std::string name;
    Grading grading;
    bool isSmooth = true; // cut off at the ends of its range perhaps; false = with jumps
    bool isHard = false;  // jumps everywhere: the first to lose precision at 65 points
};

std::vector<LutOfSet> LutSet();

// A curve from scene-linear light over 0..16 to the input of a cube.
Curves SetShaper();

// A correction that moves every value.
Cdl SetCdl();

} // namespace ReferenceRenderer
