// What the frames of a render show: one look, keyframes, or what a project holds.
#pragma once

#include "tools/glazelhost/commands/command_line.h"
#include "tools/glazelhost/media/light_choice.h"
#include "tools/glazelhost/plugin/effect_controls.h"
#include "tools/glazelhost/plugin/effect_session.h"
#include "tools/glazelhost/plugin/renderer_library.h"
#include "tools/glazelhost/project/keyframe_player.h"
#include "tools/glazelhost/project/project_file.h"

#include <optional>
#include <string>
#include <vector>

namespace GlazelHost
{

class Reporter;

// On the session's thread; everything it is made of outlives it.
class ShownLook
{
public:
    // Gives the session's effect what `command` asks for and keeps it as a project when that is
    // wanted. `info` is the source's. Throws HostError.
    ShownLook(const RenderCommand& command, const StreamInfo& info, SampleType depth,
              const RendererLibrary& renderer, EffectSession& session, Reporter& reporter);
    ShownLook(const ShownLook&) = delete;
    ShownLook& operator=(const ShownLook&) = delete;

    // "float, as linear light (...)": how its frames are rendered.
    const std::string& Manner() const noexcept { return m_manner; }
    // What else a user should know of it.
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
    // Lets the look that is rendered, which is saved already, have another option than its own.
    void SetOption(bool on);
    LookOptions Options();

    const RenderCommand& m_command;
    const RendererLibrary& m_renderer;
    EffectSession& m_session;
    EffectControls m_controls;
    Project m_project;
    std::string m_manner;
    std::optional<KeyframePlayer> m_player; // none: the effect's own look holds throughout
};

} // namespace GlazelHost
