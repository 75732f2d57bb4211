#include "tests/doubles/fake_surface.h"

#include "tests/doubles/fake_samples.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <mutex>
#include <new>

namespace
{

LONG g_liveSurfaces = 0;

BYTE ByteOf(float value) noexcept
{
    return static_cast<BYTE>(std::lround(std::clamp(value, 0.0F, 1.0F) * 255.0F));
}

// Whether the bounds are discrete, not empty and inside the surface; then `area` is what they say.
bool AreaOf(const DXBNDS* bounds, LONG width, LONG height, RECT& area) noexcept
{
    area = {0, 0, width, height};
    if (bounds == nullptr)
    {
        return true;
    }
    area = {bounds->u.D[DXB_X].Min, bounds->u.D[DXB_Y].Min, bounds->u.D[DXB_X].Max,
            bounds->u.D[DXB_Y].Max};
    return bounds->eType == DXBT_DISCRETE && area.left >= 0 && area.top >= 0 &&
           area.left < area.right && area.top < area.bottom && area.right <= width &&
           area.bottom <= height;
}

} // namespace

void CallLog::Add(const std::string& call)
{
    const std::lock_guard guard(m_lock);
    m_calls.push_back(call);
}

std::vector<std::string> CallLog::Calls() const
{
    const std::lock_guard guard(m_lock);
    return m_calls;
}

std::vector<std::string> CallLog::LockCalls() const
{
    std::vector<std::string> calls = Calls();
    std::erase_if(calls,
                  [](const std::string& call) { return call.find(".Get") != std::string::npos; });
    return calls;
}

void CallLog::Clear()
{
    const std::lock_guard guard(m_lock);
    m_calls.clear();
}

CComPtr<FakeSurface> FakeSurface::Make(FakeSurfaceSettings settings)
{
    return new FakeSurface(std::move(settings));
}

FakeSurface::FakeSurface(FakeSurfaceSettings settings)
    : m_settings(std::move(settings)),
      m_sampleBytes(m_settings.format == DXPF_NONSTANDARD ? 4 * sizeof(float) : 4),
      m_rowBytes(m_settings.width * static_cast<LONG>(m_sampleBytes) + m_settings.rowPadding),
      m_memory(static_cast<std::size_t>(m_rowBytes) * static_cast<std::size_t>(m_settings.height))
{
    ::InterlockedIncrement(&g_liveSurfaces);
}

FakeSurface::~FakeSurface()
{
    ::InterlockedDecrement(&g_liveSurfaces);
}

LONG FakeSurface::LiveSurfaces() noexcept
{
    return g_liveSurfaces;
}

void FakeSurface::FailCall(const std::string& method, HRESULT result, int nth)
{
    m_failures[method] = {nth, result, Throws::Nothing};
}

void FakeSurface::ThrowFrom(const std::string& method, Throws what, int nth)
{
    m_failures[method] = {nth, S_OK, what};
}

void FakeSurface::Note(const char* method)
{
    if (m_settings.log != nullptr)
    {
        m_settings.log->Add(m_settings.name + "." + method);
        if (onCall)
        {
            onCall(method);
        }
    }
}

HRESULT FakeSurface::Enter(const char* method)
{
    Note(method);
    return fails && fails(method) ? E_FAIL : Due(method);
}

HRESULT FakeSurface::Due(const char* method)
{
    if (m_failures.empty())
    {
        return S_OK;
    }
    const Failure failure = TakeFailure(method);
    Throw(failure.throws); // with nothing here to destroy: not every exception does that
    return failure.result;
}

FakeSurface::Failure FakeSurface::TakeFailure(const char* method)
{
    const std::lock_guard guard(m_lock);
    const auto due = m_failures.find(method);
    if (due == m_failures.end() || --due->second.callsToGo > 0)
    {
        return {0, S_OK, Throws::Nothing};
    }
    const Failure failure = due->second;
    m_failures.erase(due);
    return failure;
}

std::uint8_t* FakeSurface::Row(LONG y) noexcept
{
    const LONG stored = m_settings.bottomUp ? m_settings.height - 1 - y : y;
    return m_memory.data() +
           static_cast<std::size_t>(stored) * static_cast<std::size_t>(m_rowBytes);
}

