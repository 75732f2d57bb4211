// What the threads of a job's stages need of the system: a lock to wait at, and the thread itself.
#pragma once

#include "support/win32/com_scope.h"
#include "support/win32/slim_lock.h"

#include <functional>
#include <memory>
#include <tuple>
#include <utility>

#include <windows.h>

namespace GlazelHost
{

// The Gate of a FrameRing.
class StageGate
{
public:
    void lock() noexcept { m_lock.lock(); }
    void unlock() noexcept { m_lock.unlock(); }
    void Wait() noexcept { ::SleepConditionVariableSRW(&m_changed, &m_lock.Native(), INFINITE, 0); }
    void WakeAll() noexcept { ::WakeAllConditionVariable(&m_changed); }

private:
    SlimLock m_lock;
    CONDITION_VARIABLE m_changed = CONDITION_VARIABLE_INIT;
};

// Does not wait for its thread: whatever the work uses, the work itself has to keep alive.
class StageThread
{
public:
    StageThread() = default; // none
    ~StageThread()
    {
        if (m_handle != nullptr)
        {
            ::CloseHandle(m_handle);
        }
    }
    StageThread(const StageThread&) = delete;
    StageThread& operator=(const StageThread&) = delete;

    // With COM for its time. `work` throws nothing. False when the system has no thread to give.
    bool Start(std::function<void()> work)
    {
        auto kept = std::make_unique<std::function<void()>>(std::move(work));
        m_handle = ::CreateThread(nullptr, 0, Run, kept.get(), 0, nullptr);
        if (m_handle == nullptr)
        {
            return false;
        }
        std::ignore = kept.release(); // the thread has it
        return true;
    }
    bool IsStarted() const noexcept { return m_handle != nullptr; }
    bool EndsWithin(DWORD milliseconds) const noexcept
    {
        return ::WaitForSingleObject(m_handle, milliseconds) == WAIT_OBJECT_0;
    }
    // Reading or writing that the thread waits for fails, where the system knows how.
    void BreakOffWaiting() const noexcept { ::CancelSynchronousIo(m_handle); }

private:
    static DWORD WINAPI Run(void* work) noexcept
    {
        const std::unique_ptr<std::function<void()>> kept(
            static_cast<std::function<void()>*>(work));
        const ComScope com(false);
        (*kept)();
        return 0;
    }

    HANDLE m_handle = nullptr;
};

} // namespace GlazelHost
