#include "reference_renderer/core/code_rows.h"

#include <algorithm>
#include <immintrin.h>
#include <iterator>

namespace ReferenceRenderer
{

namespace
{

constexpr std::size_t kPixelBytes = 4;
constexpr std::uint32_t kFractionBias = kKeyBias >> kStepBits;

std::size_t CodeAt(const std::byte* pixel, std::size_t channel) noexcept
{
    return std::to_integer<std::size_t>(pixel[2 - channel]);
}

void RenderPixel(const CodeCube& cube, const std::byte* source, std::byte* target) noexcept
{
    const CodePlace& red = cube.places[0][CodeAt(source, 0)];
    const CodePlace& green = cube.places[1][CodeAt(source, 1)];
    const CodePlace& blue = cube.places[2][CodeAt(source, 2)];
    std::uint32_t keys[]{red.key, green.key, blue.key};
    std::sort(std::begin(keys), std::end(keys));
    const auto fraction = [&](std::size_t i) {
        return static_cast<std::int32_t>((keys[i] >> kStepBits) - kFractionBias);
    };
    const std::int32_t whole = kWholeWay;
    const std::int32_t weights[]{whole - fraction(2), fraction(2) - fraction(1),
                                 fraction(1) - fraction(0), fraction(0)};
    const CodeNode* const corner = cube.nodes.data() + red.offset + green.offset + blue.offset;
    const CodeNode* const corners[]{corner, corner + (keys[2] & kStepMask),
                                    corner + (cube.AllSteps() - (keys[0] & kStepMask)),
                                    corner + cube.AllSteps()};
    for (std::size_t channel = 0; channel < 3; ++channel)
    {
        std::int32_t sum = 0;
        for (std::size_t i = 0; i < std::size(corners); ++i)
        {
            sum += weights[i] * (*corners[i])[channel];
        }
        const std::int32_t code = ((1 << (cube.shift - 1)) - sum) >> cube.shift;
        target[channel] = static_cast<std::byte>(std::clamp(code, 0, 255));
    }
    target[3] = source[3];
}

// One channel of several pixels in a register until the weights are known; then a few pixels in a
// register, four channels at a time. Below stand the baseline's four pixels and AVX2's eight.

__m128i Load8(const void* bytes) noexcept
{
    return _mm_loadl_epi64(static_cast<const __m128i*>(bytes));
}

__m128i Load16(const void* bytes) noexcept
{
    return _mm_loadu_si128(static_cast<const __m128i*>(bytes));
}

struct FourPlaces
{
    __m128i keys;
    __m128i offsets;
};

FourPlaces PlacesOf(const CodeCube& cube, std::size_t channel, const std::byte* pixels) noexcept
{
    const auto place = [&](std::size_t pixel) {
        return Load8(&cube.places[channel][CodeAt(pixels + pixel * kPixelBytes, channel)]);
    };
    const __m128 low = _mm_castsi128_ps(_mm_unpacklo_epi64(place(0), place(1)));
    const __m128 high = _mm_castsi128_ps(_mm_unpacklo_epi64(place(2), place(3)));
    return {_mm_castps_si128(_mm_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0))),
            _mm_castps_si128(_mm_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1)))};
}

__m128i SmallerKey(__m128i a, __m128i b) noexcept
{
    return _mm_castps_si128(_mm_min_ps(_mm_castsi128_ps(a), _mm_castsi128_ps(b)));
}

__m128i LargerKey(__m128i a, __m128i b) noexcept
{
    return _mm_castps_si128(_mm_max_ps(_mm_castsi128_ps(a), _mm_castsi128_ps(b)));
}

__m128i Pair(__m128i low, __m128i high) noexcept
{
    return _mm_or_si128(low, _mm_slli_epi32(high, 16));
}

