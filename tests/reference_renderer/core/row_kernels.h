// What tests of kernels share: the instruction sets that this processor has, 8-bit pixels, and
// stacks that are aligned as callers happen to align them.
#pragma once

#include "reference_renderer/core/instruction_set.h"

#include <algorithm>
#include <cstddef>
#include <random>
#include <vector>

namespace ReferenceRenderer
{

using Bytes = std::vector<std::byte>;

inline std::vector<InstructionSet> AvailableSets()
{
    std::vector<InstructionSet> sets;
    for (const InstructionSet set :
         {InstructionSet::Baseline, InstructionSet::Avx2, InstructionSet::Avx512})
    {
        if (set <= UsedInstructionSet())
        {
            sets.push_back(set);
        }
    }
    return sets;
}

// Of four bytes.
inline Bytes RandomPixels(std::size_t pixels, unsigned seed)
{
    std::mt19937 random(seed);
    Bytes bytes(4 * pixels);
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::byte>(random()); });
    return bytes;
}

// A pixel of every green and blue, with alphas of all kinds.
inline Bytes EveryColourOf(unsigned red)
{
    Bytes bytes;
    bytes.reserve(4 * 65536);
    for (unsigned i = 0; i < 65536; ++i)
    {
        for (const unsigned value : {i, i >> 8, red, i ^ red})
        {
            bytes.push_back(static_cast<std::byte>(value));
        }
    }
    return bytes;
}

// Calls `render` with the stack at another multiple of 16 for each `Depth`.
template <std::size_t Depth, typename Render>
__attribute__((noinline)) void FromEveryStackAlignment(Render&& render)
{
    volatile std::byte room[16 * Depth + 8]{};
    render();
    room[0] = room[7];
    if constexpr (Depth < 4)
    {
        FromEveryStackAlignment<Depth + 1>(render);
    }
}

} // namespace ReferenceRenderer
