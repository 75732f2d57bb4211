// Owners for what GDI hands out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <type_traits>

#include <windows.h>

namespace ReferenceRenderer
{

struct GdiDeleter
{
    void operator()(HGDIOBJ object) const noexcept { ::DeleteObject(object); }
};

using FontHandle = std::unique_ptr<std::remove_pointer_t<HFONT>, GdiDeleter>;
using BrushHandle = std::unique_ptr<std::remove_pointer_t<HBRUSH>, GdiDeleter>;
using BitmapHandle = std::unique_ptr<std::remove_pointer_t<HBITMAP>, GdiDeleter>;

struct DcDeleter
{
    void operator()(HDC dc) const noexcept { ::DeleteDC(dc); }
};

using DcHandle = std::unique_ptr<std::remove_pointer_t<HDC>, DcDeleter>;

// Selects an object into a device context for as long as this lives.
class Selection
{
public:
    Selection(HDC dc, HGDIOBJ object) noexcept : m_dc(dc), m_before(::SelectObject(dc, object)) {}
    ~Selection() { ::SelectObject(m_dc, m_before); }
    Selection(const Selection&) = delete;
    Selection& operator=(const Selection&) = delete;

private:
    HDC m_dc;
    HGDIOBJ m_before;
};

// WM_PAINT into memory; the window sees the finished picture. Where memory is short, straight into
// the window. Window thread.
class BufferedPaint
{
public:
    explicit BufferedPaint(HWND window) noexcept;
    ~BufferedPaint();
    BufferedPaint(const BufferedPaint&) = delete;
    BufferedPaint& operator=(const BufferedPaint&) = delete;

    HDC Dc() const noexcept { return m_memory ? m_memory.get() : m_screen; } // client coordinates
    SIZE Size() const noexcept { return m_size; }

private:
    HWND m_window;
    PAINTSTRUCT m_paint{};
    HDC m_screen; // initialised through m_paint
    SIZE m_size{};
    BitmapHandle m_bitmap;
    DcHandle m_memory;
    HGDIOBJ m_before = nullptr;
};

// Pixels that the program writes and GDI shows: 0xXXRRGGBB, the top row first, without padding.
class PixelBitmap
{
public:
    PixelBitmap() noexcept = default;
    // Throws std::bad_alloc when the system refuses.
    PixelBitmap(std::size_t width, std::size_t height);

    // To write them; waits until GDI is done with them.
    std::span<std::uint32_t> Pixels() const noexcept;
    HBITMAP Get() const noexcept { return m_bitmap.get(); }

private:
    BitmapHandle m_bitmap;
    std::span<std::uint32_t> m_pixels;
};

} // namespace ReferenceRenderer
