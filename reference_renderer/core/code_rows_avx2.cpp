// Built with AVX2: nothing here may be used, or shared with another file, that runs without.
#include "reference_renderer/core/code_rows.h"

#include <immintrin.h>

namespace ReferenceRenderer
{

namespace
{

constexpr std::size_t kGroup = 8; // pixels; number j and j + 4 share a register
constexpr std::size_t kPixelBytes = 4;
constexpr std::size_t kAhead =
    1024; // what the processor fetches by itself begins anew in every page

// Of eight pixels, one channel in a register.
struct EightPlaces
{
    __m256i keys;
    __m256i offsets;
};

struct EightColours
{
    EightPlaces red;
    EightPlaces green;
    EightPlaces blue;
};

// Positions on the axes of a cube, in parts of kWholeWay.
struct EightPositions
{
    __m256i red;
    __m256i green;
    __m256i blue;
};

// What a loop needs of a cube again and again; what is stored to a row cannot change it.
struct CubeNumbers
{
    explicit CubeNumbers(const CodeCube& cube) noexcept
        : size(cube.size), steps{cube.StepOf(0), cube.StepOf(1), cube.StepOf(2)},
          allSteps(cube.AllSteps())
    {
    }

    std::uint32_t size;
    std::uint32_t steps[3]; // red, green, blue
    std::uint32_t allSteps;
};

std::size_t CodeAt(const std::byte* pixels, std::size_t pixel, std::size_t channel) noexcept
{
    return std::to_integer<std::size_t>(pixels[pixel * kPixelBytes + 2 - channel]);
}

// Two times 16 bytes; what is behind an entry of 8 bytes is read but not used.
__m256i Load(const void* low, const void* high) noexcept
{
    return _mm256_inserti128_si256(
        _mm256_castsi128_si256(_mm_loadu_si128(static_cast<const __m128i*>(low))),
        _mm_loadu_si128(static_cast<const __m128i*>(high)), 1);
}

__m256i Load(const void* bytes) noexcept
{
    return _mm256_loadu_si256(static_cast<const __m256i*>(bytes));
}

__m256i All(std::uint32_t value) noexcept
{
    return _mm256_set1_epi32(static_cast<int>(value));
}

EightPlaces LookedUp(const CodeCube& cube, std::size_t channel, const std::byte* pixels) noexcept
{
    const auto places = [&](std::size_t pixel) {
        const auto* const ofChannel = cube.places[channel].data();
        return Load(ofChannel + CodeAt(pixels, pixel, channel),
                    ofChannel + CodeAt(pixels, pixel + 4, channel));
    };
    const __m256 low = _mm256_castsi256_ps(_mm256_unpacklo_epi64(places(0), places(1)));
    const __m256 high = _mm256_castsi256_ps(_mm256_unpacklo_epi64(places(2), places(3)));
    return {_mm256_castps_si256(_mm256_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0))),
            _mm256_castps_si256(_mm256_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1)))};
}

// The cell of a position in 1/255 of the way between nodes. Positions and cells stay below 2^16, so
// that the odd 16-bit lanes stay 0.
__m256i CellOf(const CubeNumbers& cube, __m256i position) noexcept
{
    // (p + 1) * 257 / 65536 is p / 255 for all 16-bit numbers but the last.
    const __m256i node = _mm256_mulhi_epu16(_mm256_add_epi32(position, All(1)), All(257));
    return _mm256_min_epi16(node, All(cube.size - 2));
}

EightPlaces PlacesOf(std::uint32_t step, __m256i cell, __m256i shiftedFraction) noexcept
{
    return {_mm256_add_epi32(shiftedFraction, All(kKeyBias + step)),
            _mm256_madd_epi16(cell, All(step))};
}

EightPlaces EvenPlaces(const CubeNumbers& cube, std::size_t channel, __m256i codes) noexcept
{
    const __m256i position = _mm256_mullo_epi16(codes, All(cube.size - 1));
    const __m256i cell = CellOf(cube, position);
    const __m256i fraction = _mm256_sub_epi32(position, _mm256_mullo_epi16(cell, All(255)));
    constexpr int kFractionShift = kStepBits + 7; // a fraction of 255 becomes one of kWholeWay
    return PlacesOf(cube.steps[channel], cell, _mm256_slli_epi32(fraction, kFractionShift));
}

EightPlaces MixedPlaces(const CubeNumbers& cube, std::size_t channel, __m256i parts) noexcept
{
    const __m256i cell = CellOf(cube, _mm256_srli_epi32(parts, 7));
    const __m256i fraction = _mm256_sub_epi32(parts, _mm256_madd_epi16(cell, All(kWholeWay)));
    return PlacesOf(cube.steps[channel], cell, _mm256_slli_epi32(fraction, kStepBits));
}

