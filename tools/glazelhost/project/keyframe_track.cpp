#include "tools/glazelhost/project/keyframe_track.h"

#include "tools/glazelhost/host_error.h"

#include <algorithm>
#include <cassert>
#include <limits>

namespace GlazelHost
{

namespace
{

double PositionOf(const Keyframe& keyframe, double framesPerSecond)
{
    if (keyframe.time.unit != KeyTime::Unit::Frames && !(framesPerSecond > 0.0))
    {
        throw HostError("keyframe at " + TextOf(keyframe.time),
                        "the input does not say how many frames a second has",
                        "give --fps, or frame numbers such as 48f", ExitCode::WrongUsage);
    }
    return FramePosition(keyframe.time, framesPerSecond);
}

} // namespace

double Eased(Ease ease, double fraction) noexcept
{
    return ease == Ease::Smooth ? fraction * fraction * (3.0 - 2.0 * fraction) : fraction;
}

KeyframeTrack::KeyframeTrack(std::vector<Keyframe>& keyframes, double framesPerSecond, Ease ease)
    : m_ease(ease)
{
    assert(!keyframes.empty());
    const auto position = [framesPerSecond](const Keyframe& keyframe) {
        return PositionOf(keyframe, framesPerSecond);
    };
    std::ranges::for_each(keyframes, [&](const Keyframe& keyframe) { position(keyframe); });
    std::ranges::stable_sort(keyframes, {}, position);
    for (const Keyframe& keyframe : keyframes)
    {
        const double next = position(keyframe);
        if (!m_positions.empty() && next == m_positions.back())
        {
            const Keyframe& other = keyframes[m_positions.size() - 1];
            throw HostError("keyframes at " + TextOf(other.time) + " and " + TextOf(keyframe.time),
                            "they are at the same frame", "leave one of them out",
                            ExitCode::WrongUsage);
        }
        m_positions.push_back(next);
    }
}

KeyPlace KeyframeTrack::PlaceOf(std::int64_t frame) const noexcept
{
    const auto at = static_cast<double>(frame);
    const auto later = std::ranges::upper_bound(m_positions, at);
    if (later == m_positions.begin())
    {
        return {};
    }
    const auto earlier = later - 1;
    const auto index = static_cast<std::size_t>(earlier - m_positions.begin());
    if (later == m_positions.end())
    {
        return {index, index, 0.0};
    }
    if (at == *earlier)
    {
        return {index, index + 1, 0.0};
    }
    // Rounding, which easing makes larger, must not turn a frame between two into one of them.
    constexpr double kLeast = std::numeric_limits<double>::min();
    constexpr double kMost = 1.0 - std::numeric_limits<double>::epsilon();
    const double fraction = Eased(m_ease, (at - *earlier) / (*later - *earlier));
    return {index, index + 1, std::clamp(fraction, kLeast, kMost)};
}

} // namespace GlazelHost
