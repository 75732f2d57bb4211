#include "tools/glazelhost/surface/lock_bounds.h"

#include <gtest/gtest.h>

#include <limits>

namespace GlazelHost
{

namespace
{

DXBNDS Discrete(LONG left, LONG top, LONG right, LONG bottom)
{
    DXBNDS bounds{};
    bounds.eType = DXBT_DISCRETE;
    bounds.u.D[DXB_X] = {left, right};
    bounds.u.D[DXB_Y] = {top, bottom};
    return bounds;
}

} // namespace

TEST(LockBounds, NoBoundsMeanTheWholeSurface)
{
    EXPECT_EQ(AreaOfBounds(nullptr, 8, 6), (Area{0, 0, 8, 6}));
}

TEST(LockBounds, TheBoundsOfASurfaceLockAllOfIt)
{
    const DXBNDS bounds = BoundsOfSurface(8, 6);
    EXPECT_EQ(AreaOfBounds(&bounds, 8, 6), (Area{0, 0, 8, 6}));
    EXPECT_EQ(bounds.u.D[DXB_Z].Max, 1);
    EXPECT_EQ(bounds.u.D[DXB_T].Max, 1);
}

TEST(LockBounds, DepthAndTimeMayBeUnused)
{
    const DXBNDS bounds = Discrete(1, 2, 3, 4);
    EXPECT_EQ(AreaOfBounds(&bounds, 8, 6), (Area{1, 2, 3, 4}));
}

TEST(LockBounds, EmptyInsideOutAndOutsideBoundsAreRefused)
{
    for (const DXBNDS& bounds :
         {Discrete(2, 0, 2, 6), Discrete(0, 3, 8, 3), Discrete(5, 0, 2, 6), Discrete(-1, 0, 8, 6),
          Discrete(0, -1, 8, 6), Discrete(0, 0, 9, 6), Discrete(0, 0, 8, 7),
          Discrete(0, 0, std::numeric_limits<LONG>::max(), 6)})
    {
        EXPECT_FALSE(AreaOfBounds(&bounds, 8, 6));
    }
}

TEST(LockBounds, EveryKindOfBoundsIsConverted)
{
    DXBNDS bounds{};
    bounds.eType = DXBT_DISCRETE64;
    bounds.u.LD[DXB_X] = {1, 3};
    bounds.u.LD[DXB_Y] = {2, 4};
    EXPECT_EQ(AreaOfBounds(&bounds, 8, 6), (Area{1, 2, 3, 4}));
    bounds.u.LD[DXB_X] = {1, 1LL << 40};
    EXPECT_FALSE(AreaOfBounds(&bounds, 8, 6));

    bounds = {};
    bounds.eType = DXBT_CONTINUOUS;
    bounds.u.C[DXB_X] = {1.25F, 2.5F};
    bounds.u.C[DXB_Y] = {2.0F, 4.0F};
    EXPECT_EQ(AreaOfBounds(&bounds, 8, 6), (Area{1, 2, 3, 4}));

    bounds = {};
    bounds.eType = DXBT_CONTINUOUS64;
    bounds.u.LC[DXB_X] = {1.25, 2.5};
    bounds.u.LC[DXB_Y] = {2.0, 4.0};
    EXPECT_EQ(AreaOfBounds(&bounds, 8, 6), (Area{1, 2, 3, 4}));
    bounds.u.LC[DXB_X].Max = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(AreaOfBounds(&bounds, 8, 6));

    bounds.eType = static_cast<DXBNDTYPE>(17);
    EXPECT_FALSE(AreaOfBounds(&bounds, 8, 6));
}

} // namespace GlazelHost
