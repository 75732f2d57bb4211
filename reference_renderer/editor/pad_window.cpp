#include "reference_renderer/editor/pad_window.h"

#include "reference_renderer/editor/accessible_control.h"
#include "reference_renderer/editor/number_text.h"
#include "reference_renderer/editor/resource.h"
#include "support/win32/utf8.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <oleacc.h>
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
    m_theme = &theme;
    m_name = Wide(facts.name);
    return WindowObject::Create(EDITOR_PAD_CLASS, ValueText().c_str(), 0,
                                WS_CHILD | WS_VISIBLE | WS_TABSTOP, parent, id);
}

void PadWindow::SetTheme(const EditorTheme& theme) noexcept
{
    m_theme = &theme;
    ::InvalidateRect(Window(), nullptr, FALSE);
}

void PadWindow::Show(const PadPoint& point)
{
    if (point != m_point)
    {
        m_point = point;
        ::SetWindowTextW(Window(), ValueText().c_str()); // what readers get as its value
        ::RedrawWindow(Window(), nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
        TellValueChanged(Window());
    }
}

bool PadWindow::CancelDrag() noexcept
{
    if (!m_drag)
    {
        return false;
    }
    m_drag.reset(); // it has no end
    ::ReleaseCapture();
    Tell(SLIDER_CANCELLED);
    return true;
}

LRESULT PadWindow::OnMessage(UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message)
    {
    case WM_GETDLGCODE: // NOLINT(bugprone-branch-clone): two different answers are both 1
        return DLGC_WANTARROWS;
    case WM_ERASEBKGND:
        return 1;
    case WM_GETOBJECT:
        if (const auto answer =
                AnswerAccessible(Window(), wParam, lParam, {m_name, ROLE_SYSTEM_SLIDER, true}))
        {
            return *answer;
        }
        break;
    case WM_PAINT:
        Paint();
        return 0;
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
        ::InvalidateRect(Window(), nullptr, FALSE);
        return 0;
    case WM_LBUTTONDOWN:
        Press({GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)});
        return 0;
    case WM_MOUSEMOVE:
        Move({GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)}, (wParam & MK_SHIFT) != 0);
        return 0;
    case WM_LBUTTONUP:
        ::ReleaseCapture();
        return 0;
    case WM_CAPTURECHANGED:
        if (m_drag)
        {
            m_drag.reset();
            Tell(SLIDER_ENDED);
        }
        return 0;
    case WM_LBUTTONDBLCLK:
        Tell(SLIDER_RESET);
        return 0;
    case WM_KEYDOWN:
        if (OnKey(wParam))
        {
            return 0;
        }
        break;
    default:
        break;
    }
    return ::DefWindowProcW(Window(), message, wParam, lParam);
}

// "0.25 right, -0.1 up", in shares of the way to the rim.
std::wstring PadWindow::ValueText() const
{
    constexpr double kHundred = 100.0;
    const PadPoint shown = Within(m_point);
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
    ::SetFocus(Window());
    ::SetCapture(Window());
    const PadPoint from = Finite(m_point);
    m_drag = Drag{from, mouse, LimitFrom(from)};
    Tell(SLIDER_BEGAN);
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

void PadWindow::MoveTo(const PadPoint& point)
{
    if (point != m_point)
    {
        Show(point);
        Tell(SLIDER_MOVED);
    }
}

void PadWindow::Tell(WORD what) noexcept
{
    const auto id = static_cast<WORD>(::GetDlgCtrlID(Window()));
    ::SendMessageW(::GetParent(Window()), WM_COMMAND, MAKEWPARAM(id, what),
                   reinterpret_cast<LPARAM>(Window()));
}

bool PadWindow::OnKey(WPARAM key)
{
    const double step = IsDown(VK_SHIFT) ? 0.01 : IsDown(VK_CONTROL) ? 0.2 : 0.05;
    const PadPoint from = Finite(m_point);
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
    case VK_DELETE:
    case VK_BACK:
        Tell(SLIDER_RESET);
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
    const PadInks inks{PixelOf(m_theme->Inks().panelGround),
                       PixelOf(focused ? m_theme->Inks().focus : m_theme->Inks().track),
                       PixelOf(m_theme->Inks().track), PixelOf(m_theme->Inks().knobBright)};
    const auto side = static_cast<std::size_t>(geometry.size);
    const PixelBitmap bitmap(side, side);
    DrawPad(bitmap.Pixels(), geometry, m_point, inks);
    const DcHandle source(::CreateCompatibleDC(paint.Dc()));
    if (source)
    {
        const Selection selected(source.get(), bitmap.Get());
        ::BitBlt(paint.Dc(), 0, 0, geometry.size, geometry.size, source.get(), 0, 0, SRCCOPY);
    }
}

} // namespace ReferenceRenderer
