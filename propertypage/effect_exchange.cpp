#include "propertypage/effect_exchange.h"

#include <tuple>

EffectExchange::EffectExchange(IUnknown* object) noexcept
{
    if (object == nullptr)
    {
        return;
    }
    ISfExchangeProps<SessionData>* found = nullptr;
    m_result = Ask([&] {
        return object->QueryInterface(IID_ISfExchangeProps, reinterpret_cast<void**>(&found));
    });
    if (SUCCEEDED(m_result))
    {
        m_exchange = found;
        m_result = found != nullptr ? S_OK : E_NOINTERFACE;
    }
}

EffectExchange::~EffectExchange()
{
    if (m_exchange != nullptr)
    {
        // Nobody is left to tell.
        std::ignore = Ask([&] {
            m_exchange->Release();
            return S_OK;
        });
    }
}

HRESULT EffectExchange::GetProps(SessionData& record) const noexcept
{
    return m_exchange != nullptr ? Ask([&] { return m_exchange->GetProps(&record); }) : m_result;
}

HRESULT EffectExchange::SetProps(SessionData& record) const noexcept
{
    return m_exchange != nullptr ? Ask([&] { return m_exchange->SetProps(&record); }) : m_result;
}

HRESULT EffectExchange::SetNotifyWindow(HWND window, UINT command) const noexcept
{
    return m_exchange != nullptr ? Ask([&] { return m_exchange->SetNotifyWindow(window, command); })
                                 : m_result;
}

FrameBufferDesc* EffectExchange::PreviewFrame() const noexcept
{
    FrameBufferDesc* frame = nullptr;
    if (m_exchange != nullptr)
    {
        std::ignore = Ask([&] {
            frame = m_exchange->GetPreviewFrame();
            return S_OK;
        });
    }
    return frame;
}
