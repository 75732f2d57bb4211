// What one press of the left mouse button does to the panel's controls.
// Pure: no windows.h. Tests: tests/propertypage/press_tracker_test.cpp.
#pragma once

#include "propertypage/panel_layout.h"

#include <bitset>

using PanelControls = std::bitset<kPanelControls.size()>; // by PanelControl

// Window thread.
class PressTracker
{
public:
    // What a move of the pressed pointer changes on the panel.
    struct Move
    {
        PanelControls redraw; // as IsPressed says now
        PanelControls act;
    };
    struct Release
    {
        bool wasPressed = false; // the press is over: give the mouse back
        PanelControls act;       // after they were drawn as off
    };

    // Anywhere on the page.
    void Press() noexcept { m_tracking = true; }
    // Nothing without a press.
    Move MoveTo(Geometry::Point pointer) noexcept;
    Release ReleaseButton() noexcept;

    bool IsTracking() const noexcept { return m_tracking; }
    // Shown pressed: the pointer is on it, and it acts when the button is released there.
    bool IsPressed(PanelControl control) const noexcept
    {
        return m_pressed[static_cast<std::size_t>(control)];
    }

private:
    PanelControls m_pressed;
    PanelControls m_touched;
    bool m_tracking = false; // the button went down on the page
};
