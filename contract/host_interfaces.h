// Copyright (c) 2026 The Glazel DX authors. SPDX-License-Identifier: MIT
// Copy this file into your own program, under the terms of LICENSE.

// The host's plug-in interfaces, by identifier and slot order: what an effect implements for the
// host and what it may ask of it. Nothing here belongs to one particular effect.
#pragma once

#include <windows.h>

#include <objbase.h>
#include <objidl.h>

#include <cstddef>
#include <cstdint>

struct FrameBufferDesc;

// clang-format off
inline constexpr IID IID_ISfVideoPluginExtension{0x709BA0D3, 0xF965, 0x11D1, {0x9A, 0xA9, 0x00, 0xA0, 0xC9, 0x9B, 0x12, 0xC5}};
inline constexpr IID IID_ISfFrameInformation{0x709BA0D6, 0xF965, 0x11D1, {0x9A, 0xA9, 0x00, 0xA0, 0xC9, 0x9B, 0x12, 0xC5}};
inline constexpr IID IID_IDXTSfAutomation{0x8D506FC4, 0x9541, 0x11D2, {0x96, 0x01, 0x00, 0xC0, 0x4F, 0x8E, 0xDC, 0x2D}};
inline constexpr IID IID_IStaticFilterPreset{0x36A22460, 0x0CC9, 0x11D0, {0x85, 0x74, 0x00, 0xA0, 0xC9, 0x05, 0x39, 0x12}};
inline constexpr IID IID_ISfExchangeProps{0x0CC91747, 0xEF4A, 0x11D3, {0x85, 0x58, 0x00, 0x80, 0x29, 0x68, 0x50, 0x2D}};
// clang-format on

// What the host knows about the frame on an input surface.
struct FrameInformation
{
    double pixelAspect = 1.0;     // width of a pixel divided by its height
    double framesPerSecond = 0.0; // 0 when unknown
    std::int64_t frameTime = 0;   // from the start of the effect, in units of 100 ns
};
static_assert(sizeof(FrameInformation) == 24 && offsetof(FrameInformation, frameTime) == 16);

// Answered by the host's input surfaces. The host's own name for it is not known; only the
// identifier, the slot and the block's layout are.
struct ISfFrameInformation : IUnknown
{
    // Fills the first `size` bytes of `information`.
    virtual HRESULT STDMETHODCALLTYPE GetFrameInformation(FrameInformation* information,
                                                          ULONG size) = 0;
};

// The host's ear for changes that it did not make itself. Only the slot is known, not the
// identifier, so it is never queried for.
struct ISfChangeSink : IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE OnPropsChanged() = 0;
};

// Keyframes: the host keeps them as serialised records and says which two apply and where between
// them a frame lies.
struct IDXTSfAutomation : IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE SetAutomationActive(ULONG active) = 0;
    virtual HRESULT STDMETHODCALLTYPE SaveProps(IStream* output) = 0;
    virtual HRESULT STDMETHODCALLTYPE LoadProps(IStream* input) = 0;
    virtual HRESULT STDMETHODCALLTYPE InterpolateStreams(IStream* output, IStream* earlier,
                                                         IStream* later, double fraction) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetKeyframeProps(IStream* earlier, IStream* later) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetKeyframeFraction(double fraction) = 0;
    // `sink` may be null. The effect holds a reference until it is replaced.
    virtual HRESULT STDMETHODCALLTYPE SetChangeSink(ISfChangeSink* sink) = 0;
};

struct IStaticFilterPreset : IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE GetPresetCount(ULONG* count) = 0;
    // `capacity` counts wide characters; a name that fills it is not terminated.
    virtual HRESULT STDMETHODCALLTYPE GetPresetName(LONG index, WCHAR* name, ULONG capacity) = 0;
    virtual HRESULT STDMETHODCALLTYPE ApplyPreset(LONG index) = 0;
};

struct ISfVideoPluginExtension : IUnknown
{
    // Copies at most 32 bytes of the effect's capability record.
    virtual HRESULT STDMETHODCALLTYPE GetExtensionInfo(void* buffer, ULONG size) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetExtensionValue(double value) = 0;
};

// Between an effect and its property page, which know the same record type.
template <typename Record>
struct ISfExchangeProps : IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE GetProps(Record* record) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetProps(Record* record) = 0;
    // `window` is posted WM_COMMAND with `command` whenever the effect's record changes.
    virtual HRESULT STDMETHODCALLTYPE SetNotifyWindow(HWND window, UINT command) = 0;
    // The frame that the effect last received. Borrowed: it lives in the effect, unlocked.
    virtual FrameBufferDesc* STDMETHODCALLTYPE GetPreviewFrame() = 0;
};

// clang-format off
__CRT_UUID_DECL(ISfVideoPluginExtension, 0x709BA0D3, 0xF965, 0x11D1, 0x9A, 0xA9, 0x00, 0xA0, 0xC9, 0x9B, 0x12, 0xC5)
__CRT_UUID_DECL(ISfFrameInformation, 0x709BA0D6, 0xF965, 0x11D1, 0x9A, 0xA9, 0x00, 0xA0, 0xC9, 0x9B, 0x12, 0xC5)
__CRT_UUID_DECL(IDXTSfAutomation, 0x8D506FC4, 0x9541, 0x11D2, 0x96, 0x01, 0x00, 0xC0, 0x4F, 0x8E, 0xDC, 0x2D)
__CRT_UUID_DECL(IStaticFilterPreset, 0x36A22460, 0x0CC9, 0x11D0, 0x85, 0x74, 0x00, 0xA0, 0xC9, 0x05, 0x39, 0x12)
// clang-format on
