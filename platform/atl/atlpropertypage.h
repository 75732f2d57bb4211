// ATL's property page. Stands in for the part of the platform's atlctl.h that a page uses; SetDirty
// and IPropertyPage2 are left out, and so is the help viewer: Help always answers E_FAIL.
// Tests: tests/propertypage/page_object_test.cpp, page_window_test.cpp.
#pragma once

#include "platform/atl/atlcom.h"
#include "platform/atl/atlwin.h"

#include <windows.h>

#include <ocidl.h>
#include <olectl.h>

#include <memory>
#include <new>
#include <utility>

// A string resource in memory of CoTaskMemAlloc, for the caller to free; null when there is no such
// string or no memory.
LPOLESTR AtlLoadTaskString(HINSTANCE module, UINT id) noexcept;

// T is also a CDialogImpl<T>, whose message map chains to this class's. Window thread.
template <typename T>
class IPropertyPageImpl : public IPropertyPage
{
public:
    // Lets the dialog manager step into the page's controls when it walks a frame's.
    BEGIN_MSG_MAP(IPropertyPageImpl)
    MESSAGE_HANDLER(WM_STYLECHANGING, OnStyleChange)
    END_MSG_MAP()

    // IPropertyPage
    HRESULT STDMETHODCALLTYPE SetPageSite(IPropertyPageSite* pPageSite) noexcept override
    {
        if (pPageSite != nullptr && m_pPageSite != nullptr)
        {
            return E_UNEXPECTED;
        }
        m_pPageSite = pPageSite;
        return S_OK;
    }
    // E_UNEXPECTED while the page is active.
    HRESULT STDMETHODCALLTYPE Activate(HWND hWndParent, LPCRECT pRect, BOOL) noexcept override
    {
        if (pRect == nullptr)
        {
            return E_POINTER;
        }
        T* const self = static_cast<T*>(this);
        if (self->m_hWnd != nullptr)
        {
            return E_UNEXPECTED;
        }
        if (self->Create(hWndParent) == nullptr)
        {
            const DWORD error = ::GetLastError();
            return error != ERROR_SUCCESS ? HRESULT_FROM_WIN32(error) : E_FAIL;
        }
        self->Move(pRect);
        m_size = {pRect->right - pRect->left, pRect->bottom - pRect->top};
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Deactivate() noexcept override
    {
        T* const self = static_cast<T*>(this);
        if (self->IsWindow() != FALSE)
        {
            self->DestroyWindow();
        }
        self->Detach(); // of a window that only its own thread may destroy
        return S_OK;
    }
    // E_UNEXPECTED without the dialog template. A string that there is not is null.
    HRESULT STDMETHODCALLTYPE GetPageInfo(PROPPAGEINFO* pPageInfo) noexcept override
    {
        if (pPageInfo == nullptr)
        {
            return E_POINTER;
        }
        const HINSTANCE module = AtlGetResourceInstance();
        SIZE size{};
        const HRESULT hr = AtlGetDialogSize(module, T::IDD, &size);
        if (FAILED(hr))
        {
            return hr;
        }
        *pPageInfo = {.cb = sizeof *pPageInfo,
                      .pszTitle = AtlLoadTaskString(module, m_dwTitleID),
                      .size = size,
                      .pszDocString = AtlLoadTaskString(module, m_dwDocStringID),
                      .pszHelpFile = AtlLoadTaskString(module, m_dwHelpFileID),
                      .dwHelpContext = m_dwHelpContext};
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetObjects(ULONG nObjects, IUnknown** ppUnk) noexcept override
    {
        if (ppUnk == nullptr)
        {
            return E_POINTER;
        }
        m_nObjects = 0;
        m_ppUnk.reset();
        // Filled before it is the page's: an object may come back when its reference is taken.
        std::unique_ptr<CComPtr<IUnknown>[]> objects(new (std::nothrow)
                                                         CComPtr<IUnknown>[nObjects]);
        if (objects == nullptr)
        {
            return E_OUTOFMEMORY;
        }
        for (ULONG i = 0; i < nObjects; ++i)
        {
            objects[i] = ppUnk[i];
        }
        m_ppUnk = std::move(objects);
        m_nObjects = nObjects;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Show(UINT nCmdShow) noexcept override
    {
        const HWND window = static_cast<T*>(this)->m_hWnd;
        if (window == nullptr)
        {
            return E_UNEXPECTED;
        }
        ::ShowWindow(window, static_cast<int>(nCmdShow));
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Move(LPCRECT pRect) noexcept override
    {
        const HWND window = static_cast<T*>(this)->m_hWnd;
        if (window == nullptr)
        {
            return E_UNEXPECTED;
        }
        if (pRect == nullptr)
        {
            return E_POINTER;
        }
        ::MoveWindow(window, pRect->left, pRect->top, pRect->right - pRect->left,
                     pRect->bottom - pRect->top, TRUE);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE IsPageDirty() noexcept override
    {
        return m_bDirty != FALSE ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Help(LPCOLESTR) noexcept override { return E_FAIL; }
    HRESULT STDMETHODCALLTYPE TranslateAccelerator(MSG* pMsg) noexcept override
    {
        if (pMsg == nullptr)
        {
            return E_POINTER;
        }
        const UINT message = pMsg->message;
        const bool forDialog = (message >= WM_KEYFIRST && message <= WM_KEYLAST) ||
                               (message >= WM_MOUSEFIRST && message <= WM_MOUSELAST);
        const HWND window = static_cast<T*>(this)->m_hWnd;
        return forDialog && ::IsDialogMessageW(window, pMsg) != FALSE ? S_OK : S_FALSE;
    }

    CComPtr<IPropertyPageSite> m_pPageSite;
    std::unique_ptr<CComPtr<IUnknown>[]> m_ppUnk; // entries may be null
    ULONG m_nObjects = 0;
    SIZE m_size{}; // pixels, as last activated
    UINT m_dwTitleID = 0;
    UINT m_dwHelpFileID = 0;
    UINT m_dwDocStringID = 0;
    DWORD m_dwHelpContext = 0;
    BOOL m_bDirty = FALSE;

protected:
    ~IPropertyPageImpl() = default;

private:
    LRESULT OnStyleChange(UINT, WPARAM which, LPARAM styles, BOOL&) noexcept
    {
        if (static_cast<int>(which) != GWL_EXSTYLE)
        {
            return 1;
        }
        auto* const change = reinterpret_cast<STYLESTRUCT*>(styles);
        if (change != nullptr) // anybody may send this
        {
            change->styleNew |= WS_EX_CONTROLPARENT;
        }
        return 0;
    }
};
