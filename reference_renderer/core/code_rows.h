// Rows of 8-bit codes through a cube, in whole numbers, or through sums of what each channel gives:
// plainly, and the same to the last bit with the processor's vectors. Pure: no windows.h. Tests:
// tests/reference_renderer/core/code_look_test.cpp.
#pragma once

#include "reference_renderer/core/instruction_set.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace ReferenceRenderer
{

// The whole way from a node to the next. Codes lie at multiples of 1/255 on a cube from 0 to 1, so
// that their fractions of it are exact, and no larger such number fits 16 bits with a sign.
inline constexpr std::uint32_t kWholeWay = 255 * 128;

// A key holds a fraction above a step, so that sorting keys sorts fractions. A bias makes it the
// bits of a normal positive float: the baseline has a minimum of floats but none of 32-bit
// integers.
inline constexpr int kStepBits = 13;
inline constexpr std::uint32_t kStepMask = (1U << kStepBits) - 1;
inline constexpr std::uint32_t kKeyBias = 0x00800000;
inline constexpr std::uint32_t kFractionBias = kKeyBias >> kStepBits;

// Where a code lies on its axis of the cube.
struct CodePlace
{
    std::uint32_t key;    // the fraction of the way to the next node, above the step to that node
    std::uint32_t offset; // of the node below
};

// Blue, green, red, 0, negated: so 1.0, times kNodeScale, just fits.
using CodeNode = std::array<std::int16_t, 4>;

// 1.0 in a node. Values beyond -1 to 1 halve it once for each factor of two.
inline constexpr float kNodeScale = 32768.0F;

// kWholeWay * kNodeScale is 255 of these: where a sum of nodes in the weights of a pixel, without
// halvings, has its code.
inline constexpr int kCodeShift = 22;

// Channels that mix, as a saturation makes them: each code of a pixel adds something to every
// channel, and the sums are limited and rounded.
struct CodeMixture
{
    using Addends = std::array<float, 4>; // to blue, green, red, and 0

    std::array<std::array<Addends, 256>, 3> ofCodes; // red, green, blue
    Addends lowest;
    Addends highest;
};

// How the place of a pixel in a cube is found.
enum class CodePlaces
{
    LookedUp,
    Even,  // code c lies at c / 255 of every axis
    Mixed, // the sums of the mixture are positions, in parts of kWholeWay
};

// Offsets and steps count nodes, red first.
struct CodeCube
{
    std::array<std::array<CodePlace, 256>, 3> places; // red, green, blue; not of mixed ones
    CodeMixture mixture;                              // of mixed ones
    std::vector<CodeNode> nodes;                      // and one more, which is read but not used
    std::uint32_t size = 0;                           // nodes a side
    int shift = kCodeShift;
    CodePlaces kind = CodePlaces::LookedUp;

    std::uint32_t StepOf(std::size_t channel) const noexcept
    {
        return channel == 0 ? 1 : channel == 1 ? size : size * size;
    }
    std::uint32_t AllSteps() const noexcept { return 1 + size + size * size; }
};

// The place of a position from the first node on, in parts of kWholeWay.
inline CodePlace PlaceAt(const CodeCube& cube, std::size_t channel, std::uint32_t parts) noexcept
{
    const std::uint32_t step = cube.StepOf(channel);
    const std::uint32_t cell = std::min(parts / kWholeWay, cube.size - 2);
    const std::uint32_t fraction = parts - cell * kWholeWay;
    return {kKeyBias + (fraction << kStepBits | step), cell * step};
}

// Pixels are blue, green, red, alpha; alpha is copied. Source and target are the same memory or do
// not overlap. Within 0.51 codes of exact arithmetic.
void RenderCodesPlainly(const CodeCube& cube, const std::byte* source, std::byte* target,
                        std::size_t width) noexcept;
void RenderCodes(InstructionSet set, const CodeCube& cube, const std::byte* source,
                 std::byte* target, std::size_t width) noexcept;

// The same for a mixture whose sums are the codes of the result.
void RenderMixturePlainly(const CodeMixture& mixture, const std::byte* source, std::byte* target,
                          std::size_t width) noexcept;
void RenderMixture(InstructionSet set, const CodeMixture& mixture, const std::byte* source,
                   std::byte* target, std::size_t width) noexcept;

// Each renders pixels from the front of a row, as many as fill whole groups, and answers how many.
// `set` is not the baseline, and the processor has it.
std::size_t RenderCodeGroups(InstructionSet set, const CodeCube& cube, const std::byte* source,
                             std::byte* target, std::size_t width) noexcept;
std::size_t RenderMixtureGroups(const CodeMixture& mixture, const std::byte* source,
                                std::byte* target, std::size_t width) noexcept;

} // namespace ReferenceRenderer
