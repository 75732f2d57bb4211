#include "reference_renderer/editor/slider_window.h"

#include "reference_renderer/editor/accessible_control.h"
#include "reference_renderer/editor/number_text.h"
#include "reference_renderer/editor/resource.h"
#include "support/win32/utf8.h"

#include <cmath>

#include <oleacc.h>
#include <windowsx.h>

namespace ReferenceRenderer
{

bool SliderWindow::Create(HWND parent, const ControlFacts& facts, const EditorTheme& theme, int id)
{
    m_facts = &facts;
    m_theme = &theme;
    m_value = facts.neutral;
    return WindowObject::Create(EDITOR_SLIDER_CLASS, Wide(NumberText(facts.neutral)).c_str(), 0,
                                WS_CHILD | WS_VISIBLE | WS_TABSTOP, parent, id);
}

void SliderWindow::SetTheme(const EditorTheme& theme) noexcept
{
    m_theme = &theme;
    ::InvalidateRect(Window(), nullptr, FALSE);
}

void SliderWindow::Show(float value)
{
    if (value != m_value)
    {
        m_value = value;
        ::SetWindowTextW(Window(), Wide(NumberText(value)).c_str()); // what readers get
        ::RedrawWindow(Window(), nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
        TellValueChanged(Window());
    }
}

bool SliderWindow::CancelDrag() noexcept
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

LRESULT SliderWindow::OnMessage(UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message)
    {
    case WM_GETDLGCODE: // NOLINT(bugprone-branch-clone): two different answers are both 1
        return DLGC_WANTARROWS;
    case WM_ERASEBKGND:
        return 1;
    case WM_GETOBJECT:
        if (const auto answer = AnswerAccessible(Window(), wParam, lParam,
                                                 {Wide(m_facts->name), ROLE_SYSTEM_SLIDER, true}))
        {
            return *answer;
        }
        break;
    case WM_PAINT:
        Paint();
        return 0;
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
    case WM_ENABLE:
        ::InvalidateRect(Window(), nullptr, FALSE);
        return 0;
    case WM_LBUTTONDOWN:
        Press(GET_X_LPARAM(lParam), wParam);
        return 0;
    case WM_MOUSEMOVE:
        if (m_drag)
        {
            const double position = m_drag->Moved(GET_X_LPARAM(lParam), (wParam & MK_SHIFT) != 0);
            MoveTo(ValueAt(*m_facts, position), (wParam & MK_CONTROL) != 0);
        }
        return 0;
    case WM_LBUTTONUP:
        ::ReleaseCapture();
        return 0;
    case WM_CAPTURECHANGED:
        ::InvalidateRect(Window(), nullptr, FALSE);
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
    case WM_MOUSEWHEEL:
        OnWheel(wParam);
        return 0;
    default:
        break;
    }
    return ::DefWindowProcW(Window(), message, wParam, lParam);
}

SliderTrack SliderWindow::Track() const noexcept
{
    RECT area{};
    ::GetClientRect(Window(), &area);
    return TrackOf(area.right, KnobWidth());
}

void SliderWindow::Press(int pixel, WPARAM keys)
{
    ::SetFocus(Window());
    ::SetCapture(Window());
    const double position = ShownPosition(*m_facts, m_value);
    const SliderDrag way(Track(), position, KnobWidth(), pixel);
    m_drag = way;
    Tell(SLIDER_BEGAN);
    if (way.Position() != position) // pressed beside the knob
    {
        MoveTo(ValueAt(*m_facts, way.Position()), (keys & MK_CONTROL) != 0);
    }
    ::InvalidateRect(Window(), nullptr, FALSE);
}

void SliderWindow::MoveTo(float value, bool all)
{
    if (value != m_value)
    {
        m_movesAll = all;
        Show(value);
        Tell(SLIDER_MOVED);
    }
}

void SliderWindow::Tell(WORD what) noexcept
{
    const auto id = static_cast<WORD>(::GetDlgCtrlID(Window()));
    ::SendMessageW(::GetParent(Window()), WM_COMMAND, MAKEWPARAM(id, what),
                   reinterpret_cast<LPARAM>(Window()));
}

bool SliderWindow::OnKey(WPARAM key)
{
    const bool ctrl = IsDown(VK_CONTROL);
    const KeyStep arrow = ArrowStep(IsDown(VK_SHIFT), ctrl);
    const auto move = [&](float amount, bool all) {
        MoveTo(Nudged(*m_facts, m_value, amount), all);
        return true;
    };
    switch (key)
    {
    case VK_LEFT:
    case VK_DOWN:
        return move(-arrow.size, arrow.all);
    case VK_RIGHT:
    case VK_UP:
        return move(arrow.size, arrow.all);
    case VK_NEXT:
        return move(-kPageStep, ctrl);
    case VK_PRIOR:
        return move(kPageStep, ctrl);
    case VK_HOME:
        MoveTo(m_facts->sliderLow, ctrl);
        return true;
    case VK_END:
        MoveTo(m_facts->sliderHigh, ctrl);
        return true;
    case VK_DELETE:
    case VK_BACK:
        Tell(SLIDER_RESET);
        return true;
    default:
        return false;
    }
}

void SliderWindow::OnWheel(WPARAM wParam)
{
    const bool fine = (GET_KEYSTATE_WPARAM(wParam) & MK_SHIFT) != 0;
    const bool all = (GET_KEYSTATE_WPARAM(wParam) & MK_CONTROL) != 0;
    const float notches = static_cast<float>(GET_WHEEL_DELTA_WPARAM(wParam)) / WHEEL_DELTA;
    MoveTo(Nudged(*m_facts, m_value, notches * (fine ? kFineStep : kKeyStep)), all);
}

void SliderWindow::Paint() const noexcept
{
    const BufferedPaint paint(Window());
    const HDC dc = paint.Dc();
    const SIZE size = paint.Size();
    const bool enabled = ::IsWindowEnabled(Window()) != FALSE;
    Fill(dc, {0, 0, size.cx, size.cy}, m_theme->Inks().panelGround);

    const LONG middle = size.cy / 2;
    const LONG half = m_theme->Px(2);
    PaintTrack(dc, {KnobWidth() / 2, middle - half, size.cx - KnobWidth() / 2, middle + half},
               enabled);

    const auto centre =
        static_cast<LONG>(std::lround(Track().PixelOf(ShownPosition(*m_facts, m_value))));
    const LONG left = centre - KnobWidth() / 2;
    const LONG reach = m_theme->Px(8);
    const RECT knob{left, middle - reach, left + KnobWidth(), middle + reach};
    const bool focused = ::GetFocus() == Window();
    Fill(dc, knob,
         enabled ? (m_drag ? m_theme->Inks().knobBright : m_theme->Inks().knob)
                 : m_theme->Inks().knobOff);
    Frame(dc, knob, focused ? m_theme->Inks().focus : m_theme->Inks().track,
          focused ? m_theme->Px(2) : 1);
}

// The groove, a mark at the neutral value, and the way from there to the knob in the colour of the
// channel.
void SliderWindow::PaintTrack(HDC dc, const RECT& groove, bool enabled) const noexcept
{
    const SliderTrack track = Track();
    const auto pixelOf = [&](float value) {
        return static_cast<LONG>(std::lround(track.PixelOf(ShownPosition(*m_facts, value))));
    };
    const LONG neutral = pixelOf(m_facts->neutral);
    const LONG value = pixelOf(m_value);
    const LONG reach = m_theme->Px(6);
    const LONG half = m_theme->Px(1);
    const LONG middle = (groove.top + groove.bottom) / 2;
    Fill(dc, {neutral - half / 2, middle - reach, neutral - half / 2 + half, middle + reach},
         m_theme->Inks().trackMark);
    Fill(dc, groove, m_theme->Inks().track);
    const COLORREF colour = HasChannels(m_facts->step) ? m_theme->Inks().channels[m_facts->channel]
                                                       : m_theme->Inks().quietText;
    const LONG inset = m_theme->Px(1);
    // A strength counts from nothing, everything else from where it changes nothing.
    const LONG from = m_facts->step == Step::Strength ? groove.left : neutral;
    Fill(dc,
         {std::min(from, value), groove.top + inset, std::max(from, value), groove.bottom - inset},
         enabled ? colour : m_theme->Inks().track);
}

} // namespace ReferenceRenderer
