#include "tools/glazelhost/surface/area_locks.h"

#include <gtest/gtest.h>

namespace GlazelHost
{

namespace
{

constexpr Area kAll{0, 0, 10, 10};
constexpr Area kUpper{0, 0, 10, 5};
constexpr Area kLower{0, 5, 10, 10};

} // namespace

TEST(AreaLocks, ReadersShareOneArea)
{
    AreaLocks locks;
    locks.Enter(kAll, false);
    EXPECT_TRUE(locks.CanEnter(kAll, false));
}

TEST(AreaLocks, AWriterWaitsForAReaderOfAnOverlappingArea)
{
    AreaLocks locks;
    locks.Enter(kUpper, false);
    EXPECT_FALSE(locks.CanEnter(kAll, true));
    EXPECT_TRUE(locks.CanEnter(kLower, true));
}

TEST(AreaLocks, AReaderWaitsForAWriterOfAnOverlappingArea)
{
    AreaLocks locks;
    locks.Enter(kUpper, true);
    EXPECT_FALSE(locks.CanEnter(kAll, false));
    EXPECT_TRUE(locks.CanEnter(kLower, false));
}

TEST(AreaLocks, WritersOfNeighbouringBandsCoexist)
{
    AreaLocks locks;
    locks.Enter(kUpper, true);
    EXPECT_TRUE(locks.CanEnter(kLower, true));
    EXPECT_FALSE(locks.CanEnter({9, 4, 10, 6}, true));
}

TEST(AreaLocks, LeavingGivesBackOneOfSeveralEqualLocks)
{
    AreaLocks locks;
    locks.Enter(kAll, false);
    locks.Enter(kAll, false);
    locks.Leave(kAll, false);
    EXPECT_EQ(locks.Count(), 1u);
    EXPECT_FALSE(locks.CanEnter(kAll, true));
    locks.Leave(kAll, false);
    EXPECT_TRUE(locks.CanEnter(kAll, true));
}

} // namespace GlazelHost
