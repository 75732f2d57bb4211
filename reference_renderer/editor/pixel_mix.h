// One pixel over another. Pure: no windows.h.
// Tests: tests/reference_renderer/editor/reset_glyph_test.cpp, scope_picture_test.cpp.
#pragma once

#include <cstdint>

namespace ReferenceRenderer
{

// 0xRRGGBB of both; `share` of the ink, 0 to 1.
inline std::uint32_t Mixed(std::uint32_t ground, std::uint32_t ink, double share) noexcept
{
    constexpr std::int32_t kWhole = 65536;
    const auto part = static_cast<std::int32_t>(share * kWhole);
    std::uint32_t pixel = 0;
    for (unsigned shift = 0; shift < 24; shift += 8)
    {
        const auto from = static_cast<std::int32_t>(ground >> shift & 0xFF);
        const auto to = static_cast<std::int32_t>(ink >> shift & 0xFF);
        const std::int32_t mixed = (from * kWhole + (to - from) * part + kWhole / 2) / kWhole;
        pixel |= static_cast<std::uint32_t>(mixed) << shift;
    }
    return pixel;
}

} // namespace ReferenceRenderer
