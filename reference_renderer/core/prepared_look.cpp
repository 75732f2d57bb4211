#include "reference_renderer/core/prepared_look.h"

#include "reference_renderer/core/float_rows.h"
#include "reference_renderer/core/look_blend.h"
#include "reference_renderer/core/row_functions.h"

#include <array>
#include <cstring>

namespace ReferenceRenderer
{

namespace
{

void RenderRowOfCodes(const PreparedLook& look, const std::byte* source, std::byte* target,
                      std::size_t width)
{
    look.Codes().RenderRow(source, target, width);
}

void RenderRowOfMixedCodes(const PreparedLook& look, const std::byte* source, std::byte* target,
                           std::size_t width)
{
    const std::size_t done =
        RenderGroups(UsedInstructionSet(), look, PixelKind::Codes, source, target, width);
    RenderPlainRow8(look, source + done * 4, target + done * 4, width - done);
}

template <bool Linear>
void RenderRowOfFloats(const PreparedLook& look, const std::byte* source, std::byte* target,
                       std::size_t width)
{
    constexpr PixelKind kKind = Linear ? PixelKind::LinearFloats : PixelKind::Floats;
    constexpr std::size_t kPixelBytes = 16;
    const std::size_t done = RenderGroups(UsedInstructionSet(), look, kKind, source, target, width);
    RenderPlainRowFloat(look, Linear, source + done * kPixelBytes, target + done * kPixelBytes,
                        width - done);
}

} // namespace

RecordState PreparedLook::Read(std::span<const std::uint8_t> bytes) noexcept
{
    const RecordState state = ReadRecord(bytes, m_stored);
    Prepare();
    return state;
}

void PreparedLook::ReadBlend(const PreparedLook& a, const PreparedLook& b, double fraction,
                             TableEncoder& encoder) noexcept
{
    BlendLooks(a, b, fraction, m_stored, encoder);
    Prepare();
}

void PreparedLook::Prepare() noexcept
{
    m_curves = {m_stored.curveValues.data(), m_stored.curveSize, {}};
    if (m_curves.size != 0)
    {
        m_curves.axes = AxesOf(m_stored.curveDomain, m_curves.size);
    }
    m_cube = {m_stored.cubeNodes.data(), m_stored.cubeSize, {}};
    if (m_cube.size != 0)
    {
        m_cube.axes = AxesOf(m_stored.cubeDomain, m_cube.size);
    }
    for (std::size_t channel = 0; channel < m_firstSteps.size(); ++channel)
    {
        for (std::size_t code = 0; code < m_firstSteps[channel].size(); ++code)
        {
            m_firstSteps[channel][code] =
                ApplyFirstSteps(m_stored, channel, static_cast<float>(code) / 255.0F);
        }
    }
    m_row8 = m_codes.Prepare(m_stored, m_firstSteps, m_curves, m_cube) ? RenderRowOfCodes
                                                                       : RenderRowOfMixedCodes;
}

RowFunction* PreparedLook::RowFloat(bool linear) const noexcept
{
    return linear ? RenderRowOfFloats<true> : RenderRowOfFloats<false>;
}

Rgb PreparedLook::SampleTables(const Rgb& value) const noexcept
{
    const Rgb curved = m_curves.size != 0 ? m_curves.Sample(value) : value;
    return m_cube.size != 0 ? m_cube.Sample(curved) : curved;
}

Rgb PreparedLook::Grade(const Rgb& value) const noexcept
{
    std::array<float, 4> pixel{value.b, value.g, value.r, 1.0F};
    auto* const bytes = reinterpret_cast<std::byte*>(pixel.data());
    RenderPlainRowFloat(*this, false, bytes, bytes, 1);
    return {pixel[2], pixel[1], pixel[0]};
}

} // namespace ReferenceRenderer
