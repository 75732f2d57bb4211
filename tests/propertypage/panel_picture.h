// Pictures of a page: as it is on the screen, and as it has to be.
#pragma once

#include "propertypage/panel_layout.h"

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// Rows from the top; a pixel is 0x00RRGGBB.
struct Picture
{
    Geometry::Extent size;
    std::vector<std::uint32_t> pixels;

    std::uint32_t& At(int x, int y);
    std::uint32_t At(int x, int y) const;
};

// What a window's client area shows. Throws std::runtime_error when it cannot be read.
Picture ScreenOf(HWND window);

// A thumbnail as a renderer hands it out: 0xAARRGGBB.
struct Thumbnail
{
    Geometry::Extent size;
    std::vector<std::uint32_t> pixels;
};

// Every alpha, and colours on both sides of the panel's grey.
Thumbnail SampleThumbnail(Geometry::Extent size);

struct PanelState
{
    bool editPressed = false;
    bool checked = false;
    const Thumbnail* thumbnail = nullptr;
};

// Painted from the panel's definition alone, pixel by pixel; of the product only the data of the
// button images are used.
Picture ExpectedPanel(Geometry::Extent size, const PanelState& state);

// The first `width` columns, or all when there are fewer.
Picture LeftPart(const Picture& picture, int width);

// Empty when both are the same, else where they differ first.
std::string FirstDifference(const Picture& actual, const Picture& expected);
