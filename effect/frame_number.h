// The number of a frame from its time. Pure: no windows.h. Tests:
// tests/effect/frame_number_test.cpp.
#pragma once

#include <cstdint>

// `frameTime` in units of 100 ns. Half a frame is added and the sum cut towards zero, so a time
// that is a little off its frame still counts as that frame. Beyond 32 bits the nearest number that
// exists is given, and 0 for a rate that is not a number.
constexpr std::int32_t FrameNumber(std::int64_t frameTime, double framesPerSecond) noexcept
{
    constexpr double kSecondsPerUnit = 1e-7;
    const double number = static_cast<double>(frameTime) * kSecondsPerUnit * framesPerSecond + 0.5;
    if (number >= static_cast<double>(INT32_MAX))
    {
        return INT32_MAX;
    }
    if (number <= static_cast<double>(INT32_MIN))
    {
        return INT32_MIN;
    }
    return number == number ? static_cast<std::int32_t>(number) : 0;
}
