// One pixel over another. Pure: no windows.h.
// Tests: tests/reference_renderer/editor/reset_glyph_test.cpp, scope_picture_test.cpp.
#pragma once

#include <cstdint>

namespace ReferenceRenderer
{

// 0xRRGGBB of both; `share` of the ink, 0 to 1.
inline std::uint32_t Mixed(std::uint32_t ground, std::uint32_t ink, double share) noexcept
{
    constexpr double kHalf = 0.5;
    std::uint32_t pixel = 0;
    for (unsigned shift = 0; shift < 24; shift += 8)
    {
        const double from = ground >> shift & 0xFF;
        const double to = ink >> shift & 0xFF;
        pixel |= static_cast<std::uint32_t>(from + (to - from) * share + kHalf) << shift;
    }
    return pixel;
}

} // namespace ReferenceRenderer
