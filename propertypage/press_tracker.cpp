#include "propertypage/press_tracker.h"

#include <utility>

PressTracker::Move PressTracker::MoveTo(Geometry::Point pointer) noexcept
{
    Move move;
    if (!m_tracking)
    {
        return move;
    }
    const PanelControls before = m_pressed;
    for (std::size_t control = 0; control < kPanelControls.size(); ++control)
    {
        const PanelControlRow& row = kPanelControls[control];
        const bool inside = row.rect.Contains(pointer);
        if (row.actsWhen == ActsWhen::ReleasedOnIt)
        {
            m_pressed[control] = inside;
        }
        else if (inside)
        {
            move.act[control] = !m_touched[control];
            m_touched[control] = true;
        }
    }
    move.redraw = before ^ m_pressed;
    return move;
}

PressTracker::Release PressTracker::ReleaseButton() noexcept
{
    const PressTracker press = std::exchange(*this, {});
    return {.wasPressed = press.m_tracking, .act = press.m_pressed};
}
