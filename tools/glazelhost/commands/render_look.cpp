#include "tools/glazelhost/commands/render_look.h"

#include "tools/glazelhost/commands/look_record.h"
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/plugin/look.h"
#include "tools/glazelhost/plugin/preset_list.h"
#include "tools/glazelhost/ui/reporter.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <utility>

namespace GlazelHost
{

ShownLook::ShownLook(const RenderCommand& command, const StreamInfo& info, SampleType depth,
                     const RendererLibrary& renderer, EffectSession& session, Reporter& reporter)
    : m_command(command), m_renderer(renderer), m_session(session),
      m_controls(session.Effect(), session.Path())
{
    if (command.savedProject)
    {
        CheckProjectTarget(*command.savedProject, command.sink.overwrite);
    }
    if (command.look)
    {
        UseLook(reporter);
    }
    else if (command.project)
    {
        UseProject();
    }
    else
    {
        UseKeys(reporter);
    }
    if (command.preset)
    {
        UsePreset();
    }
    if (command.linear && depth == SampleType::Byte)
    {
        reporter.Warn("--linear has an effect with --depth float only");
    }
    m_project.ease = command.ease.value_or(m_project.ease);
    std::optional<KeyframeTrack> track;
    if (!m_project.keyframes.empty())
    {
        track.emplace(m_project.keyframes, info.framesPerSecond, m_project.ease);
        // What a host shows, and keeps, of an animated effect beside its keyframes.
        m_controls.LoadLook(m_project.keyframes.front().record);
    }
    // In 8 bits no option counts, and the effect need not be asked for its look.
    m_manner = RenderText(depth, command.linear, info.light,
                          depth == SampleType::Byte ? LookOptions::None : Options());
    if (command.savedProject)
    {
        SaveProject(*command.savedProject, command.sink.overwrite, m_project, m_controls);
    }
    const auto option = OptionToRender(depth, command.linear, info.light);
    if (option && !command.linear)
    {
        SetOption(*option);
    }
    if (track)
    {
        m_player.emplace(session, m_controls, m_project.keyframes, std::move(*track));
    }
}

void ShownLook::SetOption(bool on)
{
    const auto set = [on](std::vector<std::byte>& record, const std::string& look) {
        if (!record.empty() && !SetLinearOption(record, on))
        {
            throw HostError(look,
                            "the renderer's record has no linear option, which counts as on, and "
                            "the picture is not linear light",
                            "give --depth 8");
        }
    };
    for (Keyframe& keyframe : m_project.keyframes)
    {
        set(keyframe.record, "keyframe at " + TextOf(keyframe.time));
    }
    std::vector<std::byte> record = m_controls.StoredLook();
    set(record, m_command.look.value_or(m_command.project.value_or("the look")));
    m_controls.LoadLook(record); // an empty one changes nothing
}

LookOptions ShownLook::Options()
{
    std::vector<std::optional<bool>> options;
    for (const Keyframe& keyframe : m_project.keyframes)
    {
        options.push_back(LinearOption(keyframe.record));
    }
    if (options.empty())
    {
        options.push_back(LinearOption(m_controls.StoredLook()));
    }
    std::erase(options, std::nullopt);
    const auto on = std::ranges::count(options, std::optional(true));
    if (options.empty())
    {
        return LookOptions::None;
    }
    if (on == 0)
    {
        return LookOptions::Off;
    }
    return on == std::ssize(options) ? LookOptions::On : LookOptions::Mixed;
}

void ShownLook::Tell(Reporter& reporter) const
{
    if (m_player)
    {
        const auto& keyframes = m_project.keyframes;
        reporter.Note(
            std::to_string(keyframes.size()) +
            (keyframes.size() == 1 ? " keyframe at " : " keyframes, the first at ") +
            TextOf(keyframes.front().time) +
            (keyframes.size() == 1 ? "" : ", the last at " + TextOf(keyframes.back().time)) +
            (m_project.ease == Ease::Smooth ? ", smooth" : ", linear"));
    }
    if (m_command.savedProject)
    {
        reporter.Note(*m_command.savedProject + ": project saved");
    }
}

void ShownLook::Render(std::int64_t frame, const Image& input, Image& output,
                       const FrameInformation& information)
{
    if (m_player)
    {
        m_player->Render(frame, input, output, information);
    }
    else
    {
        m_session.Render(input, output, information);
    }
}

std::vector<std::byte> ShownLook::Import(const std::string& path, Reporter& reporter) const
{
    return ImportRecord(m_renderer, path, m_command.unclamped, m_command.linear, reporter);
}

void ShownLook::UseLook(Reporter& reporter)
{
    const std::vector<std::byte> record = Import(*m_command.look, reporter);
    if (m_command.savedProject)
    {
        CheckStorable(*m_command.look, record, m_controls);
    }
    m_controls.LoadLook(record);
}

void ShownLook::UseKeys(Reporter& reporter)
{
    std::map<std::string, std::vector<std::byte>> records; // a look may stand at several times
    for (const KeyLook& key : m_command.keys)
    {
        if (!records.contains(key.look))
        {
            records[key.look] = Import(key.look, reporter);
        }
        m_project.keyframes.push_back({key.time, records[key.look]});
    }
}

void ShownLook::UseProject()
{
    const std::string& path = *m_command.project;
    m_project = OpenProject(path, m_controls);
    if (m_command.preset && !m_project.keyframes.empty())
    {
        throw HostError(path, "its look is animated, and a preset does not change keyframes",
                        "leave --preset out", ExitCode::WrongUsage);
    }
    if (m_command.linear)
    {
        for (Keyframe& keyframe : m_project.keyframes)
        {
            SetLinear(keyframe.record, m_command.linear, path);
        }
        std::vector<std::byte> record = m_controls.StoredLook();
        SetLinear(record, m_command.linear, path);
        m_controls.LoadLook(record);
    }
}

void ShownLook::UsePreset()
{
    m_controls.ApplyPreset(PresetIndex(m_controls.PresetNames(), *m_command.preset));
}

} // namespace GlazelHost
