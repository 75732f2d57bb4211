#include "reference_renderer/core/code_look.h"

#include "reference_renderer/core/colour_math.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <emmintrin.h>

namespace ReferenceRenderer
{

namespace
{

// Each costs up to as much accuracy again: 0.004 codes, 0.008 and 0.016.
constexpr int kMostHalvings = 3;

static_assert(kStoredCubeSize * kStoredCubeSize <= kStepMask);

// All values of a channel that can reach the cube.
Interval InputOf(const StoredLook& look, const std::array<float, 256>& values) noexcept
{
    if (look.cdlMode != CdlMode::None && look.cdl.saturation != 1.0F)
    {
        return look.cdlMode == CdlMode::Clamped ? Interval{0.0F, 1.0F}
                                                : Interval{-kLargestFloat, kLargestFloat};
    }
    const auto [low, high] = std::minmax_element(values.begin(), values.end());
    return {*low, *high};
}

} // namespace

CodeLook::CodeLook()
{
    m_cube.nodes.resize(NodeCount(kStoredCubeSize) + 1);
}

bool CodeLook::Prepare(const StoredLook& look, const ValuesOfCodes& values, const CurveView& curves,
                       const CubeView& cube) noexcept
{
    m_mixes = look.cdlMode != CdlMode::None && look.cdl.saturation != 1.0F;
    if (m_mixes && curves.size != 0)
    {
        return false;
    }
    m_hasCube = cube.size != 0;
    if (m_hasCube)
    {
        return PrepareCube(look, values, curves, cube);
    }
    if (m_mixes)
    {
        constexpr Scale kCodes{255.0, 0.0, 255.0};
        PrepareMixture(look, values, {kCodes, kCodes, kCodes});
        return true;
    }
    for (std::size_t channel = 0; channel < values.size(); ++channel)
    {
        for (std::size_t code = 0; code < values[channel].size(); ++code)
        {
            const float value = Finite(values[channel][code]);
            const float curved = curves.size != 0 ? curves.Sample(channel, value) : value;
            const float graded = value * (1.0F - look.strength) + curved * look.strength;
            m_graded[channel][code] =
                static_cast<std::byte>(Code8(curves.size != 0 ? graded : value));
        }
    }
    return true;
}

bool CodeLook::PrepareCube(const StoredLook& look, const ValuesOfCodes& values,
                           const CurveView& curves, const CubeView& cube) noexcept
{
    if (!PrepareNodes(look, values, cube))
    {
        return false;
    }
    if (m_mixes)
    {
        std::array<Scale, 3> parts;
        for (std::size_t channel = 0; channel < parts.size(); ++channel)
        {
            const Axis& axis = cube.axes[channel];
            const double perValue = double{axis.scale} * kWholeWay;
            parts[channel] = {perValue, -axis.low * perValue, double{axis.last} * kWholeWay};
        }
        PrepareMixture(look, values, parts);
        m_cube.kind = CodePlaces::Mixed;
        return true;
    }
    bool isEven = true;
    for (std::size_t channel = 0; channel < values.size(); ++channel)
    {
        for (std::uint32_t code = 0; code < values[channel].size(); ++code)
        {
            const float value = values[channel][code];
            const float position = cube.axes[channel].PositionOf(
                curves.size != 0 ? curves.Sample(channel, value) : value);
            const auto parts =
                static_cast<std::uint32_t>(std::lround(position * static_cast<float>(kWholeWay)));
            m_cube.places[channel][code] = PlaceAt(m_cube, channel, parts);
            isEven &= parts == code * (cube.size - 1) * (kWholeWay / 255);
        }
    }
    m_cube.kind = isEven ? CodePlaces::Even : CodePlaces::LookedUp;
    return true;
}

void CodeLook::PrepareMixture(const StoredLook& look, const ValuesOfCodes& values,
                              const std::array<Scale, 3>& scales) noexcept
{
    constexpr double kMost = 1e30; // sums of three stay finite
    const double saturation = look.cdl.saturation;
    const std::array<float, 3> lumas{LumaOf(Rgb{1.0F, 0.0F, 0.0F}), LumaOf(Rgb{0.0F, 1.0F, 0.0F}),
                                     LumaOf(Rgb{0.0F, 0.0F, 1.0F})};
    CodeMixture& mixture = m_cube.mixture;
    for (std::size_t channel = 0; channel < scales.size(); ++channel)
    {
        const auto [perValue, ofZero, last] = scales[channel];
        const std::size_t lane = 2 - channel;
        for (std::size_t from = 0; from < values.size(); ++from)
        {
            const double share =
                (1.0 - saturation) * lumas[from] + (from == channel ? saturation : 0.0);
            for (std::size_t code = 0; code < values[from].size(); ++code)
            {
                const double value = Finite(values[from][code]);
                const double addend = share * value * perValue + (from == 0 ? ofZero : 0.0);
                mixture.ofCodes[from][code][lane] =
                    static_cast<float>(std::clamp(addend, -kMost, kMost));
            }
        }
        const bool isClamped = look.cdlMode == CdlMode::Clamped;
        const double lowest = isClamped ? std::clamp(ofZero, 0.0, last) : 0.0;
        const double highest = isClamped ? std::clamp(ofZero + perValue, 0.0, last) : last;
        mixture.lowest[lane] = static_cast<float>(lowest);
        mixture.highest[lane] = static_cast<float>(highest);
    }
}

bool CodeLook::PrepareNodes(const StoredLook& look, const ValuesOfCodes& values,
                            const CubeView& cube) noexcept
{
    const float taken = look.strength;
    const float kept = 1.0F - taken;
    float largest = 0.0F;
    for (std::size_t channel = 0; channel < values.size(); ++channel)
    {
        const Interval& domain = look.cubeDomain[channel];
        const Interval& range = look.cubeRange[channel];
        largest = std::max({largest, range.high, -range.low});
        if (kept == 0.0F)
        {
            continue;
        }
        // A cube and its input in part are a cube again where the input is the cube's.
        const Interval input = InputOf(look, values[channel]);
        if (look.curveSize != 0 || !(input.low >= domain.low && input.high <= domain.high))
        {
            return false;
        }
        largest = std::max({largest, domain.high, -domain.low});
    }
    int halvings = 0;
    while (largest > static_cast<float>(1 << halvings))
    {
        if (++halvings > kMostHalvings)
        {
            return false;
        }
    }
    m_cube.size = cube.size;
    m_cube.shift = kCodeShift - halvings;
    const float scale = -kNodeScale / static_cast<float>(1 << halvings);
    const FourFloats scales{scale, scale, scale, 0.0F}; // what follows a node is not its own
    const float* node = cube.nodes;
    CodeNode* target = m_cube.nodes.data();
    const auto input = [&](std::size_t channel, std::uint32_t entry) {
        return kept == 0.0F ? 0.0F : kept * EntryValue(look.cubeDomain[channel], entry, cube.size);
    };
    for (std::uint32_t blue = 0; blue < cube.size; ++blue)
    {
        for (std::uint32_t green = 0; green < cube.size; ++green)
        {
            FourFloats keptInput{0.0F, input(1, green), input(2, blue), 0.0F};
            for (std::uint32_t red = 0; red < cube.size; ++red, node += 3, ++target)
            {
                keptInput[0] = input(0, red);
                const auto mixed =
                    std::bit_cast<__m128>((keptInput + taken * LoadFour(node)) * scales);
                const __m128 inOrder = _mm_shuffle_ps(mixed, mixed, _MM_SHUFFLE(3, 0, 1, 2));
                const __m128i rounded = _mm_cvtps_epi32(inOrder);
                _mm_storel_epi64(reinterpret_cast<__m128i*>(target),
                                 _mm_packs_epi32(rounded, rounded)); // limits, too
            }
        }
    }
    return true;
}

void CodeLook::RenderRow(const std::byte* source, std::byte* target,
                         std::size_t width) const noexcept
{
    if (m_hasCube)
    {
        RenderCodes(UsedInstructionSet(), m_cube, source, target, width);
        return;
    }
    if (m_mixes)
    {
        RenderMixture(UsedInstructionSet(), m_cube.mixture, source, target, width);
        return;
    }
    for (; width != 0; --width, source += 4, target += 4)
    {
        const auto graded = [&](std::size_t channel) {
            return m_graded[channel][std::to_integer<std::size_t>(source[2 - channel])];
        };
        const std::byte pixel[]{graded(2), graded(1), graded(0), source[3]};
        std::memcpy(target, pixel, sizeof pixel);
    }
}

} // namespace ReferenceRenderer
