// Where everything stands in the editor's window, for any size and any resolution.
// Pure: no windows.h. Tests: tests/reference_renderer/editor/editor_layout_test.cpp.
#pragma once

#include "reference_renderer/editor/editor_control.h"

#include <array>

namespace ReferenceRenderer
{

// In physical pixels of the client area.
struct Box
{
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;

    int Right() const noexcept { return left + width; }
    int Bottom() const noexcept { return top + height; }
    friend bool operator==(const Box&, const Box&) = default;
};

inline constexpr int kUnscaledDpi = 96;

// Pixels for a length given for 96 dots per inch, rounded to nearest.
constexpr int Scaled(int length, int dpi) noexcept
{
    return (length * dpi + kUnscaledDpi / 2) / kUnscaledDpi;
}

struct Extent
{
    int width = 0;
    int height = 0;
};

// The client area in which everything has its room, and the one that the window opens with.
Extent SmallestClient(int dpi) noexcept;
Extent OpeningClient(int dpi) noexcept;

struct ControlBoxes
{
    Box letter; // of the channel; empty where there is one value for all
    Box slider;
    Box frame;  // around the number
    Box number; // the edit control inside of it
    Box reset;
};

inline constexpr std::size_t kHeadings = 5; // one for each Step
inline constexpr std::size_t kCompareButtons = 3;

struct EditorLayout
{
    Box picture;
    std::array<Box, kCompareButtons> compare;
    Box pictureFacts; // a line of text beside the compare buttons
    Box panel;        // the part at the right with another ground
    std::array<Box, kHeadings> headings;
    std::array<ControlBoxes, kControlCount> controls;
    Box tables; // a line of text: the name of the look's tables
    Box importFile;
    Box removeTables;
    Box hints;  // lines of text at the foot of the panel; empty where there is no room
    Box status; // two lines of text
    Box resetAll;
    Box cancel;
    Box accept;
    int footerTop = 0; // a line across the window stands above it
};

// Client areas below SmallestClient are laid out as if they had that size.
EditorLayout LayoutOf(Extent client, int dpi) noexcept;

} // namespace ReferenceRenderer
