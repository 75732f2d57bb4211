// The colour pad of a step: drag towards a hue, with Shift a tenth as fast; arrow keys go a
// twentieth of the way to the rim, with Shift a hundredth and with Ctrl a fifth; a double click or
// Delete brings the channels together.
#pragma once

#include "reference_renderer/editor/colour_pad.h"
#include "reference_renderer/editor/drag_control.h"
#include "reference_renderer/editor/pad_picture.h"

#include <string>

namespace ReferenceRenderer
{

// Follows the mouse by differences, so that switching between coarse and fine never jumps.
struct PadDrag
{
    PadPoint point;
    POINT mouse;
    double limit; // from the middle: as far as it was, so that a touch pulls nothing in
};

// Window thread.
class PadWindow final : public DragControl<PadWindow, PadPoint, PadDrag>
{
public:
    PadWindow() noexcept = default;
    ~PadWindow() { Destroy(); }

    // False when the system refuses. `theme` is borrowed.
    bool Create(HWND parent, const PadFacts& facts, const EditorTheme& theme, int id);

    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam);

private:
    std::wstring ValueText() const override;
    bool OnKey(WPARAM key) override;
    void Paint() const override;

    PadGeometry Geometry() const noexcept;
    void Press(POINT mouse);
    void Move(POINT mouse, bool fine);
};

} // namespace ReferenceRenderer
