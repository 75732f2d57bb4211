#include "reference_renderer/editor/scope_reader.h"

namespace ReferenceRenderer
{

namespace
{

std::size_t Steps(std::size_t length, std::size_t step) noexcept
{
    return (length + step - 1) / step;
}

} // namespace

std::size_t ScopeReader::Step() const noexcept
{
    const PixelSize size = m_picture.Size();
    std::size_t step = 1;
    while (Steps(size.width, step) * Steps(size.height, step) > kMostCoarsePixels)
    {
        ++step;
    }
    return step;
}

bool ScopeReader::Count(const ScopeView& view, const PreparedLook& look, Detail detail,
                        const std::atomic<bool>& stop)
{
    const bool isCoarse = detail == Detail::Coarse;
    const std::size_t step = isCoarse ? Step() : 1;
    const std::size_t width = Steps(m_picture.Size().width, step);
    const std::size_t rows = Steps(m_picture.Size().height, step);
    const std::size_t columns = ScopeColumns(view.kind, view.size, view.dpi, width);
    const std::size_t rowBytes = width * m_picture.PixelBytes();

    std::optional<ScopeBins>& before = m_befores[isCoarse ? 1 : 0];
    const bool isKnown = before && before->Kind() == view.kind && before->Columns() == columns;
    std::optional<ScopeBins> counted;
    if (!isKnown)
    {
        counted.emplace(view.kind, width, columns);
    }
    m_after.emplace(view.kind, width, columns);
    m_codes.resize(width * kChannels);
    const bool isSampled = isCoarse && m_sampled.size() == rows * rowBytes;
    std::vector<std::byte>& read = isCoarse ? m_sampled : m_row;
    read.resize(isCoarse ? rows * rowBytes : rowBytes);
    for (std::size_t row = 0; row < rows; ++row)
    {
        if (stop.load(std::memory_order_relaxed))
        {
            if (isCoarse && !isSampled)
            {
                m_sampled.clear();
            }
            return false;
        }
        std::byte* const pixels = read.data() + (isCoarse ? row * rowBytes : 0);
        if (!isSampled)
        {
            m_picture.ReadRow(row * step, 0, step, width, pixels);
        }
        if (counted)
        {
            m_picture.WriteCodes(nullptr, pixels, m_codes.data(), width);
            counted->Count(m_codes.data(), m_codes.size(), 1);
        }
        m_picture.WriteCodes(&look, pixels, m_codes.data(), width);
        m_after->Count(m_codes.data(), m_codes.size(), 1);
    }
    if (counted)
    {
        before = std::move(counted);
    }
    m_before = &before;
    m_view = view;
    return true;
}

void ScopeReader::Draw(std::span<std::uint32_t> pixels) const
{
    DrawScope(**m_before, *m_after, m_view.size, m_view.dpi, pixels);
}

} // namespace ReferenceRenderer
