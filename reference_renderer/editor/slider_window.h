// The slider of one number. Arrow keys move as ArrowStep says, page keys by a tenth, Home and End
// to the ends; Delete or a double click resets. With Shift the mouse moves it a tenth as fast; with
// Ctrl the mouse, page keys, Home and End move all channels of the step together.
#pragma once

#include "reference_renderer/editor/drag_control.h"
#include "reference_renderer/editor/editor_control.h"
#include "reference_renderer/editor/slider_drag.h"

#include <string>

namespace ReferenceRenderer
{

// Window thread.
class SliderWindow final : public DragControl<SliderWindow, float, SliderDrag>
{
public:
    SliderWindow() noexcept = default;
    ~SliderWindow() { Destroy(); }

    // False when the system refuses. `facts` and `theme` are borrowed.
    bool Create(HWND parent, const ControlFacts& facts, const EditorTheme& theme, int id);

    // Whether the other channels shall move as far.
    bool MovesAll() const noexcept { return m_movesAll; }

    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam);

private:
    std::wstring ValueText() const override;
    bool OnKey(WPARAM key) override;
    void Paint() const override;

    SliderTrack Track() const noexcept;
    int KnobWidth() const noexcept { return Theme().Px(9); }
    void Press(int pixel, WPARAM keys);
    void MoveTo(float value, bool all);
    void OnWheel(WPARAM wParam);
    void PaintTrack(HDC dc, const RECT& groove, bool enabled) const noexcept;

    const ControlFacts* m_facts = nullptr;
    bool m_movesAll = false;
};

} // namespace ReferenceRenderer
