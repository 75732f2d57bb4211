// CDXBaseNTo1: the base of transforms that make one image from any number of images. Stands in for
// the platform's dxbasento1.h. Left out: mesh inputs and outputs, the DirectDraw and 3D members,
// registration helpers, object safety, most hooks, and bands with the task manager that runs them:
// a frame is a single call of WorkProc on the thread that executes, as with the platform's
// m_ulMaxImageBands at 1.
//
// The object lock is held during Setup, Execute, picking and every setter; it is recursive.
// What a surface, a site or a service throws becomes E_OUTOFMEMORY or E_UNEXPECTED, as for a
// transform's own code; where a failed answer changes nothing, neither does an exception.
// Tests: tests/platform/dxtransform/.
#pragma once

#include "platform/atl/atlcom.h"
#include "platform/dxtransform/dxbounds.h"
#include "platform/dxtransform/dxtrans.h"
#include "platform/dxtransform/surface_set.h"

#include <windows.h>

#include <ocidl.h>

// What one execution is told.
struct CDXTWorkInfoNTo1
{
    CDXDBnds DoBnds;     // what to make, in the transform's output space
    CDXDBnds OutputBnds; // where that goes on the output surface: same width and height
};

class CDXBaseNTo1 : public CComObjectRootEx<CComMultiThreadModel>,
                    public IDXTransform,
                    public IDXSurfacePick,
                    public IObjectWithSite
{
public:
    CDXBaseNTo1() noexcept;
    CDXBaseNTo1(const CDXBaseNTo1&) = delete;
    CDXBaseNTo1& operator=(const CDXBaseNTo1&) = delete;

    BEGIN_COM_MAP(CDXBaseNTo1)
    COM_INTERFACE_ENTRY(IDXTransform)
    COM_INTERFACE_ENTRY(IDXBaseObject)
    COM_INTERFACE_ENTRY(IDXSurfacePick)
    COM_INTERFACE_ENTRY(IObjectWithSite)
    END_COM_MAP()

    // IDXBaseObject. A null place is E_POINTER.
    // Looks at the surfaces first: a changed one is a change of the transform.
    HRESULT STDMETHODCALLTYPE GetGenerationId(ULONG* pID) noexcept override;
    // TRUE also runs OnSetup again on the surfaces that are set up, with Setup's consequences.
    HRESULT STDMETHODCALLTYPE IncrementGenerationId(BOOL bRefresh) noexcept override;
    HRESULT STDMETHODCALLTYPE GetObjectSize(ULONG* pcbSize) noexcept override;

    // IDXTransform
    // No inputs and no outputs clear the transform. A call that is rejected (E_INVALIDARG, or a
    // surface's own failure) keeps the previous set-up; one whose OnSetup fails leaves none.
    HRESULT STDMETHODCALLTYPE Setup(IUnknown* const* punkInputs, ULONG ulNumInputs,
                                    IUnknown* const* punkOutputs, ULONG ulNumOutputs,
                                    DWORD dwFlags) noexcept override;
    // A transform that changed since it was last ready runs OnSetup first. DXTERR_UNINITIALIZED
    // without Setup; E_INVALIDARG for a clip or placement that m_dwMiscFlags does not support.
    HRESULT STDMETHODCALLTYPE Execute(const GUID* pRequestID, const DXBNDS* pClipBnds,
                                      const DXVEC* pPlacement) noexcept override;
    // A null array stands for the current inputs; without any, the output's bounds are the start.
    HRESULT STDMETHODCALLTYPE MapBoundsIn2Out(const DXBNDS* pInBounds, ULONG ulNumInBnds,
                                              ULONG ulOutIndex,
                                              DXBNDS* pOutBounds) noexcept override;
    HRESULT STDMETHODCALLTYPE MapBoundsOut2In(ULONG ulOutIndex, const DXBNDS* pOutBounds,
                                              ULONG ulInIndex, DXBNDS* pInBounds) noexcept override;
    // Takes the two options from the word and ignores what describes the transform; an unknown or
    // unsupported option is E_INVALIDARG and changes nothing.
    HRESULT STDMETHODCALLTYPE SetMiscFlags(DWORD dwMiscFlags) noexcept override;
    HRESULT STDMETHODCALLTYPE GetMiscFlags(DWORD* pdwMiscFlags) noexcept override;
    // S_FALSE and nothing for an index that there is not, so that a caller can count.
    HRESULT STDMETHODCALLTYPE GetInOutInfo(BOOL bIsOutput, ULONG ulIndex, DWORD* pdwFlags,
                                           GUID* pIDs, ULONG* pcIDs,
                                           IUnknown** ppUnkCurrentObject) noexcept override;
    // 0 to 1, else E_INVALIDARG; E_NOTIMPL while quality is not supported.
    HRESULT STDMETHODCALLTYPE SetQuality(float fQuality) noexcept override;
    HRESULT STDMETHODCALLTYPE GetQuality(float* fQuality) noexcept override;

    // IDXSurfacePick
    // Only the first input is looked at. S_FALSE when the point is not on the output or the input
    // is transparent there, DXT_S_HITOUTPUT when it has no sample there.
    HRESULT STDMETHODCALLTYPE PointPick(const DXVEC* pPoint, ULONG* pulInputSurfaceIndex,
                                        DXVEC* pInputPoint) noexcept override;

    // IObjectWithSite
    // The site is also asked for a surface factory. Null releases everything that is held, surfaces
    // included.
    HRESULT STDMETHODCALLTYPE SetSite(IUnknown* pUnkSite) noexcept override;
    HRESULT STDMETHODCALLTYPE GetSite(REFIID riid, void** ppvSite) noexcept override;

protected:
    ~CDXBaseNTo1();

    // What a transform overrides: at least WorkProc. Called under the object lock. An exception
    // that one lets out becomes E_OUTOFMEMORY or E_UNEXPECTED.

    // After new surfaces are in place, and before the execution of a transform that changed.
    virtual HRESULT OnSetup(DWORD dwFlags);
    // Makes the output. Setting *pbContinueProcessing, which comes as TRUE, to FALSE ends the
    // execution with E_ABORT.
    virtual HRESULT WorkProc(const CDXTWorkInfoNTo1& WorkInfo, BOOL* pbContinueProcessing);

    // Borrowed; null for an empty slot.
    IDXSurface* InputSurface(ULONG index = 0) const noexcept { return m_surfaces.Input(index); }
    IDXSurface* OutputSurface() const noexcept { return m_surfaces.Output(); }

    bool IsTransformDirty() const noexcept { return m_dwGenerationId != m_dwCleanGenId; }
    // After every change that affects the result: callers skip the execution of a clean transform.
    void SetDirty() noexcept { ++m_dwGenerationId; }
    void ClearDirty() noexcept { m_dwCleanGenId = m_dwGenerationId; }

    CComPtr<IDXSurfaceFactory> m_cpSurfFact; // from the site; null where it does not offer one

    float m_Duration = 1.0F; // seconds
    float m_Progress = 0.0F; // 0 to 1
    float m_StepResolution = 0.0F;
    float m_fQuality = 0.5F;   // 0 to 1
    DWORD m_dwMiscFlags;       // DXTMISCFLAGS; a transform clears what it does not honour
    DWORD m_dwOptionFlags = 0; // restricts several inputs; not enforced
    DWORD m_dwGenerationId = 1;
    DWORD m_dwCleanGenId = 0;
    ULONG m_ulMaxInputs = 1;
    ULONG m_ulNumInRequired = 1;

private:
    HRESULT CheckCounts(IUnknown* const* inputs, ULONG numInputs, IUnknown* const* outputs,
                        ULONG numOutputs) const noexcept;
    HRESULT Prepare() noexcept;
    HRESULT RunOnSetup() noexcept;

    // Surfaces are asked: these throw what those throw.
    HRESULT CurrentInputBounds(CDXDBnds& bounds) const;
    HRESULT ComputeBounds(const DXBNDS* clip, const DXVEC* placement, CDXTWorkInfoNTo1& work);
    HRESULT Work(const DXBNDS* clip, const DXVEC* placement);

    CDXTSurfaceSet m_surfaces; // as the site, guarded by the object lock
    CComPtr<IUnknown> m_site;
};
