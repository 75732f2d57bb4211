// When a frame is shown. Pure: no windows.h.
// Tests: tests/tools/glazelhost/commands/frame_clock_test.cpp.
#pragma once

#include <cstdint>

namespace GlazelHost
{

// Start of frame `index` (from 0) in units of 100 ns, rounded to nearest, so that an effect which
// multiplies by the rate and rounds finds the index again. 0 when the rate is not known.
std::int64_t FrameTime(std::int64_t index, double framesPerSecond) noexcept;

} // namespace GlazelHost
