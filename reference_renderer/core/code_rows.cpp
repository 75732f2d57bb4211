#include "reference_renderer/core/code_rows.h"

#include <algorithm>
#include <emmintrin.h>
#include <iterator>

namespace ReferenceRenderer
{

namespace
{

constexpr std::size_t kPixelBytes = 4;

std::size_t CodeAt(const std::byte* pixel, std::size_t channel) noexcept
{
    return std::to_integer<std::size_t>(pixel[2 - channel]);
}

// The sum of what the three codes of a pixel add to a channel.
std::int32_t MixedAt(const CodeMixture& mixture, const std::byte* pixel,
                     std::size_t channel) noexcept
{
    const std::size_t lane = 2 - channel;
    const auto addend = [&](std::size_t i) { return mixture.ofCodes[i][CodeAt(pixel, i)][lane]; };
    const float sum = addend(0) + addend(1) + addend(2);
    const float limited = std::clamp(sum, mixture.lowest[lane], mixture.highest[lane]);
    return _mm_cvtss_si32(_mm_set_ss(limited)); // to the nearest, as the vectors round
}

CodePlace PlaceOf(const CodeCube& cube, const std::byte* pixel, std::size_t channel) noexcept
{
    if (cube.kind != CodePlaces::Mixed)
    {
        return cube.places[channel][CodeAt(pixel, channel)];
    }
    const auto parts = static_cast<std::uint32_t>(MixedAt(cube.mixture, pixel, channel));
    return PlaceAt(cube, channel, parts);
}

void RenderPixel(const CodeCube& cube, const std::byte* source, std::byte* target) noexcept
{
    const CodePlace red = PlaceOf(cube, source, 0);
    const CodePlace green = PlaceOf(cube, source, 1);
    const CodePlace blue = PlaceOf(cube, source, 2);
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

// One channel of four pixels in a register until the weights are known; then one pixel in a
// register, four channels at a time.

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

FourPlaces LookedUp(const CodeCube& cube, std::size_t channel, const std::byte* pixels) noexcept
{
    const auto place = [&](std::size_t pixel) {
        return Load8(&cube.places[channel][CodeAt(pixels + pixel * kPixelBytes, channel)]);
    };
    const __m128 low = _mm_castsi128_ps(_mm_unpacklo_epi64(place(0), place(1)));
    const __m128 high = _mm_castsi128_ps(_mm_unpacklo_epi64(place(2), place(3)));
    return {_mm_castps_si128(_mm_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0))),
            _mm_castps_si128(_mm_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1)))};
}

struct FourColours
{
    FourPlaces red;
    FourPlaces green;
    FourPlaces blue;
};

// A pixel in four lanes.
__m128 MixtureOf(const CodeMixture& mixture, const std::byte* pixel) noexcept
{
    const auto addends = [&](std::size_t channel) {
        return _mm_loadu_ps(mixture.ofCodes[channel][CodeAt(pixel, channel)].data());
    };
    return _mm_add_ps(_mm_add_ps(addends(0), addends(1)), addends(2));
}

__m128i Rounded(__m128 sums, const CodeMixture& mixture) noexcept
{
    const __m128 atLeast = _mm_max_ps(sums, _mm_loadu_ps(mixture.lowest.data()));
    return _mm_cvtps_epi32(_mm_min_ps(atLeast, _mm_loadu_ps(mixture.highest.data())));
}

// As PlaceAt.
FourPlaces MixedPlaces(const CodeCube& cube, std::size_t channel, __m128i parts) noexcept
{
    const __m128i step = _mm_set1_epi32(static_cast<int>(cube.StepOf(channel)));
    // (p + 1) * 257 / 65536 is p / 255 for all 16-bit numbers but the last.
    const __m128i node = _mm_mulhi_epu16(_mm_add_epi32(_mm_srli_epi32(parts, 7), _mm_set1_epi32(1)),
                                         _mm_set1_epi32(257));
    const __m128i cell = _mm_min_epi16(node, _mm_set1_epi32(static_cast<int>(cube.size) - 2));
    const __m128i fraction = _mm_sub_epi32(parts, _mm_madd_epi16(cell, _mm_set1_epi32(kWholeWay)));
    return {_mm_add_epi32(_mm_slli_epi32(fraction, kStepBits),
                          _mm_add_epi32(_mm_set1_epi32(kKeyBias), step)),
            _mm_madd_epi16(cell, step)};
}

