// What the frames of a render show: one look, keyframes, or what a project holds.
#pragma once

#include "tools/glazelhost/commands/command_line.h"
#include "tools/glazelhost/host/effect_controls.h"
#include "tools/glazelhost/host/effect_session.h"
#include "tools/glazelhost/host/keyframe_player.h"
#include "tools/glazelhost/host/project_file.h"
#include "tools/glazelhost/host/renderer_library.h"

#include <optional>
#include <vector>

class Reporter;

// On the session's thread; everything it is made of outlives it.
class ShownLook
{
public:
    // Gives the session's effect what `command` asks for and keeps it as a project when that is
    // wanted. `framesPerSecond` is the source's, 0 when it does not say. Throws HostError.
    ShownLook(const RenderCommand& command, double framesPerSecond, SampleType depth,
              const RendererLibrary& renderer, EffectSession& session, Reporter& reporter);
    ShownLook(const ShownLook&) = delete;
    ShownLook& operator=(const ShownLook&) = delete;

    // What a user should know of it.
    void Tell(Reporter& reporter) const;

    // `frame` counts from 0; the rest is EffectSession::Render's.
    void Render(std::int64_t frame, const Image& input, Image& output,
                const FrameInformation& information);

private:
    std::vector<std::byte> Import(const std::string& look, Reporter& reporter) const;
    void UseLook(Reporter& reporter);
    void UseKeys(Reporter& reporter);
    void UseProject();
    void UsePreset();

    const RenderCommand& m_command;
    const RendererLibrary& m_renderer;
    EffectSession& m_session;
    EffectControls m_controls;
    Project m_project;
    std::optional<KeyframePlayer> m_player; // none: the effect's own look holds throughout
};
