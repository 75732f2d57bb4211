// One frame of several, by its number. Pure: no windows.h.
// Tests: tests/e2e/test_explain.py, tests/tools/glazelhost/page/page_command_test.cpp.
#pragma once

#include "tools/glazelhost/media/frame_io.h"

#include <cstdint>
#include <optional>
#include <string>

namespace GlazelHost
{

// Reads the frame `number` of `source`, of which nothing has been read; none: the first. The frames
// of a sequence have the numbers of their files, all others count from 1. Answers the number.
// Throws HostError, in the name of `path`, when there is no such frame, and what Read throws.
std::int64_t ReadChosenFrame(FrameSource& source, const std::string& path,
                             std::optional<std::int64_t> number, SampleType type, Image& image);

} // namespace GlazelHost
