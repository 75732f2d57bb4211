// JPEG files. Not by the system's encoder, which in some versions takes no quality and then writes
// a low one. Pure: no windows.h. Tests: tests/tools/glazelhost/io/picture_codec_test.cpp.
#pragma once

#include "tools/glazelhost/io/byte_stream.h"
#include "tools/glazelhost/io/frame_io.h"

#include <string>

// Baseline JPEG of 8 bits; `quality` is 1 to 100, above 90 with chroma of full resolution. Alpha is
// left out. Throws HostError, which names `name`; errors of `target` pass through.
void WriteJpeg(const Image& image, int quality, ByteWriter& target, const std::string& name);
