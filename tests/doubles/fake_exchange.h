// An effect as its page sees it: holds a record, notes every call and answers as a test wants.
#pragma once

#include "binding/session_data.h"
#include "contract/frame_buffer_desc.h"
#include "contract/host_interfaces.h"

#include <windows.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

// Lives on the test's stack and outlives its pages; its reference count is only checked. Window
// thread.
class FakeExchange : public ISfExchangeProps<SessionData>
{
public:
    FakeExchange() = default;
    FakeExchange(const FakeExchange&) = delete;
    FakeExchange& operator=(const FakeExchange&) = delete;

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override;

    // ISfExchangeProps
    HRESULT STDMETHODCALLTYPE GetProps(SessionData* record) override;
    HRESULT STDMETHODCALLTYPE SetProps(SessionData* record) override;
    HRESULT STDMETHODCALLTYPE SetNotifyWindow(HWND window, UINT command) override;
    FrameBufferDesc* STDMETHODCALLTYPE GetPreviewFrame() override;

    // Gives the page a one-pixel preview frame of that format.
    void ShowPreview(std::uint32_t format);

    struct Notice
    {
        HWND window;
        UINT command;
    };

    std::vector<std::uint8_t> bytes; // of the record
    std::uint32_t flag = kAssumeLinearGamma;
    FrameBufferDesc* preview = nullptr;
    bool hasExchange = true; // false: the object has no such interface
    HRESULT getResult = S_OK;
    HRESULT setResult = S_OK;
    std::function<void()> onSet;                         // runs inside SetProps
    std::function<void(std::string_view method)> onCall; // runs first in all but AddRef; may throw

    std::vector<std::string> calls; // "GetProps", "SetProps", "SetNotifyWindow", in their order
    int gets = 0;
    int sets = 0;
    std::vector<Notice> notices;
    ULONG references = 0;
    const std::uint8_t* recordBlock = nullptr; // of the record that was handed in last; to compare

private:
    void Enter(std::string_view method) const;

    FrameBufferDesc m_frame{};
    std::uint8_t m_pixel[16]{};
};
