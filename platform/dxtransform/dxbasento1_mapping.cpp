// CDXBaseNTo1: where bounds and points of one side lie on the other.
#include "platform/dxtransform/dxbasento1.h"
#include "platform/runtime/hook_guard.h"

#include <algorithm>

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
    const HRESULT hr = CallHook([&] { return DetermineBnds(bounds); });
    if (SUCCEEDED(hr))
    {
        *pOutBounds = bounds;
    }
    return hr;
}

HRESULT CDXBaseNTo1::CurrentInputBounds(CDXDBnds& bounds) const
{
    if (!m_setUp)
    {
        return DXTERR_UNINITIALIZED;
    }
    bool haveInputs = false;
    for (ULONG i = 0; i < GetNumInputs(); ++i)
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

void CDXBaseNTo1::OnGetSurfacePickOrder(const CDXDBnds&, ULONG& ulInToTest, ULONG aInIndex[],
                                        BYTE aWeight[])
{
    ulInToTest = 0;
    if (HaveInput(0))
    {
        aInIndex[0] = 0;
        aWeight[0] = 255;
        ulInToTest = 1;
    }
}

HRESULT CDXBaseNTo1::OnSurfacePick(const CDXDBnds&, ULONG&, CDXDVec&)
{
    return E_NOTIMPL;
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
    const CDXDBnds point(CDXDVec(position[DXB_X], position[DXB_Y]));
    CDXDBnds made;
    CDXDBnds placed;
    HRESULT hr = CallHook([&] { return ComputeBounds(nullptr, nullptr, made, placed); });
    if (FAILED(hr))
    {
        return hr;
    }
    if (made.TestIntersect(point) == FALSE)
    {
        return S_FALSE;
    }
    ULONG index = 0;
    CDXDVec inPoint;
    hr = CallHook([&] { return OnSurfacePick(point, index, inPoint); });
    if (hr == E_NOTIMPL)
    {
        hr = CallHook([&] { return PickInOrder(point, index, inPoint); });
    }
    if (hr == S_OK)
    {
        *pulInputSurfaceIndex = index;
        *pInputPoint = inPoint;
    }
    return hr;
}

// The input with the largest share of what is seen at the point; the earlier one of equals.
HRESULT CDXBaseNTo1::PickInOrder(const CDXDBnds& outPoint, ULONG& index, CDXDVec& inPoint)
{
    std::vector<ULONG> order(m_ulMaxInputs);
    std::vector<BYTE> weights(m_ulMaxInputs);
    ULONG count = 0;
    OnGetSurfacePickOrder(outPoint, count, order.data(), weights.data());
    count = std::min(count, m_ulMaxInputs);

    HRESULT result = DXT_S_HITOUTPUT;
    int best = 0;
    for (ULONG i = 0; i < count; ++i)
    {
        CDXDVec candidate;
        BYTE alpha = 0;
        const HRESULT hr = AlphaUnder(outPoint, order[i], candidate, alpha);
        if (FAILED(hr))
        {
            return hr;
        }
        if (hr == S_FALSE)
        {
            continue;
        }
        if (result != S_OK)
        {
            result = S_FALSE; // there is a sample, though it may be transparent
        }
        const int share = alpha * weights[i];
        if (share > best)
        {
            best = share;
            index = order[i];
            inPoint = candidate;
            result = S_OK;
        }
    }
    return result;
}

// S_FALSE when the input is not there, does not map back or has no sample at the point.
HRESULT CDXBaseNTo1::AlphaUnder(const CDXDBnds& outPoint, ULONG index, CDXDVec& inPoint,
                                BYTE& alpha)
{
    DXBNDS mapped{};
    const CComPtr<IDXSurface> surface(InputSurface(index));
    if (surface == nullptr || FAILED(MapBoundsOut2In(0, &outPoint, index, &mapped)))
    {
        return S_FALSE;
    }
    const CDXDBnds corner(mapped);
    inPoint = CDXDVec(corner.Left(), corner.Top());
    const CDXDBnds sample(inPoint);
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
        return surface->LockSurface(&sample, m_ulLockTimeOut, DXLOCKF_READ, IID_IDXARGBReadPtr,
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
