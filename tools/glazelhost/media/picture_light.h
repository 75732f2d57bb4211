// Whether a picture file holds linear light, and what says so.
// Pure: no windows.h. Tests: tests/tools/glazelhost/media/picture_light_test.cpp.
#pragma once

#include "tools/glazelhost/media/frame_io.h"

#include <cstddef>
#include <optional>
#include <span>

namespace GlazelHost
{

// What a TIFF of floats that are not linear light has as its description, for want of a tag.
inline constexpr char kDisplayEncodedNote[] = "glazelhost: display-encoded";

// Integers are codes for a display. Floats are linear light, unless the file's colour profile or
// description says otherwise.
Light LightOf(std::span<const std::byte> file, bool isFloat);

// Whether the curves of an ICC profile leave values as they are; none when the bytes are no profile
// with curves.
std::optional<bool> ProfileIsLinear(std::span<const std::byte> profile) noexcept;

} // namespace GlazelHost
