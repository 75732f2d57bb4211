// Rows of pixels in floats, several at a time: to the last bit what the row functions give pixel by
// pixel (row_functions.h). Codes not as fast as CodeLook (code_look.h), but for every look. Pure:
// no windows.h. Tests: tests/reference_renderer/core/float_rows_test.cpp.
#pragma once

#include "reference_renderer/core/instruction_set.h"
#include "reference_renderer/core/pixel_kind.h"

#include <cstddef>

namespace ReferenceRenderer
{

class PreparedLook;

// Renders pixels of blue, green, red, alpha from the front of a row, as many as fill whole groups,
// and answers how many. Source and target are the same memory or do not overlap.
std::size_t RenderGroups(InstructionSet set, const PreparedLook& look, PixelKind kind,
                         const std::byte* source, std::byte* target, std::size_t width) noexcept;
// With AVX2 and more: `set` is not the baseline, and the processor has it.
std::size_t RenderGroupsOfEight(InstructionSet set, const PreparedLook& look, PixelKind kind,
                                const std::byte* source, std::byte* target,
                                std::size_t width) noexcept;

} // namespace ReferenceRenderer
