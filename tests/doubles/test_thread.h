// A thread for tests, joined at its end: the thread model for Windows has no std::thread.
#pragma once

#ifndef _WIN32
#include <thread>

using TestThread = std::jthread; // for tests of pure logic, which need no Join with a time
#else
#include <windows.h>

#include <functional>
#include <stdexcept>
#include <utility>

class TestThread
{
public:
    explicit TestThread(std::function<void()> work)
        : m_work(std::move(work)), m_handle(::CreateThread(nullptr, 0, Run, this, 0, nullptr))
    {
        if (m_handle == nullptr)
        {
            throw std::runtime_error("cannot start a thread");
        }
    }
    ~TestThread()
    {
        Join(INFINITE);
        ::CloseHandle(m_handle);
    }
    TestThread(const TestThread&) = delete;
    TestThread& operator=(const TestThread&) = delete;

    // True when it ended within that time.
    bool Join(DWORD timeOutMs)
    {
        return ::WaitForSingleObject(m_handle, timeOutMs) == WAIT_OBJECT_0;
    }

private:
    static DWORD WINAPI Run(void* self)
    {
        static_cast<TestThread*>(self)->m_work();
        return 0;
    }

    std::function<void()> m_work;
    HANDLE m_handle;
};
#endif
