// The effect as its page talks to it. Tests: tests/propertypage/foreign_exception_test.cpp.
#pragma once

#include "binding/session_data.h"
#include "contract/host_interfaces.h"
#include "platform/atl/atlcomcli.h"
#include "platform/runtime/foreign_call.h"

#include <windows.h>

#include <objbase.h>

// Holds the exchange interface of an object for as long as it lives. The object may be any that the
// host has set: what it throws, also when it is asked for the interface or let go, counts as an
// answer of E_UNEXPECTED or E_OUTOFMEMORY. Window thread.
class EffectExchange
{
public:
    explicit EffectExchange(IUnknown* object) noexcept; // may be null

    // S_OK when there is an effect to talk to; otherwise why not, which all calls answer then:
    // E_UNEXPECTED without an object, or the query's failure.
    HRESULT Result() const noexcept { return m_result; }

    HRESULT GetProps(SessionData& record) const noexcept;
    HRESULT SetProps(SessionData& record) const noexcept;
    HRESULT SetNotifyWindow(HWND window, UINT command) const noexcept;
    FrameBufferDesc* PreviewFrame() const noexcept; // the effect's own; null when there is none

private:
    // The one way out of the page into foreign code, but for the renderer.
    template <typename Call>
    HRESULT Ask(Call&& call) const noexcept
    {
        return m_exchange != nullptr ? ForeignResult(call) : m_result;
    }

    CComPtr<ISfExchangeProps<SessionData>> m_exchange;
    HRESULT m_result = E_UNEXPECTED;
};
