// CDXBaseNTo1: taking surfaces, noticing when they change, and getting ready.
#include "platform/dxtransform/dxbasento1.h"

#include "platform/dxtransform/hook_guard.h"

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
        DropObjects();
        SetDirty();
        return S_OK;
    }
    HRESULT hr = CheckCounts(punkInputs, ulNumInputs, punkOutputs, ulNumOutputs);
    if (FAILED(hr))
    {
        return hr;
    }
    hr = CallHook([&] { return FetchSurfaces(punkInputs, ulNumInputs, punkOutputs[0]); });
    if (FAILED(hr))
    {
        DropFetched();
        return hr;
    }
    // From here on nothing of the old set-up is needed.
    std::swap(m_inputs, m_fetchedInputs);
    std::swap(m_output, m_fetchedOutput);
    m_ulNumInputs = ulNumInputs;
    m_setUp = true;
    DropFetched();
    return Prepare();
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

// Fills m_fetchedInputs and m_fetchedOutput.
HRESULT CDXBaseNTo1::FetchSurfaces(IUnknown* const* inputs, ULONG numInputs, IUnknown* output)
{
    m_fetchedInputs.resize(numInputs);
    m_inputs.reserve(numInputs); // the two change places; now, so that later calls allocate nothing
    for (ULONG i = 0; i < numInputs; ++i)
    {
        const HRESULT hr =
            inputs[i] != nullptr ? FetchSurface(inputs[i], m_fetchedInputs[i].surface) : S_OK;
        if (FAILED(hr))
        {
            return hr;
        }
    }
    const HRESULT hr = FetchSurface(output, m_fetchedOutput.surface);
    return FAILED(hr) ? hr : CheckFetchedSizes();
}

// Something else than a surface is wrapped in one, by the surface factory if there is one.
HRESULT CDXBaseNTo1::FetchSurface(IUnknown* object, CComPtr<IDXSurface>& surface) const noexcept
{
    if (SUCCEEDED(object->QueryInterface(IID_IDXSurface, reinterpret_cast<void**>(&surface))))
    {
        return S_OK;
    }
    if (m_cpSurfFact == nullptr)
    {
        return E_INVALIDARG;
    }
    return m_cpSurfFact->CreateFromDDSurface(object, nullptr, 0, nullptr, IID_IDXSurface,
                                             reinterpret_cast<void**>(&surface));
}

HRESULT CDXBaseNTo1::CheckFetchedSizes() const noexcept
{
    if ((m_dwOptionFlags & kDXBaseSameSizeInputs) == 0)
    {
        return S_OK;
    }
    CDXDBnds first;
    bool haveFirst = false;
    for (const Object& input : m_fetchedInputs)
    {
        if (input.surface == nullptr)
        {
            continue;
        }
        HRESULT hr = S_OK;
        const CDXDBnds bounds(input.surface, hr);
        if (FAILED(hr))
        {
            return hr;
        }
        if (haveFirst && (bounds.Width() != first.Width() || bounds.Height() != first.Height()))
        {
            return E_INVALIDARG;
        }
        first = bounds;
        haveFirst = true;
    }
    return S_OK;
}

void CDXBaseNTo1::DropFetched() noexcept
{
    m_fetchedInputs.clear();
    m_fetchedOutput = {};
}

// Caller holds the object lock.
void CDXBaseNTo1::DropObjects() noexcept
{
    m_inputs.clear();
    m_output = {};
    m_ulNumInputs = 0;
    m_setUp = false;
    std::ignore = CallHook([this] { return OnReleaseObjects(); }); // nobody can keep the objects
}

// Gets ready for the surfaces that are in place; without success there are none any more.
HRESULT CDXBaseNTo1::Prepare() noexcept
{
    SetDirty();
    for (Object& input : m_inputs)
    {
        NoteGenerationId(input);
    }
    NoteGenerationId(m_output);
    const HRESULT hr = RunOnSetup();
    if (FAILED(hr))
    {
        m_inputs.clear();
        m_output = {};
        m_ulNumInputs = 0;
        m_setUp = false;
        return hr;
    }
    NoteGenerationId(m_output); // preparing may have written to it
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

void CDXBaseNTo1::NoteGenerationId(Object& object) noexcept
{
    ULONG id = 0;
    if (object.surface != nullptr && SUCCEEDED(object.surface->GetGenerationId(&id)))
    {
        object.seenId = id;
    }
}

// Since the last look; this is one.
bool CDXBaseNTo1::HasChanged(Object& object) noexcept
{
    const ULONG before = object.seenId;
    NoteGenerationId(object);
    return object.seenId != before;
}

bool CDXBaseNTo1::IsInputDirty(ULONG index) noexcept
{
    const ObjectLock lock(this);
    ULONG id = 0;
    if (!HaveInput(index) || FAILED(m_inputs[index].surface->GetGenerationId(&id)))
    {
        return false;
    }
    Object& input = m_inputs[index];
    const bool dirty = !input.wasAsked || id != input.askedId;
    input.askedId = id;
    input.wasAsked = true;
    return dirty;
}

DXSAMPLEFORMATENUM CDXBaseNTo1::SampleFormatOf(IDXSurface* surface) noexcept
{
    DXSAMPLEFORMATENUM format = DXPF_NONSTANDARD;
    if (surface != nullptr && FAILED(surface->GetPixelFormat(nullptr, &format)))
    {
        format = DXPF_NONSTANDARD;
    }
    return format;
}

bool CDXBaseNTo1::DoDither() const noexcept
{
    return (m_dwBltFlags & DXBOF_DITHER) != 0 && (OutputSampleFormat() & DXPF_ERRORMASK) != 0;
}
