#include "effect/packed_walk.h"

#include <algorithm>

std::optional<PackedWalk> WalkOver(const Geometry::Rect& area, std::int32_t bufferWidth,
                                   std::int32_t bufferHeight) noexcept
{
    constexpr std::int32_t paddingPerSample = 4;
    PackedWalk walk;
    walk.isWholeFrame =
        area.left == 0 && area.top == 0 && area.width == bufferWidth && area.height == bufferHeight;
    if (walk.isWholeFrame)
    {
        return walk;
    }
    walk.firstSample = std::int64_t{area.top} * bufferWidth + area.left;
    std::int32_t difference = 0;
    if (__builtin_sub_overflow(bufferWidth, area.width, &difference) ||
        __builtin_mul_overflow(difference, paddingPerSample, &walk.rowPadding))
    {
        return std::nullopt;
    }
    if (area.width <= 0 || area.height <= 0)
    {
        return walk; // nothing is read
    }
    std::int64_t lastRow = 0;
    if (__builtin_mul_overflow(std::int64_t{area.width} + walk.rowPadding,
                               std::int64_t{area.height} - 1, &lastRow) ||
        __builtin_add_overflow(lastRow, walk.firstSample, &lastRow))
    {
        return std::nullopt;
    }
    std::int64_t end = 0;
    if (__builtin_add_overflow(std::max(walk.firstSample, lastRow), area.width, &end))
    {
        return std::nullopt;
    }
    const std::int64_t first = std::min(walk.firstSample, lastRow);
    const std::int64_t bufferEnd = std::int64_t{bufferWidth} * bufferHeight;
    walk.samplesBefore = first < 0 ? std::size_t{0} - static_cast<std::size_t>(first) : 0;
    walk.samplesBehind = static_cast<std::size_t>(std::max(end - bufferEnd, std::int64_t{0}));
    return walk;
}
