// The slim reader-writer lock of Windows under the names that std::lock_guard and std::shared_lock
// use. Constant-initialised and without a destructor: usable in any phase of a library's life.
#pragma once

#include <windows.h>

class SlimLock
{
public:
    constexpr SlimLock() noexcept = default;
    SlimLock(const SlimLock&) = delete;
    SlimLock& operator=(const SlimLock&) = delete;

    void lock() noexcept { ::AcquireSRWLockExclusive(&m_lock); }
    void unlock() noexcept { ::ReleaseSRWLockExclusive(&m_lock); }
    void lock_shared() noexcept { ::AcquireSRWLockShared(&m_lock); }
    void unlock_shared() noexcept { ::ReleaseSRWLockShared(&m_lock); }

    SRWLOCK& Native() noexcept { return m_lock; } // for a condition variable

private:
    SRWLOCK m_lock = SRWLOCK_INIT;
};
