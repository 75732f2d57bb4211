// CDXBaseNTo1: where bounds and points of one side lie on the other.
#include "platform/dxtransform/dxbasento1.h"
#include "platform/runtime/hook_guard.h"

namespace
{

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
    if (!m_setUp)
    {
        return DXTERR_UNINITIALIZED;
    }
    bool haveInputs = false;
    for (ULONG i = 0; i < m_inputs.size(); ++i)
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

HRESULT STDMETHODCALLTYPE CDXBaseNTo1::PointPick(const DXVEC* pPoint, ULONG* pulInputSurfaceIndex,
                                                 DXVEC* pInputPoint) noexcept
{
    if (pPoint == nullptr || pulInputSurfaceIndex == nullptr || pInputPoint == nullptr)
    {
        return E_POINTER;
    }
    const ObjectLock lock(this);
    if (!m_setUp)
    {
        return DXTERR_UNINITIALIZED;
    }
    const CDXDVec position(*pPoint);
    const CDXDVec point(position[DXB_X], position[DXB_Y]); // inputs lie where the output does
    CDXDBnds made;
    CDXDBnds placed;
    HRESULT hr = CallHook([&] { return ComputeBounds(nullptr, nullptr, made, placed); });
    if (FAILED(hr))
    {
        return hr;
    }
    if (made.TestIntersect(CDXDBnds(point)) == FALSE)
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
