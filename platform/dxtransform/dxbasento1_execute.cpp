// CDXBaseNTo1: one execution and its bounds.
#include "platform/dxtransform/dxbasento1.h"
#include "platform/runtime/hook_guard.h"

namespace
{

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

} // namespace

HRESULT STDMETHODCALLTYPE CDXBaseNTo1::Execute(const GUID*, const DXBNDS* pClipBnds,
                                               const DXVEC* pPlacement) noexcept
{
    const ObjectLock lock(this);
    if (!m_setUp)
    {
        return DXTERR_UNINITIALIZED;
    }
    if ((pClipBnds != nullptr && (m_dwMiscFlags & DXTMF_BOUNDS_SUPPORTED) == 0) ||
        (pPlacement != nullptr && (m_dwMiscFlags & DXTMF_PLACEMENT_SUPPORTED) == 0))
    {
        return E_INVALIDARG;
    }
    UpdateGenerationId();
    HRESULT hr = IsTransformDirty() ? RunOnSetup() : S_OK;
    if (SUCCEEDED(hr))
    {
        hr = CallHook([&] { return Work(pClipBnds, pPlacement); });
    }
    NoteGenerationId(kOutputSlot); // its own writing is no change of the transform
    return hr;
}

HRESULT CDXBaseNTo1::Work(const DXBNDS* clip, const DXVEC* placement)
{
    CDXTWorkInfoNTo1 work;
    const HRESULT hr = ComputeBounds(clip, placement, work.DoBnds, work.OutputBnds);
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
HRESULT CDXBaseNTo1::ComputeBounds(const DXBNDS* clip, const DXVEC* placement, CDXDBnds& doBounds,
                                   CDXDBnds& outputBounds)
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
    outputBounds.IntersectBounds(wanted, ImageBounds(surface));
    doBounds = outputBounds;
    if (outputBounds.BoundsAreEmpty() == FALSE)
    {
        doBounds.Offset(-distance);
    }
    return S_OK;
}
