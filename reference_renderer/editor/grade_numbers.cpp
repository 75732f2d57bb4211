#include "reference_renderer/editor/grade_numbers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace ReferenceRenderer
{

namespace
{

constexpr double kEncoding = 2.2;      // a factor of light is its 1/2.2th power in encoded values
constexpr double kDarkestSlope = 1e-6; // what a slope of 0, minus infinity stops, counts as

double MeanPower(const GradeNumbers& numbers) noexcept
{
    Triple logs{};
    for (std::size_t i = 0; i < logs.size(); ++i)
    {
        logs[i] = std::log2(double{numbers.cdl.power[i]});
    }
    return std::exp2(Mean(logs));
}

// The stops of light that keep the pivot where it is.
double StopsOfPivot(const GradeNumbers& numbers) noexcept
{
    const double contrast = MeanPower(numbers);
    return kEncoding * std::log2(double{numbers.pivot}) * (1.0 - contrast) / contrast;
}

// The gain of light of each channel, in stops.
Triple Stops(const GradeNumbers& numbers) noexcept
{
    Triple stops{};
    for (std::size_t i = 0; i < stops.size(); ++i)
    {
        const double slope = std::max(double{numbers.cdl.slope[i]}, kDarkestSlope);
        stops[i] = kEncoding * std::log2(slope) - StopsOfPivot(numbers);
    }
    return stops;
}

// A number that follows from what the user named: six decimals where the accuracy of a float does
// not tell it from those, so that a way and the way back meet.
float Kept(double value) noexcept
{
    constexpr double kMillion = 1e6;
    constexpr double kAccuracy = std::numeric_limits<float>::epsilon();
    const double rounded = std::round(value * kMillion) / kMillion;
    const bool same = std::abs(value - rounded) <= kAccuracy * std::abs(value);
    return static_cast<float>(same ? rounded : value) + 0.0F; // no minus before a zero
}

void SetStops(GradeNumbers& numbers, const Triple& stops) noexcept
{
    for (std::size_t i = 0; i < stops.size(); ++i)
    {
        numbers.cdl.slope[i] = Kept(std::exp2((stops[i] + StopsOfPivot(numbers)) / kEncoding));
    }
}

// Steps there and back leave the rest of a float's accuracy. Such a look is none, and must not
// clip as one would.
void DropRest(GradeNumbers& numbers) noexcept
{
    constexpr float kAccuracy = 1e-5F;
    const auto& power = numbers.cdl.power;
    const bool neutral =
        std::all_of(kControls.begin(), kControls.end(),
                    [&](const ControlFacts& facts) {
                        return facts.step > Step::Contrast || IsNeutral(numbers, facts.control);
                    }) &&
        std::all_of(power.begin(), power.end(),
                    [](float value) { return std::abs(value - 1.0F) < kAccuracy; });
    if (neutral)
    {
        numbers.cdl.slope = Cdl().slope;
        numbers.cdl.power = Cdl().power;
    }
}

// Whether a slope came to be too small to come back from.
bool LosesASlope(const GradeNumbers& before, const GradeNumbers& after) noexcept
{
    for (std::size_t i = 0; i < after.cdl.slope.size(); ++i)
    {
        if (after.cdl.slope[i] < kDarkestSlope && before.cdl.slope[i] >= kDarkestSlope)
        {
            return true;
        }
    }
    return false;
}

void SetStrict(GradeNumbers& numbers, const ControlFacts& facts, float value) noexcept
{
    Cdl& cdl = numbers.cdl;
    const std::size_t channel = facts.channel;
    const double step = double{value} - NumberOf(numbers, facts.control);
    Triple stops = Stops(numbers);
    const auto add = [&](double red, double green, double blue) {
        stops = {stops[0] + red * step, stops[1] + green * step, stops[2] + blue * step};
        SetStops(numbers, stops);
    };
    switch (facts.step)
    {
    case Step::Temperature:
        add(0.5, 0.0, -0.5);
        break;
    case Step::Tint:
        add(1.0 / 3.0, -2.0 / 3.0, 1.0 / 3.0);
        break;
    case Step::Exposure:
        add(1.0, 1.0, 1.0);
        break;
    case Step::Contrast:
    {
        const double factor = value / MeanPower(numbers);
        for (float& power : cdl.power)
        {
            power = Kept(power * factor);
        }
        SetStops(numbers, stops);
        break;
    }
    case Step::Pivot:
        numbers.pivot = value;
        SetStops(numbers, stops);
        break;
    case Step::Lift:
        cdl.slope[channel] = Kept(double{cdl.slope[channel]} + cdl.offset[channel] - value);
        cdl.offset[channel] = value;
        break;
    case Step::Gamma:
        cdl.power[channel] = Kept(1.0 / value);
        break;
    case Step::Gain:
        cdl.slope[channel] = Kept(double{value} - cdl.offset[channel]);
        break;
    case Step::Slope:
        cdl.slope[channel] = value;
        break;
    case Step::Offset:
        cdl.offset[channel] = value;
        break;
    case Step::Power:
        cdl.power[channel] = value;
        break;
    case Step::Saturation:
        cdl.saturation = value;
        break;
    case Step::Strength:
        numbers.strength = value;
        break;
    }
}

// Of the steps that a look has, whether `after` is as good as `before`: a look may come with
// numbers that nobody could type.
bool CanBeKept(const GradeNumbers& before, const GradeNumbers& after) noexcept
{
    return std::all_of(kControls.begin(), kControls.end(), [&](const ControlFacts& facts) {
        return !IsIn(facts.step, View::Cdl) ||
               NumberOf(after, facts.control) == NumberOf(before, facts.control) ||
               CanBeTyped(facts, NumberOf(after, facts.control));
    });
}

} // namespace

float NumberOf(const GradeNumbers& numbers, Control control) noexcept
{
    const Cdl& cdl = numbers.cdl;
    const ControlFacts& facts = FactsOf(control);
    const std::size_t channel = facts.channel;
    switch (facts.step)
    {
    case Step::Temperature:
        return static_cast<float>(Stops(numbers)[0] - Stops(numbers)[2]);
    case Step::Tint:
        return static_cast<float>((Stops(numbers)[0] + Stops(numbers)[2]) / 2.0 -
                                  Stops(numbers)[1]);
    case Step::Exposure:
        return static_cast<float>(Mean(Stops(numbers)));
    case Step::Contrast:
        return static_cast<float>(MeanPower(numbers));
    case Step::Pivot:
        return numbers.pivot;
    case Step::Lift:
    case Step::Offset:
        return cdl.offset[channel];
    case Step::Gamma:
        return 1.0F / cdl.power[channel];
    case Step::Gain:
        return cdl.slope[channel] + cdl.offset[channel];
    case Step::Slope:
        return cdl.slope[channel];
    case Step::Power:
        return cdl.power[channel];
    case Step::Saturation:
        return cdl.saturation;
    case Step::Strength:
        break;
    }
    return numbers.strength;
}

bool IsNeutral(const GradeNumbers& numbers, Control control) noexcept
{
    constexpr float kAccuracy = 1e-5F;
    const ControlFacts& facts = FactsOf(control);
    const float away = std::abs(NumberOf(numbers, control) - facts.neutral);
    return IsIn(facts.step, View::Cdl) ? away == 0.0F : away < kAccuracy;
}

bool SetNumber(GradeNumbers& numbers, Control control, float value) noexcept
{
    const ControlFacts& facts = FactsOf(control);
    if (!CanBeTyped(facts, value))
    {
        return false;
    }
    GradeNumbers next = numbers;
    SetStrict(next, facts, value);
    const bool isOfLight = facts.step <= Step::Pivot;
    if (isOfLight)
    {
        DropRest(next);
    }
    const bool kept = CanBeKept(numbers, next) && !(isOfLight && LosesASlope(numbers, next));
    numbers = kept ? next : numbers;
    return kept;
}

void Approach(GradeNumbers& numbers, Control control, float value) noexcept
{
    const double from = NumberOf(numbers, control);
    GoAsFarAsPossible(numbers, [&](GradeNumbers& tried, double way) {
        return SetNumber(tried, control, static_cast<float>(std::lerp(from, double{value}, way)));
    });
}

} // namespace ReferenceRenderer
