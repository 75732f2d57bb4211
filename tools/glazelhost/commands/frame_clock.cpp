#include "tools/glazelhost/commands/frame_clock.h"

#include <cmath>

namespace GlazelHost
{

std::int64_t FrameTime(std::int64_t index, double framesPerSecond) noexcept
{
    constexpr double kUnitsPerSecond = 1e7;
    if (!(framesPerSecond > 0.0))
    {
        return 0;
    }
    return std::llround(static_cast<double>(index) * kUnitsPerSecond / framesPerSecond);
}

} // namespace GlazelHost
