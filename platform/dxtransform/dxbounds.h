// Bounds and vectors of whole numbers in four dimensions. Stands in for the platform's dxbounds.h
// and dxvector.h; scaling, matrices and the 64-bit and continuous kinds are left out, but every
// kind that a caller may hand over is converted. Results that a LONG cannot hold are limited to its
// range: bounds come from outside. Tests: tests/platform/dxtransform/bounds_test.cpp.
#pragma once

#include "platform/dxtransform/dxtrans.h"
#include "platform/runtime/foreign_call.h"

#include <windows.h>

#include <algorithm>
#include <limits>
#include <type_traits>

inline constexpr ULONG kDXDimensions = 4;

// Cut towards zero, limited to the range, and 0 for no number.
template <typename Value>
constexpr LONG DXLongOf(Value value) noexcept
{
    using Wide = std::conditional_t<std::is_floating_point_v<Value>, double, LONGLONG>;
    const Wide wide = value;
    if constexpr (std::is_floating_point_v<Value>)
    {
        if (wide != wide)
        {
            return 0;
        }
    }
    return static_cast<LONG>(
        std::clamp<Wide>(wide, std::numeric_limits<LONG>::min(), std::numeric_limits<LONG>::max()));
}

// A position or a distance.
class CDXDVec : public DXVEC
{
public:
    explicit CDXDVec(LONG x = 0, LONG y = 0, LONG z = 0, LONG t = 0) noexcept
        : DXVEC{DXBT_DISCRETE, {.D = {x, y, z, t}}}
    {
    }
    // The origin for a kind of vector that does not exist.
    explicit CDXDVec(const DXVEC& other) noexcept : CDXDVec()
    {
        for (ULONG i = 0; i < kDXDimensions; ++i)
        {
            switch (other.eType)
            {
            case DXBT_DISCRETE:
                u.D[i] = other.u.D[i];
                break;
            case DXBT_DISCRETE64:
                u.D[i] = DXLongOf(other.u.LD[i]);
                break;
            case DXBT_CONTINUOUS:
                u.D[i] = DXLongOf(other.u.C[i]);
                break;
            case DXBT_CONTINUOUS64:
                u.D[i] = DXLongOf(other.u.LC[i]);
                break;
            }
        }
    }

    LONG operator[](ULONG dimension) const noexcept { return u.D[dimension]; }
    CDXDVec operator-() const noexcept
    {
        CDXDVec negative;
        for (ULONG i = 0; i < kDXDimensions; ++i)
        {
            negative.u.D[i] = DXLongOf(-LONGLONG{u.D[i]});
        }
        return negative;
    }
    friend bool operator==(const CDXDVec& a, const CDXDVec& b) noexcept
    {
        return std::equal(a.u.D, a.u.D + kDXDimensions, b.u.D);
    }
};

// From Min up to, but without, Max in each dimension. What an image does not use, z and t, is 0
// to 1. An image's surface is {0..width, 0..height, 0..1, 0..1}.
class CDXDBnds : public DXBNDS
{
public:
    CDXDBnds() noexcept { SetEmpty(); }
    // Empty for a kind of bounds that does not exist.
    explicit CDXDBnds(const DXBNDS& other) noexcept { Copy(other); }
    explicit CDXDBnds(const RECT& rect) noexcept
        : DXBNDS{DXBT_DISCRETE,
                 {.D = {{rect.left, rect.right}, {rect.top, rect.bottom}, {0, 1}, {0, 1}}}}
    {
    }
    CDXDBnds(LONG width, LONG height) noexcept : CDXDBnds(RECT{0, 0, width, height}) {}
    // The whole surface; `hr` is its answer, and a failed one leaves the bounds empty. What the
    // surface throws comes out.
    CDXDBnds(IDXSurface* surface, HRESULT& hr)
    {
        DXBNDS bounds{};
        hr = CallForeign([&] { return surface->GetBounds(&bounds); });
        SUCCEEDED(hr) ? Copy(bounds) : SetEmpty();
    }
    // The one sample at a point.
    explicit CDXDBnds(const CDXDVec& point) noexcept
    {
        eType = DXBT_DISCRETE;
        for (ULONG i = 0; i < kDXDimensions; ++i)
        {
            u.D[i] = {point[i], DXLongOf(LONGLONG{point[i]} + 1)};
        }
    }

