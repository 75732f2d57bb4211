// Rows of YCbCr in planes, and rows of pixels of floats as an Image has them.
// Pure: no windows.h. Tests: tests/tools/glazelhost/media/ycbcr_rows_test.cpp.
#pragma once

#include <cstddef>
#include <cstdint>

namespace GlazelHost
{

// What red and blue, each 0 to 1, are of the luma; green is the rest. Those of BT.709.
struct LumaWeights
{
    double red = 0.2126;
    double blue = 0.0722;

    double Green() const noexcept { return 1.0 - red - blue; }
};

// Where a row begins in each plane, at any address: codes of 16 bits in the limited range, luma
// from 4096 to 60160, the others from 4096 to 61440 about 32768. What lies beyond stands for
// colours outside RGB.
template <typename Sample>
struct YcbcrRow
{
    Sample* luma = nullptr;
    Sample* blueDifference = nullptr;
    Sample* redDifference = nullptr;
};

// `pixels` times blue, green, red and an opaque alpha.
void JoinYcbcr(const YcbcrRow<const std::uint16_t>& row, std::size_t pixels, LumaWeights weights,
               float* target) noexcept;

// The opposite, to the nearest code; alpha is left out. What no code stands for becomes the nearest
// one, what is no number becomes 0. Codes that were joined come back the same, whatever the colour.
void SplitYcbcr(const float* source, std::size_t pixels, LumaWeights weights,
                const YcbcrRow<std::uint16_t>& row) noexcept;

} // namespace GlazelHost
