// Where the parts of the page's window stand: the picture above, the effect's page below it, two
// lines of status, the buttons at the bottom. Pure: no windows.h. Tests:
// tests/tools/glazelhost/page/window_layout_test.cpp.
#pragma once

#include "support/geometry.h"

namespace GlazelHost
{

// What the parts need: the page's own height in pixels, and that of a line of text, which may be of
// a larger font than 96 dots per inch give.
struct PartHeights
{
    int page = 0;
    int line = 14;
};

struct WindowLayout
{
    Geometry::Rect picture;
    Geometry::Rect page;
    Geometry::Rect status;
    Geometry::Rect saveLook;
    Geometry::Rect copyCommand;
};

// Pixels of the client area. Where there is less than LeastClient the picture loses its rows first,
// then the page.
WindowLayout LayoutOf(Geometry::Extent client, PartHeights heights) noexcept;

// The smallest client area in which every part can be used.
Geometry::Extent LeastClient(PartHeights heights) noexcept;

// The client area that shows all of the picture, or as much as `most` allows.
Geometry::Extent ClientFor(Geometry::Extent picture, PartHeights heights,
                           Geometry::Extent most) noexcept;

} // namespace GlazelHost