// Of pixels `pixel` and `pixel` + 4, each in four lanes.
__m256 MixtureOf(const CodeMixture& mixture, const std::byte* pixels, std::size_t pixel) noexcept
{
    const auto addends = [&](std::size_t channel) {
        const auto* const ofChannel = mixture.ofCodes[channel].data();
        return _mm256_castsi256_ps(Load(ofChannel + CodeAt(pixels, pixel, channel),
                                        ofChannel + CodeAt(pixels, pixel + 4, channel)));
    };
    return _mm256_add_ps(_mm256_add_ps(addends(0), addends(1)), addends(2));
}

__m256i Rounded(__m256 sums, __m256 lowest, __m256 highest) noexcept
{
    return _mm256_cvtps_epi32(_mm256_min_ps(_mm256_max_ps(sums, lowest), highest));
}

EightPositions MixedPositions(const CodeMixture& mixture, const std::byte* pixels) noexcept
{
    const __m256 sums[]{MixtureOf(mixture, pixels, 0), MixtureOf(mixture, pixels, 1),
                        MixtureOf(mixture, pixels, 2), MixtureOf(mixture, pixels, 3)};
    const __m256 low01 = _mm256_unpacklo_ps(sums[0], sums[1]);
    const __m256 low23 = _mm256_unpacklo_ps(sums[2], sums[3]);
    const __m256 high01 = _mm256_unpackhi_ps(sums[0], sums[1]);
    const __m256 high23 = _mm256_unpackhi_ps(sums[2], sums[3]);
    const auto rounded = [&](__m256 parts, std::size_t channel) {
        return Rounded(parts, _mm256_set1_ps(mixture.lowest[2 - channel]),
                       _mm256_set1_ps(mixture.highest[2 - channel]));
    };
    return {rounded(_mm256_shuffle_ps(high01, high23, _MM_SHUFFLE(1, 0, 1, 0)), 0),
            rounded(_mm256_shuffle_ps(low01, low23, _MM_SHUFFLE(3, 2, 3, 2)), 1),
            rounded(_mm256_shuffle_ps(low01, low23, _MM_SHUFFLE(1, 0, 1, 0)), 2)};
}

template <CodePlaces Kind>
EightColours PlacesOf(const CodeCube& cube, const CubeNumbers& numbers, const std::byte* source,
                      __m256i pixels) noexcept
{
    if constexpr (Kind == CodePlaces::LookedUp)
    {
        return {LookedUp(cube, 0, source), LookedUp(cube, 1, source), LookedUp(cube, 2, source)};
    }
    else if constexpr (Kind == CodePlaces::Mixed)
    {
        const EightPositions parts = MixedPositions(cube.mixture, source);
        return {MixedPlaces(numbers, 0, parts.red), MixedPlaces(numbers, 1, parts.green),
                MixedPlaces(numbers, 2, parts.blue)};
    }
    else
    {
        const __m256i mask = All(0xFF);
        return {EvenPlaces(numbers, 0, _mm256_and_si256(_mm256_srli_epi32(pixels, 16), mask)),
                EvenPlaces(numbers, 1, _mm256_and_si256(_mm256_srli_epi32(pixels, 8), mask)),
                EvenPlaces(numbers, 2, _mm256_and_si256(pixels, mask))};
    }
}

__m256i Pair(__m256i low, __m256i high) noexcept
{
    return _mm256_or_si256(low, _mm256_slli_epi32(high, 16));
}

// Eight pixels of four bytes each, of which `colours` are pixels in the order of registers.
void Store(std::byte* target, const __m256i (&colours)[4], __m256i pixels) noexcept
{
    const __m256i codes = _mm256_packus_epi16(_mm256_packs_epi32(colours[0], colours[1]),
                                              _mm256_packs_epi32(colours[2], colours[3]));
    const __m256i alphas = _mm256_and_si256(pixels, All(0xFF000000));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(target), _mm256_or_si256(codes, alphas));
}

