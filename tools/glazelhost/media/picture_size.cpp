#include "tools/glazelhost/media/picture_size.h"

#include "tools/glazelhost/media/file_kind.h"

#include <cstdlib>

namespace GlazelHost
{

namespace
{

// Bytes by place; every read is checked.
class FileBytes
{
public:
    explicit FileBytes(std::span<const std::byte> bytes) noexcept : m_bytes(bytes) {}

    bool Has(std::size_t place, std::size_t count) const noexcept
    {
        return place <= m_bytes.size() && count <= m_bytes.size() - place;
    }
    // Caller has checked that the bytes are there.
    std::uint32_t BigEndian(std::size_t place, std::size_t count) const noexcept
    {
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < count; ++i)
        {
            value = value << 8 | std::to_integer<std::uint32_t>(m_bytes[place + i]);
        }
        return value;
    }
    std::uint32_t LittleEndian(std::size_t place, std::size_t count) const noexcept
    {
        std::uint32_t value = 0;
        for (std::size_t i = count; i > 0; --i)
        {
            value = value << 8 | std::to_integer<std::uint32_t>(m_bytes[place + i - 1]);
        }
        return value;
    }

private:
    std::span<const std::byte> m_bytes;
};

// The first chunk, IHDR, begins with width and height.
std::optional<PictureSize> SizeOfPng(const FileBytes& file) noexcept
{
    constexpr std::size_t kWidth = 16;
    if (!file.Has(kWidth, 8))
    {
        return std::nullopt;
    }
    return PictureSize{file.BigEndian(kWidth, 4), file.BigEndian(kWidth + 4, 4)};
}

// Old headers of 12 bytes have 16-bit sides, all others 32-bit sides with a sign.
std::optional<PictureSize> SizeOfBmp(const FileBytes& file) noexcept
{
    constexpr std::size_t kInfoHeader = 14;
    constexpr std::uint32_t kOldHeaderBytes = 12;
    if (!file.Has(kInfoHeader, kOldHeaderBytes))
    {
        return std::nullopt;
    }
    if (file.LittleEndian(kInfoHeader, 4) == kOldHeaderBytes)
    {
        return PictureSize{file.LittleEndian(kInfoHeader + 4, 2),
                           file.LittleEndian(kInfoHeader + 6, 2)};
    }
    const auto side = [&](std::size_t place) {
        return std::abs(std::int64_t{static_cast<std::int32_t>(file.LittleEndian(place, 4))});
    };
    return PictureSize{side(kInfoHeader + 4), side(kInfoHeader + 8)};
}

// The start-of-frame segments are 0xC0 to 0xCF without the tables 0xC4, 0xC8 and 0xCC.
bool IsFrameMarker(std::uint32_t marker) noexcept
{
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

// Segments follow each other, each with its length, up to the frame's.
std::optional<PictureSize> SizeOfJpeg(const FileBytes& file) noexcept
{
    constexpr std::uint32_t kFill = 0xFF;
    constexpr std::uint32_t kStartOfScan = 0xDA;
    std::size_t place = 2;
    while (file.Has(place, 9) && file.BigEndian(place, 1) == kFill)
    {
        const std::uint32_t marker = file.BigEndian(place + 1, 1);
        if (marker == kFill)
        {
            ++place;
            continue;
        }
        if (IsFrameMarker(marker))
        {
            return PictureSize{file.BigEndian(place + 7, 2), file.BigEndian(place + 5, 2)};
        }
        if (marker == kStartOfScan)
        {
            break;
        }
        place += 2 + file.BigEndian(place + 2, 2);
    }
    return std::nullopt;
}

} // namespace

std::optional<PictureSize> SizeFromHeader(std::span<const std::byte> file) noexcept
{
    const FileBytes bytes(file);
    const auto kind = KindFromContent(file);
    if (kind == FileKind::Png)
    {
        return SizeOfPng(bytes);
    }
    if (kind == FileKind::Jpeg)
    {
        return SizeOfJpeg(bytes);
    }
    return kind == FileKind::Bmp ? SizeOfBmp(bytes) : std::nullopt;
}

} // namespace GlazelHost