void RenderFour(const CodeCube& cube, const std::byte* source, std::byte* target) noexcept
{
    const FourPlaces red = PlacesOf(cube, 0, source);
    const FourPlaces green = PlacesOf(cube, 1, source);
    const FourPlaces blue = PlacesOf(cube, 2, source);

    const __m128i smaller = SmallerKey(red.keys, green.keys);
    const __m128i larger = LargerKey(red.keys, green.keys);
    const __m128i first = LargerKey(larger, blue.keys);
    const __m128i middle = LargerKey(smaller, SmallerKey(larger, blue.keys));
    const __m128i last = SmallerKey(smaller, blue.keys);

    const __m128i stepMask = _mm_set1_epi32(kStepMask);
    const __m128i below = _mm_add_epi32(_mm_add_epi32(red.offsets, green.offsets), blue.offsets);
    const __m128i above = _mm_add_epi32(below, _mm_set1_epi32(static_cast<int>(cube.AllSteps())));
    alignas(16) __m128i offsets[]{below, _mm_add_epi32(below, _mm_and_si128(first, stepMask)),
                                  _mm_sub_epi32(above, _mm_and_si128(last, stepMask)), above};
    // Left alone, the compiler takes the offsets out of the registers one by one, which is slower.
    asm volatile("" : "+m"(offsets));
    const auto* const offset = reinterpret_cast<const std::uint32_t(*)[4]>(offsets);

    const __m128i fractionFirst = _mm_srli_epi32(first, kStepBits);
    const __m128i fractionMiddle = _mm_srli_epi32(middle, kStepBits);
    const __m128i fractionLast = _mm_srli_epi32(last, kStepBits);
    const __m128i weights01 =
        Pair(_mm_sub_epi32(_mm_set1_epi32(kWholeWay + kFractionBias), fractionFirst),
             _mm_sub_epi32(fractionFirst, fractionMiddle));
    const __m128i weights23 = Pair(_mm_sub_epi32(fractionMiddle, fractionLast),
                                   _mm_sub_epi32(fractionLast, _mm_set1_epi32(kFractionBias)));

    const CodeNode* const nodes = cube.nodes.data();
    const __m128i half = _mm_set1_epi32(1 << (cube.shift - 1));
    const __m128i shift = _mm_cvtsi32_si128(cube.shift);
    const auto graded = [&](std::size_t pixel, __m128i pair01, __m128i pair23) {
        const auto node = [&](std::size_t corner) { return Load8(nodes + offset[corner][pixel]); };
        const __m128i sum =
            _mm_add_epi32(_mm_madd_epi16(_mm_unpacklo_epi16(node(0), node(1)), pair01),
                          _mm_madd_epi16(_mm_unpacklo_epi16(node(2), node(3)), pair23));
        return _mm_sra_epi32(_mm_sub_epi32(half, sum), shift);
    };
    const __m128i colours = _mm_packus_epi16(
        _mm_packs_epi32(
            graded(0, _mm_shuffle_epi32(weights01, 0x00), _mm_shuffle_epi32(weights23, 0x00)),
            graded(1, _mm_shuffle_epi32(weights01, 0x55), _mm_shuffle_epi32(weights23, 0x55))),
        _mm_packs_epi32(
            graded(2, _mm_shuffle_epi32(weights01, 0xAA), _mm_shuffle_epi32(weights23, 0xAA)),
            graded(3, _mm_shuffle_epi32(weights01, 0xFF), _mm_shuffle_epi32(weights23, 0xFF))));
    const __m128i alphas =
        _mm_and_si128(Load16(source), _mm_set1_epi32(static_cast<int>(0xFF000000U)));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(target), _mm_or_si128(colours, alphas));
}

// A lambda does not take over its function's instructions, so these are functions.
#define GLAZEL_AVX2 __attribute__((target("avx2"), always_inline)) inline

struct EightPlaces
{
    __m256i keys;
    __m256i offsets;
};

GLAZEL_AVX2 __m256i Joined(__m128i low, __m128i high) noexcept
{
    return _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
}

GLAZEL_AVX2 EightPlaces LookedUp(const CodeCube& cube, std::size_t channel,
                                 const std::byte* pixels) noexcept
{
    const FourPlaces low = PlacesOf(cube, channel, pixels);
    const FourPlaces high = PlacesOf(cube, channel, pixels + 4 * kPixelBytes);
    return {Joined(low.keys, high.keys), Joined(low.offsets, high.offsets)};
}

