#include "tools/glazelhost/surface/area_bounds.h"

#include <cmath>

namespace GlazelHost
{

namespace
{

Interval Widened(const Interval& interval) noexcept
{
    return {std::floor(interval.min), std::ceil(interval.max)};
}

// Written so that what is not a number fails.
bool IsInside(const Interval& interval, int length) noexcept
{
    return interval.min >= 0.0 && interval.min < interval.max && interval.max <= length;
}

} // namespace

std::optional<Area> AreaOf(const Interval& x, const Interval& y, int width, int height) noexcept
{
    const Interval across = Widened(x);
    const Interval down = Widened(y);
    if (!IsInside(across, width) || !IsInside(down, height))
    {
        return std::nullopt;
    }
    return Area{static_cast<int>(across.min), static_cast<int>(down.min),
                static_cast<int>(across.max), static_cast<int>(down.max)};
}

} // namespace GlazelHost
