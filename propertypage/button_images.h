// The pictures of the panel's controls. The data stand in button_images.cpp, which
// make_button_images.py draws.
// Pure: no windows.h. Tests: tests/propertypage/button_images_test.cpp.
#pragma once

#include "support/geometry.h"

#include <array>
#include <cstdint>
#include <span>

enum class StoredForm
{
    Bgra, // 4 bytes a pixel: blue, green, red, alpha
    Rgb,  // 3 bytes a pixel: red, green, blue
};

// Rows from the top, without padding.
struct ButtonImage
{
    StoredForm form;
    Geometry::Extent size;
    std::span<const std::uint8_t> bytes;
};

extern const std::array<std::uint8_t, 3200> kEditNormalPixels;
extern const std::array<std::uint8_t, 3200> kEditPressedPixels;
// Drawn on the panel's own grey, so that they need no transparency.
extern const std::array<std::uint8_t, 6000> kCheckBoxOffPixels;
extern const std::array<std::uint8_t, 6000> kCheckBoxOnPixels;
