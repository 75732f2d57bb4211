// ATL's critical sections, thread models and its module. Stands in for the platform's atlcore.h and
// atlbase.h with the module of ATL 3; text helpers, registry keys and thread pools are left out.
// Each critical section also answers to lock and unlock, so that std::lock_guard serves it.
//
// A DLL defines one `CComModule _Module;`, whose constructor makes it known as _pModule. Objects
// count themselves there. Where no module exists (a program, a test of single classes) they count
// nowhere and everything else works.
// Tests: tests/platform/atl/module_test.cpp.
#pragma once

#include "platform/atl/atlcomcli.h"

#include <windows.h>

#include <objbase.h>

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
    // By the calling thread. For assertions.
    bool IsHeld() const noexcept
    {
        // NOLINTNEXTLINE(performance-no-int-to-ptr): the system keeps the thread's number there
        return m_sec.OwningThread == reinterpret_cast<HANDLE>(ULONG_PTR{::GetCurrentThreadId()});
    }

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

class CComMultiThreadModelNoCS
{
public:
    static ULONG Increment(LONG* count) noexcept
    {
        return static_cast<ULONG>(::InterlockedIncrement(count));
    }
    static ULONG Decrement(LONG* count) noexcept
    {
        return static_cast<ULONG>(::InterlockedDecrement(count));
    }
    using AutoCriticalSection = CComFakeCriticalSection;
    using CriticalSection = CComFakeCriticalSection;
    using ThreadModelNoCS = CComMultiThreadModelNoCS;
};

class CComMultiThreadModel
{
public:
    static ULONG Increment(LONG* count) noexcept
    {
        return CComMultiThreadModelNoCS::Increment(count);
    }
    static ULONG Decrement(LONG* count) noexcept
    {
        return CComMultiThreadModelNoCS::Decrement(count);
    }
    using AutoCriticalSection = CComAutoCriticalSection;
    using CriticalSection = CComCriticalSection;
    using ThreadModelNoCS = CComMultiThreadModelNoCS;
};

// Makes an object (or, for a class factory, remembers how to) and queries it for `riid`.
using _ATL_CREATORFUNC = HRESULT WINAPI(void* pv, REFIID riid, void** ppv);
// Called by Term with what AddTermFunc was given.
using _ATL_TERMFUNC = void WINAPI(DWORD_PTR dw);

// One creatable class.
struct _ATL_OBJMAP_ENTRY
{
    const CLSID* pclsid;                 // null ends the map
    _ATL_CREATORFUNC* pfnGetClassObject; // makes the class object, given the next field
    _ATL_CREATORFUNC* pfnCreateInstance; // makes an object, given the outer unknown
    IUnknown* pCF;                       // the class object once asked for; the module's
};

// clang-format off
#define BEGIN_OBJECT_MAP(x) static _ATL_OBJMAP_ENTRY x[] = {
#define OBJECT_ENTRY(clsid, theClass) {&clsid, &theClass::_ClassFactoryCreatorClass::CreateInstance, &theClass::_CreatorClass::CreateInstance, nullptr},
#define END_OBJECT_MAP() {nullptr, nullptr, nullptr, nullptr}};
// clang-format on

class CComModule
{
public:
    CComModule() noexcept; // becomes _pModule; there is one at a time
    ~CComModule();         // does what Term does if that is still to be done
    CComModule(const CComModule&) = delete;
    CComModule& operator=(const CComModule&) = delete;

    // `map` and `libid` (the type library that the module carries, may be null) must outlive the
    // module. Neither allocates nor waits: may be called at process attach.
    HRESULT Init(_ATL_OBJMAP_ENTRY* map, HINSTANCE instance, const GUID* libid = nullptr) noexcept;
    // Releases the class objects and runs what AddTermFunc collected, last added first, without
    // holding a lock. Once all other users are gone: when the module is unloaded or its process
    // ends.
    void Term() noexcept;

    // Every live object and every LockServer(TRUE) is one. Any thread.
    LONG Lock() noexcept { return ::InterlockedIncrement(&m_nLockCnt); }
    LONG Unlock() noexcept { return ::InterlockedDecrement(&m_nLockCnt); }
    LONG GetLockCount() const noexcept { return ::InterlockedOr(&m_nLockCnt, 0); }

    // The class object of `clsid`, made on the first request, the same one for every thread, and
    // kept until Term without counting as a lock. E_POINTER for a null place,
    // CLASS_E_CLASSNOTAVAILABLE for a class that is not in the map. Any thread.
    HRESULT GetClassObject(REFCLSID clsid, REFIID riid, void** ppv) noexcept;

    // E_OUTOFMEMORY when there is no room to remember it. May be called with another lock held: no
    // function runs under the module's own. Any thread.
    HRESULT AddTermFunc(_ATL_TERMFUNC* function, DWORD_PTR dw) noexcept;

    HINSTANCE GetModuleInstance() const noexcept { return m_hInst; }
    HINSTANCE GetResourceInstance() const noexcept { return m_hInst; }

    const GUID* m_plibid = nullptr; // borrowed

private:
    struct TermFunction;

    mutable LONG m_nLockCnt = 0;
    HINSTANCE m_hInst = nullptr;
    _ATL_OBJMAP_ENTRY* m_pObjMap = nullptr;  // borrowed; its pCF fields are guarded by m_csObjMap
    TermFunction* m_termFunctions = nullptr; // owned list, guarded by m_csObjMap
    CComAutoCriticalSection m_csObjMap;
};

// The module that objects count themselves in; null while there is none.
extern CComModule* _pModule;

// What objects do for as long as they live.
inline void AtlModuleLock() noexcept
{
    if (_pModule != nullptr)
    {
        _pModule->Lock();
    }
}
inline void AtlModuleUnlock() noexcept
{
    if (_pModule != nullptr)
    {
        _pModule->Unlock();
    }
}
