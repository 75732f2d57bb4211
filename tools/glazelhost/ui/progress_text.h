// How the progress of a job reads: as a bar, as a plain line, as JSON.
// Pure: no windows.h. Tests: tests/tools/glazelhost/ui/progress_text_test.cpp.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace GlazelHost
{

struct Progress
{
    std::int64_t done = 0;             // frames written
    std::optional<std::int64_t> total; // frames to write; none when the length is not known
    double seconds = 0.0;              // since the job began
};

// Frames per second so far; none before there is anything to divide.
std::optional<double> FramesPerSecond(const Progress& progress) noexcept;
// Of the rest at the speed so far; none when the length or the speed is not known.
std::optional<double> SecondsLeft(const Progress& progress) noexcept;

// "0:07", "12:34", "1:02:03"; rounded up, so that a running job never shows zero.
std::string DurationText(double seconds);
// "1 frame", "300 frames".
std::string FrameCountText(std::int64_t count);

// " 42% [=====>       ] 126 of 300 frames, 35.2 frames/s, 0:05 left". At most `columns` wide, with
// the bar taking what the words leave; no bar when the length is not known.
std::string BarLine(const Progress& progress, int columns);
// "126 of 300 frames (42%), 35.2 frames/s, 0:05 left".
std::string PlainLine(const Progress& progress);
// {"event":"progress","frame":126,"frames":300,"framesPerSecond":35.2,"secondsLeft":4.9}, with
// null for what is not known.
std::string JsonLine(const Progress& progress);

} // namespace GlazelHost
