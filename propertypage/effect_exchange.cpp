#include "propertypage/effect_exchange.h"

#include <tuple>

EffectExchange::EffectExchange(IUnknown* object) noexcept
{
    if (object == nullptr)
    {
        return;
    }
    m_result = ForeignResult([&] {
        return object->QueryInterface(IID_ISfExchangeProps, reinterpret_cast<void**>(&m_exchange));
    });
    if (FAILED(m_result))
    {
        std::ignore = m_exchange.Detach(); // whatever a failed query left there
    }
    else
    {
        m_result = m_exchange != nullptr ? S_OK : E_NOINTERFACE;
    }
}

HRESULT EffectExchange::GetProps(SessionData& record) const noexcept
{
    return Ask([&] { return m_exchange->GetProps(&record); });
}

HRESULT EffectExchange::SetProps(SessionData& record) const noexcept
{
    return Ask([&] { return m_exchange->SetProps(&record); });
}

HRESULT EffectExchange::SetNotifyWindow(HWND window, UINT command) const noexcept
{
    return Ask([&] { return m_exchange->SetNotifyWindow(window, command); });
}

FrameBufferDesc* EffectExchange::PreviewFrame() const noexcept
{
    FrameBufferDesc* frame = nullptr;
    std::ignore = Ask([&] {
        frame = m_exchange->GetPreviewFrame();
        return S_OK;
    });
    return frame;
}
