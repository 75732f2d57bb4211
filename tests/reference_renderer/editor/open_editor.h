// An editor that is open, driven from the test's thread.
#pragma once

#include "reference_renderer/editor/editor_control.h"
#include "reference_renderer/editor/resource.h"
#include "tests/doubles/deadline.h"

#include <windows.h>

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>

namespace ReferenceRenderer
{

inline constexpr std::int32_t kStillOpen = -1000; // no result of any editor

// Waits until `condition` holds; false when it does not before the deadline. Looks again every few
// milliseconds: windows have no event to wait for.
bool Eventually(const std::function<bool()>& condition);

// For EnumThreadWindows: puts the editor that can be seen into the HWND that `found` points to.
BOOL CALLBACK FindEditor(HWND window, LPARAM found) noexcept;

// An editor on the display, driven from another thread than its own.
class ShownEditor
{
public:
    // Waits for the editor of a thread. Window() is null when it does not come before the deadline,
    // or when `gaveUp` says that it will not.
    explicit ShownEditor(
        DWORD thread, const std::function<bool()>& gaveUp = [] { return false; });
    ~ShownEditor();
    ShownEditor(const ShownEditor&) = delete;
    ShownEditor& operator=(const ShownEditor&) = delete;

    DWORD Thread() const { return m_threadId; }
    HWND Window() const { return m_window; }
    HWND Child(int id) const { return ::GetDlgItem(m_window, id); }
    HWND Slider(Control control) const { return ChildOf(IDC_SLIDER, control); }
    HWND Number(Control control) const { return ChildOf(IDC_NUMBER, control); }
    HWND Pad(std::size_t index) const { return Child(IDC_PAD + static_cast<int>(index)); }
    HWND Reset(Control control) const { return ChildOf(IDC_RESET, control); }
    HWND Focus() const;
    RECT AreaOf(HWND child) const; // in client coordinates of the window

    std::string NumberText(Control control) const;
    std::wstring Status() const;

    // All return after the window has done it. Controls are used in a view that has them.
    void Click(int id) const;
    void ShowView(View view) const;
    void SlideKey(Control control, WPARAM key) const;
    void Type(Control control, const std::wstring& text) const; // replaces the number
    void Drop(const std::wstring& path) const;
    void Resize(int width, int height) const;

    // A key as the keyboard gives it: to the window that has the focus, by way of the editor's
    // message loop. Returns at once.
    void PostKey(WPARAM key) const;
    // The same while others are down; returns after the loop has taken it.
    void PressKey(WPARAM key, std::initializer_list<WPARAM> held) const;
    // Mouse messages and letters by way of the loop too; return after it has taken them. The
    // display's own pointer moves nothing meanwhile.
    void Mouse(HWND child, UINT message, POINT point, WPARAM keys = 0) const;
    void ClickInto(HWND child) const;                 // the left button at its middle
    void TypeLetters(const std::wstring& text) const; // to the window that has the focus

protected:
    ShownEditor() = default;
    void WaitFor(DWORD thread, const std::function<bool()>& gaveUp);

private:
    HWND ChildOf(int first, Control control) const;
    void ShowViewOf(Control control) const;
    // Until the loop has taken every message that was posted before.
    void Settle() const;

    HWND m_window = nullptr;
    DWORD m_threadId = 0;
    HHOOK m_hook = nullptr; // on what the editor's loop takes
};

// An editor that is open on a thread of its own.
class OpenEditor : public ShownEditor
{
public:
    // Calls `open`, which shows an editor, on a thread, and waits for the window. Without one,
    // Window() is null and the result tells why. Shows `view` from then on,
    // without one what the editor shows first.
    explicit OpenEditor(std::function<std::int32_t()> open, std::optional<View> view = View::Cdl);
    // Cancels what is still open.
    ~OpenEditor();

    // What the editor's call answered; kStillOpen when it does not answer before the deadline.
    std::int32_t Result();
    // Presses a button, then as Result.
    std::int32_t CloseWith(int button);

private:
    static DWORD WINAPI Run(void* self) noexcept;

    std::function<std::int32_t()> m_open;
    std::int32_t m_result = kStillOpen; // after m_thread ended
    HANDLE m_thread = nullptr;
};

} // namespace ReferenceRenderer
