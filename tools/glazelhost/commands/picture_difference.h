// How far apart two pictures, or two clips frame by frame, are.
// Pure: no windows.h. Tests: tests/tools/glazelhost/commands/picture_difference_test.cpp.
#pragma once

#include "tools/glazelhost/media/frame_io.h"

#include <cstdint>
#include <optional>

namespace GlazelHost
{

// Differences are of channels from 0.0 to 1.0, whatever the depth. A value that is no number, or an
// infinity, differs without limit from everything but itself.
class PictureDifference
{
public:
    // The channel that differs most.
    struct Place
    {
        std::int64_t frame = 0; // as Add was told
        int x = 0;              // pixels from the left
        int y = 0;              // pixels from the top
        int channel = 0;        // 0 blue, 1 green, 2 red, 3 alpha
        double first = 0.0;     // its value in either picture
        double second = 0.0;

        friend bool operator==(const Place&, const Place&) = default;
    };

    // Pixels count as different when one of their channels is further apart than `threshold`.
    explicit PictureDifference(double threshold) noexcept : m_threshold(threshold) {}

    // Two Float images of one size. Alpha is compared where either has it.
    void Add(std::int64_t frame, const Image& first, const Image& second) noexcept;

    std::int64_t Frames() const noexcept { return m_frames; }
    double Largest() const noexcept { return m_largest; }
    double Mean() const noexcept; // of all channels
    // In decibels, for a peak of 1.0; none for pictures that are equal.
    std::optional<double> Psnr() const noexcept;
    double ShareOverThreshold() const noexcept; // of the pixels, 0.0 to 1.0
    // None for pictures that are equal. The first of several.
    const std::optional<Place>& Worst() const noexcept { return m_worst; }

private:
    double m_threshold;
    std::int64_t m_frames = 0;
    std::uint64_t m_channels = 0;
    std::uint64_t m_pixels = 0;
    std::uint64_t m_over = 0; // pixels
    double m_largest = 0.0;
    double m_sum = 0.0;
    double m_squares = 0.0;
    std::optional<Place> m_worst;
};

// The distance of two values as above.
double DistanceOf(double first, double second) noexcept;

// Codes that are n steps apart are not over a limit of n steps, whatever their floats lose.
bool IsOver(double distance, double limit) noexcept;

// A picture of bytes of the distances, times `factor`; opaque. `target`'s memory is reused.
void DrawDifference(const Image& first, const Image& second, double factor, Image& target);

} // namespace GlazelHost
