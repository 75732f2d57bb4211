#include "tools/glazelhost/commands/render_options.h"

#include "tools/glazelhost/commands/shared_options.h"
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/file_kind.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <tuple>
#include <utility>

namespace GlazelHost
{

namespace
{

ProgressChoice ProgressOf(const RenderWords& words)
{
    constexpr std::array kNames{
        std::pair{"auto", ProgressChoice::Auto}, std::pair{"bar", ProgressChoice::Bar},
        std::pair{"plain", ProgressChoice::Plain}, std::pair{"json", ProgressChoice::Json},
        std::pair{"none", ProgressChoice::None}};
    if (words.quiet)
    {
        return ProgressChoice::None;
    }
    const auto found = std::find_if(kNames.begin(), kNames.end(), [&words](const auto& row) {
        return words.progress == row.first;
    });
    return found->second; // CLI11 let only these names pass
}

LumaWeights WeightsOf(const std::vector<double>& numbers)
{
    constexpr double kLeast = 1e-3; // far below those of any matrix
    const LumaWeights weights{numbers.front(), numbers.back()};
    if (!(weights.red >= kLeast && weights.blue >= kLeast && weights.Green() >= kLeast))
    {
        ThrowUsage("render", "--luma-weights",
                   "both are above 0, and leave some of the luma for green");
    }
    return weights;
}

void AddRenderPlaces(CLI::App& command, RenderCommand& render, RenderWords& words)
{
    command.add_option("INPUT", render.source.path, "what to render")->required()->type_name("");
    command.add_option("OUTPUT", render.sink.path, "where to put it")->required()->type_name("");
    command.add_flag("--overwrite", render.sink.overwrite,
                     "replace an output, or a project, that exists");
    command.add_flag("--strict", render.sink.strict,
                     "fail when the output cannot hold all that the input has");
    command
        .add_option("--frames", words.frames, "frames to render: 1-10,15,20-40x2 (default: all)")
        ->type_name("LIST");
    command
        .add_option("--expect", words.expected,
                    "frames to expect of a stream that does not say, for the time left")
        ->check(Undescribed(CLI::PositiveNumber))
        ->type_name("N");
    command
        .add_option("--first", words.firstNumber,
                    "number of the sequence's first picture (default: the lowest there is)")
        ->check(Undescribed(CLI::NonNegativeNumber))
        ->type_name("N");
    command.add_flag("--skip-bad-frames", render.skipBadFrames,
                     "go on after a frame that cannot be read; the exit code is then still 1");
}

void AddRenderFormats(CLI::App& command, RenderCommand& render, RenderWords& words)
{
    AddDepth(command, words.depth);
    command
        .add_option("--fps", words.framesPerSecond,
                    "frames per second of the input: 25, 23.976, 30000/1001")
        ->type_name("RATE");
    command
        .add_option("--aspect", render.source.pixelAspect, "width of a pixel divided by its height")
        ->check(Undescribed(CLI::PositiveNumber))
        ->type_name("RATIO");
    command.add_option("--bits", words.bits, "bits a channel of output pictures")
        ->check(Undescribed(CLI::IsMember({8, 16, 32})))
        ->type_name("8|16|32");
    command.add_option("--quality", render.sink.quality, "quality of output JPEGs (default: 95)")
        ->check(Undescribed(CLI::Range(1, 100)))
        ->type_name("1-100");
    command.add_flag("--dither", words.dither,
                     "noise in place of bands where floats become 8 bits");
    command.add_option("--seed", words.seed, "which noise --dither takes (default: 0)")
        ->check(Undescribed(CLI::Range(std::int64_t{0}, std::int64_t{0xFFFFFFFF})))
        ->type_name("N");
}

void AddRenderStreams(CLI::App& command, RenderCommand& render, RenderWords& words)
{
    constexpr char kStreams[] = "Streams";
    command.add_option("--size", words.size, "size of raw input")
        ->type_name("WxH")
        ->group(kStreams);
    std::vector<std::string> formats;
    for (const StreamFormatRow& row : kStreamFormats)
    {
        formats.emplace_back(row.name);
    }
    const std::string formatNames = CLI::detail::join(formats, "|");
    command
        .add_option("--input-format", words.inputFormat, "what raw input holds (default: bgra8)")
        ->check(OneOf(formats))
        ->type_name(formatNames)
        ->group(kStreams);
    command
        .add_flag("--opaque", render.source.isOpaque,
                  "raw input has no alpha, and pictures are written without it")
        ->group(kStreams);
    command
        .add_option("--input-light", words.inputLight,
                    "what the numbers of raw input are (default: display)")
        ->check(OneOf({"display", "linear"}))
        ->type_name("display|linear")
        ->group(kStreams);
    command
        .add_option("--output-format", words.outputFormat,
                    "what raw output gets (default: as raw input)")
        ->check(OneOf(formats))
        ->type_name(formatNames)
        ->group(kStreams);
    command
        .add_option("--luma-weights", words.lumaWeights,
                    "of red and blue in yuv16 (default: 0.2126,0.0722, of BT.709)")
        ->delimiter(',')
        ->expected(2)
        ->type_name("R,B")
        ->group(kStreams);
}

void AddRenderProgress(CLI::App& command, RenderWords& words)
{
    command.add_option("--progress", words.progress, "how to show progress (default: auto)")
        ->check(OneOf({"auto", "bar", "plain", "json", "none"}))
        ->type_name("auto|bar|plain|json|none");
    command.add_flag("--quiet", words.quiet, "say nothing but errors");
}

} // namespace

void AddRenderOptions(CLI::App& command, RenderCommand& render, RenderWords& words)
{
    AddRenderPlaces(command, render, words);
    AddRenderLinear(command, words.linear);
    AddUnclamped(command, render.unclamped);
    AddRenderLook(command, render, words.look);
    AddRenderFormats(command, render, words);
    AddRenderStreams(command, render, words);
    AddRenderProgress(command, words);
    AddToolOptions(command, render.tools, true);
}

RenderCommand FinishRender(RenderCommand render, const RenderWords& words)
{
    render.depth = SampleTypeOf(words.depth);
    render.linear = SwitchOf(words.linear);
    FinishRenderLook(render, words.look);
    if (words.frames)
    {
        render.frames = FrameList::Parse(*words.frames);
    }
    if (words.size)
    {
        std::tie(render.source.width, render.source.height) = SizeOf(*words.size, "render");
    }
    if (words.firstNumber >= 0)
    {
        render.source.firstNumber = words.firstNumber;
    }
    if (words.framesPerSecond)
    {
        const auto rate = FractionOf(*words.framesPerSecond);
        if (!rate || *rate <= 0.0)
        {
            ThrowUsage("render", "--fps " + *words.framesPerSecond,
                       "a rate is a number above 0, as in 25 or 30000/1001");
        }
        render.source.framesPerSecond = *rate;
    }
    render.source.isLinearLight = words.inputLight == "linear";
    render.source.format = StreamFormatFromName(words.inputFormat);
    render.sink.format = StreamFormatFromName(words.outputFormat);
    if (!words.lumaWeights.empty())
    {
        render.source.lumaWeights = WeightsOf(words.lumaWeights);
        render.sink.lumaWeights = render.source.lumaWeights;
    }
    const bool isRaw =
        render.source.path == kStandardStream || KindFromName(render.source.path) == FileKind::Raw;
    if (isRaw && !render.source.format)
    {
        render.source.format = StreamFormat::Bgra8;
    }
    if (render.sink.path == kStandardStream && !render.sink.format)
    {
        render.sink.format = render.source.format;
    }
    if (words.bits != 0)
    {
        render.sink.bits = words.bits;
    }
    if (words.seed >= 0 && !words.dither)
    {
        ThrowUsage("render", "--seed", "it is of use with --dither alone");
    }
    if (words.dither)
    {
        render.sink.ditherSeed = static_cast<std::uint32_t>(std::max(words.seed, std::int64_t{0}));
    }
    if (words.expected > 0)
    {
        render.expectedFrames = words.expected;
    }
    render.progress = ProgressOf(words);
    if (!std::isfinite(render.source.pixelAspect))
    {
        ThrowUsage("render", "--aspect", "the number is not finite");
    }
    return render;
}

} // namespace GlazelHost