    // Nothing in x and y.
    void SetEmpty() noexcept
    {
        eType = DXBT_DISCRETE;
        u.D[DXB_X] = {0, 0};
        u.D[DXB_Y] = {0, 0};
        SetImageLayer();
    }
    // Gives z and t the values that an image has.
    void SetImageLayer() noexcept
    {
        u.D[DXB_Z] = {0, 1};
        u.D[DXB_T] = {0, 1};
    }

    DXDBND& operator[](ULONG dimension) noexcept { return u.D[dimension]; }
    const DXDBND& operator[](ULONG dimension) const noexcept { return u.D[dimension]; }

    LONG Left() const noexcept { return u.D[DXB_X].Min; }
    LONG Right() const noexcept { return u.D[DXB_X].Max; }
    LONG Top() const noexcept { return u.D[DXB_Y].Min; }
    LONG Bottom() const noexcept { return u.D[DXB_Y].Max; }
    LONG Width() const noexcept { return DXLongOf(LONGLONG{Right()} - Left()); }
    LONG Height() const noexcept { return DXLongOf(LONGLONG{Bottom()} - Top()); }

    // Whether there is nothing between Min and Max in some dimension.
    BOOL BoundsAreEmpty() const noexcept
    {
        return std::any_of(u.D, u.D + kDXDimensions,
                           [](const DXDBND& bound) { return bound.Max <= bound.Min; });
    }
    // Whether these and `other` have something in common.
    BOOL TestIntersect(const CDXDBnds& other) const noexcept
    {
        return Shared(*this, other).BoundsAreEmpty() == FALSE;
    }
    // Keeps what these and `other` have in common and tells whether there is anything; otherwise
    // empty.
    BOOL IntersectBounds(const CDXDBnds& other) noexcept { return IntersectBounds(*this, other); }
    BOOL IntersectBounds(const CDXDBnds& a, const CDXDBnds& b) noexcept
    {
        *this = Shared(a, b);
        const BOOL empty = BoundsAreEmpty();
        if (empty != FALSE)
        {
            SetEmpty();
        }
        return empty == FALSE;
    }
    // The smallest bounds around these and `other`; empty ones take no room.
    void UnionBounds(const CDXDBnds& other) noexcept
    {
        if (BoundsAreEmpty() != FALSE)
        {
            *this = other;
        }
        else if (other.BoundsAreEmpty() == FALSE)
        {
            for (ULONG i = 0; i < kDXDimensions; ++i)
            {
                u.D[i] = {std::min(u.D[i].Min, other[i].Min), std::max(u.D[i].Max, other[i].Max)};
            }
        }
    }
    void Offset(const CDXDVec& distance) noexcept
    {
        for (ULONG i = 0; i < kDXDimensions; ++i)
        {
            u.D[i] = {DXLongOf(LONGLONG{u.D[i].Min} + distance[i]),
                      DXLongOf(LONGLONG{u.D[i].Max} + distance[i])};
        }
    }

    friend bool operator==(const CDXDBnds& a, const CDXDBnds& b) noexcept
    {
        return std::equal(a.u.D, a.u.D + kDXDimensions, b.u.D, [](DXDBND one, DXDBND other) {
            return one.Min == other.Min && one.Max == other.Max;
        });
    }

private:
    void Copy(const DXBNDS& other) noexcept
    {
        switch (other.eType)
        {
        case DXBT_DISCRETE:
            return CopyFrom(other.u.D);
        case DXBT_DISCRETE64:
            return CopyFrom(other.u.LD);
        case DXBT_CONTINUOUS:
            return CopyFrom(other.u.C);
        case DXBT_CONTINUOUS64:
            return CopyFrom(other.u.LC);
        }
        SetEmpty();
    }
    template <typename Bound>
    void CopyFrom(const Bound (&bounds)[kDXDimensions]) noexcept
    {
        eType = DXBT_DISCRETE;
        for (ULONG i = 0; i < kDXDimensions; ++i)
        {
            u.D[i] = {DXLongOf(bounds[i].Min), DXLongOf(bounds[i].Max)};
        }
    }
    static CDXDBnds Shared(const CDXDBnds& a, const CDXDBnds& b) noexcept
    {
        CDXDBnds shared;
        for (ULONG i = 0; i < kDXDimensions; ++i)
        {
            shared[i] = {std::max(a[i].Min, b[i].Min), std::min(a[i].Max, b[i].Max)};
        }
        return shared;
    }
};
