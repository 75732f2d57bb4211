// Reads .cube files in both dialects that exist: DOMAIN_MIN/DOMAIN_MAX with either curves or a
// cube, and LUT_1D_INPUT_RANGE/LUT_3D_INPUT_RANGE, where curves may stand before a cube. Pure: no
// windows.h. Tests: tests/reference_renderer/core/cube_reader_test.cpp.
#pragma once

#include "reference_renderer/core/look_record.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ReferenceRenderer
{

// The sizes that a file may state.
inline constexpr std::uint32_t kLargestCurve = kStoredCurveSize;
inline constexpr std::uint32_t kLargestCube = 256;

// True when a line of `text` states the size of a table, as every such file must.
bool LooksLikeCube(std::string_view text) noexcept;

// The look in `text`, which starts behind any byte order mark. `path` is for messages. Keywords
// that are not known are skipped with a warning. Throws ImportError.
Look ReadCube(std::string_view text, std::string_view path, std::vector<std::string>& warnings);

} // namespace ReferenceRenderer
