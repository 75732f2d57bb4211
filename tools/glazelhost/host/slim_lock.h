// The system's slim lock for as long as this lives.
#pragma once

#include <windows.h>

class SlimLock
{
public:
    explicit SlimLock(SRWLOCK& lock) noexcept : m_lock(lock) { ::AcquireSRWLockExclusive(&m_lock); }
    ~SlimLock() { ::ReleaseSRWLockExclusive(&m_lock); }
    SlimLock(const SlimLock&) = delete;
    SlimLock& operator=(const SlimLock&) = delete;

private:
    SRWLOCK& m_lock;
};
