// GoogleTest's notification on a Windows event: its own wants std::condition_variable, which the
// win32 thread model of GCC 12 lacks. Put before every file that uses GoogleTest; drop with a
// toolchain that has the class.
#pragma once

#ifdef __cplusplus

#include <windows.h>

namespace testing::internal
{

class Notification
{
public:
    Notification() : m_event(::CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}
    ~Notification() { ::CloseHandle(m_event); }
    Notification(const Notification&) = delete;
    Notification& operator=(const Notification&) = delete;

    void Notify() { ::SetEvent(m_event); }
    void WaitForNotification() { ::WaitForSingleObject(m_event, INFINITE); }

private:
    HANDLE m_event;
};

} // namespace testing::internal

#endif
