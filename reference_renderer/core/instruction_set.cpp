#include "reference_renderer/core/instruction_set.h"

#include <cstdlib>
#include <string_view>

namespace ReferenceRenderer
{

InstructionSet UsedInstructionSet() noexcept
{
    static const InstructionSet used = [] {
        const char* const wish = std::getenv("GLAZEL_INSTRUCTIONS");
        const bool isBaseline = wish != nullptr && std::string_view(wish) == "baseline";
        __builtin_cpu_init();
        return !isBaseline && __builtin_cpu_supports("avx2") ? InstructionSet::Avx2
                                                             : InstructionSet::Baseline;
    }();
    return used;
}

} // namespace ReferenceRenderer
