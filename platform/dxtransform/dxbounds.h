// Bounds in four dimensions. Stands in for the platform's dxbounds.h; scaling is left out. Results
// that a type cannot hold are limited to its range: bounds come from outside.
// Tests: tests/platform/dxtransform/bounds_test.cpp.
#pragma once

#include "platform/dxtransform/dxvector.h"
#include "platform/runtime/foreign_call.h"

#include <algorithm>
#include <array>
#include <utility>

// From Min up to, but without, Max in each dimension. What an image does not use, z and t, is 0
// to 1. An image's surface is {0..width, 0..height, 0..1, 0..1}.
template <typename TYPE, typename BOUND, DXBNDTYPE eBndType>
class CDXBnds : public DXBNDS
{
public:
    using Vector = CDXV<TYPE, eBndType>;

    CDXBnds() noexcept { SetEmpty(); }
    // FALSE leaves the values as they are, for bounds that are about to be filled.
    explicit CDXBnds(BOOL init) noexcept
    {
        eType = eBndType;
        if (init != FALSE)
        {
            SetEmpty();
        }
    }
    // Converted to TYPE; empty for a kind of bounds that does not exist.
    explicit CDXBnds(const DXBNDS& other) noexcept { Copy(other); }
    explicit CDXBnds(const RECT& rect) noexcept : CDXBnds() { SetXYRect(rect); }
    CDXBnds(TYPE width, TYPE height) noexcept : CDXBnds() { SetXYSize(width, height); }
    // The whole surface; `hr` is its answer, and a failed one leaves the bounds empty. What the
    // surface throws comes out.
    CDXBnds(IDXSurface* surface, HRESULT& hr)
    {
        DXBNDS bounds{};
        hr = CallForeign([&] { return surface->GetBounds(&bounds); });
        SUCCEEDED(hr) ? Copy(bounds) : SetEmpty();
    }
    // The one sample at a point.
    explicit CDXBnds(const Vector& point) noexcept { Copy(point); }

    void Copy(const DXBNDS& other) noexcept
    {
        eType = eBndType;
        switch (other.eType)
        {
        case DXBT_DISCRETE:
            return CopyValues(std::to_array(other.u.D));
        case DXBT_DISCRETE64:
            return CopyValues(std::to_array(other.u.LD));
        case DXBT_CONTINUOUS:
            return CopyValues(std::to_array(other.u.C));
        case DXBT_CONTINUOUS64:
            return CopyValues(std::to_array(other.u.LC));
        default:
            return SetEmpty();
        }
    }
    void Copy(const Vector& point) noexcept
    {
        eType = eBndType;
        for (ULONG i = 0; i < kDXDimensions; ++i)
        {
            (*this)[i] = {point[i], DXLimitedSum(point[i], TYPE{1})};
        }
    }

    // Nothing in x and y.
    void SetEmpty() noexcept
    {
        eType = eBndType;
        (*this)[DXB_X] = {0, 0};
        (*this)[DXB_Y] = {0, 0};
        SetImageLayer();
    }
    // Gives z and t the values that an image has.
    void SetImageLayer() noexcept
    {
        (*this)[DXB_Z] = {0, 1};
        (*this)[DXB_T] = {0, 1};
    }
    void SetXYSize(TYPE width, TYPE height) noexcept
    {
        (*this)[DXB_X] = {0, width};
        (*this)[DXB_Y] = {0, height};
    }
    void SetXYRect(const RECT& rect) noexcept
    {
        (*this)[DXB_X] = {DXConvertValue<TYPE>(rect.left), DXConvertValue<TYPE>(rect.right)};
        (*this)[DXB_Y] = {DXConvertValue<TYPE>(rect.top), DXConvertValue<TYPE>(rect.bottom)};
    }
    void GetXYRect(RECT& rect) const noexcept
    {
        rect = {DXConvertValue<LONG>(Left()), DXConvertValue<LONG>(Top()),
                DXConvertValue<LONG>(Right()), DXConvertValue<LONG>(Bottom())};
    }

    BOUND& operator[](ULONG dimension) noexcept { return Values(*this)[dimension]; }
    const BOUND& operator[](ULONG dimension) const noexcept { return Values(*this)[dimension]; }

    TYPE Left() const noexcept { return (*this)[DXB_X].Min; }
    TYPE Right() const noexcept { return (*this)[DXB_X].Max; }
    TYPE Top() const noexcept { return (*this)[DXB_Y].Min; }
    TYPE Bottom() const noexcept { return (*this)[DXB_Y].Max; }
    TYPE Width() const noexcept { return DXLimitedDifference(Right(), Left()); }
    TYPE Height() const noexcept { return DXLimitedDifference(Bottom(), Top()); }

