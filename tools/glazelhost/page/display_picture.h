// What a window shows of a picture: where, and with which pixels.
// Pure: no windows.h. Tests: tests/tools/glazelhost/page/display_picture_test.cpp.
#pragma once

#include "tools/glazelhost/media/frame_io.h"

#include <cstdint>
#include <vector>

namespace GlazelHost
{

struct Extent
{
    int width = 0; // pixels
    int height = 0;

    friend bool operator==(const Extent&, const Extent&) = default;
};

struct Placement
{
    int x = 0;
    int y = 0;
    Extent size;

    friend bool operator==(const Placement&, const Placement&) = default;
};

// In the middle of `area`, with its proportions, reduced when it is larger but never enlarged.
// `pixelAspect` is a pixel's width divided by its height; at least one pixel is shown each way.
// Nothing in an area that has none.
Placement PlacementOf(Extent picture, double pixelAspect, Extent area) noexcept;

// Rows top-down without padding, 0x00RRGGBB. Where the picture is transparent, a chequered ground
// shows. Throws std::bad_alloc.
std::vector<std::uint32_t> DisplayPixels(const Image& image);

// A picture to see looks on when there is no other: hues at every brightness, and steps of grey.
// Throws std::bad_alloc.
Image TestChart(SampleType type);

} // namespace GlazelHost
