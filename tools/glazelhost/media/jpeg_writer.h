// JPEG files. Not by the system's encoder, which in some versions takes no quality and then writes
// a low one. Pure: no windows.h. Tests: tests/tools/glazelhost/media/picture_codec_test.cpp.
#pragma once

#include "tools/glazelhost/media/frame_io.h"

#include <cstddef>
#include <string>
#include <vector>

namespace GlazelHost
{

// A whole file: baseline JPEG of 8 bits, its first segment JFIF's; `quality` is 1 to 100, above 90
// with chroma of full resolution. Alpha and facts are left out. Throws HostError, which names
// `name`.
std::vector<std::byte> JpegOf(const Image& image, int quality, const std::string& name);

} // namespace GlazelHost
