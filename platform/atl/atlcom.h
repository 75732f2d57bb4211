// Everything that an ATL class is written with; here, the class factory and what makes a class
// creatable. Stands in for the platform's atlcom.h; connection points, tear-offs, enumerators,
// error information and the registrar are left out. Tests:
// tests/platform/atl/class_factory_test.cpp.
#pragma once

#include "platform/atl/atldispatch.h"
#include "platform/atl/atlobject.h"
#include "platform/atl/atlroot.h"

// Makes objects by the creator that SetVoid gives it.
class CComClassFactory : public IClassFactory, public CComObjectRootEx<CComMultiThreadModel>
{
public:
    BEGIN_COM_MAP(CComClassFactory)
    COM_INTERFACE_ENTRY(IClassFactory)
    END_COM_MAP()

    void SetVoid(void* creator) noexcept
    {
        m_pfnCreateInstance = reinterpret_cast<_ATL_CREATORFUNC*>(creator);
    }

    // IClassFactory
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* pUnkOuter, REFIID riid,
                                             void** ppvObj) noexcept override
    {
        if (ppvObj == nullptr)
        {
            return E_POINTER;
        }
        *ppvObj = nullptr;
        if (pUnkOuter != nullptr && !::IsEqualIID(riid, IID_IUnknown))
        {
            return CLASS_E_NOAGGREGATION;
        }
        return m_pfnCreateInstance(pUnkOuter, riid, ppvObj);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL fLock) noexcept override
    {
        if (fLock != FALSE)
        {
            AtlModuleLock();
        }
        else
        {
            AtlModuleUnlock();
        }
        return S_OK;
    }

    _ATL_CREATORFUNC* m_pfnCreateInstance = nullptr;
};

// clang-format off
#define DECLARE_CLASSFACTORY_EX(cf) public: using _ClassFactoryCreatorClass = CComCreator<CComObjectCached<cf>>;
#define DECLARE_CLASSFACTORY() DECLARE_CLASSFACTORY_EX(CComClassFactory)
#define DECLARE_AGGREGATABLE(x) public: using _CreatorClass = CComCreator2<CComCreator<CComObject<x>>, CComCreator<CComAggObject<x>>>;
#define DECLARE_POLY_AGGREGATABLE(x) public: using _CreatorClass = CComCreator<CComPolyObject<x>>;
// clang-format on

// Makes T creatable as class `pclsid`: aggregatable, with the standard class factory, unless T says
// otherwise with one of the macros above.
template <typename T, const CLSID* pclsid = &CLSID_NULL>
class CComCoClass
{
public:
    DECLARE_CLASSFACTORY()
    DECLARE_AGGREGATABLE(T)

    static const CLSID& WINAPI GetObjectCLSID() noexcept { return *pclsid; }

protected:
    ~CComCoClass() = default;
};
