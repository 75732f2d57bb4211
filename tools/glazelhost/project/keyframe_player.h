// Drives an effect along keyframes: the pair around each frame, and where between them it lies.
// Tests: tests/tools/glazelhost/project/keyframe_player_test.cpp.
#pragma once

#include "tools/glazelhost/plugin/effect_controls.h"
#include "tools/glazelhost/plugin/effect_session.h"
#include "tools/glazelhost/project/keyframe_track.h"

#include <optional>
#include <vector>

namespace GlazelHost
{

// On the session's thread. A frame at a keyframe shows that look exactly as a render with it alone
// does. A frame between two shows the blend, with the earlier one's option "assume linear gamma";
// which frames were rendered before makes no difference.
class KeyframePlayer
{
public:
    // `track` is the keyframes'. They, and session and controls of one effect, outlive the player.
    // Turns automation on. Throws HostError.
    KeyframePlayer(EffectSession& session, EffectControls& controls,
                   const std::vector<Keyframe>& keyframes, KeyframeTrack track);

    // `frame` counts from 0; the rest is EffectSession::Render's.
    void Render(std::int64_t frame, const Image& input, Image& output,
                const FrameInformation& information);

private:
    void HandOver(const KeyPlace& place);

    EffectSession& m_session;
    EffectControls& m_controls;
    const std::vector<Keyframe>& m_keyframes;
    KeyframeTrack m_track;
    std::optional<KeyPlace> m_pair;    // that the effect holds
    std::optional<bool> m_frameOption; // that the effect's frame record has; none: not known
};

} // namespace GlazelHost
