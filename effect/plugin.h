// CPlugin: the video effect that the host creates. It grades nothing itself; it hands every frame
// to the renderer with the look record that applies to it.
#pragma once

#include "binding/session_data.h"
#include "effect/frame_buffer.h"
#include "effect/iplugin.h"
#include "effect/sf_video_plugin.h"
#include "platform/atl/atlcom.h"
#include "platform/atl/atlctl.h"
#include "platform/dxtransform/dxbasento1.h"

#include <cstdint>

class CPlugin : public CDXBaseNTo1,
                public CComCoClass<CPlugin, &CLSID_Plugin>,
                public IDispatchImpl<IPlugin, &IID_IPlugin, &LIBID_EffectDispatch>,
                public IObjectSafetyImpl2<CPlugin>,
                public IPersistStorageImpl<CPlugin>,
                public ISpecifyPropertyPagesImpl<CPlugin>,
                public IPersistPropertyBagImpl<CPlugin>,
                public CSFVideoPlugin<SessionData>
{
public:
    CPlugin() noexcept;

    DECLARE_POLY_AGGREGATABLE(CPlugin)
    DECLARE_GET_CONTROLLING_UNKNOWN()

    BEGIN_COM_MAP(CPlugin)
    COM_INTERFACE_ENTRY(ISfVideoPluginExtension)
    COM_INTERFACE_ENTRY(IDXTSfAutomation)
    COM_INTERFACE_ENTRY(IStaticFilterPreset)
    COM_INTERFACE_ENTRY(IPersistStreamInit)
    COM_INTERFACE_ENTRY_IID(IID_ISfExchangeProps, ISfExchangeProps<SessionData>)
    COM_INTERFACE_ENTRY(IPlugin)
    COM_INTERFACE_ENTRY(IDispatch)
    COM_INTERFACE_ENTRY_AGGREGATE(IID_IMarshal, m_pUnkMarshaler.p)
    COM_INTERFACE_ENTRY(IDXEffect)
    COM_INTERFACE_ENTRY_IID(IID_IObjectSafety, IObjectSafetyImpl2<CPlugin>)
    COM_INTERFACE_ENTRY(IPersistStorage)
    COM_INTERFACE_ENTRY(ISpecifyPropertyPages)
    COM_INTERFACE_ENTRY(IPersistPropertyBag)
    COM_INTERFACE_ENTRY_CHAIN(CDXBaseNTo1)
    END_COM_MAP()

    BEGIN_PROPERTY_MAP(CPlugin)
    PROP_PAGE(CLSID_PluginPP)
    END_PROPERTY_MAP()

    // Starts the renderer. When it does not start, tells the user once in a process and fails with
    // E_INVALIDARG, so that the effect is not created.
    HRESULT FinalConstruct() noexcept;
    void FinalRelease() noexcept;

    // IDXEffect. Values are kept in the transform base's members; the getters answer E_POINTER for
    // a place that cannot be written. They take no lock: a window's thread must not wait for a
    // frame, during which the object lock is held.
    HRESULT STDMETHODCALLTYPE get_Capabilities(LONG* value) noexcept override;
    HRESULT STDMETHODCALLTYPE get_Progress(float* value) noexcept override;
    // Stored and reported only: keyframes alone decide which look a frame gets.
    HRESULT STDMETHODCALLTYPE put_Progress(float value) noexcept override;
    HRESULT STDMETHODCALLTYPE get_StepResolution(float* value) noexcept override;
    HRESULT STDMETHODCALLTYPE get_Duration(float* value) noexcept override;
    HRESULT STDMETHODCALLTYPE put_Duration(float value) noexcept override;

    // ISfExchangeProps
    FrameBufferDesc* STDMETHODCALLTYPE GetPreviewFrame() noexcept override;

    // Record operations on a record that owns its block
    HRESULT STDMETHODCALLTYPE LoadPreset(LONG index) noexcept override;
    HRESULT STDMETHODCALLTYPE ReadProps(IStream* stream, SessionData* record) noexcept override;
    HRESULT STDMETHODCALLTYPE WriteProps(IStream* stream, SessionData* record) noexcept override;
    HRESULT STDMETHODCALLTYPE CopyProps(SessionData* destination,
                                        const SessionData* source) noexcept override;
    HRESULT STDMETHODCALLTYPE InterpolateProps(SessionData* output, SessionData* from,
                                               SessionData* to, double fraction) noexcept override;

    // CDXBaseNTo1. Renders the whole frame whatever part of it is asked for. Render thread; two
    // calls at once, on one effect or on two, are not supported.
    HRESULT WorkProc(const CDXTWorkInfoNTo1& workInfo, BOOL* continueProcessing) noexcept override;

    CComPtr<IUnknown> m_pUnkMarshaler; // free-threaded, made by FinalConstruct
    std::uint32_t m_bRequiresSave = 0;

private:
    // Of one frame: what RenderFrame is told besides the images.
    struct FrameContext;

    // The two halves of WorkProc: take the input's pixels, then render by way of the shared buffer
    // or from surface to surface. Throw ExceptionInfo, and whatever the surfaces and the renderer
    // throw; `result` follows the last call made.
    void FetchInput(IDXSurface* input, DXSAMPLEFORMATENUM format, HRESULT& result);
    void RenderBuffered(IDXSurface* output, const CDXTWorkInfoNTo1& workInfo,
                        const FrameContext& frame, HRESULT& result);
    void RenderDirect(IDXSurface* input, IDXSurface* output, const FrameContext& frame,
                      HRESULT& result);

    void RaiseBothChangeCounters() noexcept;

    std::int32_t m_rendererStatus = 0; // as the renderer's start answered
    FrameBuffer m_inputFrame;          // the last input, which the look editor previews
};
