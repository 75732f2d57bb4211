#include "reference_renderer/editor/gdi_objects.h"

#include "support/win32/window_glue.h"

#include <cassert>
#include <new>

namespace ReferenceRenderer
{

BufferedPaint::BufferedPaint(HWND window) noexcept
    : m_window(window), m_screen(::BeginPaint(window, &m_paint))
{
    assert(IsOfThisThread(window));
    RECT area{};
    ::GetClientRect(window, &area);
    m_size = {area.right, area.bottom};
    m_bitmap.reset(::CreateCompatibleBitmap(m_screen, m_size.cx, m_size.cy));
    if (m_bitmap)
    {
        m_memory.reset(::CreateCompatibleDC(m_screen));
    }
    if (m_memory)
    {
        m_before = ::SelectObject(m_memory.get(), m_bitmap.get());
    }
}

BufferedPaint::~BufferedPaint()
{
    if (m_memory)
    {
        ::BitBlt(m_screen, 0, 0, m_size.cx, m_size.cy, m_memory.get(), 0, 0, SRCCOPY);
        ::SelectObject(m_memory.get(), m_before);
    }
    ::EndPaint(m_window, &m_paint);
}

PixelBitmap::PixelBitmap(std::size_t width, std::size_t height)
{
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = static_cast<LONG>(width);
    info.bmiHeader.biHeight = -static_cast<LONG>(height); // negative: the top row first
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    void* pixels = nullptr;
    m_bitmap.reset(::CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &pixels, nullptr, 0));
    if (!m_bitmap)
    {
        throw std::bad_alloc();
    }
    m_pixels = {static_cast<std::uint32_t*>(pixels), width * height};
}

std::span<std::uint32_t> PixelBitmap::Pixels() const noexcept
{
    ::GdiFlush();
    return m_pixels;
}

} // namespace ReferenceRenderer
