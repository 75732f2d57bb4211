// Whole-number ratios, as stream headers state rates and pixel aspects.
// Pure: no windows.h. Tests: tests/tools/glazelhost/io/ratio_test.cpp.
#pragma once

#include <cstdint>

struct Ratio
{
    std::uint32_t numerator = 0;
    std::uint32_t denominator = 0; // 0: not said

    // 0.0 when not said.
    double Value() const noexcept
    {
        return denominator == 0 ? 0.0 : static_cast<double>(numerator) / denominator;
    }
    bool operator==(const Ratio&) const = default;
};

// The ratio of the smallest terms that stands for `value`: a ratio that went through a double comes
// back (in lowest terms). {0, 0} for what is not a positive number below 1e9.
Ratio RatioOf(double value) noexcept;

// The same for frame rates: 23.976, 23.98, 29.97, 47.95, 59.94 and 119.88 mean 24000/1001 and so
// on.
Ratio FrameRateOf(double framesPerSecond) noexcept;
