#include "reference_renderer/editor/slider_window.h"

#include "reference_renderer/editor/number_text.h"
#include "reference_renderer/editor/resource.h"
#include "support/win32/utf8.h"

#include <cmath>

#include <windowsx.h>

namespace ReferenceRenderer
{

bool SliderWindow::Create(HWND parent, const ControlFacts& facts, const EditorTheme& theme, int id)
{
    m_facts = &facts;
    return DragControl::Create(EDITOR_SLIDER_CLASS, facts.name, facts.neutral, parent, theme, id);
}

LRESULT SliderWindow::OnMessage(UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message)
    {
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
    case WM_MOUSEWHEEL:
        OnWheel(wParam);
        return 0;
    default:
        return DragControl::OnMessage(message, wParam, lParam);
    }
}

std::wstring SliderWindow::ValueText() const
{
    return Wide(NumberText(Value()));
}

SliderTrack SliderWindow::Track() const noexcept
{
    RECT area{};
    ::GetClientRect(Window(), &area);
    return TrackOf(area.right, KnobWidth());
}

void SliderWindow::Press(int pixel, WPARAM keys)
{
    TakeMouse();
    const double position = ShownPosition(*m_facts, Value());
    const SliderDrag way(Track(), position, KnobWidth(), pixel);
    BeginDrag(way);
    if (way.Position() != position) // pressed beside the knob
    {
        MoveTo(ValueAt(*m_facts, way.Position()), (keys & MK_CONTROL) != 0);
    }
    Redraw();
}

void SliderWindow::MoveTo(float value, bool all)
{
    if (value != Value())
    {
        m_movesAll = all;
        DragControl::MoveTo(value);
    }
}

bool SliderWindow::OnKey(WPARAM key)
{
    const bool ctrl = IsDown(VK_CONTROL);
    const KeyStep arrow = ArrowStep(IsDown(VK_SHIFT), ctrl);
    const auto move = [&](float amount, bool all) {
        MoveTo(Nudged(*m_facts, Value(), amount), all);
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
    default:
        return false;
    }
}

void SliderWindow::OnWheel(WPARAM wParam)
{
    const bool fine = (GET_KEYSTATE_WPARAM(wParam) & MK_SHIFT) != 0;
    const bool all = (GET_KEYSTATE_WPARAM(wParam) & MK_CONTROL) != 0;
    const float notches = static_cast<float>(GET_WHEEL_DELTA_WPARAM(wParam)) / WHEEL_DELTA;
    MoveTo(Nudged(*m_facts, Value(), notches * (fine ? kFineStep : kKeyStep)), all);
}

void SliderWindow::Paint() const
{
    const BufferedPaint paint(Window());
    const HDC dc = paint.Dc();
    const SIZE size = paint.Size();
    const bool enabled = ::IsWindowEnabled(Window()) != FALSE;
    Fill(dc, {0, 0, size.cx, size.cy}, Theme().Inks().panelGround);

    const LONG middle = size.cy / 2;
    const LONG half = Theme().Px(2);
    PaintTrack(dc, {KnobWidth() / 2, middle - half, size.cx - KnobWidth() / 2, middle + half},
               enabled);

    const auto centre =
        static_cast<LONG>(std::lround(Track().PixelOf(ShownPosition(*m_facts, Value()))));
    const LONG left = centre - KnobWidth() / 2;
    const LONG reach = Theme().Px(8);
    const RECT knob{left, middle - reach, left + KnobWidth(), middle + reach};
    const bool focused = ::GetFocus() == Window();
    Fill(dc, knob,
         enabled ? (m_drag ? Theme().Inks().knobBright : Theme().Inks().knob)
                 : Theme().Inks().knobOff);
    Frame(dc, knob, focused ? Theme().Inks().focus : Theme().Inks().track,
          focused ? Theme().Px(2) : 1);
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
    const LONG value = pixelOf(Value());
    const LONG reach = Theme().Px(6);
    const LONG half = Theme().Px(1);
    const LONG middle = (groove.top + groove.bottom) / 2;
    Fill(dc, {neutral - half / 2, middle - reach, neutral - half / 2 + half, middle + reach},
         Theme().Inks().trackMark);
    Fill(dc, groove, Theme().Inks().track);
    const COLORREF colour = HasChannels(m_facts->step) ? Theme().Inks().channels[m_facts->channel]
                                                       : Theme().Inks().quietText;
    const LONG inset = Theme().Px(1);
    // A strength counts from nothing, everything else from where it changes nothing.
    const LONG from = m_facts->step == Step::Strength ? groove.left : neutral;
    Fill(dc,
         {std::min(from, value), groove.top + inset, std::max(from, value), groove.bottom - inset},
         enabled ? colour : Theme().Inks().track);
}

} // namespace ReferenceRenderer
