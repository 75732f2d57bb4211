// The numbers that the look editor offers: names, neutral values, limits, the scale of each slider,
// and the view that each belongs to; grade_numbers.h says what they are of a look.
// Pure: no windows.h. Tests: tests/reference_renderer/editor/editor_control_test.cpp.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

namespace ReferenceRenderer
{

// In the order of the window: view by view, each top to bottom, then what every view has.
enum class Control
{
    Temperature,
    Tint,
    Exposure,
    Contrast,
    Pivot,
    LiftRed,
    LiftGreen,
    LiftBlue,
    GammaRed,
    GammaGreen,
    GammaBlue,
    GainRed,
    GainGreen,
    GainBlue,
    SlopeRed,
    SlopeGreen,
    SlopeBlue,
    OffsetRed,
    OffsetGreen,
    OffsetBlue,
    PowerRed,
    PowerGreen,
    PowerBlue,
    Saturation,
    Strength, // of curves and cube
};

inline constexpr std::size_t kControlCount = 25;

// How a slider's length is shared among values.
enum class Scale
{
    Even,
    EvenRatios, // equal lengths multiply by equal factors
};

// A step of the look; its three channels stand together in the window.
enum class Step
{
    Temperature,
    Tint,
    Exposure,
    Contrast,
    Pivot,
    Lift,
    Gamma,
    Gain,
    Slope,
    Offset,
    Power,
    Saturation,
    Strength,
};

inline constexpr std::size_t kStepCount = 13;

// One way to look at the same correction.
enum class View
{
    Light,  // as a camera and a projector would say it
    Wheels, // lift, gamma and gain
    Cdl,    // the numbers of the record
};

inline constexpr std::size_t kViewCount = 3;

// Saturation and strength are in every view.
constexpr bool IsIn(Step step, View view) noexcept
{
    const View own = step <= Step::Pivot  ? View::Light
                     : step <= Step::Gain ? View::Wheels
                                          : View::Cdl;
    return step >= Step::Saturation || own == view;
}

// Red, green and blue; any other step has one value for all.
constexpr bool HasChannels(Step step) noexcept
{
    return step >= Step::Lift && step <= Step::Power;
}

struct ControlFacts
{
    Control control;
    const char* name; // as a message says it
    Step step;
    std::size_t channel; // 0 red, 1 green, 2 blue; 0 where there is one value for all
    Scale scale;
    float neutral;
    float sliderLow; // the values at the slider's ends
    float sliderHigh;
    float lowest; // the values that can be typed
    float highest;
};

// An 18 % grey card in a picture that is encoded for a display (sRGB), to two digits.
inline constexpr float kMiddleGrey = 0.46F;

// clang-format off
inline constexpr std::array<ControlFacts, kControlCount> kControls{{
    {Control::Temperature, "Temperature",  Step::Temperature, 0, Scale::Even, 0.0F, -2.0F, 2.0F, -10.0F,  10.0F},
    {Control::Tint,        "Tint",         Step::Tint,        0, Scale::Even, 0.0F, -1.0F, 1.0F, -10.0F,  10.0F},
    {Control::Exposure,    "Exposure",     Step::Exposure,    0, Scale::Even, 0.0F, -3.0F, 3.0F, -20.0F,  20.0F},
    {Control::Contrast,    "Contrast",     Step::Contrast,    0, Scale::EvenRatios, 1.0F, 0.5F, 2.0F, 0.01F, 100.0F},
    {Control::Pivot,       "Pivot",        Step::Pivot,       0, Scale::Even, kMiddleGrey, 0.1F, 0.82F, 0.01F, 1.0F},
    {Control::LiftRed,     "Lift, red",    Step::Lift,   0, Scale::Even,       0.0F, -0.5F,  0.5F, -100.0F, 100.0F},
    {Control::LiftGreen,   "Lift, green",  Step::Lift,   1, Scale::Even,       0.0F, -0.5F,  0.5F, -100.0F, 100.0F},
    {Control::LiftBlue,    "Lift, blue",   Step::Lift,   2, Scale::Even,       0.0F, -0.5F,  0.5F, -100.0F, 100.0F},
    {Control::GammaRed,    "Gamma, red",   Step::Gamma,  0, Scale::EvenRatios, 1.0F, 0.25F,  4.0F,   0.01F, 100.0F},
    {Control::GammaGreen,  "Gamma, green", Step::Gamma,  1, Scale::EvenRatios, 1.0F, 0.25F,  4.0F,   0.01F, 100.0F},
    {Control::GammaBlue,   "Gamma, blue",  Step::Gamma,  2, Scale::EvenRatios, 1.0F, 0.25F,  4.0F,   0.01F, 100.0F},
    {Control::GainRed,     "Gain, red",    Step::Gain,   0, Scale::Even,       1.0F,  0.0F,  2.0F, -100.0F, 100.0F},
    {Control::GainGreen,   "Gain, green",  Step::Gain,   1, Scale::Even,       1.0F,  0.0F,  2.0F, -100.0F, 100.0F},
    {Control::GainBlue,    "Gain, blue",   Step::Gain,   2, Scale::Even,       1.0F,  0.0F,  2.0F, -100.0F, 100.0F},
    {Control::SlopeRed,    "Slope, red",    Step::Slope,  0, Scale::Even,       1.0F,  0.0F,  2.0F,    0.0F, 100.0F},
    {Control::SlopeGreen,  "Slope, green",  Step::Slope,  1, Scale::Even,       1.0F,  0.0F,  2.0F,    0.0F, 100.0F},
    {Control::SlopeBlue,   "Slope, blue",   Step::Slope,  2, Scale::Even,       1.0F,  0.0F,  2.0F,    0.0F, 100.0F},
    {Control::OffsetRed,   "Offset, red",   Step::Offset, 0, Scale::Even,       0.0F, -0.5F,  0.5F, -100.0F, 100.0F},
    {Control::OffsetGreen, "Offset, green", Step::Offset, 1, Scale::Even,       0.0F, -0.5F,  0.5F, -100.0F, 100.0F},
    {Control::OffsetBlue,  "Offset, blue",  Step::Offset, 2, Scale::Even,       0.0F, -0.5F,  0.5F, -100.0F, 100.0F},
    {Control::PowerRed,    "Power, red",    Step::Power,  0, Scale::EvenRatios, 1.0F, 0.25F,  4.0F,   0.01F, 100.0F},
    {Control::PowerGreen,  "Power, green",  Step::Power,  1, Scale::EvenRatios, 1.0F, 0.25F,  4.0F,   0.01F, 100.0F},
    {Control::PowerBlue,   "Power, blue",   Step::Power,  2, Scale::EvenRatios, 1.0F, 0.25F,  4.0F,   0.01F, 100.0F},
    {Control::Saturation,  "Saturation",    Step::Saturation, 0, Scale::Even,   1.0F,  0.0F,  2.0F,    0.0F, 100.0F},
    {Control::Strength,    "LUT strength",  Step::Strength,   0, Scale::Even,   1.0F,  0.0F,  1.0F,    0.0F,   1.0F},
}};
// clang-format on

constexpr bool RowsFollowTheEnum(const std::array<ControlFacts, kControlCount>& rows) noexcept
{
    for (std::size_t i = 0; i < rows.size(); ++i)
    {
        if (rows[i].control != static_cast<Control>(i))
        {
            return false;
        }
    }
    return true;
}
static_assert(RowsFollowTheEnum(kControls), "one row per control, in the enum's order");

constexpr std::size_t IndexOf(Control control) noexcept
{
    return static_cast<std::size_t>(control);
}

constexpr const ControlFacts& FactsOf(Control control) noexcept
{
    return kControls[IndexOf(control)];
}

constexpr bool CanBeTyped(const ControlFacts& facts, float value) noexcept
{
    return value >= facts.lowest && value <= facts.highest; // NaN is neither
}

// Where a value stands on its slider: 0 = left end, 1 = right end; beyond both for values that the
// slider does not reach. Values of an EvenRatios slider are above 0.
double PositionOf(const ControlFacts& facts, float value) noexcept;

// The inverse, within the values that can be typed, rounded to thousandths.
float ValueAt(const ControlFacts& facts, double position) noexcept;

inline double ShownPosition(const ControlFacts& facts, float value) noexcept
{
    return std::clamp(PositionOf(facts, value), 0.0, 1.0);
}

// What one press of an arrow key adds to a value: alone, coarse or as a page key does, and fine.
inline constexpr float kKeyStep = 0.01F;
inline constexpr float kPageStep = 0.1F;
inline constexpr float kFineStep = 0.001F;

struct KeyStep
{
    float size = 0.0F;
    bool all = false; // channels of the step together

    friend bool operator==(const KeyStep&, const KeyStep&) = default;
};

// Of an arrow key: Shift is fine and Ctrl coarse, so both are what takes all channels along.
constexpr KeyStep ArrowStep(bool shift, bool ctrl) noexcept
{
    if (shift && ctrl)
    {
        return {kKeyStep, true};
    }
    return {shift ? kFineStep : ctrl ? kPageStep : kKeyStep, false};
}

// `value` plus `amount`, within the values that can be typed, rounded to thousandths.
float Nudged(const ControlFacts& facts, float value, float amount) noexcept;

} // namespace ReferenceRenderer
