// Where the parts of the page's window stand: the picture above, the effect's page below it, two
// lines of status, the buttons at the bottom. Pure: no windows.h. Tests:
// tests/tools/glazelhost/page/window_layout_test.cpp.
#pragma once

#include "support/geometry.h"

namespace GlazelHost
{

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
WindowLayout LayoutOf(Geometry::Extent client, int pageHeight) noexcept;

// The smallest client area in which every part can be used.
Geometry::Extent LeastClient(int pageHeight) noexcept;

// The client area that shows all of the picture, or as much as `most` allows.
Geometry::Extent ClientFor(Geometry::Extent picture, int pageHeight,
                           Geometry::Extent most) noexcept;

} // namespace GlazelHost
