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
        WriteLine(dc, theme.Text(), theme.Inks().channels[channel], RectOf(boxes.letter),
                  kLetters[channel]);
    }
    const RECT frame = RectOf(boxes.frame);
    Fill(dc, frame, theme.Inks().field);
    Frame(dc, frame,
          texts.wrongNumber == index     ? theme.Inks().wrong
          : texts.focusedNumber == index ? theme.Inks().focus
                                         : theme.Inks().fieldEdge,
          theme.Px(1));
}

} // namespace

void PaintGround(HDC dc, SIZE client, const EditorLayout& layout, const EditorTheme& theme,
                 const GroundTexts& texts) noexcept
{
    Fill(dc, {0, 0, client.cx, client.cy}, theme.Inks().ground);
    Fill(dc, {layout.panel.left, 0, client.cx, layout.footerTop}, theme.Inks().panelGround);
    const int thickness = theme.Px(1);
    Fill(dc, {layout.panel.left, 0, layout.panel.left + thickness, layout.footerTop},
         theme.Inks().line);
    Fill(dc, {0, layout.footerTop, client.cx, layout.footerTop + thickness}, theme.Inks().line);
    Frame(dc, Grown(layout.picture, thickness), theme.Inks().line, thickness);
    if (layout.scope.height > 0)
    {
        Frame(dc, Grown(layout.scope, thickness), theme.Inks().line, thickness);
    }
    for (std::size_t i = 0; i < kControlCount; ++i)
    {
        PaintControl(dc, i, layout, theme, texts);
    }
    WriteLine(dc, theme.Text(), theme.Inks().quietText, RectOf(layout.tables), texts.tables,
              DT_LEFT | DT_NOPREFIX);
    WriteLine(dc, theme.Text(), theme.Inks().quietText, RectOf(layout.pictureFacts), texts.picture,
              DT_RIGHT | DT_NOPREFIX);
    WriteLines(dc, theme.Text(), theme.Inks().faintText, RectOf(layout.hints), kHints);
}

void PaintButton(const DRAWITEMSTRUCT& item, const EditorTheme& theme, bool chosen)
{
    const EditorInks& inks = theme.Inks();
    const bool pressed = (item.itemState & ODS_SELECTED) != 0;
    const bool disabled = (item.itemState & ODS_DISABLED) != 0;
    const bool focused = (item.itemState & ODS_FOCUS) != 0;
    Fill(item.hDC, item.rcItem,
         disabled  ? inks.ground
         : pressed ? inks.buttonPressed
         : chosen  ? inks.buttonChosen
                   : inks.button);
    Frame(item.hDC, item.rcItem, focused ? inks.focus : inks.buttonEdge, theme.Px(1));
    if (focused && chosen && inks.focus == inks.buttonChosen)
    {
        RECT inside = item.rcItem;
        ::InflateRect(&inside, -theme.Px(3), -theme.Px(3));
        Frame(item.hDC, inside, inks.chosenText, theme.Px(1));
    }
    std::array<wchar_t, 32> text{};
    const int length = ::GetWindowTextW(item.hwndItem, text.data(), static_cast<int>(text.size()));
    const UINT prefix = (item.itemState & ODS_NOACCEL) != 0 ? DT_HIDEPREFIX : 0;
    WriteLine(item.hDC, theme.Text(),
              disabled             ? inks.disabledText
              : chosen && !pressed ? inks.chosenText
                                   : inks.buttonText,
              item.rcItem, {text.data(), static_cast<std::size_t>(length)}, DT_CENTER | prefix);
}

void PaintStatus(const DRAWITEMSTRUCT& item, const EditorTheme& theme, bool wrong)
{
    std::wstring text(static_cast<std::size_t>(::GetWindowTextLengthW(item.hwndItem)) + 1, L'\0');
    const int length = ::GetWindowTextW(item.hwndItem, text.data(), static_cast<int>(text.size()));
    text.resize(static_cast<std::size_t>(length));
    Fill(item.hDC, item.rcItem, theme.Inks().ground);
    WriteLines(item.hDC, theme.Text(), wrong ? theme.Inks().wrong : theme.Inks().quietText,
               item.rcItem, text);
}

void PaintResetButton(const DRAWITEMSTRUCT& item, const EditorTheme& theme)
{
    const LONG size = std::min(item.rcItem.right, item.rcItem.bottom);
    if (size <= 0)
    {
        return;
    }
    const bool pressed = (item.itemState & ODS_SELECTED) != 0;
    const bool disabled = (item.itemState & ODS_DISABLED) != 0;
    const COLORREF ground = pressed ? theme.Inks().buttonPressed : theme.Inks().panelGround;
    const COLORREF ink = disabled ? theme.Inks().disabledGlyph : theme.Inks().text;
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
