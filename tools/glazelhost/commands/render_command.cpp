#include "tools/glazelhost/commands/commands.h"

#include "tools/glazelhost/commands/frame_clock.h"
#include "tools/glazelhost/commands/frame_stages.h"
#include "tools/glazelhost/commands/render_look.h"
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/plugin/effect_session.h"
#include "tools/glazelhost/plugin/renderer_library.h"
#include "tools/glazelhost/ui/reporter.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace GlazelHost
{

namespace
{

// The rate of a sequence that nobody states: without one an effect could not tell its frames apart.
constexpr double kUsualRate = 25.0;

std::string NameOf(const std::string& path, const char* standardStream)
{
    return path == kStandardStream ? standardStream : path;
}

// The frames of a sequence have the numbers of their files, all others count from 1.
std::int64_t FirstNumber(const StreamInfo& info)
{
    return info.firstNumber.value_or(1);
}

std::optional<std::int64_t> FramesToRender(const FrameList& frames, const StreamInfo& info,
                                           const std::optional<std::int64_t>& expected)
{
    const auto count = info.frameCount ? info.frameCount : expected;
    const std::int64_t first = FirstNumber(info);
    return count ? std::optional(frames.CountWithin(first, first + *count - 1)) : std::nullopt;
}

// Throws HostError when the source is known to have none of the frames that the user lists.
void CheckFrames(const RenderCommand& command, const StreamInfo& info)
{
    if (!command.frames)
    {
        return;
    }
    if (!info.firstNumber && command.frames->First() < 1)
    {
        throw HostError("--frames", "the frames of a stream or picture count from 1",
                        "give numbers from 1 on", ExitCode::WrongUsage);
    }
    if (info.frameCount && *FramesToRender(*command.frames, info, std::nullopt) == 0)
    {
        const std::int64_t first = FirstNumber(info);
        throw HostError(NameOf(command.source.path, "standard input"),
                        "it has none of the chosen frames: its numbers are " +
                            std::to_string(first) + " to " +
                            std::to_string(first + *info.frameCount - 1),
                        "choose from these with --frames");
    }
}

// Says it where --dither was given and there is no step from float to 8 bits.
void TellOfDither(const RenderCommand& command, const FrameSink& sink, SampleType depth,
                  Reporter& reporter)
{
    if (!command.sink.ditherSeed)
    {
        return;
    }
    if (depth == SampleType::Byte)
    {
        reporter.Warn("--dither: it changes nothing, as the frames are rendered in 8 bits; give "
                      "--depth float");
    }
    else if (const int bits = sink.BitsPerChannel(depth); bits != 8)
    {
        reporter.Warn("--dither: it changes nothing, as the output has " + std::to_string(bits) +
                      " bits a channel; give --bits 8");
    }
}

std::string BitsText(int bits)
{
    constexpr int kFloat = 32;
    return bits == kFloat ? "float" : std::to_string(bits) + " bits";
}

// Between two files: what is behind a pipe knows better what became of the bits. None: nothing.
std::optional<std::string> LossOfDepth(const RenderCommand& command, int before, int after)
{
    const bool isPiped =
        command.source.path == kStandardStream || command.sink.path == kStandardStream;
    return isPiped || after >= before
               ? std::nullopt
               : std::optional("depth: " + BitsText(before) + " becomes " + BitsText(after));
}

// Takes the frames that are wanted from the source through the effect to the sink.
class FrameLoop
{
public:
    FrameLoop(const RenderCommand& command, const std::shared_ptr<FrameSource>& source,
              FrameSink& sink, ShownLook& look, SampleType depth, Reporter& reporter)
        : m_command(command), m_look(look), m_reporter(reporter),
          m_pixelAspect(source->Info().pixelAspect),
          m_rate(source->Info().framesPerSecond > 0.0 ? source->Info().framesPerSecond
                                                      : kUsualRate),
          m_inStages(InStages(source->Info())),
          m_reading(source,
                    {command.frames.value_or(FrameList()), FirstNumber(source->Info()), depth,
                     command.skipBadFrames},
                    m_inStages),
          m_writing(sink, m_inStages, [this] { m_reading.BreakOff(); })
    {
    }

    // Throws HostError for the first frame that fails, unless bad frames are to be skipped. What
    // came before it is written then.
    void Run()
    {
        try
        {
            while (TakenFrame* frame = m_reading.Next())
            {
                Treat(*frame);
                m_reading.Done();
                Tell();
            }
        }
        catch (...)
        {
            Drain();
            throw;
        }
        Drain();
    }

    std::int64_t Written() const noexcept { return m_told; }
    std::int64_t Bad() const noexcept { return m_bad; }
    // The source failed, as opposed to the effect or the output.
    bool SourceFailed() const noexcept { return m_sourceFailed; }

private:
    // One picture takes the least memory, and no longer, on one thread.
    static bool InStages(const StreamInfo& info) { return !info.isPicture && info.frameCount != 1; }

    void Treat(TakenFrame& frame)
    {
        switch (frame.kind)
        {
        case TakenFrame::Kind::Nothing:
            m_writing.Pass();
            break;
        case TakenFrame::Kind::Picture:
            RenderFrame(frame);
            break;
        case TakenFrame::Kind::Failed:
            TakeFailure(std::exchange(frame.error, nullptr));
            m_writing.Pass();
            break;
        }
    }

    void TakeFailure(const std::exception_ptr& error)
    {
        Drain(); // what is said of the frames before comes first
        try
        {
            std::rethrow_exception(error);
        }
        catch (const HostError& badFrame)
        {
            if (!m_command.skipBadFrames)
            {
                m_sourceFailed = true;
                throw;
            }
            ++m_bad;
            m_reporter.Warn(badFrame.what());
        }
    }

    void RenderFrame(TakenFrame& frame)
    {
        Image& graded = m_writing.Place();
        m_look.Render(frame.index, frame.image, graded,
                      {m_pixelAspect, m_rate, FrameTime(frame.index, m_rate)});
        if (!m_inStages)
        {
            frame.image.pixels = {}; // writing takes memory of its own
        }
        if (!std::exchange(m_sizeIsTold, true))
        {
            m_reporter.Size(graded.width, graded.height);
        }
        m_writing.Write();
    }

    // Of the frames that have been written meanwhile.
    void Tell()
    {
        const std::int64_t written = m_writing.Written();
        for (const std::string& remark : m_writing.TakeRemarks())
        {
            m_reporter.Warn(remark);
        }
        if (m_told != written)
        {
            m_told = written;
            m_reporter.Advance(m_told);
        }
    }

    void Drain()
    {
        try
        {
            m_writing.Drain();
        }
        catch (...)
        {
            m_sourceFailed = false; // the output had failed before
            Tell();
            throw;
        }
        Tell();
    }

    const RenderCommand& m_command;
    ShownLook& m_look;
    Reporter& m_reporter;
    double m_pixelAspect;
    double m_rate;
    const bool m_inStages;
    bool m_sizeIsTold = false;
    std::int64_t m_told = 0; // frames written, as far as it has been said
    std::int64_t m_bad = 0;
    bool m_sourceFailed = false;
    FrameReading m_reading;
    FrameWriting m_writing; // ends first, as it may break off the reading
};

// A stream that broke, or has become shorter meanwhile, lacks more frames than the bad one.
std::int64_t MissingFrames(const RenderCommand& command, const StreamInfo& info,
                           const FrameLoop& frames)
{
    const auto total = FramesToRender(command.frames.value_or(FrameList()), info, std::nullopt);
    return std::max(frames.Bad(), total.value_or(0) - frames.Written());
}

} // namespace

void RunCommand(const RenderCommand& command, Reporter& reporter)
{
    const std::shared_ptr<FrameSource> source = OpenSource(command.source);
    const StreamInfo& info = source->Info();
    CheckFrames(command, info);
    StreamInfo written = info;
    written.light.isLinear = command.linear.value_or(info.light.isLinear);
    const std::unique_ptr<FrameSink> sink = OpenSink(command.sink, written);
    const SampleType depth = DepthOf(command.depth, info);
    const std::string output = NameOf(command.sink.path, "standard output");
    const auto loss = LossOfDepth(command, info.bitsPerChannel, sink->BitsPerChannel(depth));
    if (loss && command.sink.strict)
    {
        RefuseLoss(output, *loss);
    }

    RendererLibrary renderer(command.tools.rendererFolder);
    renderer.Require();
    const PluginModule plugin(command.tools.plugin);
    EffectSession session(plugin);
    ShownLook look(command, info, depth, renderer, session, reporter);

    // Said when all that could stop the job at once has been passed: an error then stands alone.
    reporter.Note(NameOf(command.source.path, "standard input") + ": " + info.description +
                  ", rendered in " + look.Manner());
    if (loss)
    {
        reporter.Note(output + ": " + *loss);
    }
    look.Tell(reporter);
    TellOfDither(command, *sink, depth, reporter);
    FrameLoop frames(command, source, *sink, look, depth, reporter);
    reporter.Begin(
        FramesToRender(command.frames.value_or(FrameList()), info, command.expectedFrames));
    try
    {
        frames.Run();
    }
    catch (const HostError&)
    {
        // What came before a source broke is good: it is kept, though the job failed.
        if (frames.SourceFailed() && frames.Written() > 0)
        {
            sink->Finish();
            reporter.Note(output + ": holds the " + FrameCountText(frames.Written()) +
                          " before the failure");
        }
        throw;
    }
    sink->Finish();
    reporter.Done(output);
    if (const std::int64_t missing = MissingFrames(command, info, frames); missing > 0)
    {
        throw HostError(NameOf(command.source.path, "standard input"),
                        FrameCountText(missing) + " could not be read and " +
                            (missing == 1 ? "was" : "were") + " left out",
                        "render the missing ones again from good files");
    }
}

} // namespace GlazelHost
