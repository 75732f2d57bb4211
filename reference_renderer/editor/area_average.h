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

struct PixelSize
{
    std::size_t width = 0;
    std::size_t height = 0;

    friend bool operator==(const PixelSize&, const PixelSize&) = default;
};

struct PixelPart
{
    std::size_t left = 0;
    std::size_t top = 0;
    PixelSize size;

    friend bool operator==(const PixelPart&, const PixelPart&) = default;
};

// One axis of a scaling: which source pixels a target pixel covers, and how much of each.
class AreaAxis
{
public:
    // Lengths are at least 1; of the target, `count` pixels from `first` on are wanted.
    AreaAxis(std::size_t sourceLength, std::size_t targetLength, std::size_t first,
             std::size_t count);

    struct Cover
    {
        std::size_t first = 0; // source pixel
        std::size_t count = 1;
        const float* shares = nullptr; // `count` of them; their sum is 1
    };
    Cover Of(std::size_t target) const noexcept; // counted from the first that is wanted
    std::size_t Count() const noexcept { return m_starts.size(); }

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

// Hands every row of a part of the picture scaled to `whole` to `sink`, top to bottom: the pixels
// that the whole would have there. Reads each source row at most twice. Throws std::bad_alloc
// before the first row.
void ScaleByArea(const PixelRows& source, PixelSize whole, const PixelPart& part, PixelSink& sink);

} // namespace ReferenceRenderer
