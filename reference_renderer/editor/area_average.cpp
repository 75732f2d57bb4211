#include "reference_renderer/editor/area_average.h"

#include <algorithm>

namespace ReferenceRenderer
{

namespace
{

void ScaleRow(const float* source, const AreaAxis& axis, float* target) noexcept
{
    for (std::size_t x = 0; x < axis.Count(); ++x)
    {
        const AreaAxis::Cover cover = axis.Of(x);
        float sums[kChannels] = {};
        const float* pixel = source + cover.first * kChannels;
        for (std::size_t i = 0; i < cover.count; ++i, pixel += kChannels)
        {
            for (std::size_t channel = 0; channel < kChannels; ++channel)
            {
                sums[channel] += cover.shares[i] * pixel[channel];
            }
        }
        std::copy_n(sums, kChannels, target + x * kChannels);
    }
}

// The last source row that was scaled sideways: neighbouring target rows share it.
class SidewaysRows
{
public:
    SidewaysRows(const PixelRows& source, const AreaAxis& axis)
        : m_source(source), m_axis(axis), m_read(source.Width() * kChannels),
          m_scaled(axis.Count() * kChannels)
    {
    }

    const std::vector<float>& Row(std::size_t row) noexcept
    {
        if (row != m_row)
        {
            m_source.ReadRow(row, m_read.data());
            ScaleRow(m_read.data(), m_axis, m_scaled.data());
            m_row = row;
        }
        return m_scaled;
    }

private:
    const PixelRows& m_source;
    const AreaAxis& m_axis;
    std::vector<float> m_read;
    std::vector<float> m_scaled;
    std::size_t m_row = SIZE_MAX;
};

} // namespace

// Everything in units of 1 / (source x target) of the axis, so that no edge is rounded.
AreaAxis::AreaAxis(std::size_t sourceLength, std::size_t targetLength, std::size_t first,
                   std::size_t count)
{
    m_starts.reserve(count);
    m_shares.reserve(std::min(sourceLength, count * sourceLength / targetLength) + 2 * count);
    for (std::size_t target = first; target < first + count; ++target)
    {
        const std::size_t begin = target * sourceLength;
        const std::size_t end = begin + sourceLength;
        const std::size_t from = begin / targetLength;
        const std::size_t last = (end - 1) / targetLength;
        m_starts.push_back({from, last - from + 1, m_shares.size()});
        for (std::size_t source = from; source <= last; ++source)
        {
            const std::size_t low = std::max(begin, source * targetLength);
            const std::size_t high = std::min(end, (source + 1) * targetLength);
            m_shares.push_back(static_cast<float>(high - low) / static_cast<float>(sourceLength));
        }
    }
}

AreaAxis::Cover AreaAxis::Of(std::size_t target) const noexcept
{
    const Start& start = m_starts[target];
    return {start.first, start.count, m_shares.data() + start.share};
}

void ScaleByArea(const PixelRows& source, PixelSize whole, const PixelPart& part, PixelSink& sink)
{
    const AreaAxis sideways(source.Width(), whole.width, part.left, part.size.width);
    SidewaysRows rows(source, sideways);
    const AreaAxis axis(source.Height(), whole.height, part.top, part.size.height);
    std::vector<float> sums(part.size.width * kChannels);
    for (std::size_t y = 0; y < axis.Count(); ++y)
    {
        const AreaAxis::Cover cover = axis.Of(y);
        std::fill(sums.begin(), sums.end(), 0.0F);
        for (std::size_t i = 0; i < cover.count; ++i)
        {
            const std::vector<float>& row = rows.Row(cover.first + i);
            const float share = cover.shares[i];
            std::transform(row.begin(), row.end(), sums.begin(), sums.begin(),
                           [share](float value, float sum) { return sum + share * value; });
        }
        sink.WriteRow(y, sums.data());
    }
}

} // namespace ReferenceRenderer
