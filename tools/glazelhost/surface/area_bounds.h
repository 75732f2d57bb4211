// From bounds along two axes to an area of whole samples.
// Pure: no windows.h. Tests: tests/tools/glazelhost/surface/lock_bounds_test.cpp.
#pragma once

#include "tools/glazelhost/surface/area_locks.h"

#include <optional>

namespace GlazelHost
{

struct Interval
{
    double min = 0.0; // doubles hold every 32-bit number; larger ones are outside anyway
    double max = -1.0;
};

// Fractions are widened to whole samples. None when the area is empty, turned inside out, not a
// number or not inside width x height.
std::optional<Area> AreaOf(const Interval& x, const Interval& y, int width, int height) noexcept;

} // namespace GlazelHost
