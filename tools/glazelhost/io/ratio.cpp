#include "tools/glazelhost/io/ratio.h"

#include <cmath>
#include <initializer_list>

Ratio RatioOf(double value) noexcept
{
    constexpr double kTooLarge = 1e9;
    // Just above the rounding of a quotient of doubles.
    constexpr double kTolerance = 1e-15;
    constexpr double kLargestTerm = 4e9;
    if (!(value > 0.0 && value < kTooLarge))
    {
        return {};
    }
    // Convergents of the continued fraction: p/q now, the one before in previous...
    double previousP = 0.0;
    double previousQ = 1.0;
    double p = 1.0;
    double q = 0.0;
    for (double rest = value;;)
    {
        const double whole = std::floor(rest);
        const double nextP = whole * p + previousP;
        const double nextQ = whole * q + previousQ;
        if (nextP > kLargestTerm || nextQ > kLargestTerm)
        {
            break;
        }
        previousP = p;
        previousQ = q;
        p = nextP;
        q = nextQ;
        if (std::abs(p / q - value) <= kTolerance * value || rest == whole)
        {
            break;
        }
        rest = 1.0 / (rest - whole);
    }
    if (p < 1.0 || q < 1.0)
    {
        return {}; // nearer to 0 than any ratio that can be written
    }
    return {static_cast<std::uint32_t>(p), static_cast<std::uint32_t>(q)};
}

Ratio FrameRateOf(double framesPerSecond) noexcept
{
    // Two digits after the point are what people write.
    constexpr double kWritten = 0.005;
    for (const std::uint32_t nominal : {24U, 30U, 48U, 60U, 120U})
    {
        const Ratio television{nominal * 1000U, 1001U};
        if (std::abs(television.Value() - framesPerSecond) < kWritten)
        {
            return television;
        }
    }
    return RatioOf(framesPerSecond);
}
