#include "reference_renderer/editor/scope_bins.h"

namespace ReferenceRenderer
{

namespace
{

// Shares of luma, in ten-thousandths. Whole numbers keep everything exact up to the rounding.
constexpr std::int32_t kWhole = 10000;
constexpr std::int32_t kRedShare = 2126;
constexpr std::int32_t kBlueShare = 722;
constexpr std::int32_t kGreenShare = kWhole - kRedShare - kBlueShare;

// `zero` plus `value` times `range` / `unit`, rounded to nearest. The sums stay within 31 bits.
constexpr std::uint32_t CodeAt(std::int32_t zero, std::int32_t value, std::int32_t range,
                               std::int32_t unit) noexcept
{
    return static_cast<std::uint32_t>((value * range + zero * unit + unit / 2) / unit);
}

std::size_t PlanesOf(ScopeKind kind) noexcept
{
    return kind == ScopeKind::Parade ? kColours : kind == ScopeKind::Waveform ? 1 : 0;
}

} // namespace

LumaCodes LumaCodesOf(std::uint32_t red, std::uint32_t green, std::uint32_t blue) noexcept
{
    const auto r = static_cast<std::int32_t>(red);
    const auto g = static_cast<std::int32_t>(green);
    const auto b = static_cast<std::int32_t>(blue);
    const std::int32_t luma = kRedShare * r + kGreenShare * g + kBlueShare * b;
    return {CodeAt(16, luma, 219 / 3, 255 / 3 * kWhole),
            CodeAt(128, kWhole * b - luma, 224, 255 * 2 * (kWhole - kBlueShare)),
            CodeAt(128, kWhole * r - luma, 224, 255 * 2 * (kWhole - kRedShare))};
}

ScopeBins::ScopeBins(ScopeKind kind, std::size_t width, std::size_t columns)
    : m_kind(kind), m_columns(columns), m_columnOf(width), m_widths(columns),
      m_counts(kind == ScopeKind::Vectors ? kLevels * kLevels : PlanesOf(kind) * columns * kLevels),
      m_atEnds{std::vector<std::uint32_t>(columns), std::vector<std::uint32_t>(columns)}
{
    for (std::size_t x = 0; x < width; ++x)
    {
        m_columnOf[x] = static_cast<std::uint32_t>(x * columns / width);
        ++m_widths[m_columnOf[x]];
    }
}

void ScopeBins::Count(const std::byte* pixels, std::size_t pitch, std::size_t rows) noexcept
{
    for (std::size_t row = 0; row < rows; ++row)
    {
        CountRow(pixels + row * pitch);
    }
    m_rows += rows;
}

std::uint32_t ScopeBins::PixelsIn(std::size_t column) const noexcept
{
    return static_cast<std::uint32_t>(m_widths[column] * m_rows);
}

void ScopeBins::CountRow(const std::byte* pixels) noexcept
{
    const std::size_t plane = m_columns * kLevels;
    for (const std::uint32_t column : m_columnOf)
    {
        const auto blue = static_cast<std::uint32_t>(pixels[0]);
        const auto green = static_cast<std::uint32_t>(pixels[1]);
        const auto red = static_cast<std::uint32_t>(pixels[2]);
        pixels += kChannels;
        ++m_histograms[0][red];
        ++m_histograms[1][green];
        ++m_histograms[2][blue];
        switch (m_kind)
        {
        case ScopeKind::Parade:
        {
            std::uint32_t* const counts = m_counts.data() + column * kLevels;
            ++counts[red];
            ++counts[plane + green];
            ++counts[2 * plane + blue];
            break;
        }
        case ScopeKind::Waveform:
            ++m_counts[column * kLevels + LumaCodesOf(red, green, blue).luma];
            m_atEnds[0][column] += red == 0 || green == 0 || blue == 0 ? 1 : 0;
            m_atEnds[1][column] += red == 255 || green == 255 || blue == 255 ? 1 : 0;
            break;
        case ScopeKind::Vectors:
        {
            const LumaCodes codes = LumaCodesOf(red, green, blue);
            ++m_counts[codes.redDifference * kLevels + codes.blueDifference];
            break;
        }
        case ScopeKind::Histogram:
            break;
        }
    }
}

} // namespace ReferenceRenderer
