#include "platform/atl/atldispatch.h"

#include <oleauto.h>

#include <mutex>
#include <utility>

HRESULT CComTypeInfoHolder::Load(LCID lcid) noexcept
{
    m_lock.AssertHeld();
    CComPtr<ITypeLib> library;
    HRESULT hr = ::LoadRegTypeLib(*m_plibid, m_wMajor, m_wMinor, lcid, &library);
    if (FAILED(hr))
    {
        return hr;
    }
    CComPtr<ITypeInfo> info;
    hr = library->GetTypeInfoOfGuid(*m_piid, &info);
    if (FAILED(hr))
    {
        return hr;
    }
    if (_pModule != nullptr)
    {
        hr = _pModule->AddTermFunc(&Cleanup, reinterpret_cast<DWORD_PTR>(this));
        if (FAILED(hr))
        {
            return hr;
        }
    }
    m_pInfo = info.Detach();
    return S_OK;
}

void WINAPI CComTypeInfoHolder::Cleanup(DWORD_PTR dw) noexcept
{
    // NOLINTNEXTLINE(performance-no-int-to-ptr): a term function's argument is an integer
    auto* const self = reinterpret_cast<CComTypeInfoHolder*>(dw);
    CComPtr<ITypeInfo> old; // released outside the lock
    const std::lock_guard guard(self->m_lock);
    old.Attach(std::exchange(self->m_pInfo, nullptr));
}

HRESULT CComTypeInfoHolder::GetTI(LCID lcid, ITypeInfo** ppInfo) noexcept
{
    const std::lock_guard guard(m_lock);
    const HRESULT hr = m_pInfo == nullptr ? Load(lcid) : S_OK;
    if (SUCCEEDED(hr))
    {
        m_pInfo->AddRef();
        *ppInfo = m_pInfo;
    }
    return hr;
}

HRESULT CComTypeInfoHolder::GetTypeInfo(UINT itinfo, LCID lcid, ITypeInfo** pptinfo) noexcept
{
    if (pptinfo == nullptr)
    {
        return E_POINTER;
    }
    *pptinfo = nullptr;
    return itinfo == 0 ? GetTI(lcid, pptinfo) : DISP_E_BADINDEX;
}

HRESULT CComTypeInfoHolder::GetIDsOfNames(LPOLESTR* rgszNames, UINT cNames, LCID lcid,
                                          DISPID* rgdispid) noexcept
{
    CComPtr<ITypeInfo> info;
    const HRESULT hr = GetTI(lcid, &info);
    return FAILED(hr) ? hr : info->GetIDsOfNames(rgszNames, cNames, rgdispid);
}

HRESULT CComTypeInfoHolder::Invoke(IDispatch* p, DISPID dispidMember, LCID lcid, WORD wFlags,
                                   DISPPARAMS* pdispparams, VARIANT* pvarResult,
                                   EXCEPINFO* pexcepinfo, UINT* puArgErr) noexcept
{
    CComPtr<ITypeInfo> info;
    const HRESULT hr = GetTI(lcid, &info);
    if (FAILED(hr))
    {
        return hr;
    }
    // Arguments may be objects of the caller's, which are asked for their value.
    return ForeignResult([&] {
        return info->Invoke(p, dispidMember, wFlags, pdispparams, pvarResult, pexcepinfo, puArgErr);
    });
}
