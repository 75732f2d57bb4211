#include "reference_renderer/core/instruction_set.h"

#include <cstdlib>
#include <string_view>

namespace ReferenceRenderer
{

InstructionSet UsedInstructionSet() noexcept
{
    static const InstructionSet used = [] {
        const char* const wish = std::getenv("GLAZEL_INSTRUCTIONS");
        const std::string_view most = wish != nullptr ? wish : "";
        __builtin_cpu_init();
        if (most == "baseline" || !__builtin_cpu_supports("avx2"))
        {
            return InstructionSet::Baseline;
        }
        const bool hasAvx512 = __builtin_cpu_supports("avx512vl") &&
                               __builtin_cpu_supports("avx512bw") &&
                               __builtin_cpu_supports("avx512dq");
        return hasAvx512 && most != "avx2" ? InstructionSet::Avx512 : InstructionSet::Avx2;
    }();
    return used;
}

} // namespace ReferenceRenderer
