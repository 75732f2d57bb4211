// ATL's critical sections. Stands in for the platform's atlcore.h; its text and module helpers are
// left out. Each class also answers to lock and unlock, so that std::lock_guard serves it.
#pragma once

#include <windows.h>

// A recursive critical section between Init and Term, which the owner calls.
class CComCriticalSection
{
public:
    CComCriticalSection() noexcept = default;
    ~CComCriticalSection() = default;
    CComCriticalSection(const CComCriticalSection&) = delete;
    CComCriticalSection& operator=(const CComCriticalSection&) = delete;

    HRESULT Init() noexcept
    {
        ::InitializeCriticalSection(&m_sec); // cannot fail on the systems that are supported
        return S_OK;
    }
    HRESULT Term() noexcept
    {
        ::DeleteCriticalSection(&m_sec);
        return S_OK;
    }

    HRESULT Lock() noexcept
    {
        ::EnterCriticalSection(&m_sec);
        return S_OK;
    }
    HRESULT Unlock() noexcept
    {
        ::LeaveCriticalSection(&m_sec);
        return S_OK;
    }
    void lock() noexcept { ::EnterCriticalSection(&m_sec); }
    void unlock() noexcept { ::LeaveCriticalSection(&m_sec); }

    CRITICAL_SECTION m_sec{};
};

// Usable for as long as it exists.
class CComAutoCriticalSection : public CComCriticalSection
{
public:
    CComAutoCriticalSection() noexcept { CComCriticalSection::Init(); }
    ~CComAutoCriticalSection() { CComCriticalSection::Term(); }
    CComAutoCriticalSection(const CComAutoCriticalSection&) = delete;
    CComAutoCriticalSection& operator=(const CComAutoCriticalSection&) = delete;

    // Done by the constructor and the destructor.
    HRESULT Init() = delete;
    HRESULT Term() = delete;
};

// Locks nothing: for the shell of an object whose parts bring a lock of their own.
class CComFakeCriticalSection
{
public:
    HRESULT Init() noexcept { return S_OK; }
    HRESULT Term() noexcept { return S_OK; }
    HRESULT Lock() noexcept { return S_OK; }
    HRESULT Unlock() noexcept { return S_OK; }
    void lock() noexcept {}
    void unlock() noexcept {}
};
