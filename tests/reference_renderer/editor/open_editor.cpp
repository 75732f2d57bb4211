#include "tests/reference_renderer/editor/open_editor.h"

#include "support/win32/utf8.h"

#include <shlobj.h>

#include <array>
#include <cstring>
#include <stdexcept>

namespace ReferenceRenderer
{

namespace
{

constexpr DWORD kGlanceMs = 5;

std::wstring TextOf(HWND window)
{
    std::array<wchar_t, 1024> text{};
    ::SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    return text.data();
}

// Messages to the editor's window that TakenByLoop acts on when the loop gets to them.
constexpr UINT kHoldKey = WM_APP + 100; // wParam is down from then on, or up where lParam is 0
constexpr UINT kSignal = WM_APP + 101;  // wParam is an event

// In the wParam of a mouse message, that a test has made it.
constexpr WPARAM kMade = 0x4000;

LRESULT CALLBACK TakenByLoop(int code, WPARAM removed, LPARAM lParam) noexcept
{
    static thread_local std::array<BYTE, 256> held{};
    auto& message = *reinterpret_cast<MSG*>(lParam);
    const bool taken = code == HC_ACTION && removed == PM_REMOVE;
    if (taken && message.message == kHoldKey)
    {
        held[message.wParam] = message.lParam != 0 ? 0x80 : 0;
        ::SetKeyboardState(held.data()); // of the thread that takes the message
    }
    else if (taken && message.message == WM_KEYDOWN)
    {
        ::SetKeyboardState(held.data()); // the display may have told it of its own keys meanwhile
    }
    else if (taken && message.message == WM_MOUSEMOVE && (message.wParam & kMade) == 0)
    {
        message.message = WM_NULL; // the display's own pointer would move what a test holds
    }
    else if (taken && message.message == kSignal)
    {
        ::SetEvent(reinterpret_cast<HANDLE>(message.wParam));
    }
    return ::CallNextHookEx(nullptr, code, removed, lParam);
}

} // namespace

BOOL CALLBACK FindEditor(HWND window, LPARAM found) noexcept
{
    std::array<wchar_t, 64> name{};
    ::GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    if (std::wstring(name.data()) != EDITOR_CLASS || !::IsWindowVisible(window))
    {
        return TRUE;
    }
    *reinterpret_cast<HWND*>(found) = window;
    return FALSE;
}

bool Eventually(const std::function<bool()>& condition)
{
    const ULONGLONG deadline = ::GetTickCount64() + kDeadlineMs;
    while (!condition())
    {
        if (::GetTickCount64() > deadline)
        {
            return false;
        }
        ::SleepEx(kGlanceMs, FALSE);
    }
    return true;
}

ShownEditor::ShownEditor(DWORD thread, const std::function<bool()>& gaveUp)
{
    WaitFor(thread, gaveUp);
}

void ShownEditor::WaitFor(DWORD thread, const std::function<bool()>& gaveUp)
{
    m_threadId = thread;
    Eventually([&] {
        ::EnumThreadWindows(m_threadId, FindEditor, reinterpret_cast<LPARAM>(&m_window));
        return m_window != nullptr || gaveUp();
    });
    if (m_window != nullptr)
    {
        m_hook = ::SetWindowsHookExW(WH_GETMESSAGE, TakenByLoop, nullptr, m_threadId);
        // Until its loop runs: it answers once everything that opening does is done.
        ::SendMessageW(m_window, WM_NULL, 0, 0);
    }
}

ShownEditor::~ShownEditor()
{
    if (m_hook != nullptr)
    {
        ::UnhookWindowsHookEx(m_hook);
    }
}

OpenEditor::OpenEditor(std::function<std::int32_t()> open, std::optional<View> view)
    : m_open(std::move(open))
{
    DWORD thread = 0;
    m_thread = ::CreateThread(nullptr, 0, Run, this, 0, &thread);
    if (m_thread == nullptr)
    {
        throw std::runtime_error("no thread for the editor");
    }
    WaitFor(thread, [&] { return ::WaitForSingleObject(m_thread, 0) == WAIT_OBJECT_0; });
    if (view)
    {
        ShowView(*view);
    }
}

OpenEditor::~OpenEditor()
{
    if (::WaitForSingleObject(m_thread, 0) != WAIT_OBJECT_0)
    {
        ::PostMessageW(Window(), WM_CLOSE, 0, 0);
        ::WaitForSingleObject(m_thread, INFINITE); // the test's own deadline ends it
    }
    ::CloseHandle(m_thread);
}

DWORD WINAPI OpenEditor::Run(void* self) noexcept
{
    auto* const editor = static_cast<OpenEditor*>(self);
    editor->m_result = editor->m_open();
    return 0;
}

std::int32_t OpenEditor::Result()
{
    return ::WaitForSingleObject(m_thread, kDeadlineMs) == WAIT_OBJECT_0 ? m_result : kStillOpen;
}

std::int32_t OpenEditor::CloseWith(int button)
{
    Click(button);
    return Result();
}

HWND ShownEditor::ChildOf(int first, Control control) const
{
    return Child(first + static_cast<int>(IndexOf(control)));
}

HWND ShownEditor::Focus() const
{
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    return ::GetGUIThreadInfo(m_threadId, &info) ? info.hwndFocus : nullptr;
}

RECT ShownEditor::AreaOf(HWND child) const
{
    RECT area{};
    ::GetWindowRect(child, &area);
    ::MapWindowPoints(nullptr, m_window, reinterpret_cast<POINT*>(&area), 2);
    return area;
}

std::string ShownEditor::NumberText(Control control) const
{
    return Utf8(TextOf(Number(control)));
}

std::wstring ShownEditor::Status() const
{
    return TextOf(Child(IDC_STATUS));
}

void ShownEditor::Click(int id) const
{
    ::SendMessageW(Child(id), BM_CLICK, 0, 0);
}

void ShownEditor::ShowView(View view) const
{
    Click(IDC_VIEW + static_cast<int>(view));
}

void ShownEditor::ShowViewOf(Control control) const
{
    for (const View view : {View::Light, View::Wheels, View::Cdl})
    {
        if (!::IsWindowVisible(Slider(control)) && IsIn(FactsOf(control).step, view))
        {
            ShowView(view);
        }
    }
}

void ShownEditor::SlideKey(Control control, WPARAM key) const
{
    ShowViewOf(control);
    ::SendMessageW(Slider(control), WM_KEYDOWN, key, 0);
}

void ShownEditor::Type(Control control, const std::wstring& text) const
{
    ShowViewOf(control);
    const HWND number = Number(control);
    ::SendMessageW(number, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(2, 2)); // takes the focus
    ::SendMessageW(number, WM_LBUTTONUP, 0, MAKELPARAM(2, 2));
    ::SendMessageW(number, EM_SETSEL, 0, -1);
    ::SendMessageW(number, WM_CLEAR, 0, 0);
    for (const wchar_t character : text)
    {
        ::SendMessageW(number, WM_CHAR, character, 1);
    }
}

void ShownEditor::Drop(const std::wstring& path) const
{
    const std::size_t bytes = sizeof(DROPFILES) + (path.size() + 2) * sizeof(wchar_t);
    const HGLOBAL memory = ::GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, bytes);
    auto* const drop = static_cast<DROPFILES*>(::GlobalLock(memory));
    drop->pFiles = sizeof(DROPFILES);
    drop->fWide = TRUE;
    std::memcpy(drop + 1, path.data(), path.size() * sizeof(wchar_t));
    ::GlobalUnlock(memory);
    ::SendMessageW(m_window, WM_DROPFILES, reinterpret_cast<WPARAM>(memory), 0);
}

