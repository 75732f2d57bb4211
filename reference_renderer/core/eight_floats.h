// Eight floats in one register, for files that are built with AVX2 alone: see four_floats.h.
// Pure: no windows.h.
#pragma once

#include "reference_renderer/core/four_floats.h"

#include <cstdint>
#include <immintrin.h>

namespace ReferenceRenderer
{

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
    template <int First, int Count>
    [[gnu::always_inline]] static EightFloats Entries(const float* table, Bits places) noexcept
    {
        static_assert(Count == 8 || Count == 16);
        const auto ahead = std::bit_cast<__m256i>(std::bit_cast<Ints>(places) - First);
        const __m256i isFar = _mm256_cmpgt_epi32(ahead, _mm256_set1_epi32(Count - 1));
        if (_mm256_testz_si256(isFar, isFar) != 0) [[likely]]
        {
            // By the lowest three bits. Gathering is slow on processors whose microcode mends it.
            const __m256 low = _mm256_permutevar8x32_ps(_mm256_loadu_ps(table + First), ahead);
            if constexpr (Count == 8)
            {
                return low;
            }
            const __m256 high = _mm256_permutevar8x32_ps(_mm256_loadu_ps(table + First + 8), ahead);
            const __m256i fourthBit = _mm256_slli_epi32(ahead, 28);
            return _mm256_blendv_ps(low, high, std::bit_cast<__m256>(fourthBit));
        }
        std::uint32_t place[8];
        std::memcpy(place, &places, sizeof place);
        InMemory(place);
        return EightFloats{table[place[0]], table[place[1]], table[place[2]], table[place[3]],
                           table[place[4]], table[place[5]], table[place[6]], table[place[7]]};
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

} // namespace ReferenceRenderer
