// Counts of a picture's codes, as scopes show them: levels in each column, colour differences,
// histograms. Luma and colour differences are those of ITU-R BT.709 in the limited range of 8 bits
// (black 16, white 235, differences 16 to 240 about 128), rounded to nearest, without dither:
// what ffmpeg's scopes count in yuv444p. Red, green and blue are counted as they are, 0 to 255.
// Pure: no windows.h. Tests: tests/reference_renderer/editor/scope_bins_test.cpp,
// scope_agreement_test.cpp.
#pragma once

#include "reference_renderer/editor/area_average.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ReferenceRenderer
{

enum class ScopeKind
{
    Parade,    // levels of red, green and blue
    Waveform,  // levels of luma
    Vectors,   // colour differences
    Histogram, // of red, green and blue
};

inline constexpr std::size_t kScopeKinds = 4;
inline constexpr std::size_t kLevels = 256;
inline constexpr std::size_t kColours = 3; // in the order red, green, blue, unless stated

struct LumaCodes
{
    std::uint32_t luma = 0;
    std::uint32_t blueDifference = 0;
    std::uint32_t redDifference = 0;

    friend bool operator==(const LumaCodes&, const LumaCodes&) = default;
};

// Of codes up to 255.
LumaCodes LumaCodesOf(std::uint32_t red, std::uint32_t green, std::uint32_t blue) noexcept;

// The counts of one picture, row by row. Histograms are counted whatever the kind.
class ScopeBins
{
public:
    // Of pictures `width` pixels wide. Parade and Waveform share these evenly among `columns`
    // columns, at most `width`; both at least 1. Throws std::bad_alloc.
    ScopeBins(ScopeKind kind, std::size_t width, std::size_t columns);

    ScopeKind Kind() const noexcept { return m_kind; }
    std::size_t Width() const noexcept { return m_columnOf.size(); }
    std::size_t Columns() const noexcept { return m_columns; }

    // Adds `rows` rows, `pitch` bytes from one to the next, of blue, green, red, alpha, 8 bits
    // each.
    void Count(const std::byte* pixels, std::size_t pitch, std::size_t rows) noexcept;
    std::uint64_t Rows() const noexcept { return m_rows; }
    std::uint64_t Pixels() const noexcept { return m_rows * Width(); }

    const std::array<std::uint32_t, kLevels>& Histogram(std::size_t colour) const noexcept
    {
        return m_histograms[colour];
    }
    // Parade: planes red, green, blue. Waveform: the one plane is luma. kLevels counts.
    std::span<const std::uint32_t> Levels(std::size_t plane, std::size_t column) const noexcept
    {
        return {m_counts.data() + (plane * m_columns + column) * kLevels, kLevels};
    }
    // Waveform: pixels of a column with any of their three codes at its end, 0 or 255.
    std::uint32_t AtEnd(bool high, std::size_t column) const noexcept
    {
        return m_atEnds[high ? 1 : 0][column];
    }
    std::uint32_t PixelsIn(std::size_t column) const noexcept;
    // Vectors: pixels with these colour differences.
    std::uint32_t Vector(std::size_t blueDifference, std::size_t redDifference) const noexcept
    {
        return m_counts[redDifference * kLevels + blueDifference];
    }

private:
    void CountRow(const std::byte* pixels) noexcept;

    ScopeKind m_kind;
    std::size_t m_columns;
    std::vector<std::uint32_t> m_columnOf; // of each pixel of a row
    std::vector<std::uint32_t> m_widths;   // pixels of a row in each column
    std::uint64_t m_rows = 0;
    std::array<std::array<std::uint32_t, kLevels>, kColours> m_histograms{};
    std::vector<std::uint32_t> m_counts;
    std::array<std::vector<std::uint32_t>, 2> m_atEnds;
};

} // namespace ReferenceRenderer
