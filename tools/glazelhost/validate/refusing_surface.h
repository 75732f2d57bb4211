// A surface in memory whose n-th call fails. Tests: the groups that use it, on faulty plug-ins.
#pragma once

#include "platform/dxtransform/dxtrans.h"
#include "tools/glazelhost/surface/host_surface.h"

#include <atomic>

namespace GlazelHost
{

enum class SurfaceCall
{
    GetBounds,
    LockSurface,
};

// Counted from zero, as the surface that does its work.
class CRefusingSurface final : public IDXSurface
{
public:
    explicit CRefusingSurface(const SurfaceLayout& layout) : m_surface(new CHostSurface(layout)) {}
    CRefusingSurface(const CRefusingSurface&) = delete;
    CRefusingSurface& operator=(const CRefusingSurface&) = delete;

    static constexpr HRESULT kRefusal = E_ACCESSDENIED;

    CHostSurface& Surface() noexcept { return *m_surface; }
    // The n-th such call from now on, counted from 1, fails; 0 for none.
    void Refuse(SurfaceCall call, unsigned nth) noexcept
    {
        m_call = call;
        m_left = nth;
    }
    bool HasRefused() const noexcept { return m_left == 0; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) noexcept override
    {
        if (riid == IID_IUnknown || riid == IID_IDXBaseObject || riid == IID_IDXSurface)
        {
            AddRef();
            *object = static_cast<IDXSurface*>(this);
            return S_OK;
        }
        return m_surface->QueryInterface(riid, object);
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() noexcept override
    {
        const ULONG left = --m_references;
        if (left == 0)
        {
            delete this;
        }
        return left;
    }

    HRESULT STDMETHODCALLTYPE GetGenerationId(ULONG* id) noexcept override
    {
        return m_surface->GetGenerationId(id);
    }
    HRESULT STDMETHODCALLTYPE IncrementGenerationId(BOOL refresh) noexcept override
    {
        return m_surface->IncrementGenerationId(refresh);
    }
    HRESULT STDMETHODCALLTYPE GetObjectSize(ULONG* size) noexcept override
    {
        return m_surface->GetObjectSize(size);
    }
    HRESULT STDMETHODCALLTYPE GetPixelFormat(GUID* id, DXSAMPLEFORMATENUM* format) noexcept override
    {
        return m_surface->GetPixelFormat(id, format);
    }
    HRESULT STDMETHODCALLTYPE GetBounds(DXBNDS* bounds) noexcept override
    {
        return IsDue(SurfaceCall::GetBounds) ? kRefusal : m_surface->GetBounds(bounds);
    }
    HRESULT STDMETHODCALLTYPE GetStatusFlags(DWORD* flags) noexcept override
    {
        return m_surface->GetStatusFlags(flags);
    }
    HRESULT STDMETHODCALLTYPE SetStatusFlags(DWORD flags) noexcept override
    {
        return m_surface->SetStatusFlags(flags);
    }
    HRESULT STDMETHODCALLTYPE LockSurface(const DXBNDS* bounds, ULONG timeOutMs, DWORD flags,
                                          REFIID riid, void** pointer, ULONG* id) noexcept override
    {
        if (IsDue(SurfaceCall::LockSurface))
        {
            *pointer = nullptr;
            return kRefusal;
        }
        return m_surface->LockSurface(bounds, timeOutMs, flags, riid, pointer, id);
    }
    HRESULT STDMETHODCALLTYPE GetDirectDrawSurface(REFIID riid, void** surface) noexcept override
    {
        return m_surface->GetDirectDrawSurface(riid, surface);
    }
    HRESULT STDMETHODCALLTYPE GetColorKey(DXSAMPLE* key) noexcept override
    {
        return m_surface->GetColorKey(key);
    }
    HRESULT STDMETHODCALLTYPE SetColorKey(DXSAMPLE key) noexcept override
    {
        return m_surface->SetColorKey(key);
    }
    HRESULT STDMETHODCALLTYPE LockSurfaceDC(const DXBNDS* bounds, ULONG timeOutMs, DWORD flags,
                                            IDXDCLock** lock) noexcept override
    {
        return m_surface->LockSurfaceDC(bounds, timeOutMs, flags, lock);
    }
    HRESULT STDMETHODCALLTYPE SetAppData(DWORD_PTR data) noexcept override
    {
        return m_surface->SetAppData(data);
    }
    HRESULT STDMETHODCALLTYPE GetAppData(DWORD_PTR* data) noexcept override
    {
        return m_surface->GetAppData(data);
    }

private:
    ~CRefusingSurface() = default;
    bool IsDue(SurfaceCall call) noexcept { return call == m_call && m_left != 0 && --m_left == 0; }

    std::atomic<ULONG> m_references{0};
    CComPtr<CHostSurface> m_surface;
    SurfaceCall m_call = SurfaceCall::LockSurface;
    std::atomic<unsigned> m_left{0};
};

} // namespace GlazelHost