// Of an even cube. Codes and cells stay below 2^16, so the odd 16-bit lanes stay 0.
GLAZEL_AVX2 EightPlaces Computed(const CodeCube& cube, std::size_t channel, __m256i codes) noexcept
{
    const int step = static_cast<int>(cube.StepOf(channel));
    const __m256i position =
        _mm256_mullo_epi16(codes, _mm256_set1_epi32(static_cast<int>(cube.size) - 1)); // in 1/255
    // (p + 1) * 257 / 65536 is p / 255 for all 16-bit numbers but the last.
    const __m256i node = _mm256_mulhi_epu16(_mm256_add_epi32(position, _mm256_set1_epi32(1)),
                                            _mm256_set1_epi32(257));
    const __m256i cell = _mm256_min_epi16(node, _mm256_set1_epi32(static_cast<int>(cube.size) - 2));
    const __m256i fraction =
        _mm256_sub_epi32(position, _mm256_mullo_epi16(cell, _mm256_set1_epi32(255)));
    constexpr int kFractionShift = kStepBits + 7; // a fraction of 255 becomes one of kWholeWay
    return {_mm256_add_epi32(_mm256_slli_epi32(fraction, kFractionShift),
                             _mm256_set1_epi32(static_cast<int>(kKeyBias) + step)),
            _mm256_madd_epi16(cell, _mm256_set1_epi32(step))};
}

GLAZEL_AVX2 __m256i Pair(__m256i low, __m256i high) noexcept
{
    return _mm256_or_si256(low, _mm256_slli_epi32(high, 16));
}

// The nodes of a corner of two pixels; 16 bytes are read of each, of which 8 are used.
GLAZEL_AVX2 __m256i TwoNodes(const CodeNode* nodes, std::uint32_t low, std::uint32_t high) noexcept
{
    return Joined(Load16(nodes + low), Load16(nodes + high));
}

// Pixels `pixel` and `pixel` + 4; `Lane` is `pixel` as a shuffle.
template <int Lane>
GLAZEL_AVX2 __m256i Graded(const CodeNode* nodes, const std::uint32_t (*offset)[8],
                           std::size_t pixel, __m256i weights01, __m256i weights23, __m256i half,
                           __m256i shift) noexcept
{
    const __m256i nodes01 =
        _mm256_unpacklo_epi16(TwoNodes(nodes, offset[0][pixel], offset[0][pixel + 4]),
                              TwoNodes(nodes, offset[1][pixel], offset[1][pixel + 4]));
    const __m256i nodes23 =
        _mm256_unpacklo_epi16(TwoNodes(nodes, offset[2][pixel], offset[2][pixel + 4]),
                              TwoNodes(nodes, offset[3][pixel], offset[3][pixel + 4]));
    const __m256i sum =
        _mm256_add_epi32(_mm256_madd_epi16(nodes01, _mm256_shuffle_epi32(weights01, Lane)),
                         _mm256_madd_epi16(nodes23, _mm256_shuffle_epi32(weights23, Lane)));
    return _mm256_srav_epi32(_mm256_sub_epi32(half, sum), shift); // by a register it is slower
}