DXSAMPLE FakeSurface::Sample(LONG x, LONG y) noexcept
{
    const std::uint8_t* const bytes = Row(y) + static_cast<std::size_t>(x) * m_sampleBytes;
    if (m_settings.format == DXPF_NONSTANDARD)
    {
        float channels[4];
        std::memcpy(channels, bytes, sizeof(channels));
        return {ByteOf(channels[3]), ByteOf(channels[2]), ByteOf(channels[1]), ByteOf(channels[0])};
    }
    DWORD bits = 0;
    std::memcpy(&bits, bytes, sizeof(bits));
    if (m_settings.format == DXPF_PMARGB32)
    {
        return Straight(DXPMSAMPLE(bits));
    }
    return DXSAMPLE(m_settings.format == DXPF_RGB32 ? bits | 0xFF000000U : bits);
}

void FakeSurface::SetSample(LONG x, LONG y, DXSAMPLE sample) noexcept
{
    std::uint8_t* const bytes = Row(y) + static_cast<std::size_t>(x) * m_sampleBytes;
    if (m_settings.format == DXPF_NONSTANDARD)
    {
        const float channels[4] = {
            static_cast<float>(sample.Blue) / 255.0F, static_cast<float>(sample.Green) / 255.0F,
            static_cast<float>(sample.Red) / 255.0F, static_cast<float>(sample.Alpha) / 255.0F};
        std::memcpy(bytes, channels, sizeof(channels));
        return;
    }
    const DWORD bits =
        m_settings.format == DXPF_PMARGB32 ? DWORD{Premultiplied(sample)} : DWORD{sample};
    std::memcpy(bytes, &bits, sizeof(bits));
}

void FakeSurface::Fill(DXSAMPLE sample) noexcept
{
    for (LONG y = 0; y < m_settings.height; ++y)
    {
        for (LONG x = 0; x < m_settings.width; ++x)
        {
            SetSample(x, y, sample);
        }
    }
}

