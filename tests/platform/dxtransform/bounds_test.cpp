// Bounds and vectors.
#include "platform/dxtransform/dxbounds.h"
#include "tests/doubles/fake_surface.h"

#include <gtest/gtest.h>

#include <limits>

namespace
{

constexpr LONG kLongMax = std::numeric_limits<LONG>::max();
constexpr LONG kLongMin = std::numeric_limits<LONG>::min();

CDXDBnds Rectangle(LONG left, LONG top, LONG right, LONG bottom)
{
    return CDXDBnds(RECT{left, top, right, bottom});
}

TEST(Bounds, AreEmptyAtFirstWithTheLayerOfAnImage)
{
    const CDXDBnds bounds;
    EXPECT_EQ(bounds.eType, DXBT_DISCRETE);
    EXPECT_TRUE(bounds.BoundsAreEmpty());
    EXPECT_EQ(bounds[DXB_Z].Max, 1);
    EXPECT_EQ(bounds[DXB_T].Max, 1);
}

TEST(Bounds, OfASizeStartAtTheOrigin)
{
    const CDXDBnds bounds(5, 7);
    EXPECT_EQ(bounds.Left(), 0);
    EXPECT_EQ(bounds.Top(), 0);
    EXPECT_EQ(bounds.Width(), 5);
    EXPECT_EQ(bounds.Height(), 7);
    EXPECT_FALSE(bounds.BoundsAreEmpty());
}

TEST(Bounds, OfAPointAreOneSample)
{
    const CDXDBnds bounds(CDXDVec(3, 4));
    EXPECT_EQ(bounds.Left(), 3);
    EXPECT_EQ(bounds.Right(), 4);
    EXPECT_EQ(bounds.Top(), 4);
    EXPECT_EQ(bounds.Bottom(), 5);
    EXPECT_EQ(bounds.Width(), 1);
    EXPECT_EQ(bounds.Height(), 1);
}

TEST(Bounds, ThatAreEmptiedHaveNothingAtTheOriginOfTheLayer)
{
    CDXDBnds bounds = Rectangle(1, 2, 4, 6);
    bounds.SetEmpty();
    EXPECT_TRUE(bounds == Rectangle(0, 0, 0, 0));
    EXPECT_EQ(bounds[DXB_Z].Max, 1);
}

TEST(Bounds, OfASurfaceAreWhatItSays)
{
    const auto surface = FakeSurface::Make({.width = 6, .height = 2});
    HRESULT hr = E_FAIL;
    EXPECT_TRUE(CDXDBnds(surface.p, hr) == CDXDBnds(6, 2));
    EXPECT_EQ(hr, S_OK);
    surface->FailCall("GetBounds", E_ACCESSDENIED);
    EXPECT_TRUE(CDXDBnds(surface.p, hr).BoundsAreEmpty());
    EXPECT_EQ(hr, E_ACCESSDENIED);
}

TEST(Bounds, ConvertFromEveryKind)
{
    const CDXDBnds whole = Rectangle(-1, 2, 30, 40);
    DXBNDS other{DXBT_DISCRETE64, {.LD = {{-1, 30}, {2, 40}, {0, 1}, {0, 1}}}};
    EXPECT_TRUE(CDXDBnds(other) == whole);
    other = {DXBT_CONTINUOUS, {.C = {{-1.9F, 30.9F}, {2.0F, 40.0F}, {0.0F, 1.0F}, {0.0F, 1.0F}}}};
    EXPECT_TRUE(CDXDBnds(other) == whole);
    other = {DXBT_CONTINUOUS64, {.LC = {{-1.9, 30.9}, {2.0, 40.0}, {0.0, 1.0}, {0.0, 1.0}}}};
    EXPECT_TRUE(CDXDBnds(other) == whole);
    EXPECT_EQ(CDXDBnds(other).eType, DXBT_DISCRETE);
}

TEST(Bounds, OfAKindThatDoesNotExistAreEmpty)
{
    DXBNDS odd = CDXDBnds(5, 5);
    odd.eType = static_cast<DXBNDTYPE>(9);
    EXPECT_TRUE(CDXDBnds(odd).BoundsAreEmpty());
}

TEST(Bounds, ValuesThatDoNotFitAreLimited)
{
    constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
    const DXBNDS wide{DXBT_CONTINUOUS64, {.LC = {{-1e30, 1e30}, {-2.9, kNoNumber}, {}, {}}}};
    const CDXDBnds limited(wide);
    EXPECT_EQ(limited.Left(), kLongMin);
    EXPECT_EQ(limited.Right(), kLongMax);
    EXPECT_EQ(limited.Top(), -2);
    EXPECT_EQ(limited.Bottom(), 0);
    EXPECT_EQ(limited.Width(), kLongMax);
    const DXBNDS distant{DXBT_DISCRETE64, {.LD = {{-(1LL << 40), 1LL << 40}, {}, {}, {}}}};
    EXPECT_EQ(CDXDBnds(distant).Left(), kLongMin);
    EXPECT_EQ(CDXDBnds(distant).Right(), kLongMax);
}

TEST(Bounds, AreEmptyWhenAnyDimensionIs)
{
    CDXDBnds bounds(2, 2);
    bounds[DXB_T] = {1, 1};
    EXPECT_TRUE(bounds.BoundsAreEmpty());
    EXPECT_TRUE(Rectangle(3, 0, 2, 5).BoundsAreEmpty());
}

TEST(Bounds, IntersectInWhatTheyShare)
{
    CDXDBnds bounds = Rectangle(0, 0, 10, 10);
    EXPECT_TRUE(bounds.TestIntersect(Rectangle(4, -5, 20, 3)));
    EXPECT_TRUE(bounds.IntersectBounds(Rectangle(4, -5, 20, 3)));
    EXPECT_TRUE(bounds == Rectangle(4, 0, 10, 3));
}

TEST(Bounds, ThatOnlyTouchDoNotIntersectAndLeaveNothing)
{
    CDXDBnds bounds;
    EXPECT_FALSE(Rectangle(0, 0, 4, 4).TestIntersect(Rectangle(4, 0, 8, 4)));
    EXPECT_FALSE(bounds.IntersectBounds(Rectangle(0, 0, 4, 4), Rectangle(4, 0, 8, 4)));
    EXPECT_TRUE(bounds == CDXDBnds());
    CDXDBnds self = Rectangle(0, 0, 4, 4);
    EXPECT_FALSE(self.IntersectBounds(self, CDXDBnds()));
    EXPECT_TRUE(self == CDXDBnds());
}

TEST(Bounds, UniteAroundBothAndEmptyOnesTakeNoRoom)
{
    CDXDBnds bounds = Rectangle(5, 5, 6, 6);
    bounds.UnionBounds(CDXDBnds());
    EXPECT_TRUE(bounds == Rectangle(5, 5, 6, 6));
    bounds.UnionBounds(Rectangle(-1, 7, 2, 8));
    EXPECT_TRUE(bounds == Rectangle(-1, 5, 6, 8));
    CDXDBnds empty;
    empty.UnionBounds(Rectangle(1, 1, 2, 2));
    EXPECT_TRUE(empty == Rectangle(1, 1, 2, 2));
}

TEST(Bounds, MoveByADistance)
{
    CDXDBnds bounds = Rectangle(1, 2, 4, 6);
    bounds.Offset(CDXDVec(10, -2));
    EXPECT_TRUE(bounds == Rectangle(11, 0, 14, 4));
    bounds.Offset(CDXDVec(kLongMax, 0));
    EXPECT_EQ(bounds.Right(), kLongMax);
}

TEST(Vectors, StartAtTheOriginAndTurnAround)
{
    EXPECT_TRUE(CDXDVec() == CDXDVec(0, 0));
    EXPECT_TRUE(-CDXDVec(1, -2, 3, 4) == CDXDVec(-1, 2, -3, -4));
    EXPECT_TRUE(-CDXDVec(kLongMin, 0) == CDXDVec(kLongMax, 0));
}

TEST(Vectors, ConvertFromEveryKind)
{
    DXVEC other{DXBT_CONTINUOUS64, {.LC = {1.9, -1.9, 2.0, 0.0}}};
    EXPECT_TRUE(CDXDVec(other) == CDXDVec(1, -1, 2, 0));
    other = {DXBT_CONTINUOUS, {.C = {4.0F, 5.0F, 0.0F, 0.0F}}};
    EXPECT_TRUE(CDXDVec(other) == CDXDVec(4, 5));
    other = {DXBT_DISCRETE64, {.LD = {6, -(1LL << 40), 0, 0}}};
    EXPECT_TRUE(CDXDVec(other) == CDXDVec(6, kLongMin));
    other.eType = static_cast<DXBNDTYPE>(9);
    EXPECT_TRUE(CDXDVec(other) == CDXDVec());
}

} // namespace
