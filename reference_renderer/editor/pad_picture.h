// What a colour pad looks like: hues around its rim, a cross in its middle, and the knob.
// Pure: no windows.h. Tests: tests/reference_renderer/editor/pad_picture_test.cpp.
#pragma once

#include "reference_renderer/editor/colour_pad.h"

#include <cstdint>
#include <span>

namespace ReferenceRenderer
{

// How a pad of `size` pixels a side lies in its window.
struct PadGeometry
{
    int size = 0;

    double Middle() const noexcept { return size / 2.0; }
    double KnobRadius() const noexcept { return size / 14.0; }
    // From the middle to the rim, where the knob's centre can go; > 0.
    double Reach() const noexcept;
    PadPoint PixelOf(const PadPoint& point) const noexcept; // y points down
};

// The nearest place within `limit` of the middle, or the middle for what is no number. The knob can
// show what is within 1, the rim.
PadPoint Within(const PadPoint& point, double limit = 1.0) noexcept;

struct PadInks
{
    std::uint32_t ground; // around the pad; 0x00RRGGBB like the others
    std::uint32_t rim;
    std::uint32_t cross;
    std::uint32_t knob;
};

// Fills size x size pixels, the top row first.
void DrawPad(std::span<std::uint32_t> pixels, const PadGeometry& geometry, const PadPoint& knob,
             const PadInks& inks) noexcept;

} // namespace ReferenceRenderer
