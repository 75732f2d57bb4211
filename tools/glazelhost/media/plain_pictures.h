// Uncompressed picture files that not every version of the system's codecs can write: TIFF of
// 32-bit floats and BMP with alpha. The files are plain baseline ones that the codecs read; of what
// the image's facts say they hold what their kind can.
// Pure: no windows.h. Tests: tests/tools/glazelhost/media/plain_pictures_test.cpp.
#pragma once

#include "tools/glazelhost/media/byte_stream.h"
#include "tools/glazelhost/media/frame_io.h"

#include <string>

namespace GlazelHost
{

// RGB, or RGBA with straight alpha, in strips; little-endian. Any image; Byte images are divided
// by 255. Readers take floats for linear light: where that is not so, a note in the file says it.
// Throws HostError, which names `name`, when the file would pass the 4 GB of the format.
void WriteFloatTiff(const Image& image, ByteWriter& target, const std::string& name,
                    bool isLinear = true);

// 32 bits a pixel with a mask for straight alpha (bitmap header version 4), rows bottom-up. Throws
// like WriteFloatTiff.
void WriteAlphaBmp(const Image& image, ByteWriter& target, const std::string& name);

} // namespace GlazelHost
