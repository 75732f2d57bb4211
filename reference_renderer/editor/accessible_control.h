// What a screen reader gets of a window that is no control of the system's, or whose name stands
// elsewhere: everything as the system says it but for these. Window thread.
#pragma once

#include <optional>
#include <string>

#include <windows.h>

namespace ReferenceRenderer
{

struct AccessibleFacts
{
    std::wstring name;
    std::optional<LONG> role; // ROLE_SYSTEM_..., else the system's
    bool textIsValue = false; // of the window, whatever it is when somebody asks
};

// Answers WM_GETOBJECT. Nothing for what is not asked of a client
// area or cannot be made: the message then goes its usual way.
std::optional<LRESULT> AnswerAccessible(HWND window, WPARAM wParam, LPARAM lParam,
                                        AccessibleFacts facts);

// Tells who listens that the value of a window is another one.
inline void TellValueChanged(HWND window) noexcept
{
    ::NotifyWinEvent(EVENT_OBJECT_VALUECHANGE, window, OBJID_CLIENT, CHILDID_SELF);
}

} // namespace ReferenceRenderer
