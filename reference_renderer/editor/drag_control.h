// What the slider of a number and the colour pad of a step share: a control with one value, which
// the mouse drags and keys move.
#pragma once

#include "reference_renderer/editor/accessible_control.h"
#include "reference_renderer/editor/editor_theme.h"
#include "reference_renderer/editor/resource.h"
#include "reference_renderer/editor/window_object.h"
#include "support/win32/utf8.h"

#include <optional>
#include <string>
#include <string_view>

#include <oleacc.h>

namespace ReferenceRenderer
{

// `Object` derives from this. Tells its parent with WM_COMMAND (SLIDER_MOVED and the others);
// changes its own value on SLIDER_MOVED only. Window thread.
template <typename Object, typename ValueType, typename Drag>
class DragControl : public WindowObject<Object>
{
public:
    using WindowObject<Object>::Window;

    void SetTheme(const EditorTheme& theme) noexcept
    {
        m_theme = &theme;
        Redraw();
    }

    const ValueType& Value() const noexcept { return m_value; }
    // Between SLIDER_BEGAN and the end of the drag.
    bool IsDragged() const noexcept { return m_drag.has_value(); }

    // Shows a value that was set elsewhere.
    void Show(const ValueType& value)
    {
        if (value != m_value)
        {
            m_value = value;
            ::SetWindowTextW(Window(), ValueText().c_str()); // what readers get
            ::RedrawWindow(Window(), nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
            TellValueChanged(Window());
        }
    }

    // Ends a drag and lets the parent take it back. False when there is none.
    bool CancelDrag() noexcept
    {
        if (!m_drag)
        {
            return false;
        }
        m_drag.reset(); // it has no end
        ::ReleaseCapture();
        Tell(SLIDER_CANCELLED);
        return true;
    }

protected:
    DragControl() noexcept = default;
    ~DragControl() = default;

    // False when the system refuses. `theme` is borrowed.
    bool Create(const wchar_t* className, std::string_view name, const ValueType& value,
                HWND parent, const EditorTheme& theme, int id)
    {
        m_name = Wide(name);
        m_value = value;
        m_theme = &theme;
        return WindowObject<Object>::Create(className, ValueText().c_str(), 0,
                                            WS_CHILD | WS_VISIBLE | WS_TABSTOP, parent, id);
    }

    // Of what `Object` does not handle itself.
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam)
    {
        switch (message)
        {
        case WM_GETDLGCODE: // NOLINT(bugprone-branch-clone): two different answers are both 1
            return DLGC_WANTARROWS;
        case WM_ERASEBKGND:
            return 1;
        case WM_GETOBJECT:
            if (const auto answer =
                    AnswerAccessible(Window(), wParam, lParam, {m_name, ROLE_SYSTEM_SLIDER, true}))
            {
                return *answer;
            }
            break;
        case WM_PAINT:
            Paint();
            return 0;
        case WM_SETFOCUS:
        case WM_KILLFOCUS:
        case WM_ENABLE:
            Redraw();
            return 0;
        case WM_LBUTTONUP:
            ::ReleaseCapture();
            return 0;
        case WM_CAPTURECHANGED:
            Redraw();
            if (m_drag)
            {
                m_drag.reset();
                Tell(SLIDER_ENDED);
            }
            return 0;
        case WM_LBUTTONDBLCLK:
            Tell(SLIDER_RESET);
            return 0;
        case WM_KEYDOWN:
            if (wParam == VK_DELETE || wParam == VK_BACK)
            {
                Tell(SLIDER_RESET);
                return 0;
            }
            if (OnKey(wParam))
            {
                return 0;
            }
            break;
        default:
            break;
        }
        return ::DefWindowProcW(Window(), message, wParam, lParam);
    }

    // Of a press, before BeginDrag: whoever loses the focus may change the value.
    void TakeMouse() noexcept
    {
        ::SetFocus(Window());
        ::SetCapture(Window());
    }
    void BeginDrag(const Drag& drag)
    {
        m_drag = drag;
        Tell(SLIDER_BEGAN);
    }

    // To where the user put it.
    void MoveTo(const ValueType& value)
    {
        if (value != m_value)
        {
            Show(value);
            Tell(SLIDER_MOVED);
        }
    }

    void Redraw() const noexcept { ::InvalidateRect(Window(), nullptr, FALSE); }

    const EditorTheme& Theme() const noexcept { return *m_theme; }

    std::optional<Drag> m_drag;

private:
    // What a reader says of the value.
    virtual std::wstring ValueText() const = 0;
    // False for a key that it does not know.
    virtual bool OnKey(WPARAM key) = 0;
    virtual void Paint() const = 0;

    void Tell(WORD what) noexcept
    {
        const auto id = static_cast<WORD>(::GetDlgCtrlID(Window()));
        ::SendMessageW(::GetParent(Window()), WM_COMMAND, MAKEWPARAM(id, what),
                       reinterpret_cast<LPARAM>(Window()));
    }

    const EditorTheme* m_theme = nullptr;
    std::wstring m_name;
    ValueType m_value{};
};

} // namespace ReferenceRenderer
