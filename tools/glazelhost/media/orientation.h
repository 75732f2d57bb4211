// How a picture file says that its pixels are to be turned, and turning them.
// Pure: no windows.h. Tests: tests/tools/glazelhost/media/orientation_test.cpp.
#pragma once

#include "tools/glazelhost/media/frame_io.h"

#include <cstddef>
#include <span>

namespace GlazelHost
{

// As EXIF numbers it, 1 to 8; 1 is upright. Of a TIFF by its own tag, of a JPEG or PNG by that of
// its EXIF block. 1 for what does not say, or makes no sense.
int OrientationOf(std::span<const std::byte> file) noexcept;

// Whether an upright picture is as wide as the stored one is high.
constexpr bool SwapsSides(int orientation) noexcept
{
    return orientation >= 5;
}

// Makes a stored picture of this orientation upright. Throws std::bad_alloc.
void MakeUpright(int orientation, Image& image);

} // namespace GlazelHost
