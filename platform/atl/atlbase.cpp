#include "platform/atl/atlbase.h"

#include <cassert>
#include <mutex>
#include <new>
#include <utility>

CComModule* _pModule = nullptr;

struct CComModule::TermFunction
{
    _ATL_TERMFUNC* function;
    DWORD_PTR argument;
    TermFunction* next;
};

CComModule::CComModule() noexcept
{
    assert(_pModule == nullptr);
    _pModule = this;
}

CComModule::~CComModule()
{
    Term();
    _pModule = nullptr;
}

HRESULT CComModule::Init(_ATL_OBJMAP_ENTRY* map, HINSTANCE instance, const GUID* libid) noexcept
{
    m_pObjMap = map;
    m_hInst = instance;
    m_plibid = libid;
    return S_OK;
}

void CComModule::Term() noexcept
{
    _ATL_OBJMAP_ENTRY* entry = nullptr;
    TermFunction* functions = nullptr;
    {
        const std::lock_guard guard(m_csObjMap);
        entry = std::exchange(m_pObjMap, nullptr);
        functions = std::exchange(m_termFunctions, nullptr);
    }
    // Outside the lock: what is called here takes locks of its own, under which others wait for
    // this one.
    for (; entry != nullptr && entry->pclsid != nullptr; ++entry)
    {
        IUnknown* const classObject = std::exchange(entry->pCF, nullptr);
        if (classObject != nullptr)
        {
            classObject->Release();
        }
    }
    while (functions != nullptr)
    {
        const TermFunction* const first = functions;
        functions = first->next;
        first->function(first->argument);
        delete first;
    }
}

HRESULT CComModule::GetClassObject(REFCLSID clsid, REFIID riid, void** ppv) noexcept
{
    if (ppv == nullptr)
    {
        return E_POINTER;
    }
    *ppv = nullptr;
    // Held across the query too: a class object that another thread is terminating is not used.
    const std::lock_guard guard(m_csObjMap);
    for (_ATL_OBJMAP_ENTRY* entry = m_pObjMap; entry != nullptr && entry->pclsid != nullptr;
         ++entry)
    {
        if (!::IsEqualCLSID(clsid, *entry->pclsid))
        {
            continue;
        }
        if (entry->pCF == nullptr)
        {
            const HRESULT made =
                entry->pfnGetClassObject(reinterpret_cast<void*>(entry->pfnCreateInstance),
                                         IID_IUnknown, reinterpret_cast<void**>(&entry->pCF));
            if (FAILED(made))
            {
                return made;
            }
        }
        return entry->pCF->QueryInterface(riid, ppv);
    }
    return CLASS_E_CLASSNOTAVAILABLE;
}

HRESULT CComModule::AddTermFunc(_ATL_TERMFUNC* function, DWORD_PTR dw) noexcept
{
    auto* const added = new (std::nothrow) TermFunction{function, dw, nullptr};
    if (added == nullptr)
    {
        return E_OUTOFMEMORY;
    }
    const std::lock_guard guard(m_csObjMap);
    added->next = m_termFunctions;
    m_termFunctions = added;
    return S_OK;
}
