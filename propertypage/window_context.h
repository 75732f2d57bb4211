// A window together with the device context through which it is drawn on.
#pragma once

#include <windows.h>

// Borrows `dc`, as a paint message gives it; without one it takes the window's own and gives it
// back. Window thread.
class WindowContext
{
public:
    // `origin`: where the drawing's (0, 0) stands in the window's client area.
    explicit WindowContext(HWND window, POINT origin = {}, HDC dc = nullptr) noexcept;
    virtual ~WindowContext();
    WindowContext(const WindowContext&) = delete;
    WindowContext& operator=(const WindowContext&) = delete;

    HDC Dc() const noexcept { return m_dc; } // null when the window is gone
    POINT Origin() const noexcept { return m_origin; }

private:
    HWND m_window; // borrowed
    POINT m_origin;
    bool m_owned; // the device context is to be given back
    HDC m_dc;
};
