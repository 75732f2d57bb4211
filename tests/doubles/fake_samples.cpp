#include "tests/doubles/fake_samples.h"

#include <algorithm>

namespace
{

// Samples `count` from `first` on, with the padding that follows each row of the rectangle.
template <typename Visit>
void ForEachPacked(const DXPACKEDRECTDESC& desc, Visit&& visit)
{
    DXBASESAMPLE* sample = desc.pSamples;
    for (LONG y = desc.rect.top; y < desc.rect.bottom; ++y)
    {
        for (LONG x = desc.rect.left; x < desc.rect.right; ++x)
        {
            visit(x, y, *sample++);
        }
        sample += desc.lRowPadding;
    }
}

} // namespace

DXPMSAMPLE Premultiplied(DXSAMPLE sample) noexcept
{
    const auto scaled = [&](BYTE channel) {
        return static_cast<BYTE>((channel * sample.Alpha + 127) / 255);
    };
    return {sample.Alpha, scaled(sample.Red), scaled(sample.Green), scaled(sample.Blue)};
}

DXSAMPLE Straight(DXPMSAMPLE sample) noexcept
{
    if (sample.Alpha == 0)
    {
        return DXSAMPLE(0);
    }
    const auto scaled = [&](BYTE channel) {
        return static_cast<BYTE>(std::min(255, (channel * 255 + sample.Alpha / 2) / sample.Alpha));
    };
    return {sample.Alpha, scaled(sample.Red), scaled(sample.Green), scaled(sample.Blue)};
}

FakeSamples::FakeSamples(FakeSurface* surface, const RECT& area, bool writable)
    : m_surface(surface), m_area(area), m_writable(writable)
{
}

FakeSamples::~FakeSamples()
{
    LONG& open = m_writable ? m_surface->openWriteLocks : m_surface->openReadLocks;
    ::InterlockedDecrement(&open);
    m_surface->Note("Unlock");
}

HRESULT STDMETHODCALLTYPE FakeSamples::QueryInterface(REFIID riid, void** ppv) noexcept
{
    if (ppv == nullptr)
    {
        return E_POINTER;
    }
    *ppv = nullptr;
    if (::IsEqualIID(riid, IID_IUnknown) || ::IsEqualIID(riid, IID_IDXARGBReadPtr) ||
        (m_writable && ::IsEqualIID(riid, IID_IDXARGBReadWritePtr)))
    {
        *ppv = static_cast<IDXARGBReadWritePtr*>(this);
        AddRef();
        return S_OK;
    }
    return E_NOINTERFACE;
}

ULONG STDMETHODCALLTYPE FakeSamples::AddRef() noexcept
{
    return static_cast<ULONG>(::InterlockedIncrement(&m_references));
}

ULONG STDMETHODCALLTYPE FakeSamples::Release()
{
    const LONG left = ::InterlockedDecrement(&m_references);
    if (left == 0)
    {
        FakeSurface* const surface = m_surface; // the test holds it
        delete this;
        surface->Due("ReleaseLock");
    }
    return static_cast<ULONG>(left);
}

HRESULT STDMETHODCALLTYPE FakeSamples::GetSurface(REFIID riid, void** surface) noexcept
{
    return m_surface->QueryInterface(riid, surface);
}

DXSAMPLEFORMATENUM STDMETHODCALLTYPE FakeSamples::GetNativeType(DXNATIVETYPEINFO* info)
{
    m_surface->Due("GetNativeType");
    if (info != nullptr)
    {
        *info = {};
        if (m_surface->Settings().hasMemory)
        {
            info->pFirstByte = m_surface->Row(0);
            info->pCurrentData =
                m_surface->Row(m_area.top + m_position.y) +
                static_cast<std::size_t>(m_area.left + m_position.x) * m_surface->SampleBytes();
            info->lPitch = m_surface->Pitch();
        }
    }
    return m_surface->Settings().format;
}

