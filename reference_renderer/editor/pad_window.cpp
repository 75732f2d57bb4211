#include "reference_renderer/editor/pad_window.h"

#include "reference_renderer/editor/number_text.h"
#include "reference_renderer/editor/resource.h"
#include "support/win32/utf8.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <windowsx.h>

namespace ReferenceRenderer
{

namespace
{

PadPoint Finite(const PadPoint& point) noexcept
{
    return Within(point, std::numeric_limits<double>::max());
}

double LimitFrom(const PadPoint& point) noexcept
{
    return std::max(1.0, std::hypot(point.x, point.y));
}

} // namespace

bool PadWindow::Create(HWND parent, const PadFacts& facts, const EditorTheme& theme, int id)
{
    return DragControl::Create(EDITOR_PAD_CLASS, facts.name, {}, parent, theme, id);
}

LRESULT PadWindow::OnMessage(UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message)
    {
    case WM_LBUTTONDOWN:
        Press({GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)});
        return 0;
    case WM_MOUSEMOVE:
        Move({GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)}, (wParam & MK_SHIFT) != 0);
        return 0;
    default:
        return DragControl::OnMessage(message, wParam, lParam);
    }
}

// "0.25 right, -0.1 up", in shares of the way to the rim.
std::wstring PadWindow::ValueText() const
{
    constexpr double kHundred = 100.0;
    const PadPoint shown = Within(Value());
    const auto share = [](double value) {
        return Wide(ShortNumberText(static_cast<float>(std::round(value * kHundred) / kHundred)));
    };
    return share(shown.x) + L" right, " + share(shown.y) + L" up";
}

PadGeometry PadWindow::Geometry() const noexcept
{
    RECT area{};
    ::GetClientRect(Window(), &area);
    return {static_cast<int>(std::min(area.right, area.bottom))};
}

// The knob is small: wherever a press lands, it is taken where it is.
void PadWindow::Press(POINT mouse)
{
    TakeMouse();
    const PadPoint from = Finite(Value());
    BeginDrag({from, mouse, LimitFrom(from)});
}

void PadWindow::Move(POINT mouse, bool fine)
{
    constexpr double kFineShare = 0.1;
    if (!m_drag)
    {
        return;
    }
    const double pixel = (fine ? kFineShare : 1.0) / Geometry().Reach();
    m_drag->point.x += (mouse.x - m_drag->mouse.x) * pixel;
    m_drag->point.y -= (mouse.y - m_drag->mouse.y) * pixel;
    m_drag->mouse = mouse;
    MoveTo(Within(m_drag->point, m_drag->limit));
}

bool PadWindow::OnKey(WPARAM key)
{
    const double step = IsDown(VK_SHIFT) ? 0.01 : IsDown(VK_CONTROL) ? 0.2 : 0.05;
    const PadPoint from = Finite(Value());
    const double limit = LimitFrom(from);
    switch (key)
    {
    case VK_LEFT:
        MoveTo(Within({from.x - step, from.y}, limit));
        return true;
    case VK_RIGHT:
        MoveTo(Within({from.x + step, from.y}, limit));
        return true;
    case VK_UP:
        MoveTo(Within({from.x, from.y + step}, limit));
        return true;
    case VK_DOWN:
        MoveTo(Within({from.x, from.y - step}, limit));
        return true;
    default:
        return false;
    }
}

void PadWindow::Paint() const
{
    const BufferedPaint paint(Window());
    const PadGeometry geometry = Geometry();
    if (geometry.size <= 0)
    {
        return;
    }
    const bool focused = ::GetFocus() == Window();
    const PadInks inks{PixelOf(Theme().Inks().panelGround),
                       PixelOf(focused ? Theme().Inks().focus : Theme().Inks().track),
                       PixelOf(Theme().Inks().track), PixelOf(Theme().Inks().knobBright)};
    const auto side = static_cast<std::size_t>(geometry.size);
    const PixelBitmap bitmap(side, side);
    DrawPad(bitmap.Pixels(), geometry, Value(), inks);
    const DcHandle source(::CreateCompatibleDC(paint.Dc()));
    if (source)
    {
        const Selection selected(source.get(), bitmap.Get());
        ::BitBlt(paint.Dc(), 0, 0, geometry.size, geometry.size, source.get(), 0, 0, SRCCOPY);
    }
}

} // namespace ReferenceRenderer
