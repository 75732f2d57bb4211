// Colours and fonts of the look editor. Greys are neutral, so that nothing near the picture tints
// the eye.
#pragma once

#include "reference_renderer/editor/editor_layout.h"
#include "reference_renderer/editor/gdi_objects.h"
#include "support/win32/window_glue.h"

#include <array>
#include <cstdint>
#include <string_view>

#include <windows.h>

namespace ReferenceRenderer
{

constexpr COLORREF Grey(std::uint32_t level) noexcept
{
    return level | level << 8 | level << 16;
}

// A COLORREF as a pixel of a bitmap.
constexpr std::uint32_t PixelOf(COLORREF colour) noexcept
{
    return (colour & 0xFF) << 16 | (colour & 0xFF00) | (colour >> 16 & 0xFF);
}

inline constexpr COLORREF kGround = Grey(0x26);
inline constexpr COLORREF kPanelGround = Grey(0x2E);
inline constexpr COLORREF kPictureGround = Grey(0x1B);
inline constexpr COLORREF kLine = Grey(0x16);
inline constexpr COLORREF kField = Grey(0x1E);
inline constexpr COLORREF kFieldEdge = Grey(0x48);
inline constexpr COLORREF kText = Grey(0xD6);
inline constexpr COLORREF kQuietText = Grey(0x96);
inline constexpr COLORREF kFaintText = Grey(0x74);
inline constexpr COLORREF kButton = Grey(0x42);
inline constexpr COLORREF kButtonPressed = Grey(0x34);
inline constexpr COLORREF kButtonChosen = Grey(0x66);
inline constexpr COLORREF kButtonEdge = Grey(0x54);
inline constexpr COLORREF kTrack = Grey(0x17);
inline constexpr COLORREF kTrackMark = Grey(0x62);
inline constexpr COLORREF kKnob = Grey(0xA8);
inline constexpr COLORREF kKnobBright = Grey(0xDC);
inline constexpr COLORREF kKnobOff = Grey(0x50);
inline constexpr COLORREF kFocus = RGB(0xC8, 0x96, 0x4A);
inline constexpr COLORREF kWrong = RGB(0xE0, 0x70, 0x62);
inline constexpr std::array<COLORREF, 3> kChannelColours{
    RGB(0xC6, 0x55, 0x50), RGB(0x5F, 0x9E, 0x55), RGB(0x55, 0x80, 0xCC)};

// Fonts of one resolution. Throws std::bad_alloc when the system refuses one.
class EditorTheme
{
public:
    explicit EditorTheme(int dpi);

    int Dpi() const noexcept { return m_dpi; }
    int Px(int length) const noexcept { return Scaled(length, m_dpi); }
    HFONT Text() const noexcept { return m_text.get(); }
    HFONT Heading() const noexcept { return m_heading.get(); }
    HBRUSH FieldBrush() const noexcept { return m_field.get(); }

private:
    int m_dpi;
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
