// A tile of thresholds without low frequencies, made by the void-and-cluster method (R. Ulichney,
// "The void-and-cluster method for dither array generation", 1993).
// Pure: no windows.h. Tests: tests/tools/glazelhost/media/blue_noise_test.cpp.
#pragma once

#include <cstdint>
#include <vector>

namespace GlazelHost
{

inline constexpr int kBlueNoiseSide = 64; // pixels; the tile repeats seamlessly

// The ranks 0 to side * side - 1, each once, row by row: however many of the lowest are lit, they
// lie evenly apart. One seed always gives the same tile. Takes some hundredths of a second.
std::vector<std::uint16_t> BlueNoiseRanks(std::uint32_t seed);

} // namespace GlazelHost
