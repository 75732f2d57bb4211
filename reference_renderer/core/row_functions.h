// Looks pixel by pixel: what the kernels for several pixels (code_rows.h, float_rows.h) must give,
// and what renders where those have no room. Pure: no windows.h.
#pragma once

#include "reference_renderer/core/prepared_look.h"

namespace ReferenceRenderer
{

// Slope, offset and power of a display value.
float ApplyFirstSteps(const StoredLook& look, std::size_t channel, float value) noexcept;

// Rows as those of PreparedLook.
void RenderPlainRow8(const PreparedLook& look, const std::byte* source, std::byte* target,
                     std::size_t width);
void RenderPlainRowFloat(const PreparedLook& look, bool linear, const std::byte* source,
                         std::byte* target, std::size_t width);

} // namespace ReferenceRenderer
