#include "effect/plugin.h"

#include "binding/renderer_binding.h"
#include "effect/preset_table.h"
#include "support/exception_info.h"

#include <atomic>
#include <tuple>

namespace
{

constexpr char kStartFailureText[] =
    "Brellin Glazel did not initialize successfully - most likely this is due to insufficient or "
    "unsupported graphics hardware on this system.";

constexpr std::int32_t kStartThrew = -3; // beside the binding's own results

constexpr float kDefaultDuration = 0.5F; // seconds
constexpr DWORD kSameSizeInputs = 12;    // base option word: restricts several inputs, of which
                                         // there are never two here
constexpr std::uint32_t kExtensionCapabilities = 0x841;

// Once in a process, however many effects fail.
void ReportStartFailure() noexcept
{
    static std::atomic_flag reported;
    if (!reported.test_and_set())
    {
        ::MessageBoxA(nullptr, kStartFailureText, nullptr, MB_OK);
    }
}

// Null stands for the program itself, in a program that links the effect without a module.
HINSTANCE ResourceInstance() noexcept
{
    return _pModule != nullptr ? _pModule->GetResourceInstance() : nullptr;
}

// Script hosts hand in addresses that nobody has checked.
bool CanWrite(void* address, UINT_PTR bytes) noexcept
{
    return address != nullptr && ::IsBadWritePtr(address, bytes) == FALSE;
}

HRESULT Report(float value, float* place) noexcept
{
    if (!CanWrite(place, sizeof *place))
    {
        return E_POINTER;
    }
    *place = value;
    return S_OK;
}

} // namespace

CPlugin::CPlugin() noexcept
    : CSFVideoPlugin(PresetTable(), ResourceInstance(), kPresetNameBase, kPresetCount,
                     &CLSID_Plugin)
{
    m_ulMaxInputs = 1;
    m_ulNumInRequired = 1;
    m_Duration = kDefaultDuration;
    m_StepResolution = 1.0F; // progress has no effect, so no step in between makes a difference
    m_dwOptionFlags = kSameSizeInputs;

    m_extensionInfo.version = 2;
    m_extensionInfo.scale = 1.0;
    m_extensionInfo.maxInputs = m_ulMaxInputs;
    m_extensionInfo.requiredInputs = m_ulNumInRequired;
    m_extensionInfo.capabilities = kExtensionCapabilities;
}

HRESULT CPlugin::FinalConstruct() noexcept
{
    m_rendererStatus = kStartThrew; // unless the renderer answers
    RunSteps([this] { m_rendererStatus = RendererAPI::Binding().Start(RendererAPI::kStartMode); });
    if (m_rendererStatus != 0)
    {
        ReportStartFailure();
        return E_INVALIDARG;
    }
    // Without one the effect works all the same; it then has no IMarshal.
    std::ignore = ::CoCreateFreeThreadedMarshaler(GetControllingUnknown(), &m_pUnkMarshaler.p);
    return S_OK;
}

void CPlugin::FinalRelease() noexcept
{
    m_pUnkMarshaler.Release();
}

// IDXEffect

HRESULT STDMETHODCALLTYPE CPlugin::get_Capabilities(LONG* value) noexcept
{
    if (!CanWrite(value, sizeof *value))
    {
        return E_POINTER;
    }
    *value = 0; // neither periodic nor morphing
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CPlugin::get_Progress(float* value) noexcept
{
    return Report(std::atomic_ref(m_Progress).load(std::memory_order_relaxed), value);
}

HRESULT STDMETHODCALLTYPE CPlugin::put_Progress(float value) noexcept
{
    if (!(value >= 0.0F && value <= 1.0F))
    {
        return E_INVALIDARG;
    }
    const ObjectLock lock(this);
    std::atomic_ref(m_Progress).store(value, std::memory_order_relaxed);
    RaiseBothChangeCounters();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CPlugin::get_StepResolution(float* value) noexcept
{
    return Report(m_StepResolution, value);
}

HRESULT STDMETHODCALLTYPE CPlugin::get_Duration(float* value) noexcept
{
    return Report(std::atomic_ref(m_Duration).load(std::memory_order_relaxed), value);
}

HRESULT STDMETHODCALLTYPE CPlugin::put_Duration(float value) noexcept
{
    if (!(value > 0.0F))
    {
        return E_INVALIDARG;
    }
    const ObjectLock lock(this);
    if (value == m_Duration)
    {
        return S_OK;
    }
    std::atomic_ref(m_Duration).store(value, std::memory_order_relaxed);
    RaiseBothChangeCounters();
    return S_OK;
}

// Containers that watch the generation id see a change; the transform does not become dirty by it,
// because nothing that it has prepared depends on these values.
void CPlugin::RaiseBothChangeCounters() noexcept
{
    ++m_dwGenerationId;
    ++m_dwCleanGenId;
}

// ISfExchangeProps

FrameBufferDesc* STDMETHODCALLTYPE CPlugin::GetPreviewFrame() noexcept
{
    return &m_inputFrame;
}
