#include "tests/doubles/fake_exchange.h"

#include <algorithm>

void FakeExchange::Enter(std::string_view method) const
{
    if (onCall)
    {
        onCall(method);
    }
}

HRESULT STDMETHODCALLTYPE FakeExchange::QueryInterface(REFIID iid, void** object)
{
    Enter("QueryInterface");
    const bool known = iid == IID_IUnknown || (hasExchange && iid == IID_ISfExchangeProps);
    *object = known ? this : nullptr;
    return known ? (AddRef(), S_OK) : E_NOINTERFACE;
}

ULONG STDMETHODCALLTYPE FakeExchange::Release()
{
    const ULONG left = --references;
    Enter("Release");
    return left;
}

HRESULT STDMETHODCALLTYPE FakeExchange::GetProps(SessionData* record)
{
    Enter("GetProps");
    calls.emplace_back("GetProps");
    ++gets;
    if (SUCCEEDED(getResult))
    {
        std::ranges::copy(bytes, record->AllocateData(static_cast<std::uint32_t>(bytes.size())));
        record->flag = flag;
    }
    recordBlock = record->data;
    return getResult;
}

HRESULT STDMETHODCALLTYPE FakeExchange::SetProps(SessionData* record)
{
    Enter("SetProps");
    recordBlock = record->data;
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
    Enter("SetNotifyWindow");
    calls.emplace_back("SetNotifyWindow");
    notices.push_back({window, command});
    return S_OK;
}

FrameBufferDesc* STDMETHODCALLTYPE FakeExchange::GetPreviewFrame()
{
    Enter("GetPreviewFrame");
    return preview;
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