    // Whether there is nothing between Min and Max in some dimension.
    BOOL BoundsAreEmpty() const noexcept
    {
        return AnyOf([this](ULONG i) { return (*this)[i].Max <= (*this)[i].Min; });
    }
    // Whether every value is 0.
    BOOL BoundsAreNull() const noexcept
    {
        return !AnyOf([this](ULONG i) { return (*this)[i].Min != 0 || (*this)[i].Max != 0; });
    }
    void NormalizeBounds() noexcept
    {
        for (ULONG i = 0; i < kDXDimensions; ++i)
        {
            if ((*this)[i].Max < (*this)[i].Min)
            {
                std::swap((*this)[i].Min, (*this)[i].Max);
            }
        }
    }

    // Whether these and `other` have something in common.
    BOOL TestIntersect(const CDXBnds& other) const noexcept
    {
        return !AnyOf([&](ULONG i) {
            return std::min((*this)[i].Max, other[i].Max) <= std::max((*this)[i].Min, other[i].Min);
        });
    }
    // Keeps what these and `other` have in common and tells whether there is anything; otherwise
    // empty.
    BOOL IntersectBounds(const CDXBnds& other) noexcept
    {
        return IntersectBounds(CDXBnds(*this), other);
    }
    BOOL IntersectBounds(const CDXBnds& a, const CDXBnds& b) noexcept
    {
        if (a.TestIntersect(b) == FALSE)
        {
            SetEmpty();
            return FALSE;
        }
        for (ULONG i = 0; i < kDXDimensions; ++i)
        {
            (*this)[i] = {std::max(a[i].Min, b[i].Min), std::min(a[i].Max, b[i].Max)};
        }
        return TRUE;
    }
    // The smallest bounds around both; empty ones take no room.
    void UnionBounds(const CDXBnds& other) noexcept { UnionBounds(CDXBnds(*this), other); }
    void UnionBounds(const CDXBnds& a, const CDXBnds& b) noexcept
    {
        if (a.BoundsAreEmpty() != FALSE || b.BoundsAreEmpty() != FALSE)
        {
            *this = a.BoundsAreEmpty() != FALSE ? CDXBnds(b) : CDXBnds(a);
            return;
        }
        for (ULONG i = 0; i < kDXDimensions; ++i)
        {
            (*this)[i] = {std::min(a[i].Min, b[i].Min), std::max(a[i].Max, b[i].Max)};
        }
    }

    void Offset(const Vector& distance) noexcept
    {
        for (ULONG i = 0; i < kDXDimensions; ++i)
        {
            (*this)[i] = {DXLimitedSum((*this)[i].Min, distance[i]),
                          DXLimitedSum((*this)[i].Max, distance[i])};
        }
    }
    // Moves the minimum corner there.
    void SetToPosition(const Vector& position) noexcept
    {
        Vector distance = position;
        distance -=
            Vector((*this)[DXB_X].Min, (*this)[DXB_Y].Min, (*this)[DXB_Z].Min, (*this)[DXB_T].Min);
        Offset(distance);
    }

    friend bool operator==(const CDXBnds& a, const CDXBnds& b) noexcept
    {
        return !a.AnyOf([&](ULONG i) { return a[i].Min != b[i].Min || a[i].Max != b[i].Max; });
    }

private:
    // The member of the union that eBndType stands for.
    template <typename Self>
    static auto Values(Self& self) noexcept
    {
        if constexpr (eBndType == DXBT_DISCRETE)
        {
            return self.u.D;
        }
        else if constexpr (eBndType == DXBT_DISCRETE64)
        {
            return self.u.LD;
        }
        else if constexpr (eBndType == DXBT_CONTINUOUS)
        {
            return self.u.C;
        }
        else
        {
            return self.u.LC;
        }
    }
    // By value, since the source may be these bounds themselves.
    template <typename OtherBounds>
    void CopyValues(const OtherBounds other) noexcept
    {
        for (ULONG i = 0; i < kDXDimensions; ++i)
        {
            (*this)[i] = {DXConvertValue<TYPE>(other[i].Min), DXConvertValue<TYPE>(other[i].Max)};
        }
    }
    template <typename Condition>
    static BOOL AnyOf(Condition&& condition) noexcept
    {
        for (ULONG i = 0; i < kDXDimensions; ++i)
        {
            if (condition(i))
            {
                return TRUE;
            }
        }
        return FALSE;
    }
};

using CDXDBnds = CDXBnds<LONG, DXDBND, DXBT_DISCRETE>;
using CDXDBnds64 = CDXBnds<LONGLONG, DXDBND64, DXBT_DISCRETE64>;
using CDXCBnds = CDXBnds<float, DXCBND, DXBT_CONTINUOUS>;
using CDXCBnds64 = CDXBnds<double, DXCBND64, DXBT_CONTINUOUS64>;
