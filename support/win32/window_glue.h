// What every window needs: its client area, rectangles as the system has them, the scope of
// WM_PAINT. All on the window's thread.
#pragma once

#include "support/geometry.h"

#include <cassert>

#include <windows.h>

inline Geometry::Extent ClientSize(HWND window) noexcept
{
    RECT client{};
    ::GetClientRect(window, &client);
    return {static_cast<int>(client.right), static_cast<int>(client.bottom)};
}

constexpr RECT RectOf(const Geometry::Rect& rect) noexcept
{
    return {rect.left, rect.top, rect.Right(), rect.Bottom()};
}

// For assertions; true of a window that is gone.
inline bool IsOfThisThread(HWND window) noexcept
{
    const DWORD thread = ::GetWindowThreadProcessId(window, nullptr);
    return thread == 0 || thread == ::GetCurrentThreadId();
}

// BeginPaint for as long as this lives.
class PaintScope
{
public:
    explicit PaintScope(HWND window) noexcept
        : m_window(window), m_dc(::BeginPaint(window, &m_paint))
    {
        assert(IsOfThisThread(window));
    }
    ~PaintScope() { ::EndPaint(m_window, &m_paint); }
    PaintScope(const PaintScope&) = delete;
    PaintScope& operator=(const PaintScope&) = delete;
    HDC Dc() const noexcept { return m_dc; } // borrowed; null when the window is gone

private:
    HWND m_window;
    PAINTSTRUCT m_paint{};
    HDC m_dc; // initialised through m_paint, so declared after it
};
