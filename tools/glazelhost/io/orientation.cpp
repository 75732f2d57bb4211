#include "tools/glazelhost/io/orientation.h"

#include "tools/glazelhost/io/file_kind.h"
#include "tools/glazelhost/io/pixel_convert.h"
#include "tools/glazelhost/io/tiff_directory.h"

#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

namespace
{

using namespace std::string_view_literals;

constexpr int kUpright = 1;

using Bytes = std::span<const std::byte>;

bool Begins(Bytes bytes, std::string_view text) noexcept
{
    return bytes.size() >= text.size() && std::memcmp(bytes.data(), text.data(), text.size()) == 0;
}

// Caller has checked that the bytes are there.
std::size_t BigEndian(Bytes bytes, std::size_t place, std::size_t count) noexcept
{
    std::size_t value = 0;
    for (std::size_t i = 0; i < count; ++i)
    {
        value = value << 8 | std::to_integer<std::size_t>(bytes[place + i]);
    }
    return value;
}

// Segments follow each other, each with its length, up to the scan. The EXIF block is a TIFF.
Bytes ExifOfJpeg(Bytes file) noexcept
{
    constexpr std::size_t kApplication1 = 0xE1;
    constexpr std::size_t kStartOfScan = 0xDA;
    constexpr std::string_view kExif = "Exif\0\0"sv;
    for (std::size_t place = 2; place + 4 <= file.size() && file[place] == std::byte{0xFF};)
    {
        const std::size_t marker = BigEndian(file, place + 1, 1);
        const std::size_t length = BigEndian(file, place + 2, 2);
        if (marker == kStartOfScan || length < 2 || length > file.size() - place - 2)
        {
            break;
        }
        const Bytes contents = file.subspan(place + 4, length - 2);
        if (marker == kApplication1 && Begins(contents, kExif))
        {
            return contents.subspan(kExif.size());
        }
        place += 2 + length;
    }
    return {};
}

// Chunks follow each other: length, name, contents, a sum of four bytes.
Bytes ExifOfPng(Bytes file) noexcept
{
    constexpr std::size_t kSignature = 8;
    constexpr std::size_t kHead = 8;
    constexpr std::size_t kSum = 4;
    for (std::size_t place = kSignature; place + kHead <= file.size();)
    {
        const std::size_t length = BigEndian(file, place, 4);
        const Bytes rest = file.subspan(place + kHead);
        if (length > rest.size() || rest.size() - length < kSum)
        {
            break;
        }
        if (Begins(file.subspan(place + 4), "eXIf"sv))
        {
            return rest.first(length);
        }
        place += kHead + length + kSum;
    }
    return {};
}

Bytes DirectoryBytes(Bytes file) noexcept
{
    switch (KindFromContent(file).value_or(FileKind::Bmp))
    {
    case FileKind::Jpeg:
        return ExifOfJpeg(file);
    case FileKind::Png:
        return ExifOfPng(file);
    case FileKind::Tiff:
        return file;
    default:
        return {};
    }
}

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
