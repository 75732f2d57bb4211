// What a window shows of a picture: where, and with which pixels.
// Pure: no windows.h. Tests: tests/tools/glazelhost/page/display_picture_test.cpp.
#pragma once

#include "support/geometry.h"
#include "tools/glazelhost/media/frame_io.h"

#include <cstdint>
#include <vector>

namespace GlazelHost
{

// In the middle of `area`, with its proportions, reduced when it is larger but never enlarged.
// `pixelAspect` is a pixel's width divided by its height; at least one pixel is shown each way.
// Nothing in an area that has none.
Geometry::Rect PlacementOf(Geometry::Extent picture, double pixelAspect,
                           Geometry::Extent area) noexcept;

// Rows top-down without padding, 0x00RRGGBB. Where the picture is transparent, a chequered ground
// shows. Throws std::bad_alloc.
std::vector<std::uint32_t> DisplayPixels(const Image& image);

// A picture to see looks on when there is no other: hues at every brightness, and steps of grey.
// Throws std::bad_alloc.
Image TestChart(SampleType type);

} // namespace GlazelHost
