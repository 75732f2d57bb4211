// An image in memory as an effect sees one: its bounds, its format, its locks and what the host
// knows about the frame on it. Tests: tests/tools/glazelhost/surface/host_surface_test.cpp.
#pragma once

#include "contract/host_interfaces.h"
#include "platform/dxtransform/dxtrans.h"
#include "support/win32/slim_lock.h"
#include "tools/glazelhost/surface/area_locks.h"
#include "tools/glazelhost/surface/contract_log.h"
#include "tools/glazelhost/surface/pixel_grid.h"

#include <atomic>
#include <utility>

namespace GlazelHost
{

// Counted from zero: the first CComPtr owns it. Any thread for the COM methods; the owner's methods
// are for times when no lock is held.
class CHostSurface final : public IDXSurface, public ISfFrameInformation
{
public:
    // In memory of its own. Throws std::bad_alloc.
    explicit CHostSurface(const SurfaceLayout& layout) : CHostSurface(PixelGrid(layout)) {}
    explicit CHostSurface(PixelGrid pixels);
    CHostSurface(const CHostSurface&) = delete;
    CHostSurface& operator=(const CHostSurface&) = delete;

    // For the owner.
    const PixelGrid& Pixels() const noexcept { return m_pixels; }
    ContractLog& Log() noexcept { return m_log; }
    // The same layout in other memory; without any, locks fail.
    void Show(PixelGrid pixels) noexcept { m_pixels = std::move(pixels); }
    void SetFrameInformation(const FrameInformation& information) noexcept;
    // The owner wrote pixels itself: effects see that the picture has changed.
    void PixelsChanged() noexcept;
    // Notes locks that are still held and guard bands that were overwritten, which it restores.
    void CheckAfterUse() noexcept;

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override;
    ULONG STDMETHODCALLTYPE Release() noexcept override;

    // IDXBaseObject
    HRESULT STDMETHODCALLTYPE GetGenerationId(ULONG* id) noexcept override;
    HRESULT STDMETHODCALLTYPE IncrementGenerationId(BOOL refresh) noexcept override;
    HRESULT STDMETHODCALLTYPE GetObjectSize(ULONG* size) noexcept override;

    // IDXSurface
    HRESULT STDMETHODCALLTYPE GetPixelFormat(GUID* formatId,
                                             DXSAMPLEFORMATENUM* format) noexcept override;
    HRESULT STDMETHODCALLTYPE GetBounds(DXBNDS* bounds) noexcept override;
    HRESULT STDMETHODCALLTYPE GetStatusFlags(DWORD* flags) noexcept override;
    HRESULT STDMETHODCALLTYPE SetStatusFlags(DWORD flags) noexcept override;
    HRESULT STDMETHODCALLTYPE LockSurface(const DXBNDS* bounds, ULONG timeOutMs, DWORD flags,
                                          REFIID riid, void** pointer,
                                          ULONG* generationId) noexcept override;
    HRESULT STDMETHODCALLTYPE GetDirectDrawSurface(REFIID riid, void** surface) noexcept override;
    HRESULT STDMETHODCALLTYPE GetColorKey(DXSAMPLE* key) noexcept override;
    HRESULT STDMETHODCALLTYPE SetColorKey(DXSAMPLE key) noexcept override;
    HRESULT STDMETHODCALLTYPE LockSurfaceDC(const DXBNDS* bounds, ULONG timeOutMs, DWORD flags,
                                            IDXDCLock** lock) noexcept override;
    HRESULT STDMETHODCALLTYPE SetAppData(DWORD_PTR data) noexcept override;
    HRESULT STDMETHODCALLTYPE GetAppData(DWORD_PTR* data) noexcept override;

    // ISfFrameInformation
    HRESULT STDMETHODCALLTYPE GetFrameInformation(FrameInformation* information,
                                                  ULONG size) noexcept override;

private:
    friend class CSamplePointer;

    ~CHostSurface() = default;
    // S_OK with the area entered, or E_ABORT when the time was over first. Throws std::bad_alloc.
    HRESULT Enter(const Area& area, bool forWriting, ULONG timeOutMs);
    void Leave(const Area& area, bool forWriting) noexcept;
    HRESULT Lock(const Area& area, bool forWriting, ULONG timeOutMs, REFIID riid, void** pointer,
                 ULONG* generationId);

    std::atomic<ULONG> m_references{0};
    std::atomic<ULONG> m_generationId{1};
    std::atomic<DWORD> m_statusFlags{0};
    std::atomic<DWORD> m_colorKey{0};
    std::atomic<DWORD_PTR> m_appData{0};
    PixelGrid m_pixels; // guarded by m_locks
    ContractLog m_log;
    SlimLock m_gate;
    CONDITION_VARIABLE m_released = CONDITION_VARIABLE_INIT;
    AreaLocks m_locks;                // guarded by m_gate
    FrameInformation m_information{}; // guarded by m_gate
};

} // namespace GlazelHost
