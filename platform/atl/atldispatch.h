// ATL's IDispatch over the type information of a registered library. Part of atlcom.h: include
// that. Tests: tests/platform/atl/dispatch_test.cpp.
#pragma once

#include "platform/atl/atlbase.h"
#include "support/win32/slim_lock.h"

#include <windows.h>

#include <oaidl.h>

// The type information of one dual interface, looked up when it is first needed and kept until the
// module's Term. Instances are static and constant-initialised, one for each interface. Any thread.
class CComTypeInfoHolder
{
public:
    constexpr CComTypeInfoHolder(const IID* piid, const GUID* plibid, WORD major,
                                 WORD minor) noexcept
        : m_piid(piid), m_plibid(plibid), m_wMajor(major), m_wMinor(minor)
    {
    }
    CComTypeInfoHolder(const CComTypeInfoHolder&) = delete;
    CComTypeInfoHolder& operator=(const CComTypeInfoHolder&) = delete;

    // Hands out a reference. Failures are the loader's own; the next call tries again.
    HRESULT GetTI(LCID lcid, ITypeInfo** ppInfo) noexcept;

    HRESULT GetTypeInfo(UINT itinfo, LCID lcid, ITypeInfo** pptinfo) noexcept;
    HRESULT GetIDsOfNames(LPOLESTR* rgszNames, UINT cNames, LCID lcid, DISPID* rgdispid) noexcept;
    HRESULT Invoke(IDispatch* p, DISPID dispidMember, LCID lcid, WORD wFlags,
                   DISPPARAMS* pdispparams, VARIANT* pvarResult, EXCEPINFO* pexcepinfo,
                   UINT* puArgErr) noexcept;

private:
    HRESULT Load(LCID lcid) noexcept; // caller holds m_lock
    static void WINAPI Cleanup(DWORD_PTR dw) noexcept;

    const IID* m_piid;
    const GUID* m_plibid;
    WORD m_wMajor;
    WORD m_wMinor;
    SlimLock m_lock;
    ITypeInfo* m_pInfo = nullptr; // owned, guarded by m_lock
};

// IDispatch for the dual interface T, which is `piid` in version `wMajor.wMinor` of the library
// `plibid`. Every call needs that library registered but for GetTypeInfoCount.
template <typename T, const IID* piid, const GUID* plibid, WORD wMajor = 1, WORD wMinor = 0>
class IDispatchImpl : public T
{
public:
    // IDispatch
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* pctinfo) noexcept override
    {
        if (pctinfo == nullptr)
        {
            return E_POINTER;
        }
        *pctinfo = 1;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT itinfo, LCID lcid,
                                          ITypeInfo** pptinfo) noexcept override
    {
        return _tih.GetTypeInfo(itinfo, lcid, pptinfo);
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* rgszNames, UINT cNames, LCID lcid,
                                            DISPID* rgdispid) noexcept override
    {
        return _tih.GetIDsOfNames(rgszNames, cNames, lcid, rgdispid);
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID dispidMember, REFIID, LCID lcid, WORD wFlags,
                                     DISPPARAMS* pdispparams, VARIANT* pvarResult,
                                     EXCEPINFO* pexcepinfo, UINT* puArgErr) noexcept override
    {
        return _tih.Invoke(this, dispidMember, lcid, wFlags, pdispparams, pvarResult, pexcepinfo,
                           puArgErr);
    }

protected:
    ~IDispatchImpl() = default;

    static inline constinit CComTypeInfoHolder _tih{piid, plibid, wMajor, wMinor};
};
