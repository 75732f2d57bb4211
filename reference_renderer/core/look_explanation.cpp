#include "reference_renderer/core/look_explanation.h"

#include "reference_renderer/core/colour_math.h"

namespace ReferenceRenderer
{

namespace
{

// `function` of each channel and its number.
template <typename Function>
Rgb EachOf(Function&& function)
{
    return {function(0), function(1), function(2)};
}

float ChannelOf(const Rgb& value, std::size_t channel) noexcept
{
    return std::array{value.r, value.g, value.b}[channel];
}

template <typename Function>
Rgb EachOf(const Rgb& value, Function&& function)
{
    return {function(value.r), function(value.g), function(value.b)};
}

template <CdlMode Mode>
CdlSteps StepsOf(const Cdl& cdl, const Rgb& input) noexcept
{
    const auto channel = [](const Rgb& value, std::size_t i) { return ChannelOf(value, i); };
    CdlSteps steps;
    steps.slope = EachOf([&](std::size_t i) { return channel(input, i) * cdl.slope[i]; });
    steps.offset = EachOf([&](std::size_t i) {
        return ApplySlopeOffset(cdl.slope[i], cdl.offset[i], channel(input, i));
    });
    steps.limited = EachOf(steps.offset, Limited<Mode, float>);
    steps.power = EachOf(
        [&](std::size_t i) { return ApplyPower<Mode>(cdl.power[i], channel(steps.limited, i)); });
    steps.luma = LumaOf(steps.power);
    steps.saturation = Saturated(cdl.saturation, steps.luma, steps.power);
    steps.result = EachOf(steps.saturation, Limited<Mode, float>);
    return steps;
}

std::optional<CdlSteps> StepsOf(const StoredLook& look, const Rgb& input) noexcept
{
    switch (look.cdlMode)
    {
    case CdlMode::None:
        break;
    case CdlMode::Clamped:
        return StepsOf<CdlMode::Clamped>(look.cdl, input);
    case CdlMode::Unclamped:
        return StepsOf<CdlMode::Unclamped>(look.cdl, input);
    }
    return std::nullopt;
}

CurveSteps StepsOf(const CurveView& curves, const Rgb& input) noexcept
{
    CurveSteps steps;
    for (std::size_t i = 0; i < steps.places.size(); ++i)
    {
        steps.places[i] = curves.PlaceOf(i, ChannelOf(input, i));
    }
    steps.result = EachOf([&](std::size_t i) { return steps.places[i].Value(); });
    return steps;
}

CubeSteps StepsOf(const CubeView& cube, const Rgb& input) noexcept
{
    CubeSteps steps;
    steps.place = cube.PlaceOf(input);
    for (std::size_t i = 0; i < steps.corners.size(); ++i)
    {
        const std::size_t corner = steps.place.corners[i];
        const float* const node = cube.nodes + corner;
        const auto number = static_cast<std::uint32_t>(corner / 3);
        steps.corners[i] = {
            {number % cube.size, number / cube.size % cube.size, number / cube.size / cube.size},
            {node[0], node[1], node[2]},
            steps.place.weights[i]};
    }
    steps.result = cube.At(steps.place);
    return steps;
}

std::array<std::uint32_t, 3> CodesOf(const Rgb& value) noexcept
{
    return {Code8(value.r), Code8(value.g), Code8(value.b)};
}

std::array<std::uint32_t, 3> RenderedCodes(const PreparedLook& look, const Rgb& input) noexcept
{
    const auto [r, g, b] = CodesOf(input);
    std::array pixel{static_cast<std::byte>(b), static_cast<std::byte>(g),
                     static_cast<std::byte>(r), std::byte{}};
    look.Row8()(look, pixel.data(), pixel.data(), 1);
    const auto code = [&](std::size_t i) { return std::to_integer<std::uint32_t>(pixel[i]); };
    return {code(2), code(1), code(0)};
}

} // namespace

LookExplanation Explain(const PreparedLook& look, PixelKind kind, const Rgb& input) noexcept
{
    const StoredLook& stored = look.Stored();
    LookExplanation told;
    told.input = EachOf(input, Finite<float>);
    Rgb value = told.input;
    if (kind == PixelKind::LinearFloats)
    {
        value = told.encoded.emplace(EachOf(value, EncodeSrgb<float>));
    }
    if ((told.cdl = StepsOf(stored, value)))
    {
        value = told.cdl->result;
    }
    if (stored.HasTables())
    {
        const Rgb before = value;
        if (stored.curveSize != 0)
        {
            value = told.curves.emplace(StepsOf(look.CurvesView(), value)).result;
        }
        if (stored.cubeSize != 0)
        {
            value = told.cube.emplace(StepsOf(look.CubesView(), value)).result;
        }
        value = told.mixed.emplace(AtStrength(stored.strength, before, value));
    }
    if (kind == PixelKind::LinearFloats)
    {
        value = told.decoded.emplace(EachOf(EachOf(value, Finite<float>), DecodeSrgb<float>));
    }
    told.result = kind == PixelKind::Codes ? value : EachOf(value, Finite<float>);
    told.codes = kind == PixelKind::Codes ? RenderedCodes(look, told.input) : CodesOf(told.result);
    return told;
}

} // namespace ReferenceRenderer
