// The memory of one surface and the conversion of its rows to and from 8-bit samples.
// Pure: no windows.h. Tests: tests/tools/glazelhost/surface/pixel_grid_test.cpp.
#pragma once

#include "tools/glazelhost/surface/pixel_buffer.h"
#include "tools/glazelhost/surface/sample.h"

#include <cstddef>
#include <span>

namespace GlazelHost
{

// Channels are blue, green, red, alpha in all of them.
enum class SurfaceFormat
{
    Straight8,      // four bytes a pixel
    Premultiplied8, // four bytes a pixel, colours premultiplied
    StraightFloat,  // four 32-bit floats a pixel, 0.0 to 1.0 nominal, any value allowed
};

struct SurfaceLayout
{
    int width = 0;  // pixels, > 0
    int height = 0; // rows, > 0
    SurfaceFormat format = SurfaceFormat::Straight8;
    bool bottomUp = false; // the bottom row has the lowest address
    int padding = 0;       // bytes behind each row, >= 0

    friend bool operator==(const SurfaceLayout&, const SurfaceLayout&) = default;
    std::size_t PixelBytes() const noexcept
    {
        return format == SurfaceFormat::StraightFloat ? 16U : 4U;
    }
    std::size_t RowBytes() const noexcept { return static_cast<std::size_t>(width) * PixelBytes(); }
    // From one row to the next; how much of that is pixels says RowBytes.
    std::size_t PitchBytes() const noexcept
    {
        return RowBytes() + static_cast<std::size_t>(padding);
    }
};

// Rows and their padding, between two guard bands that show whether somebody wrote past either end.
// Not synchronised: the surface's locks do that.
class PixelGrid
{
public:
    // In memory of its own, zero at first. Throws std::bad_alloc.
    explicit PixelGrid(const SurfaceLayout& layout);
    // In memory that it borrows: the pixels with as many bytes as a guard band has on either side.
    // Null: it has none yet.
    PixelGrid(const SurfaceLayout& layout, std::byte* pixels) noexcept;

    const SurfaceLayout& Layout() const noexcept { return m_layout; }
    bool HasMemory() const noexcept { return m_pixels != nullptr; }
    // First pixel of row `y`, counted from the top of the picture; 0 <= y < height.
    std::byte* Row(int y) const noexcept;
    std::byte* At(int x, int y) const noexcept;
    // Bytes from a row to the one below; negative when bottom-up.
    std::ptrdiff_t Pitch() const noexcept;

    bool GuardsAreIntact() const noexcept;
    void RestoreGuards() noexcept;

private:
    static constexpr std::size_t kGuardBytes = PixelBuffer::kGuardBytes;

    std::size_t PixelsBytes() const noexcept;

    SurfaceLayout m_layout;
    PixelBuffer m_own;             // empty while it borrows
    std::byte* m_pixels = nullptr; // a guard band lies before them and one behind
};

// Converts `samples.size()` pixels at `pixels` (of a surface in `format`) to samples. Floats are
// limited to 0 to 1 and rounded to nearest; one that is not a number reads as 0.
void LoadSamples(const std::byte* pixels, SurfaceFormat format, bool wantPremultiplied,
                 std::span<Sample> samples) noexcept;

// The opposite way; `arePremultiplied` says what `samples` holds.
void StoreSamples(std::byte* pixels, SurfaceFormat format, bool arePremultiplied,
                  std::span<const Sample> samples) noexcept;

} // namespace GlazelHost
