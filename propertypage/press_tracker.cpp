#include "propertypage/press_tracker.h"

#include <utility>

PressTracker::Move PressTracker::MoveTo(Geometry::Point pointer) noexcept
{
    Move move;
    if (!m_tracking)
    {
        return move;
    }
    const bool onEdit = kEditRect.Contains(pointer);
    move.editChanged = std::exchange(m_editPressed, onEdit) != onEdit;
    if (kCheckBoxRect.Contains(pointer))
    {
        move.toggleCheck = !std::exchange(m_checkLatched, true);
    }
    return move;
}

PressTracker::Release PressTracker::ReleaseButton() noexcept
{
    if (!m_tracking)
    {
        return {};
    }
    m_tracking = false;
    m_checkLatched = false;
    return {.wasPressed = true, .editClicked = std::exchange(m_editPressed, false)};
}
