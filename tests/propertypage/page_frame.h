// A window that a page is put into, and the mouse and messages that a user gives it.
#pragma once

#include "tests/propertypage/panel_picture.h"

#include <windows.h>

#include <functional>

// A window without a border that a page is put into, on the screen for as long as this lives.
class PageFrame
{
public:
    explicit PageFrame(Geometry::Extent size = {300, 120});
    ~PageFrame();
    PageFrame(const PageFrame&) = delete;
    PageFrame& operator=(const PageFrame&) = delete;

    HWND Window() const { return m_window; }
    RECT PageRect() const; // all of the frame
    // The one page that is open in it; null when there is none.
    HWND PageWindow() const { return ::GetWindow(m_window, GW_CHILD); }

private:
    HWND m_window;
};

// Handles the messages of this thread until its queue is empty.
void HandleMessages();
// The same until `condition` holds; false when that takes too long.
bool HandleMessagesUntil(const std::function<bool()>& condition);

// The pointer and the left button as a user moves them: input that Windows itself delivers.
void MovePointer(HWND page, Geometry::Point point);
void PushButton();
void LiftButton();

inline constexpr Geometry::Point kOnEdit{10, 30};
inline constexpr Geometry::Point kOnCheckBox{50, 75};
inline constexpr Geometry::Point kElsewhere{200, 50};
