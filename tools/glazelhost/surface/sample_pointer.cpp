#include "tools/glazelhost/surface/sample_pointer.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <new>

namespace GlazelHost
{

namespace
{

// For one lock of the input and one of the output. The class is final: all blocks are of one size.
std::array<std::atomic<void*>, 2> keptBlocks{};

Area AreaOf(const RECT& rect) noexcept
{
    return {rect.left, rect.top, rect.right, rect.bottom};
}

PackedRect PackedRectOf(const DXPACKEDRECTDESC& description) noexcept
{
    // Both sample types are four bytes in the same order.
    static_assert(sizeof(Sample) == sizeof(DXBASESAMPLE));
    return {reinterpret_cast<Sample*>(description.pSamples), description.bPremult != FALSE,
            AreaOf(description.rect), description.lRowPadding};
}

Sample SampleOf(DXPMSAMPLE value) noexcept
{
    return {value.Blue, value.Green, value.Red, value.Alpha};
}

} // namespace

void* CSamplePointer::operator new(std::size_t size) noexcept
{
    for (std::atomic<void*>& kept : keptBlocks)
    {
        if (void* const block = kept.exchange(nullptr))
        {
            return block;
        }
    }
    return ::operator new(size, std::nothrow);
}

void CSamplePointer::operator delete(void* block) noexcept
{
    for (std::atomic<void*>& kept : keptBlocks)
    {
        void* none = nullptr;
        if (kept.compare_exchange_strong(none, block))
        {
            return;
        }
    }
    ::operator delete(block);
}

CSamplePointer::CSamplePointer(CHostSurface& surface, const Area& area, bool forWriting) noexcept
    : m_surface(surface), m_forWriting(forWriting), m_cursor(surface.m_pixels, area, surface.m_log)
{
    m_surface.AddRef();
    m_wholeRow.Type = DXRUNTYPE_UNKNOWN;
    m_wholeRow.Count = static_cast<ULONG>(area.Width()) & 0x3FFFFFFFU; // the field has 30 bits
}

CSamplePointer::~CSamplePointer()
{
    m_surface.Leave(m_cursor.LockedArea(), m_forWriting);
    m_surface.Release();
}

HRESULT CSamplePointer::QueryInterface(REFIID riid, void** object) noexcept
{
    if (object == nullptr)
    {
        return E_POINTER;
    }
    *object = nullptr;
    const bool answers = riid == IID_IUnknown || riid == IID_IDXARGBReadPtr ||
                         (m_forWriting && riid == IID_IDXARGBReadWritePtr);
    if (!answers)
    {
        return E_NOINTERFACE;
    }
    *object = static_cast<IDXARGBReadWritePtr*>(this);
    AddRef();
    return S_OK;
}

ULONG CSamplePointer::AddRef() noexcept
{
    return ++m_references;
}

ULONG CSamplePointer::Release() noexcept
{
    const ULONG left = --m_references;
    if (left == 0)
    {
        delete this;
    }
    return left;
}

HRESULT CSamplePointer::GetSurface(REFIID riid, void** surface) noexcept
{
    return m_surface.QueryInterface(riid, surface);
}

DXSAMPLEFORMATENUM CSamplePointer::GetNativeType(DXNATIVETYPEINFO* info) noexcept
{
    if (info != nullptr)
    {
        DXSAMPLE key;
        m_surface.GetColorKey(&key);
        info->pCurrentData = reinterpret_cast<BYTE*>(m_cursor.CurrentPixel());
        info->pFirstByte = reinterpret_cast<BYTE*>(m_surface.m_pixels.Row(0));
        info->lPitch = static_cast<LONG>(m_surface.m_pixels.Pitch());
        info->dwColorKey = static_cast<DWORD>(key);
    }
    return FormatNumber(m_cursor.Format());
}

void CSamplePointer::Move(LONG samples) noexcept
{
    m_cursor.MoveBy(samples);
}

void CSamplePointer::MoveToRow(ULONG y) noexcept
{
    m_cursor.MoveTo(0, y);
}

void CSamplePointer::MoveToXY(ULONG x, ULONG y) noexcept
{
    m_cursor.MoveTo(x, y);
}

ULONG CSamplePointer::MoveAndGetRunInfo(ULONG row, const DXRUNINFO** info) noexcept
{
    m_cursor.MoveTo(0, row);
    if (info != nullptr)
    {
        *info = &m_wholeRow;
    }
    return 1;
}

void* CSamplePointer::ReadRun(void* buffer, ULONG count, bool wantPremultiplied, bool move) noexcept
{
    if (buffer != nullptr)
    {
        m_cursor.Read({static_cast<Sample*>(buffer), count}, wantPremultiplied);
    }
    else if (m_cursor.Format() ==
             (wantPremultiplied ? SurfaceFormat::Premultiplied8 : SurfaceFormat::Straight8))
    {
        buffer = m_cursor.CurrentRun(count);
    }
    else
    {
        m_surface.m_log.Note(Violation::NullBuffer);
    }
    if (move)
    {
        m_cursor.MoveBy(count);
    }
    return buffer;
}

DXSAMPLE* CSamplePointer::Unpack(DXSAMPLE* samples, ULONG count, BOOL move) noexcept
{
    return static_cast<DXSAMPLE*>(ReadRun(samples, count, false, move != FALSE));
}

DXPMSAMPLE* CSamplePointer::UnpackPremult(DXPMSAMPLE* samples, ULONG count, BOOL move) noexcept
{
    return static_cast<DXPMSAMPLE*>(ReadRun(samples, count, true, move != FALSE));
}

void CSamplePointer::UnpackRect(const DXPACKEDRECTDESC* rect) noexcept
{
    m_cursor.ReadRect(rect != nullptr ? PackedRectOf(*rect) : PackedRect{});
}

void CSamplePointer::WriteRun(const void* samples, ULONG count, bool premultiplied) noexcept
{
    if (samples == nullptr && count > 0)
    {
        m_surface.m_log.Note(Violation::NullBuffer);
        return;
    }
    m_cursor.Write({static_cast<const Sample*>(samples), count}, premultiplied);
    m_cursor.MoveBy(count);
}

void CSamplePointer::PackAndMove(const DXSAMPLE* samples, ULONG count) noexcept
{
    WriteRun(samples, count, false);
}

void CSamplePointer::PackPremultAndMove(const DXPMSAMPLE* samples, ULONG count) noexcept
{
    WriteRun(samples, count, true);
}

void CSamplePointer::PackRect(const DXPACKEDRECTDESC* rect) noexcept
{
    m_cursor.WriteRect(rect != nullptr ? PackedRectOf(*rect) : PackedRect{});
}

void CSamplePointer::CopyRun(IDXARGBReadPtr& source, ULONG count) noexcept
{
    // The source converts to what this surface holds, so each sample is converted at most once.
    const bool premultiplied = m_cursor.Format() == SurfaceFormat::Premultiplied8;
    std::array<DXBASESAMPLE, 256> chunk;
    while (count > 0)
    {
        const ULONG part = std::min<ULONG>(count, chunk.size());
        // What the source cannot deliver arrives as nothing, not as what the stack held.
        std::fill(chunk.begin(), chunk.end(), DXBASESAMPLE(0));
        if (premultiplied)
        {
            source.UnpackPremult(static_cast<DXPMSAMPLE*>(chunk.data()), part, TRUE);
        }
        else
        {
            source.Unpack(static_cast<DXSAMPLE*>(chunk.data()), part, TRUE);
        }
        WriteRun(chunk.data(), part, premultiplied);
        count -= part;
    }
}

void CSamplePointer::CopyAndMoveBoth(DXBASESAMPLE*, IDXARGBReadPtr* source, ULONG count,
                                     BOOL) noexcept
{
    if (source == nullptr)
    {
        m_surface.m_log.Note(Violation::NullBuffer);
        return;
    }
    CopyRun(*source, count);
}

void CSamplePointer::CopyRect(DXBASESAMPLE*, const RECT* destination, IDXARGBReadPtr* source,
                              const POINT* sourceOrigin, BOOL) noexcept
{
    if (source == nullptr)
    {
        m_surface.m_log.Note(Violation::NullBuffer);
        return;
    }
    const Area& locked = m_cursor.LockedArea();
    const Area rect =
        destination != nullptr ? AreaOf(*destination) : Area{0, 0, locked.Width(), locked.Height()};
    const POINT origin = sourceOrigin != nullptr ? *sourceOrigin : POINT{0, 0};
    const bool fits = rect.left >= 0 && rect.left <= rect.right && rect.right <= locked.Width() &&
                      rect.top >= 0 && rect.top <= rect.bottom && rect.bottom <= locked.Height() &&
                      origin.x >= 0 && origin.y >= 0;
    if (!fits)
    {
        // Two rectangles that belong together cannot be cut one at a time: nothing is copied.
        m_surface.m_log.Note(Violation::BadDescriptor);
        return;
    }
    for (int row = 0; row < rect.Height(); ++row)
    {
        source->MoveToXY(static_cast<ULONG>(origin.x), static_cast<ULONG>(origin.y + row));
        m_cursor.MoveTo(rect.left, rect.top + row);
        CopyRun(*source, static_cast<ULONG>(rect.Width()));
    }
}

void CSamplePointer::FillAndMove(DXBASESAMPLE*, DXPMSAMPLE value, ULONG count, BOOL over) noexcept
{
    m_cursor.Fill(count, SampleOf(value), over != FALSE);
    m_cursor.MoveBy(count);
}

void CSamplePointer::FillRect(const RECT* rect, DXPMSAMPLE value, BOOL over) noexcept
{
    const Area& locked = m_cursor.LockedArea();
    m_cursor.FillRect(rect != nullptr ? AreaOf(*rect) : Area{0, 0, locked.Width(), locked.Height()},
                      SampleOf(value), over != FALSE);
}

void CSamplePointer::OverSample(const DXOVERSAMPLEDESC* over) noexcept
{
    if (over == nullptr)
    {
        m_surface.m_log.Note(Violation::NullBuffer);
        return;
    }
    const Sample sample = SampleOf(over->Color);
    m_cursor.MoveTo(over->p.x, over->p.y);
    m_cursor.Blend({&sample, 1});
}

void CSamplePointer::OverArrayAndMove(DXBASESAMPLE*, const DXPMSAMPLE* samples,
                                      ULONG count) noexcept
{
    if (samples == nullptr && count > 0)
    {
        m_surface.m_log.Note(Violation::NullBuffer);
        return;
    }
    m_cursor.Blend({reinterpret_cast<const Sample*>(samples), count});
    m_cursor.MoveBy(count);
}

} // namespace GlazelHost
