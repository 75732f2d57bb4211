// Rows of 8-bit codes through a cube, in whole numbers: plainly, and the same to the last bit with
// the processor's vectors. Pure: no windows.h. Tests:
// tests/reference_renderer/core/code_look_test.cpp.
#pragma once

#include "reference_renderer/core/instruction_set.h"

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

// Offsets and steps count nodes, red first.
struct CodeCube
{
    std::array<std::array<CodePlace, 256>, 3> places; // red, green, blue
    std::vector<CodeNode> nodes;                      // and one more, which is read but not used
    std::uint32_t size = 0;                           // nodes a side
    int shift = kCodeShift;
    bool isEven = false; // code c lies at c / 255 of every axis: places need not be looked up

    std::uint32_t StepOf(std::size_t channel) const noexcept
    {
        return channel == 0 ? 1 : channel == 1 ? size : size * size;
    }
    std::uint32_t AllSteps() const noexcept { return 1 + size + size * size; }
};

// Pixels are blue, green, red, alpha; alpha is copied. Source and target are the same memory or do
// not overlap. Within 0.51 codes of exact arithmetic.
void RenderCodesPlainly(const CodeCube& cube, const std::byte* source, std::byte* target,
                        std::size_t width) noexcept;
void RenderCodes(InstructionSet set, const CodeCube& cube, const std::byte* source,
                 std::byte* target, std::size_t width) noexcept;

} // namespace ReferenceRenderer
