// Tells whether somebody holds a lock, whichever thread that is. Needs no second thread to be fast
// or slow, so a lock that is missing shows every time.
#pragma once

#include "platform/atl/atlbase.h"
#include "tests/doubles/test_thread.h"

// Whether another thread would have to wait for the lock now.
inline bool IsHeld(CComCriticalSection& lock)
{
    bool free = false;
    TestThread other([&] {
        free = ::TryEnterCriticalSection(&lock.m_sec) != FALSE;
        if (free)
        {
            lock.unlock();
        }
    });
    other.Join(INFINITE);
    return !free;
}
