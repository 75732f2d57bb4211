#include "reference_renderer/core/transfer_functions.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace ReferenceRenderer
{

namespace
{

// The logarithm of 0 and below is that of this.
constexpr double kSmallest = std::numeric_limits<float>::min();

// What a style does with values that the formula has no result for.
enum class Below
{
    Zero,
    Mirror,
    Same,
    Formula, // the formula holds everywhere
};

struct ExponentStyle
{
    std::string_view name;
    bool isReverse;
    Below below;
    bool hasLine; // a straight piece near 0
};

// clang-format off
constexpr std::array kExponentStyles{ // name, reverse, below 0, straight piece
    ExponentStyle{"basicFwd",          false, Below::Zero,    false},
    ExponentStyle{"basicRev",          true,  Below::Zero,    false},
    ExponentStyle{"basicMirrorFwd",    false, Below::Mirror,  false},
    ExponentStyle{"basicMirrorRev",    true,  Below::Mirror,  false},
    ExponentStyle{"basicPassThruFwd",  false, Below::Same,    false},
    ExponentStyle{"basicPassThruRev",  true,  Below::Same,    false},
    ExponentStyle{"monCurveFwd",       false, Below::Formula, true},
    ExponentStyle{"monCurveRev",       true,  Below::Formula, true},
    ExponentStyle{"monCurveMirrorFwd", false, Below::Mirror,  true},
    ExponentStyle{"monCurveMirrorRev", true,  Below::Mirror,  true},
};
// clang-format on

TransferFunction PowerFunction(double exponent)
{
    return [exponent](double x) { return std::pow(x, exponent); };
}

// A power of the moved value that a line through 0 continues where both have one slope.
TransferFunction LineAndPower(double exponent, double offset, bool isReverse)
{
    const double linear = offset / (exponent - 1.0);
    const double encoded =
        std::pow(exponent * offset / ((exponent - 1.0) * (1.0 + offset)), exponent);
    const double slope = encoded / linear;
    if (isReverse)
    {
        return [=](double y) {
            return y >= encoded ? (1.0 + offset) * std::pow(y, 1.0 / exponent) - offset : y / slope;
        };
    }
    return [=](double x) {
        return x >= linear ? std::pow((x + offset) / (1.0 + offset), exponent) : x * slope;
    };
}

struct CameraLine
{
    double linBreak;
    double logBreak;
    double slope;
    double offset;
};

double Encoded(const LogParameters& log, double x)
{
    const double inside = std::max(log.linSideSlope * x + log.linSideOffset, kSmallest);
    return log.logSideSlope * std::log(inside) / std::log(log.base) + log.logSideOffset;
}

double Decoded(const LogParameters& log, double y)
{
    const double inside = std::pow(log.base, (y - log.logSideOffset) / log.logSideSlope);
    return (inside - log.linSideOffset) / log.linSideSlope;
}

TransferFunction CameraFunction(const LogParameters& log, bool isReverse)
{
    const double linBreak = log.linSideBreak.value_or(0.0);
    const double inside = log.linSideSlope * linBreak + log.linSideOffset;
    CameraLine line{linBreak, Encoded(log, linBreak), 0.0, 0.0};
    line.slope = log.linearSlope.value_or(log.logSideSlope * log.linSideSlope /
                                          (inside * std::log(log.base)));
    line.offset = line.logBreak - line.slope * linBreak;
    if (!log.linSideBreak || !(inside > 0.0) || line.slope == 0.0)
    {
        return {};
    }
    if (isReverse)
    {
        return [=](double y) {
            return y > line.logBreak ? Decoded(log, y) : (y - line.offset) / line.slope;
        };
    }
    return [=](double x) {
        return x > line.linBreak ? Encoded(log, x) : x * line.slope + line.offset;
    };
}

} // namespace

TransferFunction ExponentFunction(std::string_view style, const ExponentParameters& parameters)
{
    const auto* const found =
        std::find_if(kExponentStyles.begin(), kExponentStyles.end(),
                     [&](const ExponentStyle& known) { return known.name == style; });
    const double exponent = parameters.exponent;
    const bool usable = found != kExponentStyles.end() &&
                        (found->hasLine ? exponent > 1.0 && parameters.offset > 0.0
                                        : exponent > 0.0 && parameters.offset == 0.0);
    if (!usable)
    {
        return {};
    }
    TransferFunction formula = found->hasLine
                                   ? LineAndPower(exponent, parameters.offset, found->isReverse)
                                   : PowerFunction(found->isReverse ? 1.0 / exponent : exponent);
    switch (found->below)
    {
    case Below::Zero:
        return [=](double x) { return formula(std::max(x, 0.0)); };
    case Below::Mirror:
        return [=](double x) { return x < 0.0 ? -formula(-x) : formula(x); };
    case Below::Same:
        return [=](double x) { return x < 0.0 ? x : formula(x); };
    case Below::Formula:
        break;
    }
    return formula;
}

TransferFunction LogFunction(std::string_view style, const LogParameters& parameters)
{
    LogParameters log = parameters;
    if (style == "log10" || style == "antiLog10")
    {
        log = {};
        log.base = 10.0;
        style = style == "log10" ? "linToLog" : "logToLin";
    }
    else if (style == "log2" || style == "antiLog2")
    {
        log = {};
        style = style == "log2" ? "linToLog" : "logToLin";
    }
    if (!(log.base > 0.0) || log.base == 1.0 || log.linSideSlope == 0.0 || log.logSideSlope == 0.0)
    {
        return {};
    }
    if (style == "linToLog")
    {
        return [=](double x) { return Encoded(log, x); };
    }
    if (style == "logToLin")
    {
        return [=](double y) { return Decoded(log, y); };
    }
    if (style == "cameraLinToLog" || style == "cameraLogToLin")
    {
        return CameraFunction(log, style == "cameraLogToLin");
    }
    return {};
}

} // namespace ReferenceRenderer