void ShownEditor::Resize(int width, int height) const
{
    ::SetWindowPos(m_window, nullptr, 0, 0, width, height,
                   SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOMOVE);
    ::SendMessageW(m_window, WM_NULL, 0, 0);
}

void ShownEditor::PostKey(WPARAM key) const
{
    ::PostMessageW(Focus(), WM_KEYDOWN, key, 0);
}

void ShownEditor::Settle() const
{
    const HANDLE taken = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    ::PostMessageW(m_window, kSignal, reinterpret_cast<WPARAM>(taken), 0);
    const bool settled = ::WaitForSingleObject(taken, kDeadlineMs) == WAIT_OBJECT_0;
    ::CloseHandle(taken);
    if (!settled)
    {
        throw std::runtime_error("the editor's loop takes no messages");
    }
}

void ShownEditor::PressKey(WPARAM key, std::initializer_list<WPARAM> held) const
{
    for (const WPARAM other : held)
    {
        ::PostMessageW(m_window, kHoldKey, other, 1);
    }
    PostKey(key);
    for (const WPARAM other : held)
    {
        ::PostMessageW(m_window, kHoldKey, other, 0);
    }
    Settle();
}

void ShownEditor::Mouse(HWND child, UINT message, POINT point, WPARAM keys) const
{
    ::PostMessageW(child, message, keys | (message == WM_MOUSEMOVE ? kMade : 0),
                   MAKELPARAM(point.x, point.y));
    Settle();
}

void ShownEditor::ClickInto(HWND child) const
{
    RECT client{};
    ::GetClientRect(child, &client);
    const POINT middle{client.right / 2, client.bottom / 2};
    Mouse(child, WM_LBUTTONDOWN, middle, MK_LBUTTON);
    Mouse(child, WM_MOUSEMOVE, middle, MK_LBUTTON); // no hand holds still
    Mouse(child, WM_LBUTTONUP, middle);
}

void ShownEditor::TypeLetters(const std::wstring& text) const
{
    for (const wchar_t letter : text)
    {
        ::PostMessageW(Focus(), WM_CHAR, letter, 1);
    }
    Settle();
}

} // namespace ReferenceRenderer
