// What all streams of frames say and check in the same way.
// Pure: no windows.h.
#pragma once

#include "tools/glazelhost/io/frame_io.h"

#include <cstdint>
#include <string>

// "frame 12 of clip.y4m"
std::string FrameNameOf(std::int64_t frame, const std::string& streamName);

// "in this frame: 12 of its 3110400 bytes are missing"
std::string MissingBytes(std::uint64_t missing, std::uint64_t whole);

// Throws HostError unless `image` has the size that the stream began with.
void CheckSameSize(const std::string& streamName, const Image& image, int width, int height);

// Throws HostError when no frame was written: an output without frames is not one.
void CheckNotEmpty(const std::string& outputName, bool anyFrame);
