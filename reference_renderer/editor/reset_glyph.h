// The sign on a reset button: an arrow that turns back, with smooth edges.
// Pure: no windows.h. Tests: tests/reference_renderer/editor/reset_glyph_test.cpp.
#pragma once

#include <cstdint>
#include <span>

namespace ReferenceRenderer
{

// Fills `size` x `size` pixels 0x00RRGGBB, the top row first, with `ground` and the sign in `ink`.
void DrawResetGlyph(std::span<std::uint32_t> pixels, int size, std::uint32_t ground,
                    std::uint32_t ink) noexcept;

} // namespace ReferenceRenderer
