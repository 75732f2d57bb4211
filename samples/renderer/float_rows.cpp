#include "samples/renderer/float_rows.h"

#include "samples/renderer/float_kernel.h"

std::size_t RenderFloatGroups(InstructionSet set, const PreparedLook& look, bool linear,
                              const std::byte* source, std::byte* target,
                              std::size_t width) noexcept
{
    if (set == InstructionSet::Avx2)
    {
        return RenderFloatGroupsAvx2(look, linear, source, target, width);
    }
    return FloatKernel<FourFloats>(look, linear).Render(source, target, width);
}
