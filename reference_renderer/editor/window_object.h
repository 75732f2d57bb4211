// A window that belongs to an object: its messages go to the object's OnMessage.
#pragma once

#include "support/win32/window_glue.h"

#include <cassert>
#include <exception>

#include <windows.h>

namespace ReferenceRenderer
{

// This library's own handle, under which its window classes are registered.
HINSTANCE ThisModule() noexcept;

// Whether a key was down when the message that is being handled was made.
inline bool IsDown(int key) noexcept
{
    return ::GetKeyState(key) < 0;
}

// Puts a child window there; one whose box is empty is hidden.
inline void PlaceAt(HWND window, const Geometry::Rect& box) noexcept
{
    const UINT shown = box.width > 0 ? SWP_SHOWWINDOW : SWP_HIDEWINDOW;
    ::SetWindowPos(window, nullptr, box.left, box.top, box.width, box.height,
                   SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOCOPYBITS | shown);
}

// `Object` derives from this and has LRESULT OnMessage(UINT, WPARAM, LPARAM), which may throw: the
// message then counts as not handled, nothing escapes the window procedure. Window thread.
template <typename Object>
class WindowObject
{
public:
    WindowObject(const WindowObject&) = delete;
    WindowObject& operator=(const WindowObject&) = delete;

    HWND Window() const noexcept { return m_window; } // null when there is none (any more)

    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam,
                                      LPARAM lParam) noexcept
    {
        if (message == WM_NCCREATE)
        {
            const auto* const created = reinterpret_cast<const CREATESTRUCTW*>(lParam);
            auto* const object = static_cast<Object*>(created->lpCreateParams);
            ::SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(object));
            static_cast<WindowObject*>(object)->m_window = window;
        }
        auto* const object = reinterpret_cast<Object*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
        if (object == nullptr)
        {
            return ::DefWindowProcW(window, message, wParam, lParam);
        }
        const LRESULT result = Handled(*object, message, wParam, lParam);
        if (message == WM_NCDESTROY)
        {
            ::SetWindowLongPtrW(window, GWLP_USERDATA, 0);
            static_cast<WindowObject*>(object)->m_window = nullptr;
        }
        return result;
    }

protected:
    WindowObject() noexcept = default;
    ~WindowObject() { Destroy(); }

    // False when the system refuses.
    bool Create(const wchar_t* className, const wchar_t* text, DWORD exStyle, DWORD style,
                HWND parent, int id) noexcept
    {
        const auto menu = reinterpret_cast<HMENU>(static_cast<INT_PTR>(id));
        return ::CreateWindowExW(exStyle, className, text, style, 0, 0, 0, 0, parent, menu,
                                 ThisModule(), static_cast<Object*>(this)) != nullptr;
    }

    // Before members of `Object` that its messages use are gone.
    void Destroy() noexcept
    {
        if (m_window != nullptr)
        {
            assert(IsOfThisThread(m_window));
            ::DestroyWindow(m_window);
        }
    }

private:
    static LRESULT Handled(Object& object, UINT message, WPARAM wParam, LPARAM lParam) noexcept
    {
        const HWND window = static_cast<WindowObject&>(object).m_window;
        try
        {
            return object.OnMessage(message, wParam, lParam);
        }
        catch (const std::exception&) // memory is short: the message counts as not handled
        {
            return ::DefWindowProcW(window, message, wParam, lParam);
        }
    }

    HWND m_window = nullptr;
};

} // namespace ReferenceRenderer
