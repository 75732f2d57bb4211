#include "tests/propertypage/page_frame.h"
#include "tests/doubles/deadline.h"

#include <stdexcept>

namespace
{

constexpr ULONGLONG kStillMs = 100;

void SendMouse(DWORD flags)
{
    INPUT input{};
    input.type = INPUT_MOUSE;
    input.mi.dwFlags = flags;
    if (::SendInput(1, &input, sizeof input) != 1)
    {
        throw std::runtime_error("cannot move the mouse");
    }
}

} // namespace

PageFrame::PageFrame(Geometry::Extent size)
    : m_window(::CreateWindowExW(WS_EX_TOPMOST, L"STATIC", L"",
                                 WS_POPUP | WS_VISIBLE | WS_CLIPCHILDREN, 100, 100, size.width,
                                 size.height, nullptr, nullptr, nullptr, nullptr))
{
    if (m_window == nullptr)
    {
        throw std::runtime_error("no window; is there a display?");
    }
}

PageFrame::~PageFrame()
{
    ::DestroyWindow(m_window);
}

RECT PageFrame::PageRect() const
{
    RECT client{};
    ::GetClientRect(m_window, &client);
    return client;
}

void HandleMessages()
{
    MSG message;
    while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE)
    {
        ::TranslateMessage(&message);
        ::DispatchMessageW(&message);
    }
}

bool HandleMessagesUntil(const std::function<bool()>& condition)
{
    const ULONGLONG start = ::GetTickCount64();
    for (;;)
    {
        HandleMessages();
        if (condition())
        {
            return true;
        }
        const ULONGLONG passed = ::GetTickCount64() - start;
        if (passed >= kDeadlineMs)
        {
            return false;
        }
        ::MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(kDeadlineMs - passed),
                                    QS_ALLINPUT);
    }
}

// A late report of an earlier move, which may come from another process's window, can put the
// pointer back: it is moved once it has stood still in its place.
void MovePointer(HWND page, Geometry::Point point)
{
    POINT wanted{point.x, point.y};
    ::ClientToScreen(page, &wanted);
    const ULONGLONG start = ::GetTickCount64();
    ULONGLONG movedAt = 0;
    for (;;)
    {
        POINT pointer{};
        ::GetCursorPos(&pointer);
        const ULONGLONG now = ::GetTickCount64();
        if (movedAt == 0 || pointer.x != wanted.x || pointer.y != wanted.y)
        {
            if (now - start > kDeadlineMs || ::SetCursorPos(wanted.x, wanted.y) == FALSE)
            {
                throw std::runtime_error("cannot move the pointer");
            }
            movedAt = now;
        }
        else if (now - movedAt >= kStillMs)
        {
            return;
        }
        HandleMessages();
        ::MsgWaitForMultipleObjects(0, nullptr, FALSE, kStillMs / 4, QS_ALLINPUT);
    }
}

void PushButton()
{
    SendMouse(MOUSEEVENTF_LEFTDOWN);
}

void LiftButton()
{
    SendMouse(MOUSEEVENTF_LEFTUP);
}
