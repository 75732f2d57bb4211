// What the editor's numbers are of a look. The look has slope, offset and power; lift, gamma and
// gain, and temperature, tint, exposure and contrast, are other ways to say the same three: each
// view is a function of them and always agrees with the others.
//
// Lift is where black comes to and gain where white does before gamma, the inverse of power:
//     lift = offset    gain = slope + offset    gamma = 1 / power
//
// The other view takes a picture as light encoded with 1/2.2, on which slope and power work as a
// gain of light and as contrast about a pivot that stays: with c the mean power and p the pivot,
//     out = p * (in * gain / p) ^ c, so slope = gain * p ^ ((1 - c) / c)
// Exposure is the mean gain of light in stops, temperature that of red over blue, and tint that of
// red and blue over green. Offset does not take part: black is the other views' affair.
//
// Pure: no windows.h. Tests: tests/reference_renderer/editor/grade_numbers_test.cpp.
#pragma once

#include "reference_renderer/core/look.h"
#include "reference_renderer/editor/editor_control.h"

#include <array>

namespace ReferenceRenderer
{

using Triple = std::array<double, 3>; // red, green, blue

constexpr double Mean(const Triple& values) noexcept
{
    return (values[0] + values[1] + values[2]) / 3.0;
}

struct GradeNumbers
{
    Cdl cdl;
    float strength = 1.0F;
    float pivot = kMiddleGrey; // of the editor only: a look does not keep it
};

float NumberOf(const GradeNumbers& numbers, Control control) noexcept;

// Whether the control stands where it changes nothing, to the accuracy of numbers that are kept in
// another form.
bool IsNeutral(const GradeNumbers& numbers, Control control) noexcept;

// False, and nothing changes, when `value` cannot be typed there, is NaN, or needs a slope, offset
// or power that a look cannot have.
bool SetNumber(GradeNumbers& numbers, Control control, float value) noexcept;

// Goes from where the control stands to `value`, or as far that way as SetNumber can.
void Approach(GradeNumbers& numbers, Control control, float value) noexcept;

// `setAt(numbers, way)` sets the numbers at a place on a way, from 0 for what they are to 1, and
// says whether a look can have them. They become what it makes of them as near to 1 as it agrees.
template <typename SetAt>
void GoAsFarAsPossible(GradeNumbers& numbers, SetAt&& setAt) noexcept
{
    constexpr int kHalvings = 24; // the accuracy of a float
    const GradeNumbers start = numbers;
    if (setAt(numbers, 1.0))
    {
        return;
    }
    numbers = start;
    double way = 0.0;
    double step = 1.0;
    for (int i = 0; i < kHalvings; ++i)
    {
        step /= 2.0;
        GradeNumbers tried = start;
        if (setAt(tried, way + step))
        {
            way += step;
            numbers = tried;
        }
    }
}

} // namespace ReferenceRenderer
