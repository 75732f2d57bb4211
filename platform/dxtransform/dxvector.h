// Vectors in four dimensions with the arithmetic that transforms do on them. Stands in for the
// platform's dxvector.h; scaling and matrices are left out. Results that a type cannot hold are
// limited to its range: positions come from outside.
// Tests: tests/platform/dxtransform/bounds_test.cpp.
#pragma once

#include "platform/dxtransform/dxtrans.h"

#include <windows.h>

#include <algorithm>
#include <limits>
#include <type_traits>

inline constexpr ULONG kDXDimensions = 4;

// A + B and A - B, limited to the range of the type.
template <typename Value>
constexpr Value DXLimitedSum(Value a, Value b) noexcept
{
    if constexpr (std::is_integral_v<Value>)
    {
        Value sum{};
        if (__builtin_add_overflow(a, b, &sum))
        {
            return b < 0 ? std::numeric_limits<Value>::min() : std::numeric_limits<Value>::max();
        }
        return sum;
    }
    else
    {
        return a + b;
    }
}

template <typename Value>
constexpr Value DXLimitedDifference(Value a, Value b) noexcept
{
    if constexpr (std::is_integral_v<Value>)
    {
        Value difference{};
        if (__builtin_sub_overflow(a, b, &difference))
        {
            return b > 0 ? std::numeric_limits<Value>::min() : std::numeric_limits<Value>::max();
        }
        return difference;
    }
    else
    {
        return a - b;
    }
}

// `value` in another type: cut towards zero, limited to the type's range, and 0 for no number.
template <typename To, typename From>
constexpr To DXConvertValue(From value) noexcept
{
    if constexpr (std::is_floating_point_v<To>)
    {
        return static_cast<To>(value);
    }
    else if constexpr (std::is_floating_point_v<From>)
    {
        // A power of two, so that the comparison is exact.
        constexpr auto kEnd = static_cast<double>(std::numeric_limits<To>::max() / 2 + 1) * 2.0;
        const auto wide = static_cast<double>(value);
        if (wide != wide)
        {
            return 0;
        }
        if (wide >= kEnd || wide < -kEnd)
        {
            return wide < 0.0 ? std::numeric_limits<To>::min() : std::numeric_limits<To>::max();
        }
        return static_cast<To>(wide);
    }
    else
    {
        using Wide = std::common_type_t<From, To>;
        return static_cast<To>(std::clamp<Wide>(value, std::numeric_limits<To>::min(),
                                                std::numeric_limits<To>::max()));
    }
}

// A position or a distance, one `TYPE` in each dimension.
template <typename TYPE, DXBNDTYPE eBndType>
class CDXV : public DXVEC
{
public:
    CDXV() noexcept // the origin
    {
        eType = eBndType;
        u = {};
        for (ULONG i = 0; i < kDXDimensions; ++i)
        {
            (*this)[i] = TYPE{};
        }
    }
    CDXV(TYPE x, TYPE y, TYPE z = TYPE{}, TYPE t = TYPE{}) noexcept : CDXV()
    {
        (*this)[DXB_X] = x;
        (*this)[DXB_Y] = y;
        (*this)[DXB_Z] = z;
        (*this)[DXB_T] = t;
    }
    // Converted to TYPE; the origin for a kind of vector that does not exist.
    explicit CDXV(const DXVEC& other) noexcept : CDXV() { Copy(other); }

    void Copy(const DXVEC& other) noexcept
    {
        for (ULONG i = 0; i < kDXDimensions; ++i)
        {
            switch (other.eType)
            {
            case DXBT_DISCRETE:
                (*this)[i] = DXConvertValue<TYPE>(other.u.D[i]);
                break;
            case DXBT_DISCRETE64:
                (*this)[i] = DXConvertValue<TYPE>(other.u.LD[i]);
                break;
            case DXBT_CONTINUOUS:
                (*this)[i] = DXConvertValue<TYPE>(other.u.C[i]);
                break;
            case DXBT_CONTINUOUS64:
                (*this)[i] = DXConvertValue<TYPE>(other.u.LC[i]);
                break;
            default:
                (*this)[i] = TYPE{};
                break;
            }
        }
    }

    TYPE& operator[](ULONG dimension) noexcept { return Values(*this)[dimension]; }
    TYPE operator[](ULONG dimension) const noexcept { return Values(*this)[dimension]; }

    CDXV& operator+=(const CDXV& other) noexcept
    {
        for (ULONG i = 0; i < kDXDimensions; ++i)
        {
            (*this)[i] = DXLimitedSum((*this)[i], other[i]);
        }
        return *this;
    }
    CDXV& operator-=(const CDXV& other) noexcept
    {
        for (ULONG i = 0; i < kDXDimensions; ++i)
        {
            (*this)[i] = DXLimitedDifference((*this)[i], other[i]);
        }
        return *this;
    }
    friend CDXV operator+(CDXV a, const CDXV& b) noexcept { return a += b; }
    friend CDXV operator-(CDXV a, const CDXV& b) noexcept { return a -= b; }
    friend bool operator==(const CDXV& a, const CDXV& b) noexcept
    {
        return std::equal(Values(a), Values(a) + kDXDimensions, Values(b));
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
};

using CDXDVec = CDXV<LONG, DXBT_DISCRETE>;
using CDXDVec64 = CDXV<LONGLONG, DXBT_DISCRETE64>;
using CDXCVec = CDXV<float, DXBT_CONTINUOUS>;
using CDXCVec64 = CDXV<double, DXBT_CONTINUOUS64>;
