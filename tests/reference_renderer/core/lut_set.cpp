#include "tests/reference_renderer/core/lut_set.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace ReferenceRenderer
{

namespace
{

using Matrix = std::array<std::array<double, 3>, 3>;
using Function = double (*)(double);

// Published curves from codes to scene-linear light.

double FromCineon(double code)
{
    const double black = std::pow(10.0, (95.0 - 685.0) / 300.0);
    return (std::pow(10.0, (code * 1023.0 - 685.0) / 300.0) - black) / (1.0 - black);
}

double FromAcesCct(double code)
{
    return code <= 0.155251141552511 ? (code - 0.0729055341958355) / 10.5402377416545
                                     : std::exp2(code * 17.52 - 9.72);
}

double FromLogC(double code)
{
    return code > 0.1496582 ? (std::pow(10.0, (code - 0.385537) / 0.247190) - 0.052272) / 5.555556
                            : (code - 0.092809) / 5.367655;
}

double Limited(double value)
{
    return std::clamp(value, 0.0, 1.0);
}

double ToDisplay(double linear)
{
    const double light = Limited(linear);
    return light < 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1.0 / 2.4) - 0.055;
}

double ToDisplayByPower(double linear)
{
    return std::pow(Limited(linear), 1.0 / 2.4);
}

double Contrast(double value)
{
    return 1.0 / (1.0 + std::exp(-6.0 * (Limited(value) - 0.45)));
}

double Posterised(double value)
{
    return std::floor(std::min(value * 6.0, 5.999)) / 5.0;
}

Rgb Each(const Rgb& value, Function function)
{
    return {static_cast<float>(function(value.r)), static_cast<float>(function(value.g)),
            static_cast<float>(function(value.b))};
}

Rgb Mixed(const Rgb& value, const Matrix& matrix)
{
    const auto row = [&](std::size_t i) {
        return static_cast<float>(matrix[i][0] * value.r + matrix[i][1] * value.g +
                                  matrix[i][2] * value.b);
    };
    return {row(0), row(1), row(2)};
}

// From a camera's wide primaries: most of the cube's surface ends up outside 0..1.
constexpr Matrix kFromWideGamut{
    {{1.617, -0.537, -0.080}, {-0.071, 1.335, -0.264}, {0.021, -0.227, 1.206}}};
constexpr Matrix kCrossedDyes{{{0.85, 0.12, 0.03}, {0.06, 0.86, 0.08}, {0.03, 0.17, 0.80}}};

Grading LogToDisplay(Function fromLog, Function toDisplay)
{
    return [=](const Rgb& code) {
        return Each(Mixed(Each(code, fromLog), kFromWideGamut), toDisplay);
    };
}

Rgb FilmPrint(const Rgb& value)
{
    const Rgb print = Mixed(Each(Mixed(value, kCrossedDyes), Contrast), kCrossedDyes);
    return {0.02F + 0.96F * print.r, 0.03F + 0.93F * print.g, 0.05F + 0.88F * print.b};
}

Matrix HueRotation(double degrees)
{
    const double angle = degrees * std::acos(-1.0) / 180.0;
    const double same = std::cos(angle) + (1.0 - std::cos(angle)) / 3.0;
    const double mean = (1.0 - std::cos(angle)) / 3.0;
    const double side = std::sin(angle) / std::sqrt(3.0);
    return {{{same, mean - side, mean + side},
             {mean + side, same, mean - side},
             {mean - side, mean + side, same}}};
}

Grading RotatedHue(double degrees, Function last)
{
    const Matrix rotation = HueRotation(degrees);
    return [=](const Rgb& value) { return Each(Mixed(value, rotation), last); };
}

Rgb BeyondDisplay(const Rgb& value)
{
    return {2.0F * value.r * value.r - 0.3F * value.b - 0.2F,
            1.5F * value.g + 0.4F * std::sin(3.0F * value.r) - 0.3F,
            3.0F * value.b * value.b * value.g - value.r};
}

// One node off; the sizes of the tests have one exactly there.
Rgb Spiked(const Rgb& value)
{
    const bool isThere = value.r == 0.5F && value.g == 0.25F && value.b == 0.75F;
    return isThere ? Rgb{1.0F, 0.0F, 1.0F} : value;
}

} // namespace

std::vector<LutOfSet> LutSet()
{
    const Function same = [](double value) { return value; };
    return {
        {"identity", Same},
        {"Cineon to display", LogToDisplay(FromCineon, ToDisplay)},
        {"ACEScct to display", LogToDisplay(FromAcesCct, ToDisplay)},
        {"ACEScct to power 2.4", LogToDisplay(FromAcesCct, ToDisplayByPower)},
        {"LogC to display", LogToDisplay(FromLogC, ToDisplay)},
        {"LogC to power 2.4", LogToDisplay(FromLogC, ToDisplayByPower)},
        {"film print", FilmPrint},
        {"hue by 30", RotatedHue(30.0, same)},
        {"hue by 75, limited", RotatedHue(75.0, Limited)},
        {"outside 0..1", BeyondDisplay},
        {"ACEScct to linear", [](const Rgb& code) { return Each(code, FromAcesCct); }},
        {"posterised", [](const Rgb& value) { return Each(value, Posterised); }, false},
        {"posterised hue", RotatedHue(40.0, [](double x) { return Posterised(Limited(x)); }), false,
         true},
        {"one spike", Spiked, false},
    };
}

Curves SetShaper()
{
    const Interval wide{0.0F, 16.0F};
    return CurvesOf(4096,
                    [](double linear) { return Limited((std::log2(linear + 0.01) + 6.7) / 10.8); },
                    {wide, wide, wide});
}

Cdl SetCdl()
{
    return {{1.1F, 0.95F, 0.9F}, {0.02F, -0.01F, 0.03F}, {0.9F, 1.1F, 1.2F}, 0.85F};
}

} // namespace ReferenceRenderer
