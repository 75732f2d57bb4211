#include "tests/propertypage/fake_exchange.h"

#include <algorithm>

HRESULT STDMETHODCALLTYPE FakeExchange::QueryInterface(REFIID iid, void** object)
{
    const bool known = iid == IID_IUnknown || (hasExchange && iid == IID_ISfExchangeProps);
    *object = known ? this : nullptr;
    return known ? (AddRef(), S_OK) : E_NOINTERFACE;
}

HRESULT STDMETHODCALLTYPE FakeExchange::GetProps(SessionData* record)
{
    calls.emplace_back("GetProps");
    ++gets;
    if (SUCCEEDED(getResult))
    {
        std::ranges::copy(bytes, record->AllocateData(static_cast<std::uint32_t>(bytes.size())));
        record->flag = flag;
    }
    return getResult;
}

HRESULT STDMETHODCALLTYPE FakeExchange::SetProps(SessionData* record)
{
    calls.emplace_back("SetProps");
    ++sets;
    bytes.assign(record->data, record->data + record->size);
    flag = record->flag;
    if (onSet)
    {
        onSet();
    }
    return setResult;
}

HRESULT STDMETHODCALLTYPE FakeExchange::SetNotifyWindow(HWND window, UINT command)
{
    calls.emplace_back("SetNotifyWindow");
    notices.push_back({window, command});
    return S_OK;
}

void FakeExchange::ShowPreview(std::uint32_t format)
{
    m_frame.format = format;
    m_frame.pixels = m_pixel;
    m_frame.width = 1;
    m_frame.height = 1;
    m_frame.rowPitch = 1;
    preview = &m_frame;
}
