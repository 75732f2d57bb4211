// From the bounds of an image as an effect states them to an area of the surface.
// Tests: tests/tools/glazelhost/surface/lock_bounds_test.cpp.
#pragma once

#include "platform/dxtransform/dxtrans.h"
#include "tools/glazelhost/surface/area_bounds.h"

#include <optional>

namespace GlazelHost
{

// All of {0..width, 0..height}, one layer, one moment.
DXBNDS BoundsOfSurface(int width, int height) noexcept;

// `bounds` null means the whole surface. As AreaOf; depth and time are ignored, since an image has
// one of each.
std::optional<Area> AreaOfBounds(const DXBNDS* bounds, int width, int height) noexcept;

} // namespace GlazelHost
