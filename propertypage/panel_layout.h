// Where things stand on the page's panel, in client pixels of the page window.
// Pure: no windows.h. Tests: tests/propertypage/panel_layout_test.cpp.
#pragma once

#include <cstdint>

struct PanelPoint
{
    int x = 0;
    int y = 0;
    bool operator==(const PanelPoint&) const = default;
};

struct PanelSize
{
    int width = 0;
    int height = 0;
    bool operator==(const PanelSize&) const = default;
};

// Half-open: the right column and the bottom row are outside.
struct PanelRect
{
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
    bool operator==(const PanelRect&) const = default;

    constexpr bool Contains(PanelPoint point) const noexcept
    {
        return left <= point.x && point.x < right && top <= point.y && point.y < bottom;
    }
};

constexpr PanelRect RectAt(PanelPoint origin, PanelSize size) noexcept
{
    return {origin.x, origin.y, origin.x + size.width, origin.y + size.height};
}

inline constexpr PanelSize kEditSize{40, 20};
inline constexpr PanelSize kCheckBoxSize{125, 16};

inline constexpr PanelPoint kEditOrigin{5, 25};
inline constexpr PanelPoint kCheckBoxOrigin{7, 70};
inline constexpr PanelPoint kThumbnailOrigin{50, 18};

inline constexpr PanelRect kEditRect = RectAt(kEditOrigin, kEditSize);
inline constexpr PanelRect kCheckBoxRect = RectAt(kCheckBoxOrigin, kCheckBoxSize);

// Each of the panel's three channels, and the ground that the thumbnail is blended over.
inline constexpr std::uint8_t kPanelGrey = 48;
