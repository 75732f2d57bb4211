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
    EXPECT_FALSE(bounds.BoundsAreNull());
    EXPECT_EQ(bounds[DXB_Z].Max, 1);
    EXPECT_EQ(bounds[DXB_T].Max, 1);
    EXPECT_TRUE(CDXDBnds(TRUE) == bounds);
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

TEST(Bounds, ConvertBetweenAllKinds)
{
    const CDXDBnds start = Rectangle(-1, 2, 30, 40);
    const CDXCBnds64 chain(
        static_cast<const DXBNDS&>(CDXCBnds(static_cast<const DXBNDS&>(CDXDBnds64(start)))));
    EXPECT_EQ(chain.eType, DXBT_CONTINUOUS64);
    EXPECT_DOUBLE_EQ(chain.Right(), 30.0);
    EXPECT_TRUE(CDXDBnds(static_cast<const DXBNDS&>(chain)) == start);
}

TEST(Bounds, OfAKindThatDoesNotExistAreEmpty)
{
    DXBNDS odd = CDXDBnds(5, 5);
    odd.eType = static_cast<DXBNDTYPE>(9);
    EXPECT_TRUE(CDXDBnds(odd).BoundsAreEmpty());
}

TEST(Bounds, ValuesThatDoNotFitAreLimited)
{
    CDXCBnds64 wide;
    wide[DXB_X] = {-1e30, 1e30};
    wide[DXB_Y] = {-2.9, std::numeric_limits<double>::quiet_NaN()};
    const CDXDBnds limited(static_cast<const DXBNDS&>(wide));
    EXPECT_EQ(limited.Left(), kLongMin);
    EXPECT_EQ(limited.Right(), kLongMax);
    EXPECT_EQ(limited.Top(), -2);
    EXPECT_EQ(limited.Bottom(), 0);
    EXPECT_EQ(limited.Width(), kLongMax);
    CDXDBnds64 distant;
    distant[DXB_X] = {-(1LL << 40), 1LL << 40};
    EXPECT_EQ(CDXDBnds(static_cast<const DXBNDS&>(distant)).Left(), kLongMin);
}

TEST(Bounds, AreEmptyWhenAnyDimensionIs)
{
    CDXDBnds bounds(2, 2);
    bounds[DXB_T] = {1, 1};
    EXPECT_TRUE(bounds.BoundsAreEmpty());
    EXPECT_TRUE(Rectangle(3, 0, 2, 5).BoundsAreEmpty());
}

TEST(Bounds, AreNullWhenEveryValueIsZero)
{
    CDXDBnds bounds;
    bounds[DXB_Z] = {0, 0};
    bounds[DXB_T] = {0, 0};
    EXPECT_TRUE(bounds.BoundsAreNull());
    bounds[DXB_Y].Min = -1;
    EXPECT_FALSE(bounds.BoundsAreNull());
}

TEST(Bounds, NormalizingPutsTheSmallerValueFirst)
{
    CDXDBnds bounds = Rectangle(9, 1, 2, 5);
    bounds.NormalizeBounds();
    EXPECT_TRUE(bounds == Rectangle(2, 1, 9, 5));
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
    CDXDBnds united;
    united.UnionBounds(CDXDBnds(), Rectangle(1, 1, 2, 2));
    EXPECT_TRUE(united == Rectangle(1, 1, 2, 2));
}

TEST(Bounds, MoveByADistanceOrToAPosition)
{
    CDXDBnds bounds = Rectangle(1, 2, 4, 6);
    bounds.Offset(CDXDVec(10, -2));
    EXPECT_TRUE(bounds == Rectangle(11, 0, 14, 4));
    bounds.SetToPosition(CDXDVec(0, 5));
    EXPECT_TRUE(bounds == Rectangle(0, 5, 3, 9));
    bounds.Offset(CDXDVec(kLongMax, 0));
    EXPECT_EQ(bounds.Right(), kLongMax);
}

TEST(Bounds, GiveAndTakeRectangles)
{
    CDXCBnds bounds(1.0F, 1.0F);
    bounds.SetXYRect({-3, 4, 8, 9});
    RECT rect{};
    bounds.GetXYRect(rect);
    EXPECT_EQ(rect.left, -3);
    EXPECT_EQ(rect.bottom, 9);
}

TEST(Vectors, StartAtTheOriginAndAdd)
{
    EXPECT_TRUE(CDXDVec() == CDXDVec(0, 0));
    EXPECT_TRUE(CDXDVec(1, 2, 3, 4) + CDXDVec(10, 20) == CDXDVec(11, 22, 3, 4));
    EXPECT_TRUE(CDXDVec(1, 2) - CDXDVec(10, 20) == CDXDVec(-9, -18));
    EXPECT_TRUE(CDXDVec(kLongMin, kLongMax) + CDXDVec(-1, 1) == CDXDVec(kLongMin, kLongMax));
    EXPECT_TRUE(CDXDVec() - CDXDVec(kLongMin, 0) == CDXDVec(kLongMax, 0));
}

TEST(Vectors, ConvertBetweenAllKinds)
{
    const CDXCVec64 start(1.9, -1.9, 2.0, 0.0);
    EXPECT_TRUE(CDXDVec(static_cast<const DXVEC&>(start)) == CDXDVec(1, -1, 2, 0));
    EXPECT_TRUE(CDXDVec64(static_cast<const DXVEC&>(CDXCVec(4.0F, 5.0F))) == CDXDVec64(4, 5));
    DXVEC odd = CDXDVec(1, 1);
    odd.eType = static_cast<DXBNDTYPE>(9);
    EXPECT_TRUE(CDXDVec(odd) == CDXDVec());
}

} // namespace
