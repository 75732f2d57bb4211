#include "tools/glazelhost/media/orientation.h"

#include "tools/glazelhost/media/picture_blocks.h"
#include "tools/glazelhost/media/pixel_convert.h"
#include "tools/glazelhost/media/tiff_directory.h"

#include <cstdint>
#include <cstring>
#include <utility>

namespace GlazelHost
{

namespace
{

constexpr int kUpright = 1;

// Where the pixel of the upright picture stands in the stored one of `width` x `height`.
std::pair<int, int> StoredPlace(int orientation, int x, int y, int width, int height) noexcept
{
    switch (orientation)
    {
    case 2:
        return {width - 1 - x, y};
    case 3:
        return {width - 1 - x, height - 1 - y};
    case 4:
        return {x, height - 1 - y};
    case 5:
        return {y, x};
    case 6:
        return {y, height - 1 - x};
    case 7:
        return {width - 1 - y, height - 1 - x};
    case 8:
        return {width - 1 - y, x};
    default:
        return {x, y};
    }
}

} // namespace

int OrientationOf(std::span<const std::byte> file) noexcept
{
    constexpr std::uint16_t kOrientationTag = 274;
    constexpr std::uint32_t kLast = 8;
    const auto directory = TiffDirectory::Read(DirectoryBytes(file));
    const std::uint32_t stated = directory ? directory->Number(kOrientationTag).value_or(1U) : 1U;
    return stated >= 1 && stated <= kLast ? static_cast<int>(stated) : kUpright;
}

void MakeUpright(int orientation, Image& image)
{
    if (orientation == kUpright)
    {
        return;
    }
    const bool swaps = SwapsSides(orientation);
    Image upright;
    Reshape(upright, swaps ? image.height : image.width, swaps ? image.width : image.height,
            image.type, image.hasAlpha);
    const std::size_t pixelBytes = image.PixelBytes();
    std::byte* target = upright.pixels.data();
    for (int y = 0; y < upright.height; ++y)
    {
        for (int x = 0; x < upright.width; ++x, target += pixelBytes)
        {
            const auto [fromX, fromY] = StoredPlace(orientation, x, y, image.width, image.height);
            const std::size_t pixel =
                static_cast<std::size_t>(fromY) * static_cast<std::size_t>(image.width) +
                static_cast<std::size_t>(fromX);
            std::memcpy(target, image.pixels.data() + pixel * pixelBytes, pixelBytes);
        }
    }
    image = std::move(upright);
}

} // namespace GlazelHost
