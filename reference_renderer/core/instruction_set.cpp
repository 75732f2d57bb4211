#include "reference_renderer/core/instruction_set.h"

#include <atomic>
#include <cstdlib>
#include <string_view>

namespace ReferenceRenderer
{

namespace
{

constexpr int kNotAskedYet = -1;

// No static of the function: the run time guards the first call of one with a semaphore that no
// unloading of the library gives back. Two first calls at once find the same.
std::atomic<int> known = kNotAskedYet;

InstructionSet BestInstructionSet() noexcept
{
    const char* const wish = std::getenv("GLAZEL_INSTRUCTIONS");
    const std::string_view most = wish != nullptr ? wish : "";
    __builtin_cpu_init();
    if (most == "baseline" || !__builtin_cpu_supports("avx2"))
    {
        return InstructionSet::Baseline;
    }
    const bool hasAvx512 = __builtin_cpu_supports("avx512vl") &&
                           __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq");
    return hasAvx512 && most != "avx2" ? InstructionSet::Avx512 : InstructionSet::Avx2;
}

} // namespace

InstructionSet UsedInstructionSet() noexcept
{
    int used = known.load(std::memory_order_relaxed);
    if (used == kNotAskedYet)
    {
        used = static_cast<int>(BestInstructionSet());
        known.store(used, std::memory_order_relaxed);
    }
    return static_cast<InstructionSet>(used);
}

} // namespace ReferenceRenderer
