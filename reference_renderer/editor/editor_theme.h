// Fonts and colours of the look editor, and painting with them.
#pragma once

#include "reference_renderer/editor/editor_inks.h"
#include "reference_renderer/editor/editor_layout.h"
#include "reference_renderer/editor/gdi_objects.h"
#include "support/win32/window_glue.h"

#include <cstdint>
#include <string_view>

#include <windows.h>

namespace ReferenceRenderer
{

// A COLORREF as a pixel of a bitmap.
constexpr std::uint32_t PixelOf(COLORREF colour) noexcept
{
    return (colour & 0xFF) << 16 | (colour & 0xFF00) | (colour >> 16 & 0xFF);
}

// Fonts of one resolution, and colours. Throws std::bad_alloc when the system refuses one.
class EditorTheme
{
public:
    explicit EditorTheme(int dpi);

    int Dpi() const noexcept { return m_dpi; }
    int Px(int length) const noexcept { return Scaled(length, m_dpi); }
    HFONT Text() const noexcept { return m_text.get(); }
    HFONT Heading() const noexcept { return m_heading.get(); }
    const EditorInks& Inks() const noexcept { return m_inks; }
    HBRUSH FieldBrush() const noexcept { return m_field.get(); }

private:
    int m_dpi;
    EditorInks m_inks = InksFor(IsHighContrast());
    FontHandle m_text;
    FontHandle m_heading;
    BrushHandle m_field;
};

// Fills without a brush of its own.
void Fill(HDC dc, const RECT& area, COLORREF colour) noexcept;
// A line of `thickness` pixels along the inside of `area`.
void Frame(HDC dc, const RECT& area, COLORREF colour, int thickness = 1) noexcept;
// One line of text, cut with an ellipsis where it is too long. `format` as for DrawText.
void WriteLine(HDC dc, HFONT font, COLORREF colour, const RECT& area, std::wstring_view text,
               UINT format = DT_LEFT) noexcept;
// As many whole lines as `area` has room for, broken between words, in the middle of its height.
void WriteLines(HDC dc, HFONT font, COLORREF colour, const RECT& area,
                std::wstring_view text) noexcept;

} // namespace ReferenceRenderer
