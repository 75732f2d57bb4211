// The slider of one number. Arrow keys move as ArrowStep says, page keys by a tenth, Home and End
// to the ends; Delete or a double click resets. With Shift the mouse moves it a tenth as fast; with
// Ctrl the mouse, page keys, Home and End move all channels of the step together.
#pragma once

#include "reference_renderer/editor/editor_control.h"
#include "reference_renderer/editor/editor_theme.h"
#include "reference_renderer/editor/slider_drag.h"
#include "reference_renderer/editor/window_object.h"

#include <optional>

namespace ReferenceRenderer
{

// Tells its parent with WM_COMMAND (SLIDER_MOVED and the others); changes its own value on
// SLIDER_MOVED only. Window thread.
class SliderWindow : public WindowObject<SliderWindow>
{
public:
    SliderWindow() noexcept = default;
    ~SliderWindow() { Destroy(); }

    // False when the system refuses. `theme` is borrowed.
    bool Create(HWND parent, const ControlFacts& facts, const EditorTheme& theme, int id);
    void SetTheme(const EditorTheme& theme) noexcept;

    float Value() const noexcept { return m_value; }
    // Whether the other channels shall move as far.
    bool MovesAll() const noexcept { return m_movesAll; }
    // Between SLIDER_BEGAN and the end of the drag.
    bool IsDragged() const noexcept { return m_drag.has_value(); }
    // Shows a value that was set elsewhere.
    void Show(float value);
    // Ends a drag and lets the parent take it back. False when there is none.
    bool CancelDrag() noexcept;

    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam);

private:
    SliderTrack Track() const noexcept;
    int KnobWidth() const noexcept { return m_theme->Px(9); }
    void Press(int pixel, WPARAM keys);
    void MoveTo(float value, bool all);
    void Tell(WORD what) noexcept;
    bool OnKey(WPARAM key);
    void OnWheel(WPARAM wParam);
    void Paint() const noexcept;
    void PaintTrack(HDC dc, const RECT& groove, bool enabled) const noexcept;

    const ControlFacts* m_facts = nullptr;
    const EditorTheme* m_theme = nullptr;
    float m_value = 0.0F;
    bool m_movesAll = false;
    std::optional<SliderDrag> m_drag;
};

} // namespace ReferenceRenderer
