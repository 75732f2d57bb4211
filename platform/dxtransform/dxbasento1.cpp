#include "platform/dxtransform/dxbasento1.h"

#include "platform/runtime/hook_guard.h"

#include <servprov.h>

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
    UpdateGenerationId();
    *pID = m_dwGenerationId;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CDXBaseNTo1::IncrementGenerationId(BOOL bRefresh) noexcept
{
    const ObjectLock lock(this);
    if (bRefresh != FALSE && m_setUp)
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

// IDXTransform: flags, quality, what goes in and out

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
        ForgetObjects();
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
