// Keyframes in order, and which two of them a frame lies between.
// Pure: no windows.h. Tests: tests/tools/glazelhost/project/keyframe_track_test.cpp.
#pragma once

#include "tools/glazelhost/project/key_time.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace GlazelHost
{

// As many as a project can hold; their records then take some 130 MB.
inline constexpr std::size_t kMostKeyframes = 1000;

// How the look goes from one keyframe to the next.
enum class Ease
{
    Linear,
    Smooth, // starts and ends at rest: 3t^2 - 2t^3
};

// `fraction` from 0 to 1, and so is the result.
double Eased(Ease ease, double fraction) noexcept;

struct Keyframe
{
    KeyTime time;
    std::vector<std::byte> record; // the look as the effect stores it
};

// Where a frame lies. The fraction is 0 exactly when the frame shows `earlier` alone, and then both
// are the same or the frame is at `earlier`'s time; it is never 1.
struct KeyPlace
{
    std::size_t earlier = 0; // indices of keyframes
    std::size_t later = 0;
    double fraction = 0.0;
};

class KeyframeTrack
{
public:
    // Sorts `keyframes`, at least one. `framesPerSecond` is 0 when it is not known. Throws
    // HostError (WrongUsage) when two of them meet, or when a time in seconds needs a rate and
    // there is none.
    KeyframeTrack(std::vector<Keyframe>& keyframes, double framesPerSecond, Ease ease);

    // `frame` counts from 0. The first keyframe holds before its time, the last one after.
    KeyPlace PlaceOf(std::int64_t frame) const noexcept;

private:
    std::vector<double> m_positions; // in frames, rising
    Ease m_ease;
};

} // namespace GlazelHost
