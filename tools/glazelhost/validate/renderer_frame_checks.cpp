// What a renderer owes to those who give it frames: contract/entry_points.h.
#include "contract/option_chunk.h"
#include "tools/glazelhost/validate/parallel.h"
#include "tools/glazelhost/validate/renderer_checks.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <string>
#include <vector>

namespace GlazelHost
{

namespace
{

using namespace RendererAPI;

// clang-format off
constexpr std::array kShapes{ // width, height, format, gap
    PictureShape{1,     1,     kFormatBgra8,     0},
    PictureShape{1,     1,     kFormatBgraFloat, 0},
    PictureShape{3,     5,     kFormatBgra8,     7},
    PictureShape{3,     5,     kFormatBgraFloat, 3},
    PictureShape{17,    4,     kFormatBgra8,     0},
    PictureShape{33,    9,     kFormatBgraFloat, 1},
    PictureShape{257,   3,     kFormatBgra8,     1},
    PictureShape{16384, 1,     kFormatBgra8,     0},
    PictureShape{16384, 1,     kFormatBgraFloat, 0},
    PictureShape{1,     16384, kFormatBgra8,     2},
    PictureShape{640,   360,   kFormatBgra8,     0},
    PictureShape{320,   200,   kFormatBgraFloat, 0},
};
// clang-format on

// A record that nobody made renders as a copy, whatever is in it.
void RenderHostile(Check& check, const JudgedRenderer& renderer, const char* kind,
                   const Record& record)
{
    for (const std::uint32_t format : {kFormatBgra8, kFormatBgraFloat})
    {
        GuardedBlock bytes(record);
        bytes.MakeReadOnly();
        const PictureShape shape{13, 3, format, 0};
        JudgedPicture source(shape);
        JudgedPicture target(shape);
        source.FillAtRandom(check);
        FrameBufferDesc from = source.Description();
        FrameBufferDesc to = target.Description();
        const std::int32_t result = renderer.Render(from, to, bytes.Bytes());
        check.That(result == kFrameRendered || result == kFrameUnchanged,
                   std::string(kind) + ": RenderFrame answers " + std::to_string(result) +
                       " instead of 0 or 1");
        check.That(result != kFrameUnchanged || target.SameAs(source),
                   std::string(kind) + ": RenderFrame answers 1 and the target is no copy");
        check.That(target.IsFinite(), std::string(kind) + ": a colour is no finite number");
    }
}

} // namespace

void CheckRendererFrames(Check& check, const JudgedRenderer& renderer, const Record& look)
{
    for (const PictureShape& shape : kShapes)
    {
        for (const GuardedEnd end : {GuardedEnd::Back, GuardedEnd::Front})
        {
            JudgedPicture source(shape, end);
            JudgedPicture target(shape, end);
            source.Fill(kUntouched);
            target.Fill(kUntouched);
            source.FillAtRandom(check);
            source.Memory().MakeReadOnly();
            FrameBufferDesc from = source.Description();
            FrameBufferDesc to = target.Description();
            const std::string name = NameOf(shape);
            check.That(renderer.Render(from, to, look, kRenderFrame | kRenderFlipped) ==
                           kFrameRendered,
                       name + ": stored bottom row first it is not rendered");
            target.Fill(kUntouched);
            const std::int32_t result = renderer.Render(from, to, look);
            check.That(result == kFrameRendered,
                       name + ": RenderFrame answers " + std::to_string(result) + " instead of 0");
            check.That(target.GapsHold(kUntouched), name + ": bytes between the rows are written");
            check.That(target.SameAlphaAs(source), name + ": alpha is not copied");
            check.That(target.IsFinite(), name + ": a colour is no finite number");
            check.That(from.pixels == source.Description().pixels &&
                           to.pixels == target.Description().pixels && to.width == shape.width &&
                           to.height == shape.height && to.format == shape.format,
                       name + ": a frame record that only describes is changed");
        }
    }
}

void CheckRendererInPlace(Check& check, const JudgedRenderer& renderer, const Record& look)
{
    for (const PictureShape& shape : kShapes)
    {
        JudgedPicture source(shape);
        JudgedPicture target(shape);
        source.FillAtRandom(check);
        FrameBufferDesc from = source.Description();
        FrameBufferDesc to = target.Description();
        renderer.Render(from, to, look);
        FrameBufferDesc same = source.Description();
        renderer.Render(from, same, look);
        check.That(source.SameAs(target), NameOf(shape) + ": in place it comes out differently");
    }
}

void CheckRendererDeterminism(Check& check, const JudgedRenderer& renderer, const Record& look)
{
    constexpr unsigned kRepeats = 8;
    for (const std::uint32_t format : {kFormatBgra8, kFormatBgraFloat})
    {
        const PictureShape shape{160, 90, format, 0};
        JudgedPicture source(shape);
        JudgedPicture expected(shape);
        source.FillAtRandom(check);
        FrameBufferDesc from = source.Description();
        FrameBufferDesc to = expected.Description();
        renderer.Render(from, to, look);
        for (unsigned repeat = 0; repeat < kRepeats; ++repeat)
        {
            const JudgedPicture again(shape);
            to = again.Description();
            renderer.Render(from, to, look);
            check.That(again.SameAs(expected), NameOf(shape) + ": another time it comes out "
                                                               "differently");
            const JudgedPicture elsewhere(shape);
            to = elsewhere.Description();
            OnThreads(1, [&](unsigned) { renderer.Render(from, to, look); });
            check.That(elsewhere.SameAs(expected),
                       NameOf(shape) + ": on another thread it comes out differently");
        }
    }
}

void CheckRendererHostilePixels(Check& check, const JudgedRenderer& renderer, const Record& look)
{
    for (const PictureShape& shape : kShapes)
    {
        if (shape.format != kFormatBgraFloat)
        {
            continue; // 8 bits are always a number
        }
        for (const std::uint32_t flags :
             {kRenderFrame, kRenderFrame | kRenderLinear, kRenderFrame | kRenderFlipped})
        {
            JudgedPicture source(shape);
            JudgedPicture first(shape);
            JudgedPicture second(shape);
            source.FillWithStrangeNumbers(check);
            source.Memory().MakeReadOnly();
            FrameBufferDesc from = source.Description();
            for (JudgedPicture* target : {&first, &second})
            {
                target->Fill(kUntouched);
                FrameBufferDesc to = target->Description();
                const std::int32_t result = renderer.Render(from, to, look, flags);
                check.That(result == kFrameRendered, NameOf(shape) + ": RenderFrame answers " +
                                                         std::to_string(result) + " instead of 0");
                check.That(target->GapsHold(kUntouched),
                           NameOf(shape) + ": bytes between the rows are written");
                check.That(target->SameAlphaAs(source), NameOf(shape) + ": alpha is not copied");
            }
            check.That(first.SameAs(second),
                       NameOf(shape) + ": another time it comes out differently");
        }
    }
}

void CheckRendererConcurrency(Check& check, const JudgedRenderer& renderer, const Record& look)
{
    constexpr unsigned kThreads = 4;
    constexpr unsigned kRepeats = 25;
    const PictureShape shape{320, 180, kFormatBgraFloat, 0};
    JudgedPicture source(shape);
    const JudgedPicture expected(shape);
    source.FillAtRandom(check);
    FrameBufferDesc from = source.Description();
    FrameBufferDesc to = expected.Description();
    renderer.Render(from, to, look);
    std::vector<JudgedPicture> targets;
    for (unsigned thread = 0; thread < kThreads; ++thread)
    {
        targets.emplace_back(shape);
    }
    std::atomic<unsigned> different = 0;
    OnThreads(kThreads, [&](unsigned thread) {
        for (unsigned repeat = 0; repeat < kRepeats; ++repeat)
        {
            targets[thread].Fill(kUntouched);
            FrameBufferDesc mine = source.Description();
            FrameBufferDesc target = targets[thread].Description();
            renderer.Render(mine, target, look);
            different += targets[thread].SameAs(expected) ? 0U : 1U;
        }
    });
    check.That(different == 0, "frames that are rendered at the same time come out differently");
}

void CheckRendererFrameErrors(Check& check, const JudgedRenderer& renderer, const Record& look)
{
    struct Fault
    {
        const char* name;
        std::int32_t result;
        void (*make)(FrameBufferDesc& source, FrameBufferDesc& target);
    };
    // clang-format off
    constexpr std::array kFaults{
        Fault{"a source without pixels", kFrameInvalid, [](auto& source, auto&) { source.pixels = nullptr; }},
        Fault{"a target without pixels", kFrameInvalid, [](auto&, auto& target) { target.pixels = nullptr; }},
        Fault{"a source without width", kFrameInvalid, [](auto& source, auto&) { source.width = 0; }},
        Fault{"a target without height", kFrameInvalid, [](auto&, auto& target) { target.height = 0; }},
        Fault{"two formats", kFrameFormatRefused, [](auto& source, auto&) { source.format = kFormatBgraFloat; source.width = 2; source.rowPitch = 2; }},
        Fault{"a format that is not known", kFrameFormatRefused, [](auto& source, auto& target) { source.format = target.format = 99; }},
        Fault{"two sizes", kFrameSizesDiffer, [](auto& source, auto&) { source.width = 7; }},
    };
    // clang-format on
    for (const Fault& fault : kFaults)
    {
        const PictureShape shape{8, 4, kFormatBgra8, 0};
        JudgedPicture source(shape);
        JudgedPicture target(shape);
        target.Fill(kUntouched);
        FrameBufferDesc from = source.Description();
        FrameBufferDesc to = target.Description();
        fault.make(from, to);
        const std::int32_t result = renderer.Render(from, to, look);
        check.That(result < 0, std::string(fault.name) + ": RenderFrame answers " +
                                   std::to_string(result) + " instead of a negative number");
        check.That(std::ranges::all_of(target.Memory().Bytes(),
                                       [](std::byte b) { return b == kUntouched; }),
                   std::string(fault.name) + ": the target is written all the same");
    }
}

void CheckRendererHostileRecords(Check& check)
{
    StartedRenderer started(check);
    if (!started.isUsable)
    {
        return;
    }
    const JudgedRenderer& renderer = started.renderer;
    const auto ask = [&](const char* kind, const Record& record, const Record& whole) {
        RenderHostile(check, renderer, kind, record);
        GuardedBlock bytes(record);
        bytes.MakeReadOnly();
        const auto size = static_cast<std::uint32_t>(bytes.Size());
        FrameBufferDesc icon{};
        renderer.Calls().getSessionIcon(bytes.Data(), size, &icon);
        if (!whole.empty() && size != 0)
        {
            const GuardedBlock output(record.size());
            renderer.Calls().interpolateSessionData(bytes.Data(), size, whole.data(),
                                                    static_cast<std::uint32_t>(whole.size()), 0.5,
                                                    output.Data());
        }
    };
    const Record look = renderer.LookOf(check);
    ask("an empty record", {}, look);
    for (std::size_t at = 0; at < std::min(look.size(), kOptionChunk); ++at)
    {
        Record later = look;
        later[at] = static_cast<std::byte>(std::to_integer<unsigned>(later[at]) + 1);
        ask("a record of another version", later, look);
    }
    Record longer = look;
    longer.resize(look.size() + 64, std::byte{0x5A});
    ask("a record with more behind it", longer, look);
    for (const std::size_t size : {1U, 7U, 19U, 20U, 21U, 64U, 4096U, 65537U, 131072U})
    {
        ask("random bytes", check.RandomBytes(size), look);
        // A header that looks right leads further into a reader.
        Record headed = look;
        headed.resize(size);
        ask("a record that was cut", headed, look);
    }
    for (unsigned flip = 0; !look.empty() && flip < 200; ++flip)
    {
        Record flipped = look;
        // Most of what a reader believes stands at the beginning.
        const std::uint32_t reach = flip % 2 == 0 ? 512U : static_cast<std::uint32_t>(look.size());
        const std::size_t at =
            check.Random(std::min(reach, static_cast<std::uint32_t>(look.size())));
        flipped[at] ^= static_cast<std::byte>(1U << check.Random(8));
        ask("a record with a flipped bit", flipped, look);
    }
}

} // namespace GlazelHost