template <CodePlaces Kind>
std::size_t RenderCodeGroups(const CodeCube& cube, const std::byte* source, std::byte* target,
                             std::size_t width) noexcept
{
    const CodeNode* const nodes = cube.nodes.data();
    const CubeNumbers numbers(cube);
    const __m256i half = All(1U << (cube.shift - 1));
    const __m256i shift = All(static_cast<std::uint32_t>(cube.shift));
    const __m256i stepMask = All(kStepMask);
    std::size_t done = 0;
    for (; width - done >= kGroup; done += kGroup)
    {
        const std::byte* const from = source + done * kPixelBytes;
        __builtin_prefetch(from + kAhead);
        const __m256i pixels = Load(from);
        const auto [red, green, blue] = PlacesOf<Kind>(cube, numbers, from, pixels);
        const __m256i smaller = _mm256_min_epu32(red.keys, green.keys);
        const __m256i larger = _mm256_max_epu32(red.keys, green.keys);
        const __m256i first = _mm256_max_epu32(larger, blue.keys);
        const __m256i middle = _mm256_max_epu32(smaller, _mm256_min_epu32(larger, blue.keys));
        const __m256i last = _mm256_min_epu32(smaller, blue.keys);

        const __m256i below =
            _mm256_add_epi32(_mm256_add_epi32(red.offsets, green.offsets), blue.offsets);
        const __m256i above = _mm256_add_epi32(below, All(numbers.allSteps));
        __m256i offsets[]{below, _mm256_add_epi32(below, _mm256_and_si256(first, stepMask)),
                          _mm256_sub_epi32(above, _mm256_and_si256(last, stepMask)), above};
        asm volatile("" : "+m"(offsets)); // as in RenderFour of code_rows.cpp
        const auto* const offset = reinterpret_cast<const std::uint32_t(*)[kGroup]>(offsets);

        const __m256i fractionFirst = _mm256_srli_epi32(first, kStepBits);
        const __m256i fractionMiddle = _mm256_srli_epi32(middle, kStepBits);
        const __m256i fractionLast = _mm256_srli_epi32(last, kStepBits);
        const __m256i weights01 =
            Pair(_mm256_sub_epi32(All(kWholeWay + kFractionBias), fractionFirst),
                 _mm256_sub_epi32(fractionFirst, fractionMiddle));
        const __m256i weights23 = Pair(_mm256_sub_epi32(fractionMiddle, fractionLast),
                                       _mm256_sub_epi32(fractionLast, All(kFractionBias)));

        const auto graded = [&](std::size_t pixel, __m256i pair01, __m256i pair23) {
            const auto node = [&](std::size_t corner) {
                return Load(nodes + offset[corner][pixel], nodes + offset[corner][pixel + 4]);
            };
            const __m256i sum = _mm256_add_epi32(
                _mm256_madd_epi16(_mm256_unpacklo_epi16(node(0), node(1)), pair01),
                _mm256_madd_epi16(_mm256_unpacklo_epi16(node(2), node(3)), pair23));
            return _mm256_srav_epi32(_mm256_sub_epi32(half, sum),
                                     shift); // by a number it is slower
        };
        Store(target + done * kPixelBytes,
              {graded(0, _mm256_shuffle_epi32(weights01, 0x00),
                      _mm256_shuffle_epi32(weights23, 0x00)),
               graded(1, _mm256_shuffle_epi32(weights01, 0x55),
                      _mm256_shuffle_epi32(weights23, 0x55)),
               graded(2, _mm256_shuffle_epi32(weights01, 0xAA),
                      _mm256_shuffle_epi32(weights23, 0xAA)),
               graded(3, _mm256_shuffle_epi32(weights01, 0xFF),
                      _mm256_shuffle_epi32(weights23, 0xFF))},
              pixels);
    }
    return done;
}

std::size_t RenderCodesOfAnyKind(const CodeCube& cube, const std::byte* source, std::byte* target,
                                 std::size_t width) noexcept
{
    switch (cube.kind)
    {
    case CodePlaces::LookedUp:
        return RenderCodeGroups<CodePlaces::LookedUp>(cube, source, target, width);
    case CodePlaces::Even:
        return RenderCodeGroups<CodePlaces::Even>(cube, source, target, width);
    case CodePlaces::Mixed:
        return RenderCodeGroups<CodePlaces::Mixed>(cube, source, target, width);
    }
    return 0;
}

// The same instructions with 32 registers: nothing that the loop needs goes to memory and back.
GLAZEL_AVX512 std::size_t RenderWithAvx512(const CodeCube& cube, const std::byte* source,
                                           std::byte* target, std::size_t width) noexcept
{
    return RenderCodesOfAnyKind(cube, source, target, width);
}

} // namespace

std::size_t RenderCodeGroups(InstructionSet set, const CodeCube& cube, const std::byte* source,
                             std::byte* target, std::size_t width) noexcept
{
    return set == InstructionSet::Avx512 ? RenderWithAvx512(cube, source, target, width)
                                         : RenderCodesOfAnyKind(cube, source, target, width);
}

std::size_t RenderMixtureGroups(const CodeMixture& mixture, const std::byte* source,
                                std::byte* target, std::size_t width) noexcept
{
    const auto twice = [](const CodeMixture::Addends& limits) {
        const __m128 one = _mm_loadu_ps(limits.data());
        return _mm256_insertf128_ps(_mm256_castps128_ps256(one), one, 1);
    };
    const __m256 lowest = twice(mixture.lowest);
    const __m256 highest = twice(mixture.highest);
    std::size_t done = 0;
    for (; width - done >= kGroup; done += kGroup)
    {
        const std::byte* const from = source + done * kPixelBytes;
        const auto codes = [&](std::size_t pixel) {
            return Rounded(MixtureOf(mixture, from, pixel), lowest, highest);
        };
        Store(target + done * kPixelBytes, {codes(0), codes(1), codes(2), codes(3)}, Load(from));
    }
    return done;
}

} // namespace ReferenceRenderer
