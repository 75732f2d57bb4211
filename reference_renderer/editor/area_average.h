// Scales pictures so that each target pixel is the mean of the area that it covers: exact for any
// ratio, smaller or larger. Pure: no windows.h.
// Tests: tests/reference_renderer/editor/area_average_test.cpp.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ReferenceRenderer
{

inline constexpr std::size_t kChannels = 4; // of a pixel, alpha among them

// One axis of a scaling: which source pixels a target pixel covers, and how much of each.
class AreaAxis
{
public:
    // Both at least 1.
    AreaAxis(std::size_t sourceLength, std::size_t targetLength);

    struct Cover
    {
        std::size_t first = 0; // source pixel
        std::size_t count = 1;
        const float* shares = nullptr; // `count` of them; their sum is 1
    };
    Cover Of(std::size_t target) const noexcept;
    std::size_t TargetLength() const noexcept { return m_starts.size(); }

private:
    struct Start
    {
        std::size_t first;
        std::size_t count;
        std::size_t share; // place in m_shares
    };
    std::vector<Start> m_starts;
    std::vector<float> m_shares;
};

// Four floats a pixel, as the picture has them: blue, green, red, alpha.
// Reads row `row` of the source, `width` pixels, into `floats`.
class PixelRows
{
public:
    virtual std::size_t Width() const noexcept = 0;
    virtual std::size_t Height() const noexcept = 0;
    virtual void ReadRow(std::size_t row, float* floats) const noexcept = 0;

protected:
    ~PixelRows() = default;
};

class PixelSink
{
public:
    virtual void WriteRow(std::size_t row, const float* floats) noexcept = 0;

protected:
    ~PixelSink() = default;
};

// Hands every row of the scaled picture, `width` x `height` pixels, to `sink`, top to bottom.
// Reads each source row at most twice. Throws std::bad_alloc before the first row.
void ScaleByArea(const PixelRows& source, std::size_t width, std::size_t height, PixelSink& sink);

} // namespace ReferenceRenderer
