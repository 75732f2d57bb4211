// Eight floats in one register, for files that are built with AVX2 alone: see four_floats.h.
// Pure: no windows.h.
#pragma once

#include "samples/renderer/four_floats.h"

#include <cstdint>
#include <immintrin.h>

using EightFloats = float __attribute__((vector_size(32)));
using EightInts = std::int32_t __attribute__((vector_size(32)));
using EightBits = std::uint32_t __attribute__((vector_size(32)));

template <>
struct LanesOf<EightFloats>
{
    using Bits = EightBits;
    using Ints = EightInts;
    static EightFloats All(float value) noexcept { return value - EightFloats{}; }
    static EightFloats FromInts(Ints value) noexcept
    {
        return __builtin_convertvector(value, EightFloats);
    }
    static Ints Truncated(EightFloats value) noexcept
    {
        return __builtin_convertvector(value, EightInts);
    }
    static EightFloats Larger(EightFloats a, EightFloats b) noexcept { return _mm256_max_ps(a, b); }
    static EightFloats Smaller(EightFloats a, EightFloats b) noexcept
    {
        return _mm256_min_ps(a, b);
    }
};

inline EightFloats Chosen(EightInts condition, EightFloats yes, EightFloats no) noexcept
{
    return condition ? yes : no;
}