template <bool IsEven>
__attribute__((target("avx2"))) void RenderEight(const CodeCube& cube, const std::byte* source,
                                                 std::byte* target, std::size_t width) noexcept
{
    const CodeNode* const nodes = cube.nodes.data();
    const __m256i allSteps = _mm256_set1_epi32(static_cast<int>(cube.AllSteps()));
    const __m256i half = _mm256_set1_epi32(1 << (cube.shift - 1));
    const __m256i shift = _mm256_set1_epi32(cube.shift);
    const __m256i codeMask = _mm256_set1_epi32(0xFF);
    const __m256i stepMask = _mm256_set1_epi32(kStepMask);
    for (; width >= 8; width -= 8, source += 8 * kPixelBytes, target += 8 * kPixelBytes)
    {
        const __m256i pixels = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(source));
        EightPlaces red;
        EightPlaces green;
        EightPlaces blue;
        if constexpr (IsEven)
        {
            red = Computed(cube, 0, _mm256_and_si256(_mm256_srli_epi32(pixels, 16), codeMask));
            green = Computed(cube, 1, _mm256_and_si256(_mm256_srli_epi32(pixels, 8), codeMask));
            blue = Computed(cube, 2, _mm256_and_si256(pixels, codeMask));
        }
        else
        {
            red = LookedUp(cube, 0, source);
            green = LookedUp(cube, 1, source);
            blue = LookedUp(cube, 2, source);
        }
        const __m256i smaller = _mm256_min_epu32(red.keys, green.keys);
        const __m256i larger = _mm256_max_epu32(red.keys, green.keys);
        const __m256i first = _mm256_max_epu32(larger, blue.keys);
        const __m256i middle = _mm256_max_epu32(smaller, _mm256_min_epu32(larger, blue.keys));
        const __m256i last = _mm256_min_epu32(smaller, blue.keys);

        const __m256i below =
            _mm256_add_epi32(_mm256_add_epi32(red.offsets, green.offsets), blue.offsets);
        const __m256i above = _mm256_add_epi32(below, allSteps);
        __m256i offsets[]{below, _mm256_add_epi32(below, _mm256_and_si256(first, stepMask)),
                          _mm256_sub_epi32(above, _mm256_and_si256(last, stepMask)), above};
        asm volatile("" : "+m"(offsets)); // as in RenderFour
        const auto* const offset = reinterpret_cast<const std::uint32_t(*)[8]>(offsets);

        const __m256i fractionFirst = _mm256_srli_epi32(first, kStepBits);
        const __m256i fractionMiddle = _mm256_srli_epi32(middle, kStepBits);
        const __m256i fractionLast = _mm256_srli_epi32(last, kStepBits);
        const __m256i weights01 =
            Pair(_mm256_sub_epi32(_mm256_set1_epi32(kWholeWay + kFractionBias), fractionFirst),
                 _mm256_sub_epi32(fractionFirst, fractionMiddle));
        const __m256i weights23 =
            Pair(_mm256_sub_epi32(fractionMiddle, fractionLast),
                 _mm256_sub_epi32(fractionLast, _mm256_set1_epi32(kFractionBias)));

        const __m256i colours = _mm256_packus_epi16(
            _mm256_packs_epi32(Graded<0x00>(nodes, offset, 0, weights01, weights23, half, shift),
                               Graded<0x55>(nodes, offset, 1, weights01, weights23, half, shift)),
            _mm256_packs_epi32(Graded<0xAA>(nodes, offset, 2, weights01, weights23, half, shift),
                               Graded<0xFF>(nodes, offset, 3, weights01, weights23, half, shift)));
        const __m256i alphas =
            _mm256_and_si256(pixels, _mm256_set1_epi32(static_cast<int>(0xFF000000U)));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(target), _mm256_or_si256(colours, alphas));
    }
    RenderCodesPlainly(cube, source, target, width);
}

} // namespace

void RenderCodesPlainly(const CodeCube& cube, const std::byte* source, std::byte* target,
                        std::size_t width) noexcept
{
    for (; width != 0; --width, source += kPixelBytes, target += kPixelBytes)
    {
        RenderPixel(cube, source, target);
    }
}

void RenderCodes(InstructionSet set, const CodeCube& cube, const std::byte* source,
                 std::byte* target, std::size_t width) noexcept
{
    if (set == InstructionSet::Avx2)
    {
        cube.isEven ? RenderEight<true>(cube, source, target, width)
                    : RenderEight<false>(cube, source, target, width);
        return;
    }
    for (; width >= 4; width -= 4, source += 4 * kPixelBytes, target += 4 * kPixelBytes)
    {
        RenderFour(cube, source, target);
    }
    RenderCodesPlainly(cube, source, target, width);
}

} // namespace ReferenceRenderer
