#include "reference_renderer/editor/colour_pad.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace ReferenceRenderer
{

namespace
{

// Where red lies, counted from the right; green and blue lie a third of the way round on.
constexpr double kRedDegrees = 103.0;

const std::array<PadPoint, 3> kDirections = [] {
    std::array<PadPoint, 3> directions;
    for (std::size_t channel = 0; channel < directions.size(); ++channel)
    {
        const double degrees = kRedDegrees + 120.0 * static_cast<double>(channel);
        const double angle = degrees * std::numbers::pi / 180.0;
        directions[channel] = {std::cos(angle), std::sin(angle)};
    }
    return directions;
}();

// From how far each channel is from their mean, and back.
PadPoint PointOf(const Triple& away) noexcept
{
    PadPoint point;
    for (std::size_t i = 0; i < away.size(); ++i)
    {
        point.x += away[i] * kDirections[i].x * 2.0 / 3.0;
        point.y += away[i] * kDirections[i].y * 2.0 / 3.0;
    }
    return point;
}

Triple AwayAt(const PadPoint& point) noexcept
{
    Triple away{};
    for (std::size_t i = 0; i < away.size(); ++i)
    {
        away[i] = point.x * kDirections[i].x + point.y * kDirections[i].y;
    }
    return away;
}

std::array<Control, 3> ChannelsOf(const PadFacts& pad) noexcept
{
    const auto first = static_cast<int>(pad.first);
    return {pad.first, static_cast<Control>(first + 1), static_cast<Control>(first + 2)};
}

// The positions of the channels on their sliders.
Triple PositionsOf(const GradeNumbers& numbers, const std::array<Control, 3>& channels) noexcept
{
    Triple positions{};
    for (std::size_t i = 0; i < positions.size(); ++i)
    {
        positions[i] = PositionOf(FactsOf(channels[i]), NumberOf(numbers, channels[i]));
    }
    return positions;
}

// A number at its limit is not where it was meant to go.
bool SetWithinLimits(GradeNumbers& numbers, Control control, float value) noexcept
{
    const ControlFacts& facts = FactsOf(control);
    return value > facts.lowest && value < facts.highest && SetNumber(numbers, control, value);
}

// All channels, or false.
bool SetPadPoint(GradeNumbers& numbers, const PadFacts& pad, const PadPoint& point) noexcept
{
    const Triple away = AwayAt({point.x * pad.reach, point.y * pad.reach});
    if (pad.first == Control::Temperature)
    {
        const auto set = [&](Control control, double value) {
            const ControlFacts& facts = FactsOf(control);
            const double position = PositionOf(facts, static_cast<float>(value));
            return SetWithinLimits(numbers, control, ValueAt(facts, position));
        };
        return set(Control::Temperature, away[0] - away[2]) && set(Control::Tint, -1.5 * away[1]);
    }
    const std::array<Control, 3> channels = ChannelsOf(pad);
    const double mean = Mean(PositionsOf(numbers, channels));
    for (std::size_t i = 0; i < channels.size(); ++i)
    {
        if (!SetWithinLimits(numbers, channels[i], ValueAt(FactsOf(channels[i]), mean + away[i])))
        {
            return false;
        }
    }
    return true;
}

} // namespace

PadPoint PadPointOf(const GradeNumbers& numbers, const PadFacts& pad) noexcept
{
    Triple away{};
    if (pad.first == Control::Temperature)
    {
        const double temperature = NumberOf(numbers, Control::Temperature);
        const double tint = NumberOf(numbers, Control::Tint);
        away = {temperature / 2.0 + tint / 3.0, -2.0 * tint / 3.0, tint / 3.0 - temperature / 2.0};
    }
    else
    {
        away = PositionsOf(numbers, ChannelsOf(pad));
        const double mean = Mean(away);
        std::for_each(away.begin(), away.end(), [&](double& value) { value -= mean; });
    }
    const PadPoint point = PointOf(away);
    return {point.x / pad.reach, point.y / pad.reach};
}

void MoveToPadPoint(GradeNumbers& numbers, const PadFacts& pad, const PadPoint& point) noexcept
{
    const PadPoint from = PadPointOf(numbers, pad);
    GoAsFarAsPossible(numbers, [&](GradeNumbers& tried, double way) {
        return SetPadPoint(tried, pad,
                           {std::lerp(from.x, point.x, way), std::lerp(from.y, point.y, way)});
    });
}

std::array<double, 3> ColourAt(const PadPoint& point) noexcept
{
    constexpr double kGrey = 0.33;
    constexpr double kTinge = 0.24;
    Triple colour = AwayAt(point);
    for (double& value : colour)
    {
        value = std::clamp(kGrey + kTinge * value, 0.0, 1.0);
    }
    return colour;
}

} // namespace ReferenceRenderer
