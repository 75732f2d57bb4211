#include "propertypage/window_context.h"

#include "support/win32/window_glue.h"

#include <cassert>

WindowContext::WindowContext(HWND window, POINT origin, HDC dc) noexcept
    : m_window(window), m_origin(origin), m_owned(dc == nullptr),
      m_dc(dc != nullptr ? dc : ::GetDC(window))
{
    assert(IsOfThisThread(window));
}

WindowContext::~WindowContext()
{
    if (m_owned && m_dc != nullptr)
    {
        ::ReleaseDC(m_window, m_dc);
    }
}
