// What a property page and an effect may call back: the container's site and the ear for changes.
#pragma once

#include "contract/host_interfaces.h"

#include <windows.h>

#include <ocidl.h>

#include <atomic>

namespace GlazelHost
{

// A COM object with one interface besides IUnknown. Counted from zero: the first CComPtr owns it.
template <typename Interface, const IID* InterfaceId = nullptr>
class CCallback : public Interface
{
public:
    CCallback() = default;
    CCallback(const CCallback&) = delete;
    CCallback& operator=(const CCallback&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) noexcept override
    {
        if (object == nullptr)
        {
            return E_POINTER;
        }
        if (riid != IID_IUnknown && (InterfaceId == nullptr || riid != *InterfaceId))
        {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        *object = static_cast<Interface*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() noexcept override
    {
        const ULONG left = --m_references;
        if (left == 0)
        {
            delete this;
        }
        return left;
    }

protected:
    virtual ~CCallback() = default;

private:
    std::atomic<ULONG> m_references{0};
};

// A container that asks nothing of its page between its calls: it looks at IsPageDirty when it
// closes, and its own messages do not concern the page.
class CPageSite final : public CCallback<IPropertyPageSite, &IID_IPropertyPageSite>
{
public:
    HRESULT STDMETHODCALLTYPE OnStatusChange(DWORD) noexcept override { return S_OK; }
    HRESULT STDMETHODCALLTYPE GetLocaleID(LCID* locale) noexcept override
    {
        if (locale == nullptr)
        {
            return E_POINTER;
        }
        *locale = ::GetUserDefaultLCID();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetPageContainer(IUnknown** container) noexcept override
    {
        if (container == nullptr)
        {
            return E_POINTER;
        }
        *container = nullptr;
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE TranslateAccelerator(MSG*) noexcept override { return S_FALSE; }
};

// Posts a message to a window when the effect's look has changed. Any thread.
class CLookChanges final : public CCallback<ISfChangeSink>
{
public:
    CLookChanges(HWND window, UINT message) noexcept : m_window(window), m_message(message) {}
    HRESULT STDMETHODCALLTYPE OnPropsChanged() noexcept override
    {
        return ::PostMessageW(m_window, m_message, 0, 0) ? S_OK : E_FAIL;
    }

private:
    HWND m_window;
    UINT m_message;
};

} // namespace GlazelHost
