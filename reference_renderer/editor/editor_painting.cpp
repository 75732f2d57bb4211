#include "reference_renderer/editor/editor_painting.h"

#include "reference_renderer/editor/reset_glyph.h"
#include "reference_renderer/editor/resource.h"

#include <algorithm>

namespace ReferenceRenderer
{

namespace
{

constexpr wchar_t kHints[] = L"Mouse with Shift: finer.  With Ctrl: all channels.\n"
                             L"Double click or Delete: back to neutral.\n"
                             L"Ctrl+Z, Ctrl+Y: undo, redo.  F7, F8: store A, swap.";
constexpr std::array<const wchar_t*, 3> kLetters{L"R", L"G", L"B"};

RECT Grown(const Geometry::Rect& box, int by) noexcept
{
    return {box.left - by, box.top - by, box.Right() + by, box.Bottom() + by};
}

void PaintControl(HDC dc, std::size_t index, const EditorLayout& layout, const EditorTheme& theme,
                  const GroundTexts& texts) noexcept
{
    const ControlBoxes& boxes = layout.controls[index];
    if (boxes.letter.width > 0)
    {
        const std::size_t channel = kControls[index].channel;
        WriteLine(dc, theme.Text(), kChannelColours[channel], RectOf(boxes.letter),
                  kLetters[channel]);
    }
    const RECT frame = RectOf(boxes.frame);
    Fill(dc, frame, kField);
    Frame(dc, frame,
          texts.wrongNumber == index     ? kWrong
          : texts.focusedNumber == index ? kFocus
                                         : kFieldEdge,
          theme.Px(1));
}

} // namespace

void PaintGround(HDC dc, SIZE client, const EditorLayout& layout, const EditorTheme& theme,
                 const GroundTexts& texts) noexcept
{
    Fill(dc, {0, 0, client.cx, client.cy}, kGround);
    Fill(dc, {layout.panel.left, 0, client.cx, layout.footerTop}, kPanelGround);
    const int thickness = theme.Px(1);
    Fill(dc, {layout.panel.left, 0, layout.panel.left + thickness, layout.footerTop}, kLine);
    Fill(dc, {0, layout.footerTop, client.cx, layout.footerTop + thickness}, kLine);
    Frame(dc, Grown(layout.picture, thickness), kLine, thickness);
    if (layout.scope.height > 0)
    {
        Frame(dc, Grown(layout.scope, thickness), kLine, thickness);
    }
    for (std::size_t i = 0; i < kControlCount; ++i)
    {
        PaintControl(dc, i, layout, theme, texts);
    }
    WriteLine(dc, theme.Text(), kQuietText, RectOf(layout.tables), texts.tables,
              DT_LEFT | DT_NOPREFIX);
    WriteLine(dc, theme.Text(), kQuietText, RectOf(layout.pictureFacts), texts.picture,
              DT_RIGHT | DT_NOPREFIX);
    WriteLines(dc, theme.Text(), kFaintText, RectOf(layout.hints), kHints);
}

void PaintButton(const DRAWITEMSTRUCT& item, const EditorTheme& theme, bool chosen)
{
    const bool pressed = (item.itemState & ODS_SELECTED) != 0;
    const bool disabled = (item.itemState & ODS_DISABLED) != 0;
    const bool focused = (item.itemState & ODS_FOCUS) != 0;
    Fill(item.hDC, item.rcItem,
         disabled  ? kGround
         : pressed ? kButtonPressed
         : chosen  ? kButtonChosen
                   : kButton);
    Frame(item.hDC, item.rcItem, focused ? kFocus : kButtonEdge, theme.Px(1));
    std::array<wchar_t, 32> text{};
    const int length = ::GetWindowTextW(item.hwndItem, text.data(), static_cast<int>(text.size()));
    const UINT prefix = (item.itemState & ODS_NOACCEL) != 0 ? DT_HIDEPREFIX : 0;
    WriteLine(item.hDC, theme.Text(), disabled ? kFaintText : kText, item.rcItem,
              {text.data(), static_cast<std::size_t>(length)}, DT_CENTER | prefix);
}

void PaintStatus(const DRAWITEMSTRUCT& item, const EditorTheme& theme, bool wrong)
{
    std::wstring text(static_cast<std::size_t>(::GetWindowTextLengthW(item.hwndItem)) + 1, L'\0');
    const int length = ::GetWindowTextW(item.hwndItem, text.data(), static_cast<int>(text.size()));
    text.resize(static_cast<std::size_t>(length));
    Fill(item.hDC, item.rcItem, kGround);
    WriteLines(item.hDC, theme.Text(), wrong ? kWrong : kQuietText, item.rcItem, text);
}

void PaintResetButton(const DRAWITEMSTRUCT& item)
{
    const LONG size = std::min(item.rcItem.right, item.rcItem.bottom);
    if (size <= 0)
    {
        return;
    }
    const bool pressed = (item.itemState & ODS_SELECTED) != 0;
    const bool disabled = (item.itemState & ODS_DISABLED) != 0;
    const COLORREF ground = pressed ? kButtonPressed : kPanelGround;
    const COLORREF ink = disabled ? Grey(0x40) : kText;
    const auto side = static_cast<std::size_t>(size);
    const PixelBitmap bitmap(side, side);
    DrawResetGlyph(bitmap.Pixels(), static_cast<int>(size), PixelOf(ground), PixelOf(ink));
    const DcHandle source(::CreateCompatibleDC(item.hDC));
    if (source)
    {
        const Selection selected(source.get(), bitmap.Get());
        ::BitBlt(item.hDC, 0, 0, size, size, source.get(), 0, 0, SRCCOPY);
    }
}

} // namespace ReferenceRenderer
