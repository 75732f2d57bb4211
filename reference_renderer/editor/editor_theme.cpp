#include "reference_renderer/editor/editor_theme.h"

#include "reference_renderer/editor/display_scale.h"

#include <algorithm>
#include <new>

namespace ReferenceRenderer
{

EditorTheme::EditorTheme(int dpi) : m_dpi(dpi)
{
    LOGFONTW font = MessageFont(dpi);
    m_text.reset(::CreateFontIndirectW(&font));
    font.lfWeight = FW_SEMIBOLD;
    m_heading.reset(::CreateFontIndirectW(&font));
    m_field.reset(::CreateSolidBrush(m_inks.field));
    if (!m_text || !m_heading || !m_field)
    {
        throw std::bad_alloc();
    }
}

void Fill(HDC dc, const RECT& area, COLORREF colour) noexcept
{
    ::SetDCBrushColor(dc, colour);
    ::FillRect(dc, &area, static_cast<HBRUSH>(::GetStockObject(DC_BRUSH)));
}

void Frame(HDC dc, const RECT& area, COLORREF colour, int thickness) noexcept
{
    Fill(dc, {area.left, area.top, area.right, area.top + thickness}, colour);
    Fill(dc, {area.left, area.bottom - thickness, area.right, area.bottom}, colour);
    Fill(dc, {area.left, area.top, area.left + thickness, area.bottom}, colour);
    Fill(dc, {area.right - thickness, area.top, area.right, area.bottom}, colour);
}

void WriteLine(HDC dc, HFONT font, COLORREF colour, const RECT& area, std::wstring_view text,
               UINT format) noexcept
{
    const Selection selected(dc, font);
    ::SetTextColor(dc, colour);
    ::SetBkMode(dc, TRANSPARENT);
    RECT room = area;
    ::DrawTextW(dc, text.data(), static_cast<int>(text.size()), &room,
                format | DT_SINGLELINE | DT_VCENTER | DT_END_ELLIPSIS);
}

void WriteLines(HDC dc, HFONT font, COLORREF colour, const RECT& area,
                std::wstring_view text) noexcept
{
    // With DT_EDITCONTROL a line that is cut off below is left out.
    constexpr UINT kFormat = DT_LEFT | DT_NOPREFIX | DT_WORDBREAK | DT_EDITCONTROL;
    const auto length = static_cast<int>(text.size());
    const Selection selected(dc, font);
    ::SetTextColor(dc, colour);
    ::SetBkMode(dc, TRANSPARENT);
    RECT needed{0, 0, area.right - area.left, 0};
    ::DrawTextW(dc, text.data(), length, &needed, kFormat | DT_CALCRECT);
    RECT room = area;
    room.top += std::max<LONG>((area.bottom - area.top - needed.bottom) / 2, 0);
    ::DrawTextW(dc, text.data(), length, &room, kFormat | DT_END_ELLIPSIS);
}

} // namespace ReferenceRenderer
