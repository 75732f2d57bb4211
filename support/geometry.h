// Places and extents of layouts, in whole pixels. Pure: no windows.h.
// Tests: tests/support/geometry_test.cpp.
#pragma once

namespace Geometry
{

struct Point
{
    int x = 0;
    int y = 0;

    friend bool operator==(const Point&, const Point&) = default;
};

struct Extent
{
    int width = 0;
    int height = 0;

    friend bool operator==(const Extent&, const Extent&) = default;
};

// Half-open: the column at Right() and the row at Bottom() are outside.
struct Rect
{
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;

    constexpr int Right() const noexcept { return left + width; }
    constexpr int Bottom() const noexcept { return top + height; }
    constexpr Extent Size() const noexcept { return {width, height}; }
    constexpr bool Contains(Point point) const noexcept
    {
        return left <= point.x && point.x < Right() && top <= point.y && point.y < Bottom();
    }
    friend bool operator==(const Rect&, const Rect&) = default;
};

constexpr Rect RectAt(Point origin, Extent size) noexcept
{
    return {origin.x, origin.y, size.width, size.height};
}

} // namespace Geometry
