// Where everything stands in the editor's window, for any size and any resolution.
// Pure: no windows.h. Tests: tests/reference_renderer/editor/editor_layout_test.cpp.
#pragma once

#include "reference_renderer/editor/colour_pad.h"
#include "reference_renderer/editor/scope_bins.h"
#include "support/geometry.h"

#include <array>

namespace ReferenceRenderer
{

inline constexpr int kUnscaledDpi = 96;

// Pixels for a length given for 96 dots per inch, rounded to nearest.
constexpr int Scaled(int length, int dpi) noexcept
{
    return (length * dpi + kUnscaledDpi / 2) / kUnscaledDpi;
}

// The client area in which everything has its room, and the one that the window opens with.
Geometry::Extent SmallestClient(int dpi) noexcept;
Geometry::Extent OpeningClient(int dpi) noexcept;

// The resolution to lay out for where a display of `dpi` has room for a client area of that size:
// as much less as the smallest one needs, so that no button is out of reach.
int FittingDpi(int dpi, Geometry::Extent room) noexcept;

struct ControlBoxes
{
    Geometry::Rect letter; // of the channel; empty where there is one value for all
    Geometry::Rect slider;
    Geometry::Rect frame;  // around the number
    Geometry::Rect number; // the edit control inside of it
    Geometry::Rect reset;
};

inline constexpr std::size_t kCompareButtons = 3;

// What the view does not show is empty.
struct EditorLayout
{
    Geometry::Rect picture;
    std::array<Geometry::Rect, kCompareButtons> compare;
    Geometry::Rect storeState; // beside the compare buttons
    Geometry::Rect swapState;
    std::array<Geometry::Rect, kScopeKinds> scopeButtons;
    Geometry::Rect pictureFacts;                  // a line of text beside these
    Geometry::Rect pixel;                         // a line of text below the picture
    Geometry::Rect scope;                         // between them; empty without one
    Geometry::Rect panel;                         // the part at the right with another ground
    std::array<Geometry::Rect, kViewCount> views; // a button for each
    std::array<Geometry::Rect, kStepCount> headings;
    std::array<Geometry::Rect, kPadCount> pads;
    std::array<ControlBoxes, kControlCount> controls;
    Geometry::Rect tables; // a line of text: the name of the look's tables
    Geometry::Rect importFile;
    Geometry::Rect recentLooks;
    Geometry::Rect exportFile;
    Geometry::Rect removeTables;
    Geometry::Rect hints;  // lines of text at the foot of the panel; empty where there is no room
    Geometry::Rect status; // three lines of text
    Geometry::Rect resetAll;
    Geometry::Rect cancel;
    Geometry::Rect accept;
    int footerTop = 0; // a line across the window stands above it
};

// Client areas below SmallestClient are laid out as if they had that size.
EditorLayout LayoutOf(Geometry::Extent client, int dpi, View view, bool hasScope = false) noexcept;
// The picture in the whole of it; everything else is empty.
EditorLayout PictureAloneIn(Geometry::Extent client) noexcept;

} // namespace ReferenceRenderer
