// The picture that is graded in the editor: a copy of the caller's, a scaled copy of the size in
// which it is shown, a coarser one while a slider moves, and the row work that grades these.
// Pure: no windows.h. Tests: tests/reference_renderer/editor/preview_picture_test.cpp.
#pragma once

#include "contract/frame_buffer_desc.h"
#include "reference_renderer/core/frame_render.h"
#include "reference_renderer/editor/area_average.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ReferenceRenderer
{

// How much of a picture there is to grade.
enum class Detail
{
    Fine,   // every pixel that is shown
    Coarse, // few enough for any window and any look
};

inline constexpr std::size_t kMostCoarsePixels = 147456; // 512 x 288

// Window thread.
class PreviewPicture
{
public:
    // Copies the pixels: the caller may change them from then on. `linear` counts for floats only,
    // as in RenderFrame. A picture that cannot be read (no pixels, another format) leaves this
    // empty. Throws std::bad_alloc.
    PreviewPicture(const FrameBufferDesc* preview, bool linear);

    bool IsEmpty() const noexcept { return m_size.width == 0; }
    // Of the caller's picture.
    PixelSize Size() const noexcept { return m_size; }
    bool IsLinear() const noexcept { return m_linear; }

    // Pixels of the caller's picture itself, none averaged with another, with the encoding in which
    // they are shown: of row `row` the `count` from column `column` on, each `step`-th. `pixels`
    // has PixelBytes for each. Any thread.
    std::size_t PixelBytes() const noexcept { return BytesPerPixel(m_format); }
    void ReadRow(std::size_t row, std::size_t column, std::size_t step, std::size_t count,
                 std::byte* pixels) const noexcept;
    // Such pixels as 8 bits of blue, green, red and alpha each, through `look` unless that is null.
    // Any thread.
    void WriteCodes(const PreparedLook* look, const std::byte* pixels, std::byte* codes,
                    std::size_t count) const noexcept;
    // Red, green and blue of one of the caller's pixels as the renderer has them: floats as they
    // are, in linear light too, 8-bit codes as shares of 255. Through `look` unless that is null.
    Rgb ValueAt(std::size_t column, std::size_t row, const PreparedLook* look) const noexcept;

    // Width over height as a display with square pixels shows it.
    double Shape() const noexcept;

    // Makes the scaled copies: of a part of the picture when that had the size `whole`. Those that
    // are of that part already stay. Linear light is averaged as such and then encoded. Throws
    // std::bad_alloc, and keeps the copies that it had.
    void Scale(PixelSize whole, const PixelPart& part);
    void Scale(PixelSize whole) { Scale(whole, {0, 0, whole}); }
    // The coarse copy has at most kMostCoarsePixels; it is the fine one when that is as small.
    PixelSize ScaledSize(Detail detail = Detail::Fine) const noexcept { return Copy(detail).size; }
    bool HasCoarse() const noexcept { return !m_coarse.pixels.empty(); }

    // A picture of its own that is this one in a small size, in which it is scaled already.
    PreviewPicture Small(PixelSize size) const;

    // Pixels to show: 8 bits of blue, green, red and alpha each, ScaledSize of them, the top row
    // first, without padding. The first writes the fine copy as it is, the other describes the work
    // that writes a copy through `look`.
    void WriteOriginal(std::span<std::uint32_t> pixels) const noexcept;
    FrameJob GradingJob(const PreparedLook& look, std::span<std::uint32_t> pixels,
                        Detail detail = Detail::Fine) const noexcept;

private:
    struct ScaledCopy
    {
        PixelSize size;
        std::vector<std::byte> pixels; // as m_format says, but never linear
    };
    const ScaledCopy& Copy(Detail detail) const noexcept
    {
        return detail == Detail::Coarse && HasCoarse() ? m_coarse : m_fine;
    }
    RowFunction* RowToCodes(const PreparedLook& look) const noexcept;
    ScaledCopy Scaled(const std::byte* pixels, PixelSize from, PixelSize whole,
                      const PixelPart& part, bool linear) const;

    std::uint32_t m_format = 0;
    bool m_linear = false;
    float m_aspect = 1.0F;
    PixelSize m_size;
    std::vector<std::byte> m_pixels; // rows without padding
    PixelSize m_whole;               // what m_fine is a part of, and which
    PixelPart m_part;
    ScaledCopy m_fine;
    ScaledCopy m_coarse; // empty when the fine one is small enough
};

} // namespace ReferenceRenderer
