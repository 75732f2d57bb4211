// The formulas of the Exponent and Log nodes of CLF files, by the names of their styles.
// Pure: no windows.h. Tests: tests/reference_renderer/core/clf_reader_test.cpp.
#pragma once

#include <functional>
#include <optional>
#include <string_view>

namespace ReferenceRenderer
{

using TransferFunction = std::function<double(double)>;

struct ExponentParameters
{
    double exponent = 1.0;
    double offset = 0.0; // of the styles whose names begin with monCurve
};

struct LogParameters
{
    double base = 2.0;
    double linSideSlope = 1.0;
    double linSideOffset = 0.0;
    double logSideSlope = 1.0;
    double logSideOffset = 0.0;
    std::optional<double> linSideBreak; // the styles whose names begin with camera need it
    std::optional<double> linearSlope;  // without it the two pieces meet at one slope
};

// An empty function for a style that is not known, and for parameters that make none.
TransferFunction ExponentFunction(std::string_view style, const ExponentParameters& parameters);
TransferFunction LogFunction(std::string_view style, const LogParameters& parameters);

} // namespace ReferenceRenderer
