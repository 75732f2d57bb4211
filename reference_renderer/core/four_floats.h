// Four floats that the compiler keeps in one register, and what lets one formula work on a single
// float and on four: lane by lane, to the same bits. Pure: no windows.h.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <xmmintrin.h>

namespace ReferenceRenderer
{

using FourFloats = float __attribute__((vector_size(16)));
using FourInts = std::int32_t __attribute__((vector_size(16))); // of a comparison: -1 = true
using FourBits = std::uint32_t __attribute__((vector_size(16)));

// From any address.
inline FourFloats LoadFour(const void* floats) noexcept
{
    FourFloats lanes;
    std::memcpy(&lanes, floats, sizeof lanes);
    return lanes;
}

// Keeps the compiler from taking entries of an array out of the register that was stored there, one
// by one, which is slower.
template <typename Array>
[[gnu::always_inline]] inline void InMemory(Array& array) noexcept
{
    asm volatile("" : "+m"(array));
}

// What stands for one value of a float or of four.
template <typename Value>
struct LanesOf;

template <>
struct LanesOf<float>
{
    using Bits = std::uint32_t;
    using Ints = std::int32_t;
    static float All(float value) noexcept { return value; }
    static float FromInts(Ints value) noexcept { return static_cast<float>(value); }
    static Ints Truncated(float value) noexcept { return static_cast<Ints>(value); }
    // Of a table of 256. Where a place is below `First` the entry does not matter, and nearly all
    // others are among the `Count` that begin there.
    template <int First, int Count>
    static float Entries(const float* table, Bits place) noexcept
    {
        return table[place];
    }
    // The first only where it really is: the second for a NaN on either side.
    static float Larger(float a, float b) noexcept { return a > b ? a : b; }
    static float Smaller(float a, float b) noexcept { return a < b ? a : b; }
};

template <>
struct LanesOf<FourFloats>
{
    using Bits = FourBits;
    using Ints = FourInts;
    static FourFloats All(float value) noexcept { return FourFloats{value, value, value, value}; }
    static FourFloats FromInts(Ints value) noexcept
    {
        return __builtin_convertvector(value, FourFloats);
    }
    static Ints Truncated(FourFloats value) noexcept
    {
        return __builtin_convertvector(value, FourInts);
    }
    template <int First, int Count>
    static FourFloats Entries(const float* table, Bits places) noexcept
    {
        std::uint32_t place[4];
        std::memcpy(place, &places, sizeof place);
        InMemory(place);
        return FourFloats{table[place[0]], table[place[1]], table[place[2]], table[place[3]]};
    }
    static FourFloats Larger(FourFloats a, FourFloats b) noexcept { return _mm_max_ps(a, b); }
    static FourFloats Smaller(FourFloats a, FourFloats b) noexcept { return _mm_min_ps(a, b); }
};

// Takes no jump.
inline float Chosen(bool condition, float yes, float no) noexcept
{
    return condition ? yes : no;
}

inline FourFloats Chosen(FourInts condition, FourFloats yes, FourFloats no) noexcept
{
    return condition ? yes : no;
}

} // namespace ReferenceRenderer
