#include "tools/glazelhost/project/keyframe_player.h"

#include "tools/glazelhost/media/memory_stream.h"
#include "tools/glazelhost/plugin/look.h"

#include <utility>

namespace GlazelHost
{

KeyframePlayer::KeyframePlayer(EffectSession& session, EffectControls& controls,
                               const std::vector<Keyframe>& keyframes, KeyframeTrack track)
    : m_session(session), m_controls(controls), m_keyframes(keyframes), m_track(std::move(track))
{
    m_controls.SetAutomation(true);
}

void KeyframePlayer::HandOver(const KeyPlace& place)
{
    if (!m_pair || m_pair->earlier != place.earlier || m_pair->later != place.later)
    {
        m_pair.reset(); // should the effect refuse the pair, it holds something else
        m_controls.SetKeyframes(*StreamOf(m_keyframes[place.earlier].record),
                                *StreamOf(m_keyframes[place.later].record));
        m_pair = place;
    }
}

void KeyframePlayer::Render(std::int64_t frame, const Image& input, Image& output,
                            const FrameInformation& information)
{
    // The effect treats the option word on its own: a blended frame keeps that of the frame before,
    // only fraction 0 or 1 brings a keyframe's, and each frame gives the later keyframe the earlier
    // one's. So a keyframe is only ever shown as the earlier of a fresh pair, at fraction 0; and
    // when the first frame of a pair lies behind its keyframe, it is rendered at 0 once beforehand.
    const KeyPlace place = m_track.PlaceOf(frame);
    const std::optional<bool> option = LinearOption(m_keyframes[place.earlier].record);
    HandOver(place);
    if (place.fraction > 0.0 && option && m_frameOption != option)
    {
        m_controls.SetFraction(0.0);
        m_session.Render(input, output, information);
        m_frameOption = option;
    }
    m_controls.SetFraction(place.fraction);
    m_session.Render(input, output, information);
    if (place.fraction <= 0.0)
    {
        m_frameOption = option;
    }
}

} // namespace GlazelHost
