// Built with AVX2: nothing here may be used, or shared with another file, that runs without.
#include "reference_renderer/core/eight_floats.h"
#include "reference_renderer/core/float_kernel.h"
#include "reference_renderer/core/float_rows.h"

namespace ReferenceRenderer
{

template <>
struct PixelsOf<EightFloats>
{
    static constexpr std::size_t kCount = 8;

    // A half goes by the load itself, or the store: a shuffle of its own would cost a twentieth.
    static EightFloats Load(const void* first, const void* second) noexcept
    {
        const __m256 low = _mm256_castps128_ps256(_mm_loadu_ps(static_cast<const float*>(first)));
        return _mm256_insertf128_ps(low, _mm_loadu_ps(static_cast<const float*>(second)), 1);
    }
    static void Store(EightFloats pixels, void* first, void* second) noexcept
    {
        _mm_storeu_ps(static_cast<float*>(first), _mm256_castps256_ps128(pixels));
        _mm_storeu_ps(static_cast<float*>(second), _mm256_extractf128_ps(pixels, 1));
    }
    // The same in both halves.
    template <int Low0, int Low1, int High0, int High1>
    static EightFloats Shuffled(EightFloats a, EightFloats b) noexcept
    {
        constexpr auto wide = [](int index) { return index < 4 ? index : index + 4; };
        return __builtin_shufflevector(a, b, wide(Low0), wide(Low1), wide(High0), wide(High1),
                                       wide(Low0) + 4, wide(Low1) + 4, wide(High0) + 4,
                                       wide(High1) + 4);
    }
    static EightBits Packed(const EightBits (&codes)[4]) noexcept
    {
        const auto* const ints = reinterpret_cast<const __m256i*>(codes);
        return std::bit_cast<EightBits>(_mm256_packus_epi16(_mm256_packs_epi32(ints[0], ints[1]),
                                                            _mm256_packs_epi32(ints[2], ints[3])));
    }
};

namespace
{

GLAZEL_AVX512 std::size_t RenderWithAvx512(const PreparedLook& look, PixelKind kind,
                                           const std::byte* source, std::byte* target,
                                           std::size_t width) noexcept
{
    return FloatKernel<EightFloats>(look).Render(kind, source, target, width);
}

} // namespace

std::size_t RenderGroupsOfEight(InstructionSet set, const PreparedLook& look, PixelKind kind,
                                const std::byte* source, std::byte* target,
                                std::size_t width) noexcept
{
    return set == InstructionSet::Avx512
               ? RenderWithAvx512(look, kind, source, target, width)
               : FloatKernel<EightFloats>(look).Render(kind, source, target, width);
}

} // namespace ReferenceRenderer
