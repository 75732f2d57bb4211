// Resolution of displays, with what the running system offers: the functions are looked up, older
// systems lack them.
#pragma once

#include <windows.h>

namespace ReferenceRenderer
{

// Windows that the calling thread makes meanwhile follow the resolution of each display.
class DisplayScaleScope
{
public:
    DisplayScaleScope() noexcept;
    ~DisplayScaleScope();
    DisplayScaleScope(const DisplayScaleScope&) = delete;
    DisplayScaleScope& operator=(const DisplayScaleScope&) = delete;

private:
    HANDLE m_before; // null = nothing to put back
};

// Dots per inch at which `window` is laid out.
int DpiOf(HWND window) noexcept;

// The size of a window with a client area of this size.
SIZE WindowSizeFor(HWND window, SIZE client, int dpi) noexcept;

// The system's font for messages, of the right size for `dpi`.
LOGFONTW MessageFont(int dpi) noexcept;

// Asks for a dark title bar, where the system has one.
void DarkenTitle(HWND window) noexcept;

} // namespace ReferenceRenderer
