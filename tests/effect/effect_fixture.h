// An effect over the recording renderer, with the places that tests look at opened up, and streams
// and listeners to drive it with.
#pragma once

#include "effect/plugin.h"
#include "tests/doubles/renderers/renderer_variant.h"
#include "tools/glazelhost/validate/fake_stream.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <vector>

using Bytes = std::vector<std::uint8_t>;
using GlazelHost::FakeStream;

class OpenPlugin : public CPlugin
{
public:
    using CSFVideoPlugin<SessionData>::IsDirty;
    using CPlugin::m_automated;
    using CPlugin::m_current;
    using CPlugin::m_dirty;
    using CPlugin::m_dwCleanGenId;
    using CPlugin::m_dwGenerationId;
    using CPlugin::m_dwOptionFlags;
    using CPlugin::m_extensionValue;
    using CPlugin::m_fraction;
    using CPlugin::m_frame;
    using CPlugin::m_keyFrom;
    using CPlugin::m_keyTo;
    using CPlugin::m_lock;
    using CPlugin::m_presetCount;
    using CPlugin::m_ulNumInRequired;
    using CPlugin::RefreshFrameProps;

    // As the transform base calls it.
    HRESULT WorkProc(const CDXTWorkInfoNTo1& workInfo, BOOL* continueProcessing) noexcept override
    {
        const ObjectLock lock(this);
        return CPlugin::WorkProc(workInfo, continueProcessing);
    }

    // Of several interfaces with methods of these names.
    IPersistStreamInit& Persistence() noexcept { return *this; }
};

// A record's bytes: a header, the option chunk with `flag`, then `fill` up to `size` bytes.
Bytes RecordBytes(std::uint8_t fill, std::uint32_t flag = 1, std::size_t size = 64);

inline Bytes BytesOf(const SessionData& record)
{
    return {record.data, record.data + record.size};
}

// Makes `record` hold `bytes`, leaving its option word alone.
void Fill(SessionData& record, const Bytes& bytes);

// Calls an operation as a client does that knows only its slot, counted from 0 with those of
// IUnknown.
template <std::size_t kSlot, typename Interface, typename... Arguments>
HRESULT CallSlot(Interface* object, Arguments... arguments)
{
    using Operation = HRESULT(STDMETHODCALLTYPE*)(void*, Arguments...);
    void** const slots = *reinterpret_cast<void***>(object);
    return reinterpret_cast<Operation>(slots[kSlot])(object, arguments...);
}

// A host's change sink that counts its calls.
class CountingSink : public ISfChangeSink
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE OnPropsChanged() override;

    std::atomic<int> calls = 0;
    std::atomic<ULONG> references = 0; // lives on the test's stack
    std::function<void()> onCall;      // each runs inside its call
    std::function<void()> onAddRef;
    std::function<void()> onRelease;
};

// A message-only window of this thread that collects what is posted to it.
class PostBox
{
public:
    PostBox();
    ~PostBox();
    PostBox(const PostBox&) = delete;
    PostBox& operator=(const PostBox&) = delete;

    HWND Window() const { return m_window; }
    // The WM_COMMAND messages in the queue, taken out of it.
    std::vector<MSG> Take() const;

private:
    HWND m_window;
};

class EffectTest : public testing::Test
{
protected:
    EffectTest();

    Recording& recording = UseRenderer(L"complete");
    CComPtr<OpenPlugin> effect; // created on its own, not aggregated
    CountingSink sink;
    PostBox postBox;

    static constexpr UINT kCommand = 0x7F00;
    void Listen(); // sets the sink and the window
};
