// ATL's object shells (what an ATL class becomes when it is created) and creators. Part of
// atlcom.h: include that. Tests: tests/platform/atl/object_test.cpp.
#pragma once

#include "platform/atl/atlroot.h"

#include <cassert>
#include <memory>
#include <new>
#include <tuple>

// Counts in the module for as long as it lives. As the first base of an object it goes last, so
// that the module stays in memory until the object's destructor is done.
class CComModuleCount
{
protected:
    CComModuleCount() noexcept { AtlModuleLock(); }
    ~CComModuleCount() { AtlModuleUnlock(); }
    CComModuleCount(const CComModuleCount&) = delete;
    CComModuleCount& operator=(const CComModuleCount&) = delete;
};

// Makes a T1 without a reference, FinalConstruct included; null unless that succeeds. E_OUTOFMEMORY
// when there is no memory, E_UNEXPECTED for any other exception of the constructor.
template <typename T1>
HRESULT AtlConstructObject(void* pv, std::unique_ptr<T1>& object) noexcept
{
    try
    {
        object = std::make_unique<T1>(pv);
    }
    catch (const std::bad_alloc&)
    {
        return E_OUTOFMEMORY;
    }
    catch (...)
    {
        return E_UNEXPECTED;
    }
    object->SetVoid(pv);
    object->InternalFinalConstructAddRef();
    const HRESULT hr = object->FinalConstruct();
    object->InternalFinalConstructRelease();
    if (FAILED(hr))
    {
        object.reset();
    }
    return hr;
}

// Makes a T1 and queries it; when either fails, nothing is left. E_POINTER for a null place.
template <typename T1>
class CComCreator
{
public:
    static HRESULT WINAPI CreateInstance(void* pv, REFIID riid, void** ppv) noexcept
    {
        if (ppv == nullptr)
        {
            return E_POINTER;
        }
        *ppv = nullptr;
        std::unique_ptr<T1> object;
        HRESULT hr = AtlConstructObject(pv, object);
        if (SUCCEEDED(hr))
        {
            hr = object->QueryInterface(riid, ppv);
        }
        if (SUCCEEDED(hr))
        {
            std::ignore = object.release(); // the reference in *ppv owns it now
        }
        return hr;
    }
};

// T1 without an outer unknown, T2 with one.
template <typename T1, typename T2>
class CComCreator2
{
public:
    static HRESULT WINAPI CreateInstance(void* pv, REFIID riid, void** ppv) noexcept
    {
        return pv == nullptr ? T1::CreateInstance(nullptr, riid, ppv)
                             : T2::CreateInstance(pv, riid, ppv);
    }
};

// The part of an aggregate that does the work: its three methods are the outer's.
template <typename Base>
class CComContainedObject : public Base
{
public:
    explicit CComContainedObject(IUnknown* outer) { this->m_pOuterUnknown = outer; }
    virtual ~CComContainedObject() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppvObject) noexcept override
    {
        return this->OuterQueryInterface(iid, ppvObject);
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return this->OuterAddRef(); }
    ULONG STDMETHODCALLTYPE Release() noexcept override { return this->OuterRelease(); }

    // Overrides Base's where DECLARE_GET_CONTROLLING_UNKNOWN made it virtual: not every Base has
    // it, so it cannot say so.
#ifdef __clang__
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Winconsistent-missing-override"
#endif
    IUnknown* GetControllingUnknown() noexcept
    {
        return this->m_pOuterUnknown;
    }
#ifdef __clang__
#pragma clang diagnostic pop
#endif
};

// An object on its own: IUnknown is Base's.
template <typename Base>
class CComObject : private CComModuleCount, public Base
{
public:
    explicit CComObject(void* = nullptr) {}
    virtual ~CComObject()
    {
        this->m_dwRef = CComObjectRootBase::kBeingDestroyed;
        this->FinalRelease();
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppvObject) noexcept override
    {
        return this->_InternalQueryInterface(iid, ppvObject);
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return this->InternalAddRef(); }
    ULONG STDMETHODCALLTYPE Release() noexcept override
    {
        const ULONG left = this->InternalRelease();
        if (left == 0)
        {
            delete this;
        }
        return left;
    }

    // Gives an object without a reference: the caller takes the first one.
    static HRESULT WINAPI CreateInstance(CComObject** pp) noexcept
    {
        if (pp == nullptr)
        {
            return E_POINTER;
        }
        std::unique_ptr<CComObject> object;
        const HRESULT hr = AtlConstructObject(nullptr, object);
        *pp = object.release();
        return hr;
    }
};

// A class object that its module keeps: the module's own reference does not count in the module,
// the first one of anybody else does.
template <typename Base>
class CComObjectCached : public Base
{
public:
    explicit CComObjectCached(void* = nullptr) {}
    virtual ~CComObjectCached()
    {
        this->m_dwRef = CComObjectRootBase::kBeingDestroyed;
        this->FinalRelease();
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppvObject) noexcept override
    {
        return this->_InternalQueryInterface(iid, ppvObject);
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override
    {
        const ULONG count = this->InternalAddRef();
        if (count == 2)
        {
            AtlModuleLock();
        }
        return count;
    }
    ULONG STDMETHODCALLTYPE Release() noexcept override
    {
        const ULONG left = this->InternalRelease();
        if (left == 0)
        {
            delete this;
        }
        else if (left == 1)
        {
            AtlModuleUnlock();
        }
        return left;
    }
};

// One class for both cases: the contained object, and an inner unknown beside it. Without an outer
// the inner unknown is its own outer.
template <typename contained>
class CComPolyObject : private CComModuleCount,
                       public IUnknown,
                       public CComObjectRootEx<typename contained::_ThreadModel::ThreadModelNoCS>
{
    using _RootClass = CComObjectRootEx<typename contained::_ThreadModel::ThreadModelNoCS>;

public:
    explicit CComPolyObject(void* outer)
        : m_contained(outer != nullptr ? static_cast<IUnknown*>(outer) : this)
    {
    }
    virtual ~CComPolyObject()
    {
        this->m_dwRef = CComObjectRootBase::kBeingDestroyed;
        m_contained.FinalRelease();
    }

    HRESULT FinalConstruct() noexcept { return m_contained.FinalConstruct(); }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppvObject) noexcept override
    {
        if (ppvObject != nullptr && ::IsEqualIID(iid, IID_IUnknown))
        {
            AddRef();
            *ppvObject = static_cast<IUnknown*>(this);
            return S_OK;
        }
        return m_contained._InternalQueryInterface(iid, ppvObject);
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return this->InternalAddRef(); }
    ULONG STDMETHODCALLTYPE Release() noexcept override
    {
        const ULONG left = this->InternalRelease();
        if (left == 0)
        {
            delete this;
        }
        return left;
    }

    CComContainedObject<contained> m_contained;
};

// The aggregated case alone: there is always an outer.
template <typename contained>
class CComAggObject : public CComPolyObject<contained>
{
public:
    explicit CComAggObject(void* outer) : CComPolyObject<contained>(outer)
    {
        assert(outer != nullptr);
    }
};
