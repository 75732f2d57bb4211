// ATL's ready-made persistence, property page list and object safety. Stands in for the parts of
// the platform's atlctl.h and atlcom.h that a control without a window uses. A property map holds
// pages only; data properties are left out. The page class stands in atlpropertypage.h.
// Tests: tests/platform/atl/control_test.cpp.
#pragma once

#include "platform/atl/atlcom.h"

#include <windows.h>

#include <objidl.h>
#include <objsafe.h>
#include <ocidl.h>

#include <array>
#include <atomic>

struct ATL_PROPMAP_ENTRY
{
    const CLSID* pclsidPropPage; // null ends the map
};

// clang-format off
#define BEGIN_PROPERTY_MAP(theClass) public: static const ATL_PROPMAP_ENTRY* GetPropertyMap() noexcept { static const ATL_PROPMAP_ENTRY entries[] = {
#define PROP_PAGE(clsid) {&clsid},
#define END_PROPERTY_MAP() {nullptr}}; return entries; }
// clang-format on

// GetClassID of every persistence interface.
inline HRESULT AtlGetClassID(REFCLSID clsid, CLSID* pClassID) noexcept
{
    if (pClassID == nullptr)
    {
        return E_POINTER;
    }
    *pClassID = clsid;
    return S_OK;
}

// Fills `pages` with the map's pages, each once, in memory of CoTaskMemAlloc.
HRESULT AtlGetPropertyPages(const ATL_PROPMAP_ENTRY* map, CAUUID* pages) noexcept;

template <typename T>
class ISpecifyPropertyPagesImpl : public ISpecifyPropertyPages
{
public:
    // ISpecifyPropertyPages
    HRESULT STDMETHODCALLTYPE GetPages(CAUUID* pPages) noexcept override
    {
        return AtlGetPropertyPages(T::GetPropertyMap(), pPages);
    }

protected:
    ~ISpecifyPropertyPagesImpl() = default;
};

// Opens and makes the one stream that an object keeps in its storage, "Contents".
HRESULT AtlOpenContents(IStorage* storage, IStream** contents) noexcept;
HRESULT AtlCreateContents(IStorage* storage, IStream** contents) noexcept;

// Saves what T's own IPersistStreamInit saves, in a stream of the storage. E_FAIL where T has no
// IPersistStreamInit.
template <typename T>
class IPersistStorageImpl : public IPersistStorage
{
public:
    // IPersist
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID* pClassID) noexcept override
    {
        return AtlGetClassID(T::GetObjectCLSID(), pClassID);
    }

    // IPersistStorage
    HRESULT STDMETHODCALLTYPE IsDirty() noexcept override
    {
        const CComPtr<IPersistStreamInit> own = Own();
        return own != nullptr ? own->IsDirty() : E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE InitNew(IStorage*) noexcept override
    {
        const CComPtr<IPersistStreamInit> own = Own();
        return own != nullptr ? own->InitNew() : E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE Load(IStorage* pStorage) noexcept override
    {
        if (pStorage == nullptr)
        {
            return E_INVALIDARG;
        }
        const CComPtr<IPersistStreamInit> own = Own();
        if (own == nullptr)
        {
            return E_FAIL;
        }
        CComPtr<IStream> contents;
        const HRESULT hr = AtlOpenContents(pStorage, &contents);
        return SUCCEEDED(hr) ? own->Load(contents) : hr;
    }
    HRESULT STDMETHODCALLTYPE Save(IStorage* pStorage, BOOL fSameAsLoad) noexcept override
    {
        if (pStorage == nullptr)
        {
            return E_INVALIDARG;
        }
        const CComPtr<IPersistStreamInit> own = Own();
        if (own == nullptr)
        {
            return E_FAIL;
        }
        CComPtr<IStream> contents;
        const HRESULT hr = AtlCreateContents(pStorage, &contents);
        return SUCCEEDED(hr) ? own->Save(contents, fSameAsLoad) : hr;
    }
    HRESULT STDMETHODCALLTYPE SaveCompleted(IStorage*) noexcept override { return S_OK; }
    HRESULT STDMETHODCALLTYPE HandsOffStorage() noexcept override { return S_OK; }

protected:
    ~IPersistStorageImpl() = default;

private:
    // From T's own map: inside an aggregate the outer's stream would be somebody else's data.
    CComPtr<IPersistStreamInit> Own() noexcept
    {
        CComPtr<IPersistStreamInit> own;
        static_cast<T*>(this)->_InternalQueryInterface(IID_IPersistStreamInit,
                                                       reinterpret_cast<void**>(&own));
        return own;
    }
};

// A property map of pages has no properties to read or write: Load and Save only check the bag.
// T has the member m_bRequiresSave.
template <typename T>
class IPersistPropertyBagImpl : public IPersistPropertyBag
{
public:
    // IPersist
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID* pClassID) noexcept override
    {
        return AtlGetClassID(T::GetObjectCLSID(), pClassID);
    }

    // IPersistPropertyBag
    HRESULT STDMETHODCALLTYPE InitNew() noexcept override
    {
        static_cast<T*>(this)->m_bRequiresSave = 1;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Load(IPropertyBag* pPropBag, IErrorLog*) noexcept override
    {
        return pPropBag != nullptr ? S_OK : E_POINTER;
    }
    HRESULT STDMETHODCALLTYPE Save(IPropertyBag* pPropBag, BOOL, BOOL) noexcept override
    {
        return pPropBag != nullptr ? S_OK : E_POINTER;
    }

protected:
    ~IPersistPropertyBagImpl() = default;
};

// Object safety by a table of interfaces, of which only INTERFACESAFE_FOR_UNTRUSTED_CALLER is
// supported: safe to be scripted or to load data from anywhere, in whichever sense the interface
// has it. Any thread.
template <typename T>
class IObjectSafetyImpl2 : public IObjectSafety
{
public:
    // IObjectSafety
    HRESULT STDMETHODCALLTYPE GetInterfaceSafetyOptions(REFIID riid, DWORD* pdwSupportedOptions,
                                                        DWORD* pdwEnabledOptions) noexcept override
    {
        if (pdwSupportedOptions == nullptr || pdwEnabledOptions == nullptr)
        {
            return E_POINTER;
        }
        *pdwSupportedOptions = 0;
        *pdwEnabledOptions = 0;
        const Row* const row = Find(riid);
        if (row == nullptr)
        {
            return E_NOINTERFACE;
        }
        *pdwSupportedOptions = INTERFACESAFE_FOR_UNTRUSTED_CALLER;
        *pdwEnabledOptions = row->enabled & INTERFACESAFE_FOR_UNTRUSTED_CALLER;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetInterfaceSafetyOptions(REFIID riid, DWORD dwOptionSetMask,
                                                        DWORD dwEnabledOptions) noexcept override
    {
        Row* const row = Find(riid);
        if (row == nullptr)
        {
            return E_NOINTERFACE;
        }
        row->enabled = dwEnabledOptions & dwOptionSetMask;
        return S_OK;
    }

protected:
    ~IObjectSafetyImpl2() = default;

private:
    struct Row
    {
        const IID* iid;
        std::atomic<DWORD> enabled{0};
    };

    Row* Find(REFIID riid) noexcept
    {
        for (Row& row : m_rows)
        {
            if (::IsEqualIID(riid, *row.iid))
            {
                return &row;
            }
        }
        return nullptr;
    }

    std::array<Row, 4> m_rows{Row{&IID_IDispatch}, Row{&IID_IPersistPropertyBag},
                              Row{&IID_IPersistStorage}, Row{&IID_IPersistStream}};
};
