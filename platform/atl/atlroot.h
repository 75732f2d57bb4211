// ATL's object root and interface maps. Part of atlcom.h: include that.
// Tests: tests/platform/atl/object_test.cpp.
#pragma once

#include "platform/atl/atlbase.h"

#include <windows.h>

#include <objbase.h>

#include <climits>

// Answers the entry's interface. S_OK with *ppv set ends the search; any other success goes on with
// the next entry.
using _ATL_CREATORARGFUNC = HRESULT WINAPI(void* pv, REFIID riid, void** ppv, DWORD_PTR dw);
// The interface of the object `pv` that an entry stands for, without a reference.
using _ATL_CASTFUNC = IUnknown* WINAPI(void* pv);

// One line of an interface map. Instead of an offset into the object it holds the cast itself, so
// that the compiler knows every conversion.
struct _ATL_INTMAP_ENTRY
{
    const IID* piid;            // null: asked for every interface
    _ATL_CASTFUNC* pCast;       // a plain interface, or null
    _ATL_CREATORARGFUNC* pFunc; // anything else; both null end the map
    DWORD_PTR dw;               // handed to pFunc
};

class CComObjectRootBase
{
public:
    CComObjectRootBase() noexcept : m_pOuterUnknown(nullptr) { m_dwRef = 0; }
    CComObjectRootBase(const CComObjectRootBase&) = delete;
    CComObjectRootBase& operator=(const CComObjectRootBase&) = delete;

    // A class that hides these is called through its own: once after construction, where a failure
    // destroys the object and becomes the creation's result, and once before destruction. Neither
    // may let an exception out. References taken and given back inside do not destroy the object.
    HRESULT FinalConstruct() noexcept { return S_OK; }
    void FinalRelease() noexcept {}
    // What the creator was given, for class objects.
    void SetVoid(void*) noexcept {}

    // The map search behind every QueryInterface: E_POINTER for a null place, E_NOINTERFACE and a
    // null answer for an interface that no entry gives. IUnknown is always the first entry's.
    static HRESULT WINAPI InternalQueryInterface(void* pThis, const _ATL_INTMAP_ENTRY* pEntries,
                                                 REFIID iid, void** ppvObject) noexcept;

    // Of an object inside an aggregate. The outer may be anybody's: what it throws ends here.
    ULONG OuterAddRef() noexcept
    {
        ULONG count = 0;
        TryForeign([&] { return count = m_pOuterUnknown->AddRef(); });
        return count;
    }
    ULONG OuterRelease() noexcept
    {
        ULONG count = 0;
        TryForeign([&] { return count = m_pOuterUnknown->Release(); });
        return count;
    }
    HRESULT OuterQueryInterface(REFIID iid, void** ppvObject) noexcept
    {
        return ForeignResult([&] { return m_pOuterUnknown->QueryInterface(iid, ppvObject); });
    }

    // Set while an object is destroyed, so that references taken meanwhile cannot destroy it again.
    static constexpr LONG kBeingDestroyed = -(LONG_MAX / 2);

    union
    {
        LONG m_dwRef;              // of an object that counts for itself
        IUnknown* m_pOuterUnknown; // of a contained one; borrowed: the outer lives longer
    };

protected:
    ~CComObjectRootBase() = default;
};

template <typename ThreadModel>
class CComObjectRootEx;

// Holds the lock of an object for as long as it lives.
template <typename ThreadModel>
class CComObjectLockT
{
public:
    explicit CComObjectLockT(CComObjectRootEx<ThreadModel>* object) noexcept : m_object(object)
    {
        m_object->Lock();
    }
    ~CComObjectLockT() { m_object->Unlock(); }
    CComObjectLockT(const CComObjectLockT&) = delete;
    CComObjectLockT& operator=(const CComObjectLockT&) = delete;

private:
    CComObjectRootEx<ThreadModel>* m_object;
};

// Reference count, starting at 0, and the object lock, which is recursive.
template <typename ThreadModel>
class CComObjectRootEx : public CComObjectRootBase
{
public:
    using _ThreadModel = ThreadModel;
    using _CritSec = typename ThreadModel::AutoCriticalSection;
    using ObjectLock = CComObjectLockT<ThreadModel>;

    ULONG InternalAddRef() noexcept { return ThreadModel::Increment(&m_dwRef); }
    ULONG InternalRelease() noexcept { return ThreadModel::Decrement(&m_dwRef); }

    // Around FinalConstruct.
    void InternalFinalConstructAddRef() noexcept { InternalAddRef(); }
    void InternalFinalConstructRelease() noexcept { InternalRelease(); }

    void Lock() noexcept { m_critsec.Lock(); }
    void Unlock() noexcept { m_critsec.Unlock(); }

protected:
    ~CComObjectRootEx() = default;

    bool IsLocked() const noexcept { return m_critsec.IsHeld(); } // by the calling thread

private:
    _CritSec m_critsec;
};

// The macros are laid out by hand: they hold halves of functions.
// clang-format off

// The unknown that an aggregate of this object gets as its outer: the object's own outer, or itself.
#define DECLARE_GET_CONTROLLING_UNKNOWN() \
    public: virtual IUnknown* GetControllingUnknown() noexcept { return GetUnknown(); }

// The map also brings IUnknown's methods into the class's own scope, where several interfaces would
// make them ambiguous. Its first entry must be a plain one: it is the object's identity.
#define BEGIN_COM_MAP(x) \
public: \
    using _ComMapClass = x; \
    IUnknown* GetUnknown() noexcept { return _GetEntries()[0].pCast(this); } \
    HRESULT _InternalQueryInterface(REFIID iid, void** ppvObject) noexcept \
    { \
        return CComObjectRootBase::InternalQueryInterface(this, _GetEntries(), iid, ppvObject); \
    } \
    static const _ATL_INTMAP_ENTRY* _GetEntries() noexcept \
    { \
        static const _ATL_INTMAP_ENTRY entries[] = {

#define END_COM_MAP() \
            {nullptr, nullptr, nullptr, 0}}; \
        return entries; \
    } \
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppvObject) override = 0; \
    ULONG STDMETHODCALLTYPE AddRef() override = 0; \
    ULONG STDMETHODCALLTYPE Release() override = 0;

#define COM_INTERFACE_ENTRY_IID(iid, x) \
    {&iid, \
     [](void* pv) -> IUnknown* { return static_cast<x*>(static_cast<_ComMapClass*>(pv)); }, \
     nullptr, 0},
#define COM_INTERFACE_ENTRY(x) COM_INTERFACE_ENTRY_IID(__uuidof(x), x)

// Whatever the map of a base class gives.
#define COM_INTERFACE_ENTRY_CHAIN(base) \
    {nullptr, nullptr, \
     [](void* pv, REFIID riid, void** ppv, DWORD_PTR) -> HRESULT { \
         return static_cast<_ComMapClass*>(pv)->base::_InternalQueryInterface(riid, ppv); \
     }, \
     0},

// From the inner unknown `punk`, a member; while it is null the object lacks the interface. Of an
// object inside an aggregate it adds its reference to the outer, which may be anybody's.
#define COM_INTERFACE_ENTRY_AGGREGATE(iid, punk) \
    {&iid, nullptr, \
     [](void* pv, REFIID riid, void** ppv, DWORD_PTR) -> HRESULT { \
         IUnknown* const inner = static_cast<_ComMapClass*>(pv)->punk; \
         return inner == nullptr \
                    ? E_NOINTERFACE \
                    : ForeignResult([&] { return inner->QueryInterface(riid, ppv); }); \
     }, \
     0},
// clang-format on
