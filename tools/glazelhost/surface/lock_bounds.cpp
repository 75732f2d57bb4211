#include "tools/glazelhost/surface/lock_bounds.h"

namespace GlazelHost
{

namespace
{

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
        return {static_cast<double>(bounds.u.C[dimension].Min),
                static_cast<double>(bounds.u.C[dimension].Max)};
    case DXBT_CONTINUOUS64:
        return {bounds.u.LC[dimension].Min, bounds.u.LC[dimension].Max};
    }
    return {};
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
    return AreaOf(IntervalOf(*bounds, DXB_X), IntervalOf(*bounds, DXB_Y), width, height);
}

} // namespace GlazelHost
