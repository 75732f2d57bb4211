// The colour pad of a step: drag towards a hue, with Shift a tenth as fast; arrow keys go a
// twentieth of the way to the rim, with Shift a hundredth and with Ctrl a fifth; a double click or
// Delete brings the channels together.
#pragma once

#include "reference_renderer/editor/colour_pad.h"
#include "reference_renderer/editor/editor_theme.h"
#include "reference_renderer/editor/pad_picture.h"
#include "reference_renderer/editor/window_object.h"

#include <optional>
#include <string>

namespace ReferenceRenderer
{

// Tells its parent with WM_COMMAND what a slider tells. Window thread.
class PadWindow : public WindowObject<PadWindow>
{
public:
    PadWindow() noexcept = default;
    ~PadWindow() { Destroy(); }

    // False when the system refuses. `theme` is borrowed.
    bool Create(HWND parent, const PadFacts& facts, const EditorTheme& theme, int id);
    void SetTheme(const EditorTheme& theme) noexcept;

    PadPoint Value() const noexcept { return m_point; }
    bool IsDragged() const noexcept { return m_drag.has_value(); }
    // Shows numbers that were set elsewhere.
    void Show(const PadPoint& point);
    // Ends a drag and lets the parent take it back. False when there is none.
    bool CancelDrag() noexcept;

    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam);

private:
    // Follows the mouse by differences, so that switching between coarse and fine never jumps.
    struct Drag
    {
        PadPoint point;
        POINT mouse;
        double limit; // from the middle: as far as it was, so that a touch pulls nothing in
    };

    std::wstring ValueText() const;
    PadGeometry Geometry() const noexcept;
    void Press(POINT mouse);
    void Move(POINT mouse, bool fine);
    void MoveTo(const PadPoint& point);
    void Tell(WORD what) noexcept;
    bool OnKey(WPARAM key);
    void Paint() const;

    const EditorTheme* m_theme = nullptr;
    std::wstring m_name;
    PadPoint m_point;
    std::optional<Drag> m_drag;
};

} // namespace ReferenceRenderer
