#include "platform/dxtransform/dxbasento1.h"

#include "platform/runtime/hook_guard.h"

#include <servprov.h>

#include <utility>

namespace
{

// Everything that the base class itself can do; options off.
constexpr DWORD kDefaultMiscFlags = DXTMF_BLEND_SUPPORTED | DXTMF_DITHER_SUPPORTED |
                                    DXTMF_BOUNDS_SUPPORTED | DXTMF_PLACEMENT_SUPPORTED;

// Null when the site does not offer one.
CComPtr<IDXSurfaceFactory> SurfaceFactoryOf(IServiceProvider* provider) noexcept
{
    CComPtr<IDXSurfaceFactory> found;
    const auto ask = [&] {
        return provider->QueryService(SID_SDXSurfaceFactory, IID_IDXSurfaceFactory,
                                      reinterpret_cast<void**>(&found));
    };
    if (provider != nullptr && FAILED(ForeignResult(ask)))
    {
        return nullptr;
    }
    return found;
}

// An image has one layer and one moment: what a caller says about them is not looked at.
CDXDBnds ImageBounds(const DXBNDS& bounds) noexcept
{
    CDXDBnds image(bounds);
    image.SetImageLayer();
    return image;
}

CDXDVec ImageDistance(const DXVEC& vector) noexcept
{
    const CDXDVec distance(vector);
    return CDXDVec(distance[DXB_X], distance[DXB_Y]);
}

constexpr ULONG kPickTimeOutMs = 10000; // for the lock of the sample

// S_FALSE when the surface has no sample there.
HRESULT AlphaAt(IDXSurface* surface, const CDXDVec& point, BYTE& alpha)
{
    const CDXDBnds sample(point);
    HRESULT hr = S_OK;
    CDXDBnds bounds(surface, hr);
    if (FAILED(hr))
    {
        return hr;
    }
    bounds.SetImageLayer();
    if (bounds.TestIntersect(sample) == FALSE)
    {
        return S_FALSE;
    }
    CComPtr<IDXARGBReadPtr> samples;
    hr = CallForeign([&] {
        return surface->LockSurface(&sample, kPickTimeOutMs, DXLOCKF_READ, IID_IDXARGBReadPtr,
                                    reinterpret_cast<void**>(&samples), nullptr);
    });
    if (FAILED(hr))
    {
        return hr;
    }
    DXSAMPLE value(0);
    CallForeign([&] { samples->Unpack(&value, 1, FALSE); });
    alpha = value.Alpha;
    return S_OK;
}

} // namespace

CDXBaseNTo1::CDXBaseNTo1() noexcept : m_dwMiscFlags(kDefaultMiscFlags) {}

CDXBaseNTo1::~CDXBaseNTo1() = default;

// What a transform gets that does not override.

HRESULT CDXBaseNTo1::OnSetup(DWORD)
{
    return S_OK;
}

HRESULT CDXBaseNTo1::WorkProc(const CDXTWorkInfoNTo1&, BOOL*)
{
    return E_NOTIMPL;
}

// IDXBaseObject

