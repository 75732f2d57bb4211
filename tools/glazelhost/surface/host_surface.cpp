#include "tools/glazelhost/surface/host_surface.h"

#include "tools/glazelhost/surface/lock_bounds.h"
#include "tools/glazelhost/surface/sample_pointer.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <mutex>
#include <new>

namespace GlazelHost
{

namespace
{

struct FormatRow
{
    SurfaceFormat format;
    DXSAMPLEFORMATENUM number; // what effects decide by
    GUID id;                   // this host's own
};

// clang-format off
constexpr std::array kFormats{
    FormatRow{SurfaceFormat::Straight8,      DXPF_ARGB32,      {0x5B0C36A1, 0x2E1D, 0x4C57, {0x9D, 0x13, 0x6A, 0x5E, 0x41, 0xF2, 0x88, 0x01}}},
    FormatRow{SurfaceFormat::Premultiplied8, DXPF_PMARGB32,    {0x5B0C36A1, 0x2E1D, 0x4C57, {0x9D, 0x13, 0x6A, 0x5E, 0x41, 0xF2, 0x88, 0x02}}},
    FormatRow{SurfaceFormat::StraightFloat,  DXPF_NONSTANDARD, {0x5B0C36A1, 0x2E1D, 0x4C57, {0x9D, 0x13, 0x6A, 0x5E, 0x41, 0xF2, 0x88, 0x03}}},
};
// clang-format on

const FormatRow& RowOf(SurfaceFormat format) noexcept
{
    return kFormats[static_cast<std::size_t>(format)];
}

} // namespace

DXSAMPLEFORMATENUM FormatNumber(SurfaceFormat format) noexcept
{
    return RowOf(format).number;
}

CHostSurface::CHostSurface(PixelGrid pixels) : m_pixels(std::move(pixels)) {}

void CHostSurface::SetFrameInformation(const FrameInformation& information) noexcept
{
    const std::lock_guard guard(m_gate);
    m_information = information;
}

void CHostSurface::PixelsChanged() noexcept
{
    ++m_generationId;
}

void CHostSurface::CheckAfterUse() noexcept
{
    {
        const std::lock_guard guard(m_gate);
        if (m_locks.Count() > 0)
        {
            m_log.Note(Violation::LockLeftOpen);
        }
    }
    if (!m_pixels.GuardsAreIntact())
    {
        m_log.Note(Violation::GuardOverwritten);
        m_pixels.RestoreGuards();
    }
}

HRESULT CHostSurface::QueryInterface(REFIID riid, void** object) noexcept
{
    if (object == nullptr)
    {
        return E_POINTER;
    }
    *object = nullptr;
    if (riid == IID_IUnknown || riid == IID_IDXBaseObject || riid == IID_IDXSurface)
    {
        *object = static_cast<IDXSurface*>(this);
    }
    else if (riid == IID_ISfFrameInformation)
    {
        *object = static_cast<ISfFrameInformation*>(this);
    }
    else
    {
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

ULONG CHostSurface::AddRef() noexcept
{
    return ++m_references;
}

ULONG CHostSurface::Release() noexcept
{
    const ULONG left = --m_references;
    if (left == 0)
    {
        delete this;
    }
    return left;
}

HRESULT CHostSurface::GetGenerationId(ULONG* id) noexcept
{
    if (id == nullptr)
    {
        return E_POINTER;
    }
    *id = m_generationId;
    return S_OK;
}

HRESULT CHostSurface::IncrementGenerationId(BOOL) noexcept
{
    // Size, format and key never change behind this surface's back, so there is nothing to re-read.
    ++m_generationId;
    return S_OK;
}

HRESULT CHostSurface::GetObjectSize(ULONG* size) noexcept
{
    if (size == nullptr)
    {
        return E_POINTER;
    }
    const SurfaceLayout& layout = m_pixels.Layout();
    const std::size_t bytes =
        sizeof(*this) + layout.PitchBytes() * static_cast<std::size_t>(layout.height);
    *size =
        static_cast<ULONG>(std::min<std::size_t>(bytes, MAXDWORD)); // large float images are larger
    return S_OK;
}

HRESULT CHostSurface::GetPixelFormat(GUID* formatId, DXSAMPLEFORMATENUM* format) noexcept
{
    const FormatRow& row = RowOf(m_pixels.Layout().format);
    if (formatId != nullptr)
    {
        *formatId = row.id;
    }
    if (format != nullptr)
    {
        *format = row.number;
    }
    return S_OK;
}

HRESULT CHostSurface::GetBounds(DXBNDS* bounds) noexcept
{
    if (bounds == nullptr)
    {
        return E_POINTER;
    }
    *bounds = BoundsOfSurface(m_pixels.Layout().width, m_pixels.Layout().height);
    return S_OK;
}

HRESULT CHostSurface::GetStatusFlags(DWORD* flags) noexcept
{
    if (flags == nullptr)
    {
        return E_POINTER;
    }
    *flags = m_statusFlags;
    return S_OK;
}

HRESULT CHostSurface::SetStatusFlags(DWORD flags) noexcept
{
    if ((flags & ~DWORD{DXSURF_VALIDFLAGS}) != 0)
    {
        return DXTERR_INVALID_FLAGS;
    }
    m_statusFlags = flags;
    return S_OK;
}

HRESULT CHostSurface::LockSurface(const DXBNDS* bounds, ULONG timeOutMs, DWORD flags, REFIID riid,
                                  void** pointer, ULONG* generationId) noexcept
{
    if (pointer == nullptr)
    {
        return E_POINTER;
    }
    *pointer = nullptr;
    if ((flags & ~DWORD{DXLOCKF_VALIDFLAGS}) != 0)
    {
        return DXTERR_INVALID_FLAGS;
    }
    const bool forWriting = (flags & DXLOCKF_READWRITE) != 0;
    if (riid != IID_IDXARGBReadPtr && riid != IID_IDXARGBReadWritePtr)
    {
        return E_NOINTERFACE;
    }
    if (riid == IID_IDXARGBReadWritePtr && !forWriting)
    {
        return E_INVALIDARG;
    }
    const auto area = AreaOfBounds(bounds, m_pixels.Layout().width, m_pixels.Layout().height);
    if (!area)
    {
        return DXTERR_INVALID_BOUNDS;
    }
    if (forWriting && (m_statusFlags & DXSURF_READONLY) != 0)
    {
        return E_ACCESSDENIED;
    }
    if (!m_pixels.HasMemory())
    {
        return DXTERR_UNINITIALIZED;
    }
    try
    {
        return Lock(*area, forWriting, timeOutMs, riid, pointer, generationId);
    }
    catch (const std::bad_alloc&)
    {
        return E_OUTOFMEMORY;
    }
}

HRESULT CHostSurface::Lock(const Area& area, bool forWriting, ULONG timeOutMs, REFIID riid,
                           void** pointer, ULONG* generationId)
{
    const HRESULT entered = Enter(area, forWriting, timeOutMs);
    if (FAILED(entered))
    {
        return entered;
    }
    auto* lock = new CSamplePointer(*this, area, forWriting);
    if (lock == nullptr)
    {
        Leave(area, forWriting);
        return E_OUTOFMEMORY;
    }
    const ULONG id = forWriting ? ++m_generationId : m_generationId.load();
    if (generationId != nullptr)
    {
        *generationId = id;
    }
    const HRESULT queried = lock->QueryInterface(riid, pointer);
    lock->Release();
    return queried;
}

HRESULT CHostSurface::Enter(const Area& area, bool forWriting, ULONG timeOutMs)
{
    const ULONGLONG start = ::GetTickCount64();
    const std::lock_guard guard(m_gate);
    while (!m_locks.CanEnter(area, forWriting))
    {
        DWORD wait = INFINITE;
        if (timeOutMs != INFINITE)
        {
            const ULONGLONG passed = ::GetTickCount64() - start;
            if (passed >= timeOutMs)
            {
                return E_ABORT;
            }
            wait = static_cast<DWORD>(timeOutMs - passed);
        }
        ::SleepConditionVariableSRW(&m_released, &m_gate.Native(), wait, 0);
    }
    m_locks.Enter(area, forWriting);
    return S_OK;
}

void CHostSurface::Leave(const Area& area, bool forWriting) noexcept
{
    {
        const std::lock_guard guard(m_gate);
        m_locks.Leave(area, forWriting);
    }
    ::WakeAllConditionVariable(&m_released);
}

HRESULT CHostSurface::GetDirectDrawSurface(REFIID, void** surface) noexcept
{
    if (surface == nullptr)
    {
        return E_POINTER;
    }
    *surface = nullptr;
    return E_NOINTERFACE;
}

HRESULT CHostSurface::GetColorKey(DXSAMPLE* key) noexcept
{
    if (key == nullptr)
    {
        return E_POINTER;
    }
    *key = DXSAMPLE(m_colorKey.load());
    return S_OK;
}

HRESULT CHostSurface::SetColorKey(DXSAMPLE key) noexcept
{
    m_colorKey = static_cast<DWORD>(key);
    ++m_generationId;
    return S_OK;
}

HRESULT CHostSurface::LockSurfaceDC(const DXBNDS*, ULONG, DWORD, IDXDCLock** lock) noexcept
{
    // Neither float pixels nor ordinary memory can be drawn on by the system.
    if (lock == nullptr)
    {
        return E_POINTER;
    }
    *lock = nullptr;
    return E_NOTIMPL;
}

HRESULT CHostSurface::SetAppData(DWORD_PTR data) noexcept
{
    m_appData = data;
    return S_OK;
}

HRESULT CHostSurface::GetAppData(DWORD_PTR* data) noexcept
{
    if (data == nullptr)
    {
        return E_POINTER;
    }
    *data = m_appData;
    return S_OK;
}

HRESULT CHostSurface::GetFrameInformation(FrameInformation* information, ULONG size) noexcept
{
    if (information == nullptr)
    {
        return E_POINTER;
    }
    if (size > sizeof(FrameInformation))
    {
        return E_INVALIDARG;
    }
    const std::lock_guard guard(m_gate);
    std::memcpy(information, &m_information, size);
    return S_OK;
}

} // namespace GlazelHost
