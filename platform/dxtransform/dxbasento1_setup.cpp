// CDXBaseNTo1: taking surfaces, noticing when they change, and getting ready.
#include "platform/dxtransform/dxbasento1.h"

#include "platform/runtime/hook_guard.h"

#include <tuple>
#include <utility>

HRESULT STDMETHODCALLTYPE CDXBaseNTo1::Setup(IUnknown* const* punkInputs, ULONG ulNumInputs,
                                             IUnknown* const* punkOutputs, ULONG ulNumOutputs,
                                             DWORD dwFlags) noexcept
{
    const ObjectLock lock(this);
    if (dwFlags != 0)
    {
        return E_INVALIDARG;
    }
    if (ulNumInputs == 0 && ulNumOutputs == 0)
    {
        ForgetObjects();
        SetDirty();
        return S_OK;
    }
    HRESULT hr = CheckCounts(punkInputs, ulNumInputs, punkOutputs, ulNumOutputs);
    if (FAILED(hr))
    {
        return hr;
    }
    Fetched fetched{.inputs = std::move(m_spareInputs), .output = {}};
    hr = CallHook([&] { return FetchSurfaces(punkInputs, ulNumInputs, punkOutputs[0], fetched); });
    if (SUCCEEDED(hr))
    {
        // From here on nothing of the old set-up is needed; it goes once the new one is whole.
        std::swap(m_inputs, fetched.inputs);
        std::swap(m_output, fetched.output);
        m_setUp = true;
    }
    fetched.inputs.clear();
    m_spareInputs = std::move(fetched.inputs);
    fetched.output = {};
    if (FAILED(hr))
    {
        return hr;
    }
    return m_setUp ? Prepare() : S_OK; // letting the old ones go may have cleared the new ones
}

HRESULT CDXBaseNTo1::CheckCounts(IUnknown* const* inputs, ULONG numInputs, IUnknown* const* outputs,
                                 ULONG numOutputs) const noexcept
{
    const bool outputIsThere = numOutputs == 1 && outputs != nullptr && outputs[0] != nullptr;
    const bool inputsFit = numInputs >= m_ulNumInRequired && numInputs <= m_ulMaxInputs &&
                           (inputs != nullptr || numInputs == 0);
    if (!outputIsThere || !inputsFit)
    {
        return E_INVALIDARG;
    }
    for (ULONG i = 0; i < m_ulNumInRequired; ++i)
    {
        if (inputs[i] == nullptr)
        {
            return E_INVALIDARG;
        }
    }
    return S_OK;
}

HRESULT CDXBaseNTo1::FetchSurfaces(IUnknown* const* inputs, ULONG numInputs, IUnknown* output,
                                   Fetched& fetched)
{
    fetched.inputs.resize(numInputs);
    m_inputs.reserve(numInputs); // the two change places; now, so that later calls allocate nothing
    for (ULONG i = 0; i < numInputs; ++i)
    {
        const HRESULT hr =
            inputs[i] != nullptr ? FetchSurface(inputs[i], fetched.inputs[i].surface) : S_OK;
        if (FAILED(hr))
        {
            return hr;
        }
    }
    return FetchSurface(output, fetched.output.surface);
}

// Something else than a surface is wrapped in one, by the surface factory if there is one.
HRESULT CDXBaseNTo1::FetchSurface(IUnknown* object, CComPtr<IDXSurface>& surface) const noexcept
{
    if (SUCCEEDED(ForeignResult([&] {
            return object->QueryInterface(IID_IDXSurface, reinterpret_cast<void**>(&surface));
        })))
    {
        return S_OK;
    }
    std::ignore = surface.Detach(); // whatever a failed query left there
    const CComPtr<IDXSurfaceFactory> factory(m_cpSurfFact);
    if (factory == nullptr)
    {
        return E_INVALIDARG;
    }
    return ForeignResult([&] {
        return factory->CreateFromDDSurface(object, nullptr, 0, nullptr, IID_IDXSurface,
                                            reinterpret_cast<void**>(&surface));
    });
}

// Caller holds the object lock. The surfaces go last: that may run their own code, which finds
// everything in order.
void CDXBaseNTo1::ForgetObjects() noexcept
{
    const std::vector<Object> inputs = std::exchange(m_inputs, {});
    const Object output = std::exchange(m_output, {});
    m_setUp = false;
}

// Gets ready for the surfaces that are in place; without success there are none any more.
HRESULT CDXBaseNTo1::Prepare() noexcept
{
    SetDirty();
    for (ULONG slot = 0; slot < m_inputs.size(); ++slot)
    {
        NoteGenerationId(slot);
    }
    NoteGenerationId(kOutputSlot);
    const HRESULT hr = RunOnSetup();
    if (FAILED(hr))
    {
        ForgetObjects();
        return hr;
    }
    NoteGenerationId(kOutputSlot); // preparing may have written to it
    return hr;
}

HRESULT CDXBaseNTo1::RunOnSetup() noexcept
{
    const HRESULT hr = CallHook([this] { return OnSetup(0); });
    if (SUCCEEDED(hr))
    {
        ClearDirty();
    }
    return hr;
}

// Null for a slot that there is not.
CDXBaseNTo1::Object* CDXBaseNTo1::ObjectAt(ULONG slot) noexcept
{
    if (slot == kOutputSlot)
    {
        return &m_output;
    }
    return slot < m_inputs.size() ? &m_inputs[slot] : nullptr;
}

// Raises the transform's own id for each surface that changed since the last look.
void CDXBaseNTo1::UpdateGenerationId() noexcept
{
    for (ULONG slot = 0; slot < m_inputs.size(); ++slot)
    {
        if (NoteGenerationId(slot))
        {
            SetDirty();
        }
    }
    if (NoteGenerationId(kOutputSlot))
    {
        SetDirty();
    }
}

bool CDXBaseNTo1::NoteGenerationId(ULONG slot) noexcept
{
    const Object* const asked = ObjectAt(slot);
    const CComPtr<IDXSurface> surface(asked != nullptr ? asked->surface.p : nullptr);
    ULONG id = 0;
    if (surface == nullptr || FAILED(ForeignResult([&] { return surface->GetGenerationId(&id); })))
    {
        return false;
    }
    Object* const object = ObjectAt(slot);
    return object != nullptr && object->surface.p == surface.p &&
           std::exchange(object->seenId, id) != id;
}
