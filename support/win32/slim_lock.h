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
        m_owner.Set(true);
    }
    void unlock() noexcept
    {
        m_owner.Set(false);
        ::ReleaseSRWLockExclusive(&m_lock);
    }
    void lock_shared() noexcept { ::AcquireSRWLockShared(&m_lock); }
    void unlock_shared() noexcept { ::ReleaseSRWLockShared(&m_lock); }

    // The calling thread holds it alone. Not behind a wait for a condition variable.
    void AssertHeld() const noexcept { m_owner.AssertOwn(); }

    SRWLOCK& Native() noexcept { return m_lock; } // for a condition variable

private:
#ifdef NDEBUG
    struct Owner
    {
        void Set(bool) noexcept {}
        void AssertOwn() const noexcept {}
    };
#else
    struct Owner
    {
        void Set(bool held) noexcept { thread = held ? ::GetCurrentThreadId() : 0; }
        void AssertOwn() const noexcept { assert(thread == ::GetCurrentThreadId()); }
        std::atomic<DWORD> thread = 0;
    };
#endif

    SRWLOCK m_lock = SRWLOCK_INIT;
    Owner m_owner;
};
