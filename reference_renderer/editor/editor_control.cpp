#include "reference_renderer/editor/editor_control.h"

#include <cmath>

namespace ReferenceRenderer
{

namespace
{

float Rounded(const ControlFacts& facts, double value) noexcept
{
    constexpr double kThousand = 1000.0;
    const double limited = std::clamp(value, double{facts.lowest}, double{facts.highest});
    const double rounded = std::round(limited * kThousand) / kThousand;
    return static_cast<float>(rounded) + 0.0F; // no minus before a zero
}

} // namespace

double PositionOf(const ControlFacts& facts, float value) noexcept
{
    if (facts.scale == Scale::EvenRatios)
    {
        const double length = std::log(double{facts.sliderHigh} / facts.sliderLow);
        return std::log(double{value} / facts.sliderLow) / length;
    }
    return (double{value} - facts.sliderLow) / (double{facts.sliderHigh} - facts.sliderLow);
}

float ValueAt(const ControlFacts& facts, double position) noexcept
{
    const double low = facts.sliderLow;
    const double high = facts.sliderHigh;
    const double value = facts.scale == Scale::EvenRatios ? low * std::pow(high / low, position)
                                                          : low + (high - low) * position;
    return Rounded(facts, value);
}

float Nudged(const ControlFacts& facts, float value, float amount) noexcept
{
    const float nudged = Rounded(facts, double{value} + amount);
    return (nudged - value) * amount < 0.0F ? value : nudged; // it was beyond its limit before
}

} // namespace ReferenceRenderer
