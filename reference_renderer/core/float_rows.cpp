#include "reference_renderer/core/float_rows.h"

#include "reference_renderer/core/float_kernel.h"

namespace ReferenceRenderer
{

std::size_t RenderGroups(InstructionSet set, const PreparedLook& look, PixelKind kind,
                         const std::byte* source, std::byte* target, std::size_t width) noexcept
{
    if (set != InstructionSet::Baseline)
    {
        return RenderGroupsOfEight(set, look, kind, source, target, width);
    }
    return FloatKernel<FourFloats>(look).Render(kind, source, target, width);
}

} // namespace ReferenceRenderer
