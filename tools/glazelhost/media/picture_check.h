// Which pictures the system's codecs are not asked to read: those of which they give no picture, or
// not the one that its maker meant. Pure: no windows.h.
// Tests: tests/tools/glazelhost/media/picture_check_test.cpp.
#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace GlazelHost
{

// Throws HostError, which names `name`, the kind of its pixels, and what to do. Passes everything
// that is no JPEG or TIFF, or too damaged to tell.
void CheckPixelKind(std::span<const std::byte> file, const std::string& name);

} // namespace GlazelHost