FourColours PlacesOf(const CodeCube& cube, const std::byte* pixels) noexcept
{
    if (cube.kind != CodePlaces::Mixed)
    {
        return {LookedUp(cube, 0, pixels), LookedUp(cube, 1, pixels), LookedUp(cube, 2, pixels)};
    }
    const auto parts = [&](std::size_t pixel) {
        return Rounded(MixtureOf(cube.mixture, pixels + pixel * kPixelBytes), cube.mixture);
    };
    const __m128i blueGreen01 = _mm_unpacklo_epi32(parts(0), parts(1));
    const __m128i blueGreen23 = _mm_unpacklo_epi32(parts(2), parts(3));
    const __m128i red01 = _mm_unpackhi_epi32(parts(0), parts(1));
    const __m128i red23 = _mm_unpackhi_epi32(parts(2), parts(3));
    return {MixedPlaces(cube, 0, _mm_unpacklo_epi64(red01, red23)),
            MixedPlaces(cube, 1, _mm_unpackhi_epi64(blueGreen01, blueGreen23)),
            MixedPlaces(cube, 2, _mm_unpacklo_epi64(blueGreen01, blueGreen23))};
}

// Of pixels that each have the four lanes of a register.
void StoreFour(std::byte* target, const __m128i (&colours)[4], const std::byte* source) noexcept
{
    const __m128i codes = _mm_packus_epi16(_mm_packs_epi32(colours[0], colours[1]),
                                           _mm_packs_epi32(colours[2], colours[3]));
    const __m128i alphas =
        _mm_and_si128(Load16(source), _mm_set1_epi32(static_cast<int>(0xFF000000U)));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(target), _mm_or_si128(codes, alphas));
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
    const auto [red, green, blue] = PlacesOf(cube, source);

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
    StoreFour(target,
              {graded(0, _mm_shuffle_epi32(weights01, 0x00), _mm_shuffle_epi32(weights23, 0x00)),
               graded(1, _mm_shuffle_epi32(weights01, 0x55), _mm_shuffle_epi32(weights23, 0x55)),
               graded(2, _mm_shuffle_epi32(weights01, 0xAA), _mm_shuffle_epi32(weights23, 0xAA)),
               graded(3, _mm_shuffle_epi32(weights01, 0xFF), _mm_shuffle_epi32(weights23, 0xFF))},
              source);
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
    std::size_t done = 0;
    if (set != InstructionSet::Baseline)
    {
        done = RenderCodeGroups(set, cube, source, target, width);
    }
    for (; width - done >= 4; done += 4)
    {
        RenderFour(cube, source + done * kPixelBytes, target + done * kPixelBytes);
    }
    RenderCodesPlainly(cube, source + done * kPixelBytes, target + done * kPixelBytes,
                       width - done);
}

void RenderMixturePlainly(const CodeMixture& mixture, const std::byte* source, std::byte* target,
                          std::size_t width) noexcept
{
    for (; width != 0; --width, source += kPixelBytes, target += kPixelBytes)
    {
        const auto code = [&](std::size_t channel) {
            return static_cast<std::byte>(MixedAt(mixture, source, channel));
        };
        const std::byte pixel[]{code(2), code(1), code(0), source[3]};
        std::copy(std::begin(pixel), std::end(pixel), target);
    }
}

void RenderMixture(InstructionSet set, const CodeMixture& mixture, const std::byte* source,
                   std::byte* target, std::size_t width) noexcept
{
    std::size_t done = 0;
    if (set != InstructionSet::Baseline)
    {
        done = RenderMixtureGroups(mixture, source, target, width);
    }
    for (; width - done >= 4; done += 4)
    {
        const std::byte* const from = source + done * kPixelBytes;
        const auto codes = [&](std::size_t pixel) {
            return Rounded(MixtureOf(mixture, from + pixel * kPixelBytes), mixture);
        };
        StoreFour(target + done * kPixelBytes, {codes(0), codes(1), codes(2), codes(3)}, from);
    }
    RenderMixturePlainly(mixture, source + done * kPixelBytes, target + done * kPixelBytes,
                         width - done);
}

} // namespace ReferenceRenderer
