// The thumbnail of a look: a small scene with sky, sun, hills and a row of patches, graded by it.
// Pure: no windows.h. Tests: tests/reference_renderer/core/look_icon_test.cpp.
#pragma once

#include "reference_renderer/core/prepared_look.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace ReferenceRenderer
{

inline constexpr std::uint32_t kIconWidth = 92;
inline constexpr std::uint32_t kIconHeight = 50;
inline constexpr std::size_t kIconPixels = std::size_t{kIconWidth} * kIconHeight;

// Fills `pixels`, top row first, each 0xAARRGGBB with straight alpha: the corners are round and
// fade over their edge.
void DrawLookIcon(const PreparedLook& look, std::span<std::uint32_t, kIconPixels> pixels) noexcept;

} // namespace ReferenceRenderer
