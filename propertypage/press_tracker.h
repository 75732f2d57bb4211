// What one press of the left mouse button does on the panel: the button "Edit..." acts when it is
// released inside, the check box as soon as the pressed pointer is in it, once in a press.
// Pure: no windows.h. Tests: tests/propertypage/press_tracker_test.cpp.
#pragma once

#include "propertypage/panel_layout.h"

// Window thread.
class PressTracker
{
public:
    // What a move of the pressed pointer changes on the panel.
    struct Move
    {
        bool editChanged = false; // draw the button as EditPressed says now
        bool toggleCheck = false;
    };
    struct Release
    {
        bool wasPressed = false;  // the press is over: give the mouse back
        bool editClicked = false; // draw the button as normal, then open the editor
    };

    // Anywhere on the page.
    void Press() noexcept { m_tracking = true; }
    // Nothing without a press.
    Move MoveTo(Geometry::Point pointer) noexcept;
    Release ReleaseButton() noexcept;

    bool IsTracking() const noexcept { return m_tracking; }
    bool EditPressed() const noexcept { return m_editPressed; }

private:
    bool m_editPressed = false;  // shown pressed: the pointer is on it
    bool m_checkLatched = false; // toggled in this press already
    bool m_tracking = false;     // the button went down on the page
};
