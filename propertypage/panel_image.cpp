#include "propertypage/panel_image.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>
#include <new>

// A pixel's bytes are moved as one little-endian word.
static_assert(std::endian::native == std::endian::little);

namespace
{

constexpr std::uint32_t kOpaque = 0xFF000000;
constexpr std::size_t kPixelBytes = sizeof(std::uint32_t);

PanelImage EmptyImage(Geometry::Extent size) noexcept
{
    const std::size_t count =
        static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
    return {size, std::unique_ptr<std::uint32_t[]>(new (std::nothrow) std::uint32_t[count])};
}

std::uint32_t OpaquePixel(std::uint8_t red, std::uint8_t green, std::uint8_t blue) noexcept
{
    return kOpaque | std::uint32_t{red} << 16 | std::uint32_t{green} << 8 | blue;
}

std::uint32_t OverPanel(std::uint32_t pixel) noexcept
{
    const auto alpha = static_cast<std::uint8_t>(pixel >> 24);
    const auto blended = [=](int shift) {
        return BlendOverPanel(static_cast<std::uint8_t>(pixel >> shift), alpha);
    };
    return OpaquePixel(blended(16), blended(8), blended(0));
}

// Pixels from `origin` on that stay clear of the one-pixel frame at the far end of the page.
int Visible(std::uint32_t length, int origin, int pageLength) noexcept
{
    const int room = std::max(pageLength - 1 - origin, 0);
    return static_cast<int>(std::min(length, static_cast<std::uint32_t>(room)));
}

} // namespace

PanelImage ImageOf(const ButtonImage& button) noexcept
{
    PanelImage image = EmptyImage(button.size);
    if (image.pixels == nullptr)
    {
        return image;
    }
    if (button.form == StoredForm::Bgra)
    {
        std::memcpy(image.pixels.get(), button.bytes.data(), button.bytes.size());
        return image;
    }
    for (std::size_t pixel = 0; pixel * 3 < button.bytes.size(); ++pixel)
    {
        const auto rgb = button.bytes.subspan(pixel * 3, 3);
        image.pixels[pixel] = OpaquePixel(rgb[0], rgb[1], rgb[2]);
    }
    return image;
}

PanelImage ImageOf(const FrameBufferDesc& thumbnail, Geometry::Extent page) noexcept
{
    const Geometry::Extent size = VisibleThumbnail(thumbnail.width, thumbnail.height, page);
    if (thumbnail.pixels == nullptr || size.width < 1 || size.height < 1)
    {
        return {};
    }
    PanelImage image = EmptyImage(size);
    if (image.pixels == nullptr)
    {
        return image;
    }
    const auto width = static_cast<std::size_t>(size.width);
    const auto* sourceRow = static_cast<const std::byte*>(thumbnail.pixels);
    std::uint32_t* targetRow = image.pixels.get();
    for (int y = 0; y < size.height; ++y)
    {
        // Copied first: the renderer need not align its pixels.
        std::memcpy(targetRow, sourceRow, width * kPixelBytes);
        std::transform(targetRow, targetRow + width, targetRow, OverPanel);
        targetRow += width;
        sourceRow += std::size_t{thumbnail.width} * kPixelBytes;
    }
    return image;
}

Geometry::Extent VisibleThumbnail(std::uint32_t width, std::uint32_t height,
                                  Geometry::Extent page) noexcept
{
    return {Visible(width, kThumbnailOrigin.x, page.width),
            Visible(height, kThumbnailOrigin.y, page.height)};
}