HRESULT STDMETHODCALLTYPE CDXBaseNTo1::GetGenerationId(ULONG* pID) noexcept
{
    if (pID == nullptr)
    {
        return E_POINTER;
    }
    const ObjectLock lock(this);
    m_dwGenerationId += m_surfaces.NoteChanges();
    *pID = m_dwGenerationId;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CDXBaseNTo1::IncrementGenerationId(BOOL bRefresh) noexcept
{
    const ObjectLock lock(this);
    if (bRefresh != FALSE && !m_surfaces.IsEmpty())
    {
        return Prepare();
    }
    SetDirty();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CDXBaseNTo1::GetObjectSize(ULONG* pcbSize) noexcept
{
    if (pcbSize == nullptr)
    {
        return E_POINTER;
    }
    *pcbSize = sizeof(*this);
    return S_OK;
}

// IDXTransform

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
        m_surfaces.Clear();
        SetDirty();
        return S_OK;
    }
    HRESULT hr = CheckCounts(punkInputs, ulNumInputs, punkOutputs, ulNumOutputs);
    if (FAILED(hr))
    {
        return hr;
    }
    const CComPtr<IDXSurfaceFactory> factory(m_cpSurfFact);
    hr = CallHook(
        [&] { return m_surfaces.Replace(punkInputs, ulNumInputs, punkOutputs[0], factory); });
    if (FAILED(hr))
    {
        return hr;
    }
    return m_surfaces.IsEmpty() ? S_OK : Prepare(); // letting the old ones go may have cleared it
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

// Gets ready for the surfaces that are in place; without success there are none any more.
HRESULT CDXBaseNTo1::Prepare() noexcept
{
    SetDirty();
    m_surfaces.NoteChanges();
    const HRESULT hr = RunOnSetup();
    if (FAILED(hr))
    {
        m_surfaces.Clear();
        return hr;
    }
    m_surfaces.NoteOutput(); // preparing may have written to it
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

HRESULT STDMETHODCALLTYPE CDXBaseNTo1::Execute(const GUID*, const DXBNDS* pClipBnds,
                                               const DXVEC* pPlacement) noexcept
{
    const ObjectLock lock(this);
    if (m_surfaces.IsEmpty())
    {
        return DXTERR_UNINITIALIZED;
    }
    if ((pClipBnds != nullptr && (m_dwMiscFlags & DXTMF_BOUNDS_SUPPORTED) == 0) ||
        (pPlacement != nullptr && (m_dwMiscFlags & DXTMF_PLACEMENT_SUPPORTED) == 0))
    {
        return E_INVALIDARG;
    }
    m_dwGenerationId += m_surfaces.NoteChanges();
    HRESULT hr = IsTransformDirty() ? RunOnSetup() : S_OK;
    if (SUCCEEDED(hr))
    {
        hr = CallHook([&] { return Work(pClipBnds, pPlacement); });
    }
    m_surfaces.NoteOutput(); // its own writing is no change of the transform
    return hr;
}

HRESULT CDXBaseNTo1::Work(const DXBNDS* clip, const DXVEC* placement)
{
    CDXTWorkInfoNTo1 work;
    const HRESULT hr = ComputeBounds(clip, placement, work);
    if (FAILED(hr) || work.DoBnds.BoundsAreEmpty() != FALSE)
    {
        return hr;
    }
    BOOL continueProcessing = TRUE;
    const HRESULT worked = WorkProc(work, &continueProcessing);
    return SUCCEEDED(worked) && continueProcessing == FALSE ? E_ABORT : worked;
}

// What is to be made and where it goes: the output space cut by the clip, moved by the placement,
// cut by the output surface, and moved back. Both are empty when nothing is left.
HRESULT CDXBaseNTo1::ComputeBounds(const DXBNDS* clip, const DXVEC* placement,
                                   CDXTWorkInfoNTo1& work)
{
    DXBNDS space{};
    HRESULT hr = MapBoundsIn2Out(nullptr, 0, 0, &space);
    if (FAILED(hr))
    {
        return hr;
    }
    const CComPtr<IDXSurface> output(OutputSurface());
    if (output == nullptr)
    {
        return DXTERR_UNINITIALIZED; // an input let somebody clear the transform
    }
    const CDXDBnds surface(output, hr);
    if (FAILED(hr))
    {
        return hr;
    }
    CDXDBnds wanted = ImageBounds(space);
    if (clip != nullptr)
    {
        wanted.IntersectBounds(ImageBounds(*clip));
    }
    const CDXDVec distance = placement != nullptr ? ImageDistance(*placement) : CDXDVec();
    wanted.Offset(distance);
    const BOOL meet = work.OutputBnds.IntersectBounds(wanted, ImageBounds(surface));
    work.DoBnds = work.OutputBnds;
    if (meet != FALSE)
    {
        work.DoBnds.Offset(-distance);
    }
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CDXBaseNTo1::MapBoundsIn2Out(const DXBNDS* pInBounds, ULONG ulNumInBnds,
                                                       ULONG ulOutIndex,
                                                       DXBNDS* pOutBounds) noexcept
{
    if (pOutBounds == nullptr)
    {
        return E_POINTER;
    }
    const ObjectLock lock(this);
    if (ulOutIndex != 0 || ulNumInBnds > m_ulMaxInputs)
    {
        return E_INVALIDARG;
    }
    CDXDBnds bounds;
    if (pInBounds != nullptr && ulNumInBnds > 0)
    {
        for (ULONG i = 0; i < ulNumInBnds; ++i)
        {
            CDXDBnds input(pInBounds[i]);
            input.SetImageLayer();
            bounds.UnionBounds(input);
        }
    }
    else
    {
        const HRESULT hr = CallHook([&] { return CurrentInputBounds(bounds); });
        if (FAILED(hr))
        {
            return hr;
        }
    }
    *pOutBounds = bounds;
    return S_OK;
}

HRESULT CDXBaseNTo1::CurrentInputBounds(CDXDBnds& bounds) const
{
    if (m_surfaces.IsEmpty())
    {
        return DXTERR_UNINITIALIZED;
    }
    bool haveInputs = false;
    for (ULONG i = 0; i < m_surfaces.InputCount(); ++i)
    {
        const CComPtr<IDXSurface> surface(InputSurface(i));
        if (surface == nullptr)
        {
            continue;
        }
        HRESULT hr = S_OK;
        CDXDBnds inputBounds(surface, hr);
        if (FAILED(hr))
        {
            return hr;
        }
        inputBounds.SetImageLayer();
        bounds.UnionBounds(inputBounds);
        haveInputs = true;
    }
    if (haveInputs)
    {
        return S_OK;
    }
    const CComPtr<IDXSurface> output(OutputSurface());
    HRESULT hr = DXTERR_UNINITIALIZED; // when an input let somebody clear the transform
    bounds = output != nullptr ? CDXDBnds(output, hr) : CDXDBnds();
    return hr;
}

HRESULT STDMETHODCALLTYPE CDXBaseNTo1::MapBoundsOut2In(ULONG ulOutIndex, const DXBNDS* pOutBounds,
                                                       ULONG ulInIndex, DXBNDS* pInBounds) noexcept
{
    if (pOutBounds == nullptr || pInBounds == nullptr)
    {
        return E_POINTER;
    }
    if (ulOutIndex != 0 || ulInIndex >= m_ulMaxInputs)
    {
        return E_INVALIDARG;
    }
    *pInBounds = *pOutBounds;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CDXBaseNTo1::SetMiscFlags(DWORD dwMiscFlags) noexcept
{
    const ObjectLock lock(this);
    const DWORD options = dwMiscFlags & DXTMF_OPTION_MASK;
    const bool unknown = (options & ~DWORD{DXTMF_VALID_OPTIONS}) != 0;
    const bool cannotBlend =
        (options & DXTMF_BLEND_WITH_OUTPUT) != 0 && (m_dwMiscFlags & DXTMF_BLEND_SUPPORTED) == 0;
    const bool cannotDither =
        (options & DXTMF_DITHER_OUTPUT) != 0 && (m_dwMiscFlags & DXTMF_DITHER_SUPPORTED) == 0;
    if (unknown || cannotBlend || cannotDither)
    {
        return E_INVALIDARG;
    }
    const DWORD flags = (m_dwMiscFlags & ~DWORD{DXTMF_OPTION_MASK}) | options;
    if (flags != m_dwMiscFlags)
    {
        m_dwMiscFlags = flags;
        SetDirty();
    }
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CDXBaseNTo1::GetMiscFlags(DWORD* pdwMiscFlags) noexcept
{
    if (pdwMiscFlags == nullptr)
    {
        return E_POINTER;
    }
    const ObjectLock lock(this);
    *pdwMiscFlags = m_dwMiscFlags;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CDXBaseNTo1::GetInOutInfo(BOOL bIsOutput, ULONG ulIndex, DWORD* pdwFlags,
                                                    GUID* pIDs, ULONG* pcIDs,
                                                    IUnknown** ppUnkCurrentObject) noexcept
{
    if (pdwFlags == nullptr || (pIDs != nullptr && pcIDs == nullptr))
    {
        return E_POINTER;
    }
    const ObjectLock lock(this);
    const bool exists = ulIndex < (bIsOutput != FALSE ? 1 : m_ulMaxInputs);
    if (exists && pIDs != nullptr && *pcIDs == 0)
    {
        return E_INVALIDARG;
    }
    const bool optional = exists && bIsOutput == FALSE && ulIndex >= m_ulNumInRequired;
    *pdwFlags = optional ? DWORD{DXINOUTF_OPTIONAL} : 0;
    const bool answersId = exists && pIDs != nullptr;
    if (answersId)
    {
        pIDs[0] = IID_IDXSurface;
    }
    if (pcIDs != nullptr)
    {
        *pcIDs = answersId ? 1 : 0;
    }
    if (ppUnkCurrentObject != nullptr)
    {
        IDXSurface* const current = bIsOutput == FALSE ? InputSurface(ulIndex)
                                    : exists           ? OutputSurface()
                                                       : nullptr;
        *ppUnkCurrentObject = CComPtr<IUnknown>(current).Detach();
    }
    return exists ? S_OK : S_FALSE;
}

HRESULT STDMETHODCALLTYPE CDXBaseNTo1::SetQuality(float fQuality) noexcept
{
    const ObjectLock lock(this);
    if (!(fQuality >= 0.0F && fQuality <= 1.0F)) // no number fails here too
    {
        return E_INVALIDARG;
    }
    if ((m_dwMiscFlags & DXTMF_QUALITY_SUPPORTED) == 0)
    {
        return E_NOTIMPL;
    }
    if (fQuality != m_fQuality)
    {
        m_fQuality = fQuality;
        SetDirty();
    }
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CDXBaseNTo1::GetQuality(float* fQuality) noexcept
{
    if (fQuality == nullptr)
    {
        return E_POINTER;
    }
    const ObjectLock lock(this);
    *fQuality = m_fQuality;
    return S_OK;
}

// IDXSurfacePick

HRESULT STDMETHODCALLTYPE CDXBaseNTo1::PointPick(const DXVEC* pPoint, ULONG* pulInputSurfaceIndex,
                                                 DXVEC* pInputPoint) noexcept
{
    if (pPoint == nullptr || pulInputSurfaceIndex == nullptr || pInputPoint == nullptr)
    {
        return E_POINTER;
    }
    const ObjectLock lock(this);
    if (m_surfaces.IsEmpty())
    {
        return DXTERR_UNINITIALIZED;
    }
    const CDXDVec position(*pPoint);
    const CDXDVec point(position[DXB_X], position[DXB_Y]); // inputs lie where the output does
    CDXTWorkInfoNTo1 whole;
    HRESULT hr = CallHook([&] { return ComputeBounds(nullptr, nullptr, whole); });
    if (FAILED(hr))
    {
        return hr;
    }
    if (whole.DoBnds.TestIntersect(CDXDBnds(point)) == FALSE)
    {
        return S_FALSE;
    }
    const CComPtr<IDXSurface> input(InputSurface());
    BYTE alpha = 0;
    hr = input != nullptr ? CallHook([&] { return AlphaAt(input, point, alpha); }) : S_FALSE;
    if (hr != S_OK)
    {
        return FAILED(hr) ? hr : DXT_S_HITOUTPUT;
    }
    if (alpha == 0)
    {
        return S_FALSE;
    }
    *pulInputSurfaceIndex = 0;
    *pInputPoint = point;
    return S_OK;
}

// IObjectWithSite

HRESULT STDMETHODCALLTYPE CDXBaseNTo1::SetSite(IUnknown* pUnkSite) noexcept
{
    // The factory is fetched before the lock is taken, and what these replace is released by them
    // after it is given back: a site may wait for another thread that is in this object.
    CComPtr<IUnknown> site(pUnkSite);
    const CComQIPtr<IServiceProvider> provider(pUnkSite);
    auto surfaceFactory = SurfaceFactoryOf(provider);

    const ObjectLock lock(this);
    std::swap(m_site, site);
    std::swap(m_cpSurfFact, surfaceFactory);
    if (pUnkSite == nullptr)
    {
        m_surfaces.Clear();
    }
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CDXBaseNTo1::GetSite(REFIID riid, void** ppvSite) noexcept
{
    if (ppvSite == nullptr)
    {
        return E_POINTER;
    }
    *ppvSite = nullptr;
    CComPtr<IUnknown> site;
    {
        const ObjectLock lock(this);
        site = m_site;
    }
    if (site == nullptr)
    {
        return E_FAIL;
    }
    return ForeignResult([&] { return site->QueryInterface(riid, ppvSite); });
}
