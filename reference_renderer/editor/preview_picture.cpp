#include "reference_renderer/editor/preview_picture.h"

#include "contract/entry_points.h"
#include "reference_renderer/core/colour_math.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace ReferenceRenderer
{

namespace
{

class ByteRows final : public PixelRows
{
public:
    ByteRows(const std::byte* pixels, PixelSize size) noexcept : m_pixels(pixels), m_size(size) {}

    std::size_t Width() const noexcept override { return m_size.width; }
    std::size_t Height() const noexcept override { return m_size.height; }
    void ReadRow(std::size_t row, float* floats) const noexcept override
    {
        const std::byte* const from = m_pixels + row * m_size.width * kChannels;
        std::transform(from, from + m_size.width * kChannels, floats,
                       [](std::byte code) { return static_cast<float>(code); });
    }

private:
    const std::byte* m_pixels;
    PixelSize m_size;
};

class FloatRows final : public PixelRows
{
public:
    FloatRows(const std::byte* pixels, PixelSize size) noexcept : m_pixels(pixels), m_size(size) {}

    std::size_t Width() const noexcept override { return m_size.width; }
    std::size_t Height() const noexcept override { return m_size.height; }
    void ReadRow(std::size_t row, float* floats) const noexcept override
    {
        const std::size_t count = m_size.width * kChannels;
        std::memcpy(floats, m_pixels + row * count * sizeof(float), count * sizeof(float));
        std::transform(floats, floats + count, floats, Finite<float>);
    }

private:
    const std::byte* m_pixels;
    PixelSize m_size;
};

class ByteSink final : public PixelSink
{
public:
    ByteSink(std::byte* pixels, std::size_t width) noexcept : m_pixels(pixels), m_width(width) {}

    void WriteRow(std::size_t row, const float* floats) noexcept override
    {
        std::transform(floats, floats + m_width * kChannels, m_pixels + row * m_width * kChannels,
                       [](float code) { return static_cast<std::byte>(code + 0.5F); });
    }

private:
    std::byte* m_pixels;
    std::size_t m_width;
};

class FloatSink final : public PixelSink
{
public:
    FloatSink(std::byte* pixels, std::size_t width, bool linear) noexcept
        : m_pixels(pixels), m_width(width), m_linear(linear)
    {
    }

    void WriteRow(std::size_t row, const float* floats) noexcept override
    {
        std::byte* target = m_pixels + row * m_width * kChannels * sizeof(float);
        for (std::size_t i = 0; i < m_width * kChannels; ++i, target += sizeof(float))
        {
            const bool colour = i % kChannels != kChannels - 1;
            const float mean = Finite(floats[i]); // sums of the largest floats may overflow
            const float value = m_linear && colour ? EncodeSrgb(mean) : mean;
            std::memcpy(target, &value, sizeof value);
        }
    }

private:
    std::byte* m_pixels;
    std::size_t m_width;
    bool m_linear;
};

void RoundRow(const float* values, std::byte* target, std::size_t width) noexcept
{
    std::transform(values, values + width * kChannels, target,
                   [](float value) { return static_cast<std::byte>(Code8(value)); });
}

// Display floats through a look to 8 bits, in pieces that stay in the nearest cache.
void GradeFloatRow(const PreparedLook& look, const std::byte* source, std::byte* target,
                   std::size_t width)
{
    constexpr std::size_t kPiece = 256; // pixels
    std::array<float, kPiece * kChannels> piece;
    for (std::size_t done = 0; done < width; done += kPiece)
    {
        const std::size_t count = std::min(kPiece, width - done);
        look.RowFloat(false)(look, source + done * kChannels * sizeof(float),
                             reinterpret_cast<std::byte*>(piece.data()), count);
        RoundRow(piece.data(), target + done * kChannels, count);
    }
}

bool IsReadable(const FrameBufferDesc* preview) noexcept
{
    FrameJob job; // the renderer's own idea of a frame
    return DescribeFrame(preview, preview, nullptr, 0, job) == RendererAPI::kFrameRendered;
}

float UsableAspect(float aspect) noexcept
{
    constexpr float kWidest = 16.0F; // of any format's pixels, and far beyond
    return aspect >= 1.0F / kWidest && aspect <= kWidest ? aspect : 1.0F;
}

PixelSize CoarseSize(PixelSize fine) noexcept
{
    const std::size_t pixels = fine.width * fine.height;
    if (pixels <= kMostCoarsePixels)
    {
        return fine;
    }
    const double scale =
        std::sqrt(static_cast<double>(kMostCoarsePixels) / static_cast<double>(pixels));
    const auto length = [scale](std::size_t full) {
        const auto scaled = static_cast<std::size_t>(static_cast<double>(full) * scale);
        return std::max<std::size_t>(scaled, 1);
    };
    const std::size_t width = std::min(length(fine.width), kMostCoarsePixels);
    return {width, std::min(length(fine.height), kMostCoarsePixels / width)};
}

} // namespace

PreviewPicture::PreviewPicture(const FrameBufferDesc* preview, bool linear)
{
    if (!IsReadable(preview))
    {
        return;
    }
    const std::size_t pixelBytes = BytesPerPixel(preview->format);
    const std::size_t rowBytes = preview->width * pixelBytes;
    m_pixels.resize(rowBytes * preview->height);
    for (std::size_t row = 0; row < preview->height; ++row)
    {
        std::memcpy(m_pixels.data() + row * rowBytes,
                    static_cast<const std::byte*>(preview->pixels) + row * preview->RowBytes(),
                    rowBytes);
    }
    m_format = preview->format;
    m_linear = linear && m_format == kFormatBgraFloat;
    m_aspect = UsableAspect(preview->aspect);
    m_size = {preview->width, preview->height};
}

void PreviewPicture::ReadRow(std::size_t row, std::size_t column, std::size_t step,
                             std::size_t count, std::byte* pixels) const noexcept
{
    const std::size_t bytes = PixelBytes();
    const std::byte* from = m_pixels.data() + (row * m_size.width + column) * bytes;
    if (step == 1)
    {
        std::memcpy(pixels, from, count * bytes);
    }
    for (std::size_t i = 0; step != 1 && i < count; ++i, from += step * bytes)
    {
        std::memcpy(pixels + i * bytes, from, bytes);
    }
    for (std::size_t i = 0; m_linear && i < count * kChannels; ++i)
    {
        if (i % kChannels != kChannels - 1)
        {
            float value = 0.0F;
            std::memcpy(&value, pixels + i * sizeof value, sizeof value);
            value = EncodeSrgb(Finite(value));
            std::memcpy(pixels + i * sizeof value, &value, sizeof value);
        }
    }
}

void PreviewPicture::WriteCodes(const PreparedLook* look, const std::byte* pixels, std::byte* codes,
                                std::size_t count) const noexcept
{
    if (look != nullptr)
    {
        RowToCodes (*look)(*look, pixels, codes, count);
    }
    else if (m_format == kFormatBgra8)
    {
        std::memcpy(codes, pixels, count * kChannels);
    }
    else
    {
        RoundRow(reinterpret_cast<const float*>(pixels), codes, count);
    }
}

Rgb PreviewPicture::ValueAt(std::size_t column, std::size_t row,
                            const PreparedLook* look) const noexcept
{
    const std::byte* const pixel = m_pixels.data() + (row * m_size.width + column) * PixelBytes();
    std::array<float, kChannels> floats{};
    if (m_format == kFormatBgra8)
    {
        std::array<std::byte, kChannels> codes{};
        WriteCodes(look, pixel, codes.data(), 1);
        std::transform(codes.begin(), codes.end(), floats.begin(),
                       [](std::byte code) { return static_cast<float>(code) / 255.0F; });
    }
    else
    {
        std::memcpy(floats.data(), pixel, sizeof floats);
        if (look != nullptr)
        {
            auto* const bytes = reinterpret_cast<std::byte*>(floats.data());
            look->RowFloat(m_linear)(*look, bytes, bytes, 1);
        }
    }
    return {floats[2], floats[1], floats[0]};
}

double PreviewPicture::Shape() const noexcept
{
    return static_cast<double>(m_size.width) * m_aspect / static_cast<double>(m_size.height);
}

void PreviewPicture::Scale(PixelSize whole, const PixelPart& part)
{
    if (IsEmpty() || (whole == m_whole && part == m_part))
    {
        return;
    }
    ScaledCopy fine = Scaled(m_pixels.data(), m_size, whole, part, m_linear);
    ScaledCopy coarse;
    if (const PixelSize smaller = CoarseSize(part.size); smaller != part.size)
    {
        coarse = Scaled(fine.pixels.data(), part.size, smaller, {0, 0, smaller}, false);
    }
    m_fine = std::move(fine);
    m_coarse = std::move(coarse);
    m_whole = whole;
    m_part = part;
}

PreviewPicture PreviewPicture::Small(PixelSize size) const
{
    PreviewPicture small(nullptr, false);
    if (!IsEmpty())
    {
        small.m_format = m_format;
        small.m_fine = Scaled(m_pixels.data(), m_size, size, {0, 0, size}, m_linear);
        small.m_size = small.m_whole = size;
        small.m_part = {0, 0, size};
        small.m_pixels = small.m_fine.pixels;
    }
    return small;
}

PreviewPicture::ScaledCopy PreviewPicture::Scaled(const std::byte* pixels, PixelSize from,
                                                  PixelSize whole, const PixelPart& part,
                                                  bool linear) const
{
    const PixelSize to = part.size;
    ScaledCopy copy{to, std::vector<std::byte>(to.width * to.height * BytesPerPixel(m_format))};
    if (m_format == kFormatBgra8)
    {
        ByteSink sink(copy.pixels.data(), to.width);
        ScaleByArea(ByteRows(pixels, from), whole, part, sink);
    }
    else
    {
        FloatSink sink(copy.pixels.data(), to.width, linear);
        ScaleByArea(FloatRows(pixels, from), whole, part, sink);
    }
    return copy;
}

void PreviewPicture::WriteOriginal(std::span<std::uint32_t> pixels) const noexcept
{
    WriteCodes(nullptr, m_fine.pixels.data(), reinterpret_cast<std::byte*>(pixels.data()),
               m_fine.size.width * m_fine.size.height);
}

RowFunction* PreviewPicture::RowToCodes(const PreparedLook& look) const noexcept
{
    return m_format == kFormatBgra8 ? look.Row8() : GradeFloatRow;
}

FrameJob PreviewPicture::GradingJob(const PreparedLook& look, std::span<std::uint32_t> pixels,
                                    Detail detail) const noexcept
{
    const ScaledCopy& copy = Copy(detail);
    FrameJob job;
    job.source = copy.pixels.data();
    job.target = reinterpret_cast<std::byte*>(pixels.data());
    job.sourcePitch = copy.size.width * BytesPerPixel(m_format);
    job.targetPitch = copy.size.width * kChannels;
    job.width = copy.size.width;
    job.height = copy.size.height;
    job.pixelBytes = BytesPerPixel(m_format);
    job.look = &look;
    job.row = RowToCodes(look);
    return job;
}

} // namespace ReferenceRenderer
