// What people and other programs write as short texts: it is refused with an error, or means the
// same when it is written back.
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/frame_list.h"
#include "tools/glazelhost/media/sequence_pattern.h"
#include "tools/glazelhost/one_line.h"
#include "tools/glazelhost/plugin/look.h"
#include "tools/glazelhost/project/key_time.h"
#include "tools/glazelhost/project/project_text.h"

#include "tests/fuzz/fuzz_input.h"

#include <algorithm>

using namespace GlazelHost;

namespace
{

void TryFrames(const std::string& text)
{
    const FrameList frames = FrameList::Parse(text);
    std::int64_t frame = 0;
    for (int i = 0; i < 20; ++i)
    {
        const auto next = frames.NextAfter(frame);
        if (!next)
        {
            Require(frames.Last() && *frames.Last() <= frame);
            return;
        }
        Require(*next > frame && frames.Contains(*next));
        Require(*next == frame + 1 || !frames.Contains(*next - 1) ||
                frames.NextAfter(frame) <= *next - 1);
        frame = *next;
    }
}

void TryPattern(const std::string& text)
{
    const auto pattern = SequencePattern::Parse(text);
    if (pattern)
    {
        const std::string path = pattern->PathOf(7);
        Require(path.starts_with(pattern->Folder()));
        Require(pattern->NumberOf(path.substr(pattern->Folder().size())) == 7);
    }
}

void TryProject(const std::string& text)
{
    const std::string written = TextOf(ParseProject(text, "project"));
    Require(TextOf(ParseProject(written, "project")) == written);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text = StringOf(data, size);
    for (void (*const attempt)(const std::string&) : {&TryFrames, &TryPattern, &TryProject})
    {
        try
        {
            attempt(text);
        }
        catch (const HostError&) // the defined answer
        {
        }
    }
    if (const auto time = ParseKeyTime(text))
    {
        Require(ParseKeyTime(TextOf(*time)) == time);
    }
    const std::string line = OneLine(text);
    Require(std::ranges::none_of(line, [](unsigned char c) { return c < ' '; }));
    static_cast<void>(ParseDescription(text));
    return 0;
}
