#include "tools/glazelhost/commands/commands.h"

#include "tools/glazelhost/commands/look_record.h"
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/chosen_frame.h"
#include "tools/glazelhost/media/file_kind.h"
#include "tools/glazelhost/media/light_choice.h"
#include "tools/glazelhost/media/open_frames.h"
#include "tools/glazelhost/media/safe_output.h"
#include "tools/glazelhost/page/page_window.h"
#include "tools/glazelhost/plugin/message_boxes.h"
#include "tools/glazelhost/project/look_formats.h"
#include "tools/glazelhost/project/project_file.h"
#include "tools/glazelhost/ui/reporter.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

namespace GlazelHost
{

namespace
{

// A still picture with what a render would know of it.
struct Still
{
    Image image;
    FrameInformation information;
    Light light;
    std::string name;                   // of the file; empty: a test chart
    std::optional<std::int64_t> number; // in the sequence
    std::optional<StillSequence> sequence;
};

Still OpenStill(const PageCommand& command)
{
    if (!command.image)
    {
        return {TestChart(command.depth.value_or(SampleType::Byte)), {}, {}, {}, {}, {}};
    }
    SourceOptions options;
    options.path = *command.image;
    if (KindFromName(options.path) == FileKind::Raw)
    {
        throw HostError(options.path, "raw frames do not say how large they are",
                        "convert one with \"glazelhost render\" and --size, and name the result");
    }
    const std::unique_ptr<FrameSource> source = OpenSource(options);
    const StreamInfo& info = source->Info();
    Still still;
    still.information = {info.pixelAspect, info.framesPerSecond, 0};
    still.light = info.light;
    const SampleType type = DepthOf(command.depth, info);
    const std::int64_t number =
        ReadChosenFrame(*source, options.path, command.frame, type, still.image);
    still.name = source->FrameName();
    if (!info.isPicture)
    {
        const std::int64_t first = info.firstNumber.value_or(1);
        still.number = number;
        still.sequence.emplace(options.path, first, first + info.frameCount.value_or(1) - 1, type);
    }
    return still;
}

// For a command that is copied to another prompt. "A|B" is two files.
std::string FullLookPath(const std::string& look)
{
    const std::size_t bar = look.find('|');
    const std::string first = FullPath(look.substr(0, bar));
    return bar == std::string::npos ? first : first + "|" + FullLookPath(look.substr(bar + 1));
}

std::optional<LookFile> OriginOf(const PageCommand& command)
{
    if (!command.look)
    {
        return std::nullopt;
    }
    return LookFile{FullLookPath(*command.look), command.linear, command.unclamped};
}

PageWindow::Options WindowOptions(const PageCommand& command, const Still& still)
{
    PageWindow::Options options;
    options.picture = still.name;
    options.sequence = still.sequence;
    options.overwrite = command.overwrite;
    options.depth = still.image.type;
    options.light = still.light;
    if (command.savedLook)
    {
        options.savedLook = FullPath(*command.savedLook);
    }
    if (command.image)
    {
        RepeatedRender& render = options.command.emplace();
        render.image = FullPath(*command.image);
        render.frame = still.number;
        render.depth = command.depth;
        const ToolPaths& tools = command.tools;
        render.tools.rendererFolder =
            tools.rendererFolder.empty() ? "" : FullPath(tools.rendererFolder);
        render.tools.plugin = tools.plugin.empty() ? "" : FullPath(tools.plugin);
    }
    return options;
}

} // namespace

void RunCommand(const PageCommand& command, Reporter& reporter)
{
    if (command.savedLook)
    {
        CheckIsRecordName(*command.savedLook);
        CheckOutputTarget(*command.savedLook, command.overwrite);
    }
    Still still = OpenStill(command);
    PageWindow::Options options = WindowOptions(command, still);
    const std::optional<std::string> savedLook = options.savedLook;
    if (command.linear && still.image.type == SampleType::Byte)
    {
        reporter.Warn("--linear has an effect with --depth float only");
    }

    LetMessageBoxesAppear();
    RendererLibrary renderer(command.tools.rendererFolder);
    renderer.Require();
    const PluginModule plugin(command.tools.plugin);
    EffectSession session(plugin);
    EffectControls controls(session.Effect(), session.Path());
    if (command.look)
    {
        const std::vector<std::byte> record =
            ImportRecord(renderer, *command.look, command.unclamped, command.linear, reporter);
        CheckStorable(*command.look, record, controls);
        controls.LoadLook(record);
    }
    GradedPicture picture(session, std::move(still.image), still.information);
    picture.Render();
    LookKeeper keeper(controls, OriginOf(command));
    {
        PageContainer page(plugin, session.Effect());
        PageWindow(std::move(options), picture, keeper, controls, page).Run();
    }
    if (savedLook && !keeper.IsSavedIn(*savedLook))
    {
        throw HostError(*savedLook,
                        keeper.HasLook() ? "the look was not saved in it"
                                         : "no look was made, so none was saved",
                        keeper.HasLook()
                            ? "start again with the look that was saved elsewhere"
                            : "press Edit... on the page and make one, or start with --look FILE");
    }
}

} // namespace GlazelHost
