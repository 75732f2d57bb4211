#include "tools/glazelhost/media/frame_list.h"

#include "tools/glazelhost/host_error.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string>

namespace GlazelHost
{

namespace
{

constexpr std::int64_t kNoEnd = std::numeric_limits<std::int64_t>::max();

[[noreturn]] void Refuse(std::string_view part, const std::string& why)
{
    throw HostError("frames \"" + std::string(part) + '"', why,
                    "write frame numbers like 1-10,15,20-40x2", ExitCode::WrongUsage);
}

std::string_view Trimmed(std::string_view text)
{
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos)
    {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// A number from 0 to kLargestFrame, and nothing else.
std::int64_t ParseNumber(std::string_view digits, std::string_view part)
{
    std::int64_t number = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, number);
    if (error == std::errc::result_out_of_range ||
        (error == std::errc() && stop == end && number > FrameList::kLargestFrame))
    {
        Refuse(part, "the number is too large");
    }
    if (error != std::errc() || stop != end)
    {
        Refuse(part, "this is not a frame number or range");
    }
    if (number < 0)
    {
        Refuse(part, "frames have no numbers below 0");
    }
    return number;
}

} // namespace

FrameList::FrameList() : m_ranges{{0, kNoEnd, 1}} {}

FrameList::Range FrameList::ParseRange(std::string_view part)
{
    const auto dash = part.find('-');
    if (dash == std::string_view::npos)
    {
        const std::int64_t frame = ParseNumber(part, part);
        return {frame, frame, 1};
    }
    std::string_view lastDigits = part.substr(dash + 1);
    std::int64_t step = 1;
    if (const auto times = lastDigits.find('x'); times != std::string_view::npos)
    {
        step = ParseNumber(lastDigits.substr(times + 1), part);
        if (step < 1)
        {
            Refuse(part, "a step is at least 1");
        }
        lastDigits = lastDigits.substr(0, times);
    }
    const std::int64_t first = ParseNumber(part.substr(0, dash), part);
    const std::int64_t last = lastDigits.empty() ? kNoEnd : ParseNumber(lastDigits, part);
    if (last < first)
    {
        Refuse(part, "the range ends before it begins");
    }
    // The last frame that the step really meets, so that Last() is one that counts.
    return {first, last == kNoEnd ? kNoEnd : last - (last - first) % step, step};
}

FrameList FrameList::Parse(std::string_view text)
{
    FrameList list;
    list.m_ranges.clear();
    std::string_view rest = text;
    for (bool more = true; more;)
    {
        const auto comma = rest.find(',');
        more = comma != std::string_view::npos;
        const std::string_view part = Trimmed(rest.substr(0, comma));
        if (part.empty())
        {
            Refuse(text, "a frame number is missing");
        }
        list.m_ranges.push_back(ParseRange(part));
        rest = more ? rest.substr(comma + 1) : std::string_view();
    }
    std::ranges::sort(list.m_ranges, {}, &Range::first);
    return list;
}

bool FrameList::Contains(std::int64_t frame) const noexcept
{
    return frame >= 0 && NextAfter(frame - 1) == frame;
}

std::optional<std::int64_t> FrameList::NextAfter(std::int64_t frame) const noexcept
{
    std::int64_t next = kNoEnd;
    for (const Range& range : m_ranges)
    {
        if (range.first >= next)
        {
            break; // sorted: none of the rest is nearer
        }
        if (frame < range.first)
        {
            next = range.first;
        }
        else if (frame < range.last)
        {
            const std::int64_t distance = range.step - (frame - range.first) % range.step;
            next = distance <= range.last - frame ? std::min(next, frame + distance) : next;
        }
    }
    return next == kNoEnd ? std::nullopt : std::optional(next);
}

std::int64_t FrameList::First() const noexcept
{
    return m_ranges.front().first;
}

std::optional<std::int64_t> FrameList::Last() const noexcept
{
    const std::int64_t last = std::ranges::max(m_ranges, {}, &Range::last).last;
    return last == kNoEnd ? std::nullopt : std::optional(last);
}

std::int64_t FrameList::CountWithin(std::int64_t first, std::int64_t last) const noexcept
{
    if (m_ranges.size() == 1) // the usual list: no walk over millions of frames
    {
        const Range& only = m_ranges.front();
        const std::int64_t steps =
            first > only.first ? (first - only.first + only.step - 1) / only.step : 0;
        const std::int64_t begin = only.first + steps * only.step;
        const std::int64_t end = std::min(only.last, last);
        return end < begin ? 0 : (end - begin) / only.step + 1;
    }
    std::int64_t count = 0;
    for (auto frame = NextAfter(first - 1); frame && *frame <= last; frame = NextAfter(*frame))
    {
        ++count;
    }
    return count;
}

} // namespace GlazelHost
