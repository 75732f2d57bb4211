#include "platform/atl/atlroot.h"

HRESULT WINAPI CComObjectRootBase::InternalQueryInterface(void* pThis,
                                                          const _ATL_INTMAP_ENTRY* pEntries,
                                                          REFIID iid, void** ppvObject) noexcept
{
    if (ppvObject == nullptr)
    {
        return E_POINTER;
    }
    *ppvObject = nullptr;
    const bool wantsIdentity = ::IsEqualIID(iid, IID_IUnknown) != FALSE;
    for (const _ATL_INTMAP_ENTRY* entry = pEntries;
         entry->pCast != nullptr || entry->pFunc != nullptr; ++entry)
    {
        const bool blind = entry->piid == nullptr;
        if (!wantsIdentity && !blind && !::IsEqualIID(*entry->piid, iid))
        {
            continue;
        }
        if (entry->pCast != nullptr)
        {
            IUnknown* const found = entry->pCast(pThis);
            found->AddRef();
            *ppvObject = found;
            return S_OK;
        }
        const HRESULT hr = entry->pFunc(pThis, iid, ppvObject, entry->dw);
        if (hr == S_OK)
        {
            return S_OK;
        }
        *ppvObject = nullptr;
        if (!blind && FAILED(hr))
        {
            return hr;
        }
    }
    return E_NOINTERFACE;
}
