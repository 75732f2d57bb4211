// What tests of kernels share: the instruction sets that this processor has, and stacks that are
// aligned as callers happen to align them.
#pragma once

#include "samples/renderer/instruction_set.h"

#include <cstddef>
#include <vector>

using Bytes = std::vector<std::byte>;

inline std::vector<InstructionSet> AvailableSets()
{
    std::vector<InstructionSet> sets{InstructionSet::Baseline};
    if (UsedInstructionSet() == InstructionSet::Avx2)
    {
        sets.push_back(InstructionSet::Avx2);
    }
    return sets;
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
