// Pads that move the three channels of a step against each other, as a colour wheel does: towards a
// hue, with their mean where it is. Hues lie as on a vectorscope, red above and blue at the right.
// Pure: no windows.h. Tests: tests/reference_renderer/editor/colour_pad_test.cpp.
#pragma once

#include "reference_renderer/editor/grade_numbers.h"

#include <array>
#include <cstddef>

namespace ReferenceRenderer
{

// A place on a pad: 0, 0 is its middle, 1 its rim; up and right are positive.
struct PadPoint
{
    double x = 0.0;
    double y = 0.0;

    friend bool operator==(const PadPoint&, const PadPoint&) = default;
};

struct PadFacts
{
    const char* name; // as a message says it
    Control first;    // red, which green and blue follow; or temperature, which tint follows
    double reach;     // from the middle to the rim: shares of a slider's length, or stops
};

// clang-format off
inline constexpr std::array<PadFacts, 7> kPads{{
    {"White balance, colour", Control::Temperature, 1.0},
    {"Lift, colour",          Control::LiftRed, 0.15},
    {"Gamma, colour",         Control::GammaRed, 0.15},
    {"Gain, colour",          Control::GainRed, 0.25},
    {"Slope, colour",         Control::SlopeRed, 0.25},
    {"Offset, colour",        Control::OffsetRed, 0.15},
    {"Power, colour",         Control::PowerRed, -0.15}, // a higher power darkens
}};
// clang-format on

// The last control that the pad moves.
constexpr Control LastOf(const PadFacts& pad) noexcept
{
    const int others = pad.first == Control::Temperature ? 1 : 2;
    return static_cast<Control>(static_cast<int>(pad.first) + others);
}

inline constexpr std::size_t kPadCount = kPads.size();

// What the numbers of the pad make: beyond the rim for numbers that are further apart.
PadPoint PadPointOf(const GradeNumbers& numbers, const PadFacts& pad) noexcept;

// Moves the channels so that the pad shows `point`, or as far that way as a look can have
// it, and their mean stays.
void MoveToPadPoint(GradeNumbers& numbers, const PadFacts& pad, const PadPoint& point) noexcept;

// The colour of a place on a pad's ground, red, green, blue, 0..1: the hue that a move there gives,
// as bright everywhere.
std::array<double, 3> ColourAt(const PadPoint& point) noexcept;

} // namespace ReferenceRenderer
