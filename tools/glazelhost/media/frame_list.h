// The frames that the user wants: "1-10,15,20-40x2" (numbers from 0, both ends included, a step
// after x; "30-" goes on to the end). Pure: no windows.h.
// Tests: tests/tools/glazelhost/media/frame_list_test.cpp.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace GlazelHost
{

// A set of frame numbers: each counts once and in ascending order, however it was written.
class FrameList
{
public:
    // Largest number that can be written in a list.
    static constexpr std::int64_t kLargestFrame = 999'999'999'999'999'999;

    FrameList(); // every frame

    // Throws HostError (WrongUsage) that quotes the part that makes no sense.
    static FrameList Parse(std::string_view text);

    bool Contains(std::int64_t frame) const noexcept;
    // The smallest listed frame above `frame`; none when there is none.
    std::optional<std::int64_t> NextAfter(std::int64_t frame) const noexcept;
    std::int64_t First() const noexcept;
    // The last listed frame; none when the list has no end.
    std::optional<std::int64_t> Last() const noexcept;
    // How many of the frames `first` to `last` are listed; `first` is 0 or more.
    std::int64_t CountWithin(std::int64_t first, std::int64_t last) const noexcept;

private:
    // first, first + step, ... up to last.
    struct Range
    {
        std::int64_t first;
        std::int64_t last;
        std::int64_t step;
    };
    static Range ParseRange(std::string_view part);

    std::vector<Range> m_ranges; // sorted by first, never empty
};

} // namespace GlazelHost
