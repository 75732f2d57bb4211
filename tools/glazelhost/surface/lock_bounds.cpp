#include "tools/glazelhost/surface/lock_bounds.h"

#include <cmath>

namespace GlazelHost
{

namespace
{

struct Interval
{
    double min = 0.0; // doubles hold every 32-bit number; larger ones are outside anyway
    double max = -1.0;
};

Interval IntervalOf(const DXBNDS& bounds, DXBNDID dimension) noexcept
{
    switch (bounds.eType)
    {
    case DXBT_DISCRETE:
        return {static_cast<double>(bounds.u.D[dimension].Min),
                static_cast<double>(bounds.u.D[dimension].Max)};
    case DXBT_DISCRETE64:
        return {static_cast<double>(bounds.u.LD[dimension].Min),
                static_cast<double>(bounds.u.LD[dimension].Max)};
    case DXBT_CONTINUOUS:
        return {std::floor(static_cast<double>(bounds.u.C[dimension].Min)),
                std::ceil(static_cast<double>(bounds.u.C[dimension].Max))};
    case DXBT_CONTINUOUS64:
        return {std::floor(bounds.u.LC[dimension].Min), std::ceil(bounds.u.LC[dimension].Max)};
    }
    return {};
}

// Written so that what is not a number fails.
bool IsInside(const Interval& interval, int length) noexcept
{
    return interval.min >= 0.0 && interval.min < interval.max && interval.max <= length;
}

} // namespace

DXBNDS BoundsOfSurface(int width, int height) noexcept
{
    DXBNDS bounds{};
    bounds.eType = DXBT_DISCRETE;
    bounds.u.D[DXB_X] = {0, width};
    bounds.u.D[DXB_Y] = {0, height};
    bounds.u.D[DXB_Z] = {0, 1};
    bounds.u.D[DXB_T] = {0, 1};
    return bounds;
}

std::optional<Area> AreaOfBounds(const DXBNDS* bounds, int width, int height) noexcept
{
    if (bounds == nullptr)
    {
        return Area{0, 0, width, height};
    }
    const Interval x = IntervalOf(*bounds, DXB_X);
    const Interval y = IntervalOf(*bounds, DXB_Y);
    if (!IsInside(x, width) || !IsInside(y, height))
    {
        return std::nullopt;
    }
    return Area{static_cast<int>(x.min), static_cast<int>(y.min), static_cast<int>(x.max),
                static_cast<int>(y.max)};
}

} // namespace GlazelHost
