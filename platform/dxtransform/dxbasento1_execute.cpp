// CDXBaseNTo1: one execution, from its bounds to its bands.
#include "platform/dxtransform/band_batch.h"
#include "platform/dxtransform/dxbasento1.h"
#include "platform/runtime/hook_guard.h"

#include <algorithm>

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
    return {distance[DXB_X], distance[DXB_Y]};
}

} // namespace

HRESULT STDMETHODCALLTYPE CDXBaseNTo1::Execute(const GUID* pRequestID, const DXBNDS* pClipBnds,
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
    HRESULT hr = CallHook([this] {
        OnUpdateGenerationId();
        return S_OK;
    });
    if (SUCCEEDED(hr) && IsTransformDirty())
    {
        hr = RunOnSetup();
    }
    if (SUCCEEDED(hr))
    {
        hr = CallHook([&] { return OnExecute(pRequestID, pClipBnds, pPlacement); });
    }
    NoteGenerationId(kOutputSlot); // its own writing is no change of the transform
    return hr;
}

HRESULT CDXBaseNTo1::OnExecute(const GUID* pRequestID, const DXBNDS* pClipBnds,
                               const DXVEC* pPlacement)
{
    if (m_ulMaxImageBands == 0)
    {
        return E_NOTIMPL;
    }
    CDXTWorkInfoNTo1 work;
    work.pvThis = this;
    const HRESULT hr = ComputeBounds(pClipBnds, pPlacement, work.DoBnds, work.OutputBnds);
    if (FAILED(hr))
    {
        return hr;
    }
    return work.DoBnds.BoundsAreEmpty() != FALSE ? S_OK : ExecuteBands(pRequestID, work);
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
        doBounds.Offset(CDXDVec() - distance);
    }
    return S_OK;
}

ULONG CDXBaseNTo1::BandsToStartWith(ULONG rows) const noexcept
{
    const ULONG limit = std::min(m_ulMaxImageBands, rows);
    if (limit == 1)
    {
        return 1;
    }
    ULONG processors = 0;
    const CComPtr<IDXTaskManager> taskManager(m_cpTaskMgr);
    if (taskManager == nullptr ||
        FAILED(ForeignResult([&] { return taskManager->QueryNumProcessors(&processors); })))
    {
        SYSTEM_INFO system{};
        ::GetSystemInfo(&system);
        processors = system.dwNumberOfProcessors;
    }
    return std::clamp(processors, 1UL, limit);
}

HRESULT CDXBaseNTo1::ExecuteBands(const GUID* requestId, CDXTWorkInfoNTo1& work) noexcept
{
    const auto rows = static_cast<ULONG>(work.DoBnds.Height());
    ULONG bands = BandsToStartWith(rows);
    HRESULT hr = CallHook([&] { return OnInitInstData(work, bands); });
    if (FAILED(hr))
    {
        return hr;
    }
    bands = std::clamp(bands, 1UL, std::min(m_ulMaxImageBands, rows));
    hr = bands == 1 ? CallHook([&] {
        BOOL continueProcessing = TRUE;
        return RunBand(work, &continueProcessing);
    })
                    : RunBands(requestId, work, bands);
    work.hr = hr;
    const HRESULT freed = CallHook([&] { return OnFreeInstData(work); });
    return FAILED(hr) ? hr : freed;
}

HRESULT CDXBaseNTo1::RunBands(const GUID* requestId, const CDXTWorkInfoNTo1& work,
                              ULONG bands) noexcept
{
    return CallHook([&] {
        CDXTBandBatch batch(*this, work, bands);
        const CComPtr<IDXTaskManager> taskManager(m_cpTaskMgr);
        return taskManager != nullptr ? batch.RunByTaskManager(taskManager, requestId)
                                      : batch.RunInOrder();
    });
}

// E_ABORT when the execution was cancelled before or while the band was made. Any thread.
HRESULT CDXBaseNTo1::RunBand(const CDXTWorkInfoNTo1& work, BOOL* continueProcessing) noexcept
{
    if (*continueProcessing == FALSE)
    {
        return E_ABORT;
    }
    const HRESULT hr = CallHook([&] { return WorkProc(work, continueProcessing); });
    return SUCCEEDED(hr) && *continueProcessing == FALSE ? E_ABORT : hr;
}
