// What a renderer owes to those who call its entry points: contract/entry_points.h.
#include "contract/option_chunk.h"
#include "tools/glazelhost/validate/check_group.h"
#include "tools/glazelhost/validate/judged_renderer.h"
#include "tools/glazelhost/validate/load_check.h"
#include "tools/glazelhost/validate/parallel.h"
#include "tools/glazelhost/validate/scratch_file.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

namespace GlazelHost
{

namespace
{

using namespace RendererAPI;

constexpr std::byte kUntouched{0xA5};
constexpr std::size_t kLargestRecord = 131072; // an effect stores no larger one

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

// What every group but the first begins with.
struct Started
{
    explicit Started(Check& check) : renderer(check.File()), isUsable(renderer.Start(check)) {}

    JudgedRenderer renderer;
    bool isUsable;
};

void CheckExports(Check& check)
{
    const JudgedRenderer renderer(check.File());
    const EntryPoints& calls = renderer.Calls();
#define CHECK_ENTRY_POINT(pointer, name, required)                                                 \
    if (calls.pointer == nullptr)                                                                  \
    {                                                                                              \
        if (required)                                                                              \
        {                                                                                          \
            check.That(false, "it does not export " #name);                                        \
        }                                                                                          \
        else                                                                                       \
        {                                                                                          \
            check.Warn("it does not export " #name ", which is optional");                         \
        }                                                                                          \
    }
    RENDERER_ENTRY_POINTS(CHECK_ENTRY_POINT)
#undef CHECK_ENTRY_POINT
}

void CheckStart(Check& check)
{
    Started started(check);
    if (!started.isUsable)
    {
        return;
    }
    const EntryPoints& calls = started.renderer.Calls();
    check.That(calls.initRenderer(kStartMode) == 0,
               "InitRenderer(3) does not answer 0 for the second effect of a process");
    calls.exitRenderer();
    check.That(calls.initRenderer(kStartMode) == 0,
               "InitRenderer(3) does not answer 0 after ExitRenderer");
}

void CheckImport(Check& check)
{
    Started started(check);
    if (!started.isUsable)
    {
        return;
    }
    const JudgedRenderer& renderer = started.renderer;
    const Record look = renderer.LookOf(check);
    if (look.empty())
    {
        return;
    }
    check.That(look.size() <= kLargestRecord, "a record has " + std::to_string(look.size()) +
                                                  " bytes, and an effect stores 131072");
    GuardedBlock small(look.size() - 1);
    std::ranges::fill(small.Bytes(), kUntouched);
    const auto size = static_cast<std::uint32_t>(small.Size());
    check.That(renderer.Calls().getSessionData(small.Data(), size) == 0,
               "GetSessionData does not answer 0 for a buffer that is a byte too small");
    check.That(std::ranges::all_of(small.Bytes(), [](std::byte b) { return b == kUntouched; }),
               "GetSessionData writes into a buffer that is too small");
    check.That(renderer.Produced(check) == look, "the same record is handed out differently");

    check.That(renderer.Import("Z:\\no folder\\no look.cube") < 0,
               "LoadSessionFile of a file that is not there does not answer a negative number");
    check.That(renderer.Calls().getSessionDataSize() == 0,
               "after an import that failed something is still produced");
    check.That(renderer.Import("") < 0,
               "LoadSessionFile of an empty path does not answer a negative number");
}

void CheckRecord(Check& check)
{
    Started started(check);
    if (!started.isUsable)
    {
        return;
    }
    const JudgedRenderer& renderer = started.renderer;
    const Record look = renderer.LookOf(check);
    if (look.empty())
    {
        return;
    }
    if (check.That(HasOptionChunk(look.data(), look.size()),
                   "a record has no option chunk at its byte 8"))
    {
        std::uint32_t option = 0;
        std::memcpy(&option, look.data() + kOptionWord, sizeof option);
        check.That(option == kAssumeLinearGamma, "a new record has its option off");
    }
    check.That(renderer.LookOf(check) == look,
               "the same file gives another record the second time");
    check.That(renderer.LookOf(check, kOtherCubeText) != look,
               "another file gives the same record");

    // What the host changes and hands back must still be a look.
    Record changed = look;
    changed[kOptionWord] = std::byte{0};
    const PictureShape shape{16, 2, kFormatBgra8, 0};
    JudgedPicture source(shape);
    JudgedPicture plain(shape);
    JudgedPicture target(shape);
    source.FillAtRandom(check);
    FrameBufferDesc from = source.Description();
    FrameBufferDesc to = plain.Description();
    check.That(renderer.Render(from, to, look) == kFrameRendered,
               "a record that was imported is not rendered");
    to = target.Description();
    check.That(renderer.Render(from, to, changed) == kFrameRendered && target.SameAs(plain),
               "a record whose option was switched off does not render 8 bits as before");
    check.That(!plain.SameAs(source), "a look that changes every colour leaves the picture alone");
}

void CheckBlend(Check& check)
{
    Started started(check);
    if (!started.isUsable)
    {
        return;
    }
    Record first = started.renderer.LookOf(check);
    const Record second = started.renderer.LookOf(check, kOtherCubeText);
    if (first.empty() || second.empty())
    {
        return;
    }
    first[kOptionWord] = std::byte{0};
    const auto blend = [&](double fraction) {
        GuardedBlock a(first);
        GuardedBlock b(second);
        a.MakeReadOnly();
        b.MakeReadOnly();
        const GuardedBlock output(first.size());
        started.renderer.Calls().interpolateSessionData(
            a.Data(), static_cast<std::uint32_t>(a.Size()), b.Data(),
            static_cast<std::uint32_t>(b.Size()), fraction, output.Data());
        return Record(output.Bytes().begin(), output.Bytes().end());
    };
    Record last = second;
    last.resize(first.size());
    std::copy_n(first.begin() + kOptionWord, kOptionChunkEnd - kOptionWord,
                last.begin() + kOptionWord);
    check.That(blend(0.0) == first, "a blend at 0 is not the first record");
    check.That(first.size() != second.size() || blend(1.0) == last,
               "a blend at 1 is not the second record with the option of the first");
    for (const double fraction : {0.25, 0.5, -3.0, 7.0, std::numeric_limits<double>::quiet_NaN()})
    {
        const Record between = blend(fraction);
        check.That(std::equal(between.begin() + kOptionChunk, between.begin() + kOptionChunkEnd,
                              first.begin() + kOptionChunk),
                   "a blend does not keep the option chunk of the first record");
        check.That(blend(fraction) == between, "the same blend comes out differently");
    }
    check.That(blend(0.5) != first && blend(0.5) != last, "a blend at 0.5 is one of its ends");
}

void CheckFrames(Check& check)
{
    Started started(check);
    if (!started.isUsable)
    {
        return;
    }
    const Record look = started.renderer.LookOf(check);
    if (look.empty())
    {
        return;
    }
    for (const PictureShape& shape : kShapes)
    {
        std::optional<JudgedPicture> first;
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
            const std::int32_t result = started.renderer.Render(from, to, look);
            const std::string name = NameOf(shape);
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

void CheckInPlace(Check& check)
{
    Started started(check);
    if (!started.isUsable)
    {
        return;
    }
    const Record look = started.renderer.LookOf(check);
    if (look.empty())
    {
        return;
    }
    for (const PictureShape& shape : kShapes)
    {
        JudgedPicture source(shape);
        JudgedPicture target(shape);
        source.FillAtRandom(check);
        FrameBufferDesc from = source.Description();
        FrameBufferDesc to = target.Description();
        started.renderer.Render(from, to, look);
        FrameBufferDesc same = source.Description();
        started.renderer.Render(from, same, look);
        check.That(source.SameAs(target), NameOf(shape) + ": in place it comes out differently");
    }
}

void CheckDeterminism(Check& check)
{
    Started started(check);
    if (!started.isUsable)
    {
        return;
    }
    const Record look = started.renderer.LookOf(check);
    if (look.empty())
    {
        return;
    }
    constexpr unsigned kRepeats = 8;
    for (const std::uint32_t format : {kFormatBgra8, kFormatBgraFloat})
    {
        const PictureShape shape{160, 90, format, 0};
        JudgedPicture source(shape);
        JudgedPicture expected(shape);
        source.FillAtRandom(check);
        FrameBufferDesc from = source.Description();
        FrameBufferDesc to = expected.Description();
        started.renderer.Render(from, to, look);
        for (unsigned repeat = 0; repeat < kRepeats; ++repeat)
        {
            const JudgedPicture again(shape);
            to = again.Description();
            started.renderer.Render(from, to, look);
            check.That(again.SameAs(expected), NameOf(shape) + ": another time it comes out "
                                                               "differently");
            const JudgedPicture elsewhere(shape);
            to = elsewhere.Description();
            OnThreads(1, [&](unsigned) { started.renderer.Render(from, to, look); });
            check.That(elsewhere.SameAs(expected),
                       NameOf(shape) + ": on another thread it comes out differently");
        }
    }
}

void CheckConcurrency(Check& check)
{
    Started started(check);
    if (!started.isUsable)
    {
        return;
    }
    const Record look = started.renderer.LookOf(check);
    if (look.empty())
    {
        return;
    }
    constexpr unsigned kThreads = 4;
    constexpr unsigned kRepeats = 25;
    const PictureShape shape{320, 180, kFormatBgraFloat, 0};
    JudgedPicture source(shape);
    const JudgedPicture expected(shape);
    source.FillAtRandom(check);
    FrameBufferDesc from = source.Description();
    FrameBufferDesc to = expected.Description();
    started.renderer.Render(from, to, look);
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
            started.renderer.Render(mine, target, look);
            different += targets[thread].SameAs(expected) ? 0U : 1U;
        }
    });
    check.That(different == 0, "frames that are rendered at the same time come out differently");
}

void CheckThumbnail(Check& check)
{
    Started started(check);
    if (!started.isUsable)
    {
        return;
    }
    const Record look = started.renderer.LookOf(check);
    if (look.empty())
    {
        return;
    }
    const auto draw = [&started](const Record& record, FrameBufferDesc& icon) {
        return started.renderer.Calls().getSessionIcon(
            record.data(), static_cast<std::uint32_t>(record.size()), &icon);
    };
    FrameBufferDesc icon{};
    const std::int32_t drawn = draw(look, icon);
    const bool isThere = icon.pixels != nullptr && icon.width != 0 && icon.height != 0;
    check.That(drawn == 1 && isThere, "a look that was imported has no thumbnail");
    if (isThere && check.That(icon.width <= 4096 && icon.height <= 4096,
                              "a thumbnail has a side of more than 4096 pixels"))
    {
        const auto* const bytes = static_cast<const std::byte*>(icon.pixels);
        const Record pixels(bytes, bytes + std::size_t{icon.width} * icon.height * 4);
        FrameBufferDesc again{};
        draw(look, again);
        check.That(again.width == icon.width && again.height == icon.height &&
                       again.pixels != nullptr &&
                       std::memcmp(again.pixels, pixels.data(), pixels.size()) == 0,
                   "the same thumbnail comes out differently");
    }
    FrameBufferDesc nothing{};
    const std::int32_t none = draw(check.RandomBytes(64), nothing);
    check.That(none == 0 && nothing.pixels == nullptr,
               "bytes that are no look have a thumbnail: it answers " + std::to_string(none));
}

void CheckFrameErrors(Check& check)
{
    Started started(check);
    if (!started.isUsable)
    {
        return;
    }
    const Record look = started.renderer.LookOf(check);
    if (look.empty())
    {
        return;
    }
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
        const std::int32_t result = started.renderer.Render(from, to, look);
        check.That(result < 0, std::string(fault.name) + ": RenderFrame answers " +
                                   std::to_string(result) + " instead of a negative number");
        check.That(std::ranges::all_of(target.Memory().Bytes(),
                                       [](std::byte b) { return b == kUntouched; }),
                   std::string(fault.name) + ": the target is written all the same");
    }
}

void CheckImportErrors(Check& check)
{
    Started started(check);
    if (!started.isUsable)
    {
        return;
    }
    const auto refuse = [&](const char* what, std::string_view ending,
                            std::span<const std::byte> contents) {
        const ScratchFile file(ending, contents);
        const std::int32_t result = started.renderer.Import(file.Path());
        if (result >= 0)
        {
            check.That(false, std::string(what) + ": LoadSessionFile answers " +
                                  std::to_string(result) + " instead of a negative number");
            return;
        }
        check.That(started.renderer.Calls().getSessionDataSize() == 0,
                   std::string(what) + ": after the failure something is produced");
    };
    const auto text = [](std::string_view words) { return std::as_bytes(std::span(words)); };
    for (const char* const ending : {".cube", ".cc", ".look", ".3dl", ".csp", ".clf", ".xyz"})
    {
        refuse("an empty file", ending, {});
        refuse("random bytes", ending, check.RandomBytes(1 + check.Random(3000)));
    }
    refuse("a cube that ends in the middle", ".cube", text("LUT_3D_SIZE 2\n0 0 0\n1 1"));
    refuse("a cube of words", ".cube", text("LUT_3D_SIZE 2\nred green blue\n"));
    refuse("a cube of a size beyond reason", ".cube", text("LUT_3D_SIZE 1000000\n0 0 0\n"));
    refuse("a correction without an end", ".cc", text("<ColorCorrection id=\"a\"><SOPNode>"));
    check.That(started.renderer.Calls().loadSessionFile("a\xFF\xFE.cube", kImportRecord) < 0,
               "a path that is not UTF-8: LoadSessionFile does not answer a negative number");
}

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

void CheckHostileRecords(Check& check)
{
    Started started(check);
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

void CheckUnload(Check& check)
{
    constexpr unsigned kLoads = 25;
    CheckLoads(check, kLoads, [&check] {
        Started started(check);
        const Record look = started.isUsable ? started.renderer.LookOf(check) : Record();
        if (look.empty())
        {
            return HMODULE{nullptr};
        }
        const PictureShape shape{64, 16, kFormatBgra8, 0};
        JudgedPicture picture(shape);
        picture.FillAtRandom(check);
        FrameBufferDesc frame = picture.Description();
        started.renderer.Render(frame, frame, look);
        FrameBufferDesc icon{};
        started.renderer.Calls().getSessionIcon(look.data(),
                                                static_cast<std::uint32_t>(look.size()), &icon);
        return started.renderer.Module();
    });
}

// 1 x 1 pixels anywhere: a desktop that makes no window of ours makes none of an editor's.
bool WindowsCanBeMade() noexcept
{
    const HWND window = ::CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr,
                                          nullptr, nullptr);
    if (window != nullptr)
    {
        ::DestroyWindow(window);
    }
    return window != nullptr;
}

void CheckNoDesktop(Check& check)
{
    Started started(check);
    if (!started.isUsable)
    {
        return;
    }
    if (WindowsCanBeMade())
    {
        check.Skip("there is a desktop here");
        return;
    }
    const Record look = started.renderer.LookOf(check);
    JudgedPicture preview({32, 16, kFormatBgra8, 0});
    preview.FillAtRandom(check);
    FrameBufferDesc frame = preview.Description();
    const auto size = static_cast<std::uint32_t>(look.size());
    const EntryPoints& calls = started.renderer.Calls();
    check.That(calls.doModalUI(&frame, look.data(), size) == kEditorUnavailable,
               "DoModalUI does not answer 10 where no window can be made");
    if (calls.doModalUI2 != nullptr)
    {
        check.That(calls.doModalUI2(&frame, look.data(), size, 1) == kEditorUnavailable,
                   "DoModalUI2 does not answer 10 where no window can be made");
    }
}

// clang-format off
constexpr std::array kRendererGroups{
    CheckGroup{"renderer.exports", 1, "every required entry point is there", CheckExports},
    CheckGroup{"renderer.start", 1, "it starts for every effect, and again after its end", CheckStart},
    CheckGroup{"renderer.import", 2, "what was last produced is handed out whole or not at all", CheckImport},
    CheckGroup{"renderer.record", 3, "a record goes to the host and back, with its option", CheckRecord},
    CheckGroup{"renderer.blend", 3, "two records blend between their ends, with the option of the first", CheckBlend},
    CheckGroup{"renderer.frames", 4, "a frame of any size is rendered and nothing beside it is touched", CheckFrames},
    CheckGroup{"renderer.in_place", 4, "a frame comes out alike in place and apart", CheckInPlace},
    CheckGroup{"renderer.thumbnail", 4, "a look has a thumbnail, and what is no look has none", CheckThumbnail},
    CheckGroup{"renderer.determinism", 5, "a frame comes out alike every time and on every thread", CheckDeterminism},
    CheckGroup{"renderer.frame_errors", 5, "a frame that cannot be rendered is refused and left alone", CheckFrameErrors},
    CheckGroup{"renderer.import_errors", 6, "a file that is no look is refused and leaves nothing", CheckImportErrors},
    CheckGroup{"renderer.unload", 6, "loads and unloads leave nothing in the process", CheckUnload},
    CheckGroup{"renderer.hostile_records", 7, "a record may hold any bytes", CheckHostileRecords},
    CheckGroup{"renderer.no_desktop", 8, "the editor refuses where no window can be made", CheckNoDesktop},
    CheckGroup{"renderer.concurrency", 9, "frames may be rendered at the same time", CheckConcurrency},
};
// clang-format on

} // namespace

std::span<const CheckGroup> RendererGroups() noexcept
{
    return kRendererGroups;
}

} // namespace GlazelHost
