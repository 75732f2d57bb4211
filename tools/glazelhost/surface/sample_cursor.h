// A position inside the locked area of a surface, and everything that can be read, written, filled
// and blended from there. What lies outside the area is neither read nor written; it is noted.
// Pure: no windows.h. Tests: tests/tools/glazelhost/surface/sample_cursor_test.cpp.
#pragma once

#include "tools/glazelhost/surface/area_locks.h"
#include "tools/glazelhost/surface/contract_log.h"
#include "tools/glazelhost/surface/pixel_grid.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace GlazelHost
{

// A rectangle of samples packed into a caller's buffer of
// (width + rowPadding) * (height - 1) + width samples.
struct PackedRect
{
    Sample* samples = nullptr;
    bool premultiplied = false;
    Area rect;                   // relative to the locked area
    std::int64_t rowPadding = 0; // samples to skip in the buffer after each row
};

// Coordinates are relative to the area, whose top-left sample is (0, 0) and the first position.
// The position may lie anywhere; only the samples inside the area are touched. One thread at a
// time; the grid, the log and the area's lock outlive it.
class SampleCursor
{
public:
    SampleCursor(const PixelGrid& grid, const Area& area, ContractLog& log) noexcept
        : m_grid(grid), m_area(area), m_log(log)
    {
    }

    const Area& LockedArea() const noexcept { return m_area; }
    SurfaceFormat Format() const noexcept { return m_grid.Layout().format; }
    // Memory of the current position; null when that is outside the area.
    std::byte* CurrentPixel() const noexcept;
    // Memory of the current position when `count` samples from it are inside; else null, noted.
    std::byte* CurrentRun(std::size_t count) noexcept;

    void MoveBy(std::int64_t samples) noexcept { m_x += samples; }
    void MoveTo(std::int64_t x, std::int64_t y) noexcept
    {
        m_x = x;
        m_y = y;
    }

    // Samples of one row from the current position on. The position stays.
    void Read(std::span<Sample> samples, bool premultiplied) noexcept;
    void Write(std::span<const Sample> samples, bool premultiplied) noexcept;
    void Blend(std::span<const Sample> premultiplied) noexcept;
    void Fill(std::size_t count, Sample premultiplied, bool over) noexcept;

    // The position afterwards is undefined.
    void ReadRect(const PackedRect& packed) noexcept;
    void WriteRect(const PackedRect& packed) noexcept;
    void FillRect(const Area& rect, Sample premultiplied, bool over) noexcept;

private:
    // What of a run of samples at the current position is inside the area.
    struct Run
    {
        std::size_t skipped = 0; // samples before the area's left edge
        std::size_t count = 0;
        std::byte* pixels = nullptr;
    };
    Run RunOf(std::size_t count) noexcept;
    // The rows of a rectangle that are inside the area.
    struct Rows
    {
        int first;
        int end;
    };
    Rows RowsOf(const Area& rect) noexcept;
    bool IsSound(const Area& rect) noexcept;
    bool IsSound(const PackedRect& packed) noexcept;

    const PixelGrid& m_grid;
    Area m_area;
    ContractLog& m_log;
    std::int64_t m_x = 0;
    std::int64_t m_y = 0;
};

} // namespace GlazelHost
