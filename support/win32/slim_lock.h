// The slim reader-writer lock of Windows under the names that std::lock_guard and std::shared_lock
// use. Constant-initialised and without a destructor: usable in any phase of a library's life.
// Builds with assertions know which thread holds it alone.
#pragma once

#include <windows.h>

#include <atomic>
#include <cassert>

class SlimLock
{
public:
    constexpr SlimLock() noexcept = default;
    SlimLock(const SlimLock&) = delete;
    SlimLock& operator=(const SlimLock&) = delete;

    void lock() noexcept
    {
        ::AcquireSRWLockExclusive(&m_lock);
#ifndef NDEBUG
        m_owner = ::GetCurrentThreadId();
#endif
    }
    void unlock() noexcept
    {
#ifndef NDEBUG
        m_owner = 0;
#endif
        ::ReleaseSRWLockExclusive(&m_lock);
    }
    void lock_shared() noexcept
    {
        ::AcquireSRWLockShared(&m_lock);
    }
    void unlock_shared() noexcept
    {
        ::ReleaseSRWLockShared(&m_lock);
    }

    // The calling thread holds it alone.
    void AssertHeld() const noexcept
    {
#ifndef NDEBUG
        assert(m_owner == ::GetCurrentThreadId());
#endif
    }

    SRWLOCK& Native() noexcept
    {
        return m_lock;
    } // for a condition variable

private:
    SRWLOCK m_lock = SRWLOCK_INIT;
#ifndef NDEBUG
    std::atomic<DWORD> m_owner = 0;
#endif
};
