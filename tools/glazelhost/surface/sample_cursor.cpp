#include "tools/glazelhost/surface/sample_cursor.h"

#include <algorithm>
#include <limits>

namespace GlazelHost
{

std::byte* SampleCursor::CurrentPixel() const noexcept
{
    const bool inside = m_x >= 0 && m_x < m_area.Width() && m_y >= 0 && m_y < m_area.Height();
    return inside
               ? m_grid.At(m_area.left + static_cast<int>(m_x), m_area.top + static_cast<int>(m_y))
               : nullptr;
}

std::byte* SampleCursor::CurrentRun(std::size_t count) noexcept
{
    const Run run = RunOf(count);
    return run.count == count ? run.pixels : nullptr;
}

SampleCursor::Run SampleCursor::RunOf(std::size_t count) noexcept
{
    Run run;
    if (count == 0)
    {
        return run;
    }
    // Counts come as 32-bit numbers, so these sums stay far from the ends of 64 bits.
    const auto wanted = static_cast<std::int64_t>(count);
    const std::int64_t first = std::clamp<std::int64_t>(m_x, 0, m_area.Width());
    const std::int64_t end = std::clamp<std::int64_t>(m_x + wanted, 0, m_area.Width());
    if (m_y >= 0 && m_y < m_area.Height() && first < end)
    {
        run.skipped = static_cast<std::size_t>(first - m_x);
        run.count = static_cast<std::size_t>(end - first);
        run.pixels =
            m_grid.At(m_area.left + static_cast<int>(first), m_area.top + static_cast<int>(m_y));
    }
    if (run.count != count)
    {
        m_log.Note(Violation::OutsideLock);
    }
    return run;
}

void SampleCursor::Read(std::span<Sample> samples, bool premultiplied) noexcept
{
    const Run run = RunOf(samples.size());
    if (run.count > 0)
    {
        LoadSamples(run.pixels, Format(), premultiplied, samples.subspan(run.skipped, run.count));
    }
}

void SampleCursor::Write(std::span<const Sample> samples, bool premultiplied) noexcept
{
    const Run run = RunOf(samples.size());
    if (run.count > 0)
    {
        StoreSamples(run.pixels, Format(), premultiplied, samples.subspan(run.skipped, run.count));
    }
}

void SampleCursor::Blend(std::span<const Sample> premultiplied) noexcept
{
    const Run run = RunOf(premultiplied.size());
    std::byte* pixel = run.pixels;
    for (const Sample& top : premultiplied.subspan(run.skipped, run.count))
    {
        Sample sample;
        LoadSamples(pixel, Format(), true, {&sample, 1});
        sample = Over(top, sample);
        StoreSamples(pixel, Format(), true, {&sample, 1});
        pixel += m_grid.Layout().PixelBytes();
    }
}

void SampleCursor::Fill(std::size_t count, Sample premultiplied, bool over) noexcept
{
    const Run run = RunOf(count);
    std::byte* pixel = run.pixels;
    for (std::size_t index = 0; index < run.count; ++index)
    {
        Sample below;
        LoadSamples(pixel, Format(), true, {&below, 1});
        const Sample sample = over ? Over(premultiplied, below) : premultiplied;
        StoreSamples(pixel, Format(), true, {&sample, 1});
        pixel += m_grid.Layout().PixelBytes();
    }
}

bool SampleCursor::IsSound(const Area& rect) noexcept
{
    constexpr std::int64_t kLargest = std::numeric_limits<int>::max();
    const std::int64_t width = std::int64_t{rect.right} - rect.left;
    const std::int64_t height = std::int64_t{rect.bottom} - rect.top;
    if (width < 0 || height < 0 || width > kLargest || height > kLargest)
    {
        m_log.Note(Violation::BadDescriptor);
        return false;
    }
    return true;
}

bool SampleCursor::IsSound(const PackedRect& packed) noexcept
{
    if (!IsSound(packed.rect))
    {
        return false;
    }
    if (packed.rect.Width() + packed.rowPadding < 0)
    {
        m_log.Note(Violation::BadDescriptor);
        return false;
    }
    if (packed.samples == nullptr)
    {
        m_log.Note(Violation::NullBuffer);
        return false;
    }
    return true;
}

SampleCursor::Rows SampleCursor::RowsOf(const Area& rect) noexcept
{
    const Rows rows{std::clamp(rect.top, 0, m_area.Height()),
                    std::clamp(rect.bottom, 0, m_area.Height())};
    if (rows.first != rect.top || rows.end != rect.bottom)
    {
        m_log.Note(Violation::OutsideLock);
    }
    return rows;
}

void SampleCursor::ReadRect(const PackedRect& packed) noexcept
{
    if (!IsSound(packed))
    {
        return;
    }
    const std::int64_t stride = packed.rect.Width() + packed.rowPadding;
    const Rows rows = RowsOf(packed.rect);
    for (int y = rows.first; y < rows.end; ++y)
    {
        MoveTo(packed.rect.left, y);
        Read({packed.samples + (y - std::int64_t{packed.rect.top}) * stride,
              static_cast<std::size_t>(packed.rect.Width())},
             packed.premultiplied);
    }
}

void SampleCursor::WriteRect(const PackedRect& packed) noexcept
{
    if (!IsSound(packed))
    {
        return;
    }
    const std::int64_t stride = packed.rect.Width() + packed.rowPadding;
    const Rows rows = RowsOf(packed.rect);
    for (int y = rows.first; y < rows.end; ++y)
    {
        MoveTo(packed.rect.left, y);
        Write({packed.samples + (y - std::int64_t{packed.rect.top}) * stride,
               static_cast<std::size_t>(packed.rect.Width())},
              packed.premultiplied);
    }
}

void SampleCursor::FillRect(const Area& rect, Sample premultiplied, bool over) noexcept
{
    if (!IsSound(rect))
    {
        return;
    }
    const Rows rows = RowsOf(rect);
    for (int y = rows.first; y < rows.end; ++y)
    {
        MoveTo(rect.left, y);
        Fill(static_cast<std::size_t>(rect.Width()), premultiplied, over);
    }
}

} // namespace GlazelHost
