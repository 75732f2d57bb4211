#include "tools/glazelhost/commands/commands.h"

#include "reference_renderer/core/colour_math.h"
#include "tools/glazelhost/commands/pixel_report.h"
#include "tools/glazelhost/commands/render_look.h"
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/chosen_frame.h"
#include "tools/glazelhost/plugin/look.h"
#include "tools/glazelhost/ui/console.h"

#include <array>
#include <cstring>
#include <memory>

namespace GlazelHost
{

namespace
{

using namespace ReferenceRenderer;

// What is rendered to see what becomes of one pixel.
struct Source
{
    StreamInfo info;
    SampleType depth = SampleType::Byte;
    Image image;
    std::int64_t frame = 1;
};

Source PictureOf(const ExplainCommand& command)
{
    const auto frames = OpenSource(command.render.source);
    Source source;
    source.info = frames->Info();
    source.depth = DepthOf(command.render.depth, source.info);
    source.frame = ReadChosenFrame(*frames, command.render.source.path, command.frame, source.depth,
                                   source.image);
    const Image& image = source.image;
    if (command.x >= image.width || command.y >= image.height)
    {
        throw HostError(frames->FrameName(),
                        "it has " + std::to_string(image.width) + " x " +
                            std::to_string(image.height) + " pixels, and " +
                            std::to_string(command.x) + "," + std::to_string(command.y) +
                            " is not among them",
                        "count from 0,0 at the upper left");
    }
    return source;
}

Source ColourOf(const ExplainCommand& command)
{
    Source source;
    source.info.bitsPerChannel = 32;
    source.info.light = {false, "the colour is given in display values"};
    source.depth = DepthOf(command.render.depth, source.info);
    Image& image = source.image;
    image.width = image.height = 1;
    image.type = source.depth;
    image.pixels.resize(image.PixelBytes());
    const auto [red, green, blue] = command.colour.value();
    if (source.depth == SampleType::Float)
    {
        const std::array pixel{blue, green, red, 1.0F};
        std::memcpy(image.pixels.data(), pixel.data(), sizeof pixel);
    }
    else
    {
        const auto code = [](float value) { return static_cast<std::byte>(Code8(value)); };
        image.pixels = {code(blue), code(green), code(red), std::byte{255}};
    }
    return source;
}

// What a record of the reference renderer says of the pixel.
void TellSteps(const std::vector<std::byte>& record, const PreparedLook& look, PixelReport& report)
{
    report.isLinear = report.depth == SampleType::Float && LinearOption(record).value_or(true);
    const PixelKind kind = report.depth == SampleType::Byte ? PixelKind::Codes
                           : report.isLinear                ? PixelKind::LinearFloats
                                                            : PixelKind::Floats;
    report.stored = &look.Stored();
    report.steps = Explain(look, kind, report.input.colour);
}

} // namespace

void RunCommand(const ExplainCommand& command, Reporter& reporter)
{
    const Source source = command.colour ? ColourOf(command) : PictureOf(command);
    RendererLibrary renderer(command.render.tools.rendererFolder);
    renderer.Require();
    const PluginModule plugin(command.render.tools.plugin);
    EffectSession session(plugin);
    ShownLook look(command.render, source.info, source.depth, renderer, session, reporter);
    Image graded;
    look.Render(0, source.image, graded, {source.info.pixelAspect, 0.0, 0});
    const std::vector<std::byte> record =
        EffectControls(session.Effect(), session.Path()).StoredLook();

    PixelReport report;
    if (!command.colour)
    {
        report.place = {command.render.source.path, source.frame, command.x, command.y};
    }
    report.depth = source.depth;
    report.manner = look.Manner();
    report.look = command.render.look.value();
    report.renderer = renderer.State().path;
    report.input = PixelAt(source.image, command.x, command.y);
    report.rendered = PixelAt(graded, command.x, command.y);
    const auto prepared = std::make_unique<PreparedLook>();
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(record.data());
    if (prepared->Read({bytes, record.size()}) == RecordState::Usable)
    {
        TellSteps(record, *prepared, report);
    }
    WriteStandardOutput(command.json ? PixelJson(report) : PixelText(report));
    if (!Agrees(report))
    {
        throw HostError(report.renderer,
                        "what it rendered differs from the steps of the look by more than rounding "
                        "explains",
                        "use the renderer and the program of one version, and report this to "
                        "their makers if they are");
    }
}

} // namespace GlazelHost
