#include "tests/effect/effect_fixture.h"

#include <algorithm>
#include <stdexcept>

Bytes RecordBytes(std::uint8_t fill, std::uint32_t flag, std::size_t size)
{
    Bytes bytes{'h', 'e', 'a', 'd', 'e', 'r', '0', '1', 'f', 'l', 'a', 'g', 0, 0, 0, 4};
    for (int shift = 0; shift < 32; shift += 8)
    {
        bytes.push_back(static_cast<std::uint8_t>(flag >> shift));
    }
    bytes.resize(size, fill);
    return bytes;
}

void Fill(SessionData& record, const Bytes& bytes)
{
    std::uint8_t* const block = record.AllocateData(static_cast<std::uint32_t>(bytes.size()));
    ASSERT_TRUE(block != nullptr || bytes.empty());
    std::ranges::copy(bytes, block);
}

HRESULT STDMETHODCALLTYPE CountingSink::QueryInterface(REFIID iid, void** object)
{
    *object = iid == IID_IUnknown ? this : nullptr;
    return *object != nullptr ? (AddRef(), S_OK) : E_NOINTERFACE;
}

ULONG STDMETHODCALLTYPE CountingSink::AddRef()
{
    if (onAddRef)
    {
        onAddRef();
    }
    return ++references;
}

ULONG STDMETHODCALLTYPE CountingSink::Release()
{
    const ULONG left = --references;
    if (onRelease)
    {
        onRelease();
    }
    return left;
}

HRESULT STDMETHODCALLTYPE CountingSink::OnPropsChanged()
{
    ++calls;
    if (onCall)
    {
        onCall();
    }
    return E_FAIL; // nobody may care
}

PostBox::PostBox()
    : m_window(::CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr,
                                 nullptr))
{
    if (m_window == nullptr)
    {
        throw std::runtime_error("no message-only window; is there a display?");
    }
}

PostBox::~PostBox()
{
    ::DestroyWindow(m_window);
}

std::vector<MSG> PostBox::Take() const
{
    std::vector<MSG> messages;
    MSG message;
    while (::PeekMessageW(&message, m_window, WM_COMMAND, WM_COMMAND, PM_REMOVE) != FALSE)
    {
        messages.push_back(message);
    }
    return messages;
}

EffectTest::EffectTest()
{
    recording.Reset();
    CComObject<OpenPlugin>* object = nullptr;
    const HRESULT result = CComObject<OpenPlugin>::CreateInstance(&object);
    if (FAILED(result))
    {
        throw std::runtime_error("the effect was not created");
    }
    effect = object;
}

void EffectTest::Listen()
{
    effect->SetChangeSink(&sink);
    effect->SetNotifyWindow(postBox.Window(), kCommand);
}