void STDMETHODCALLTYPE FakeSamples::Move(LONG samples) noexcept
{
    m_position.x += samples;
}

void STDMETHODCALLTYPE FakeSamples::MoveToRow(ULONG y) noexcept
{
    MoveToXY(0, y);
}

void STDMETHODCALLTYPE FakeSamples::MoveToXY(ULONG x, ULONG y) noexcept
{
    m_position = {static_cast<LONG>(x), static_cast<LONG>(y)};
}

ULONG STDMETHODCALLTYPE FakeSamples::MoveAndGetRunInfo(ULONG row, const DXRUNINFO** info) noexcept
{
    MoveToRow(row);
    m_run.Type = DXRUNTYPE_UNKNOWN & 3U;
    m_run.Count = static_cast<ULONG>(m_area.right - m_area.left) & 0x3FFFFFFFU;
    *info = &m_run;
    return 1;
}

DXSAMPLE* STDMETHODCALLTYPE FakeSamples::Unpack(DXSAMPLE* samples, ULONG count, BOOL move) noexcept
{
    for (ULONG i = 0; i < count; ++i)
    {
        samples[i] = m_surface->Sample(m_area.left + m_position.x + static_cast<LONG>(i),
                                       m_area.top + m_position.y);
    }
    Move(move != FALSE ? static_cast<LONG>(count) : 0);
    return samples;
}

DXPMSAMPLE* STDMETHODCALLTYPE FakeSamples::UnpackPremult(DXPMSAMPLE* samples, ULONG count,
                                                         BOOL move) noexcept
{
    for (ULONG i = 0; i < count; ++i)
    {
        samples[i] = Premultiplied(m_surface->Sample(
            m_area.left + m_position.x + static_cast<LONG>(i), m_area.top + m_position.y));
    }
    Move(move != FALSE ? static_cast<LONG>(count) : 0);
    return samples;
}

void STDMETHODCALLTYPE FakeSamples::UnpackRect(const DXPACKEDRECTDESC* desc)
{
    m_surface->Note("UnpackRect");
    m_surface->Due("UnpackRect");
    if (m_surface->Settings().log != nullptr)
    {
        m_surface->unpacked.push_back(*desc);
    }
    ForEachPacked(*desc, [&](LONG x, LONG y, DXBASESAMPLE& packed) {
        const DXSAMPLE sample = m_surface->Sample(m_area.left + x, m_area.top + y);
        packed =
            desc->bPremult != FALSE ? DXBASESAMPLE(Premultiplied(sample)) : DXBASESAMPLE(sample);
    });
}

void STDMETHODCALLTYPE FakeSamples::PackAndMove(const DXSAMPLE* samples, ULONG count) noexcept
{
    for (ULONG i = 0; i < count; ++i)
    {
        m_surface->SetSample(m_area.left + m_position.x++, m_area.top + m_position.y, samples[i]);
    }
}

void STDMETHODCALLTYPE FakeSamples::PackPremultAndMove(const DXPMSAMPLE* samples,
                                                       ULONG count) noexcept
{
    for (ULONG i = 0; i < count; ++i)
    {
        m_surface->SetSample(m_area.left + m_position.x++, m_area.top + m_position.y,
                             Straight(samples[i]));
    }
}

void STDMETHODCALLTYPE FakeSamples::PackRect(const DXPACKEDRECTDESC* desc)
{
    m_surface->Note("PackRect");
    m_surface->Due("PackRect");
    if (m_surface->Settings().log != nullptr)
    {
        m_surface->packed.push_back(*desc);
    }
    ForEachPacked(*desc, [&](LONG x, LONG y, DXBASESAMPLE& packed) {
        const DWORD bits = packed;
        m_surface->SetSample(m_area.left + x, m_area.top + y,
                             desc->bPremult != FALSE ? Straight(DXPMSAMPLE(bits)) : DXSAMPLE(bits));
    });
}