HRESULT STDMETHODCALLTYPE FakeSurface::QueryInterface(REFIID riid, void** ppv)
{
    if (ppv == nullptr)
    {
        return E_POINTER;
    }
    *ppv = nullptr;
    Due("QueryInterface");
    if (::IsEqualIID(riid, IID_IUnknown) || ::IsEqualIID(riid, IID_IDXBaseObject) ||
        ::IsEqualIID(riid, IID_IDXSurface))
    {
        *ppv = static_cast<IDXSurface*>(this);
    }
    else if (m_settings.frame && ::IsEqualIID(riid, IID_ISfFrameInformation))
    {
        *ppv = static_cast<ISfFrameInformation*>(&m_information);
        m_information.AddRef();
        return informationQueryResult;
    }
    else
    {
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

ULONG STDMETHODCALLTYPE FakeSurface::AddRef()
{
    Due("AddRef");
    return static_cast<ULONG>(::InterlockedIncrement(&m_references));
}

ULONG STDMETHODCALLTYPE FakeSurface::Release()
{
    const LONG left = ::InterlockedDecrement(&m_references);
    if (left == 0)
    {
        const auto gone = std::move(onGone);
        delete this;
        if (gone)
        {
            gone();
        }
        return 0;
    }
    Due("Release");
    return static_cast<ULONG>(left);
}

HRESULT STDMETHODCALLTYPE FakeSurface::GetGenerationId(ULONG* id)
{
    const HRESULT hr = Enter("GetGenerationId");
    if (SUCCEEDED(hr))
    {
        *id = generationId;
    }
    return hr;
}

HRESULT STDMETHODCALLTYPE FakeSurface::IncrementGenerationId(BOOL)
{
    Touch();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE FakeSurface::GetObjectSize(ULONG* size)
{
    *size = static_cast<ULONG>(m_memory.size());
    return S_OK;
}

HRESULT STDMETHODCALLTYPE FakeSurface::GetPixelFormat(GUID*, DXSAMPLEFORMATENUM* format)
{
    const HRESULT hr = Enter("GetPixelFormat");
    if (SUCCEEDED(hr) && format != nullptr)
    {
        *format = m_settings.format;
    }
    return hr;
}

HRESULT STDMETHODCALLTYPE FakeSurface::GetBounds(DXBNDS* bounds)
{
    const HRESULT hr = Enter("GetBounds");
    if (SUCCEEDED(hr))
    {
        *bounds = {};
        bounds->eType = DXBT_DISCRETE;
        bounds->u.D[DXB_X] = {0, m_settings.width};
        bounds->u.D[DXB_Y] = {0, m_settings.height};
        bounds->u.D[DXB_Z] = {0, m_settings.tellsLayer ? 1 : 0};
        bounds->u.D[DXB_T] = {0, m_settings.tellsLayer ? 1 : 0};
    }
    return hr;
}

HRESULT STDMETHODCALLTYPE FakeSurface::LockSurface(const DXBNDS* bounds, ULONG timeOutMs,
                                                   DWORD flags, REFIID riid, void** pointer,
                                                   ULONG* lockId)
{
    *pointer = nullptr;
    const HRESULT hr = Enter("LockSurface");
    const std::lock_guard guard(m_lock);
    if (m_settings.log != nullptr)
    {
        lockNotes.push_back(
            {bounds != nullptr ? std::optional(*bounds) : std::nullopt, timeOutMs, flags, riid});
    }
    if (FAILED(hr))
    {
        return hr;
    }
    const bool writes = (flags & DXLOCKF_READWRITE) != 0;
    RECT area{};
    if (!AreaOf(bounds, m_settings.width, m_settings.height, area))
    {
        return DXTERR_INVALID_BOUNDS;
    }
    if (!::IsEqualIID(riid, writes ? IID_IDXARGBReadWritePtr : IID_IDXARGBReadPtr))
    {
        return E_INVALIDARG;
    }
    if (openWriteLocks > 0 || (writes && openReadLocks > 0))
    {
        return E_ABORT;
    }
    auto* const samples = new (std::nothrow) FakeSamples(this, area, writes);
    if (samples == nullptr)
    {
        return E_OUTOFMEMORY;
    }
    ::InterlockedIncrement(writes ? &openWriteLocks : &openReadLocks);
    generationId += writes ? 1U : 0U;
    if (lockId != nullptr)
    {
        *lockId = generationId;
    }
    samples->AddRef();
    *pointer = static_cast<IDXARGBReadWritePtr*>(samples);
    return hr;
}

HRESULT STDMETHODCALLTYPE FakeSurface::GetStatusFlags(DWORD*)
{
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE FakeSurface::SetStatusFlags(DWORD)
{
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE FakeSurface::GetDirectDrawSurface(REFIID, void** surface)
{
    *surface = nullptr;
    return E_NOINTERFACE;
}

HRESULT STDMETHODCALLTYPE FakeSurface::GetColorKey(DXSAMPLE*)
{
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE FakeSurface::SetColorKey(DXSAMPLE)
{
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE FakeSurface::LockSurfaceDC(const DXBNDS*, ULONG, DWORD, IDXDCLock** lock)
{
    *lock = nullptr;
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE FakeSurface::SetAppData(DWORD_PTR)
{
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE FakeSurface::GetAppData(DWORD_PTR*)
{
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE FakeSurface::Information::QueryInterface(REFIID riid, void** ppv)
{
    return m_surface.QueryInterface(riid, ppv);
}

ULONG STDMETHODCALLTYPE FakeSurface::Information::AddRef()
{
    m_surface.AddRef();
    return static_cast<ULONG>(::InterlockedIncrement(&m_references));
}

ULONG STDMETHODCALLTYPE FakeSurface::Information::Release()
{
    const LONG left = ::InterlockedDecrement(&m_references);
    if (left == 0)
    {
        m_surface.Note("GetFrameInformation.Release");
    }
    m_surface.Release(); // may be the end of this
    return static_cast<ULONG>(left);
}

HRESULT STDMETHODCALLTYPE
FakeSurface::Information::GetFrameInformation(FrameInformation* information, ULONG size)
{
    const HRESULT hr = m_surface.Enter("GetFrameInformation");
    if (m_surface.m_settings.log != nullptr)
    {
        m_surface.informationSizes.push_back(size);
    }
    if (SUCCEEDED(hr))
    {
        std::memcpy(information, &*m_surface.m_settings.frame,
                    std::min<std::size_t>(size, sizeof(FrameInformation)));
    }
    return hr;
}
