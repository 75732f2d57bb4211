// What a renderer owes to those who give it looks: contract/entry_points.h.
#include "contract/option_chunk.h"
#include "tools/glazelhost/validate/renderer_checks.h"
#include "tools/glazelhost/validate/scratch_file.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <string>

namespace GlazelHost
{

namespace
{

using namespace RendererAPI;

constexpr std::size_t kLargestRecord = 131072; // an effect stores no larger one

} // namespace

void CheckRendererImport(Check& check, const JudgedRenderer& renderer, const Record& look)
{
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

void CheckRendererRecord(Check& check, const JudgedRenderer& renderer, const Record& look)
{
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

void CheckRendererBlend(Check& check, const JudgedRenderer& renderer, const Record& look)
{
    Record first = look;
    const Record second = renderer.LookOf(check, kOtherCubeText);
    if (second.empty())
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
        renderer.Calls().interpolateSessionData(a.Data(), static_cast<std::uint32_t>(a.Size()),
                                                b.Data(), static_cast<std::uint32_t>(b.Size()),
                                                fraction, output.Data());
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

void CheckRendererThumbnail(Check& check, const JudgedRenderer& renderer, const Record& look)
{
    const auto draw = [&renderer](const Record& record, FrameBufferDesc& icon) {
        return renderer.Calls().getSessionIcon(record.data(),
                                               static_cast<std::uint32_t>(record.size()), &icon);
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

void CheckRendererImportErrors(Check& check)
{
    StartedRenderer started(check);
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

} // namespace GlazelHost
