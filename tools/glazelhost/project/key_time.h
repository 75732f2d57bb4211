// When a keyframe applies, as a user writes it, as a project stores it and as frames count it.
// Pure: no windows.h. Tests: tests/tools/glazelhost/project/key_time_test.cpp.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace GlazelHost
{

// Counted from the source's first frame, which is at 0. Kept in its own unit, so that a time stays
// exact and means the same moment at every frame rate.
struct KeyTime
{
    enum class Unit
    {
        Frames,
        Nanoseconds,
    };

    Unit unit = Unit::Frames;
    std::int64_t count = 0; // >= 0

    bool operator==(const KeyTime&) const = default;
};

// "48f" is a frame; "2.5", "1:30" and "01:02:03.250" are times: seconds with up to nine decimals,
// after minutes and hours when there are colons. None for anything else, and for a time beyond a
// million seconds or a frame beyond 10^9.
std::optional<KeyTime> ParseKeyTime(std::string_view text);

// The shortest text that ParseKeyTime reads as `time`; times in seconds alone.
std::string TextOf(const KeyTime& time);

// The place in frames, where a whole number is a frame and others lie between two. People write
// milliseconds, so a time up to half of one away from a frame's is that frame's. The rate is
// positive; it does not matter for frames.
double FramePosition(const KeyTime& time, double framesPerSecond) noexcept;

} // namespace GlazelHost
