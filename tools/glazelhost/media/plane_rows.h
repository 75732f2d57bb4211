// Rows whose channels lie in planes, and rows that have them side by side as an Image does.
// Pure: no windows.h. Tests: tests/tools/glazelhost/media/plane_rows_test.cpp.
#pragma once

#include <cstddef>
#include <cstdint>

namespace GlazelHost
{

// Where a row begins in each plane. Samples are at any address.
template <typename Sample>
struct PlaneRow
{
    Sample* blue = nullptr;
    Sample* green = nullptr;
    Sample* red = nullptr;
    Sample* alpha = nullptr; // null: there is none
};

// `pixels` times blue, green, red, alpha; without a plane of it alpha is opaque.
void JoinPlanes(const PlaneRow<const std::uint8_t>& row, std::size_t pixels,
                std::uint8_t* target) noexcept;
void JoinPlanes(const PlaneRow<const float>& row, std::size_t pixels, float* target) noexcept;

// The opposite; alpha goes where there is a plane for it.
void SplitPlanes(const std::uint8_t* source, std::size_t pixels,
                 const PlaneRow<std::uint8_t>& row) noexcept;
void SplitPlanes(const float* source, std::size_t pixels, const PlaneRow<float>& row) noexcept;

} // namespace GlazelHost
