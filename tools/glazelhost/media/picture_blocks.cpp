#include "tools/glazelhost/media/picture_blocks.h"

#include "tools/glazelhost/media/file_kind.h"

#include <cstring>

namespace GlazelHost
{

namespace
{

using namespace std::string_view_literals;

Bytes ExifOfJpeg(Bytes file) noexcept
{
    constexpr std::uint32_t kApplication1 = 0xE1;
    constexpr std::string_view kExif = "Exif\0\0"sv;
    for (auto segment = JpegSegmentAt(file, kFirstJpegSegment); segment;
         segment = JpegSegmentAt(file, segment->end))
    {
        if (segment->name == kApplication1 && BeginsWith(segment->contents, kExif))
        {
            return segment->contents.subspan(kExif.size());
        }
    }
    return {};
}

Bytes ExifOfPng(Bytes file) noexcept
{
    for (auto chunk = PngChunkAt(file, kFirstPngChunk); chunk; chunk = PngChunkAt(file, chunk->end))
    {
        if (chunk->name == BlockName("eXIf"))
        {
            return chunk->contents;
        }
    }
    return {};
}

} // namespace

std::optional<PictureBlock> PngChunkAt(Bytes file, std::size_t place) noexcept
{
    constexpr std::size_t kHead = 8; // length and name
    constexpr std::size_t kSum = 4;
    if (place > file.size() || file.size() - place < kHead + kSum)
    {
        return std::nullopt;
    }
    const std::size_t length = BigEndianAt(file, place, 4);
    if (length > file.size() - place - kHead - kSum)
    {
        return std::nullopt;
    }
    return PictureBlock{BigEndianAt(file, place + 4, 4), file.subspan(place + kHead, length),
                        place + kHead + length + kSum};
}

std::optional<PictureBlock> JpegSegmentAt(Bytes file, std::size_t place) noexcept
{
    constexpr std::uint32_t kMark = 0xFF;
    constexpr std::uint32_t kStartOfScan = 0xDA;
    constexpr std::size_t kMarker = 2;
    constexpr std::size_t kLength = 2;
    while (BigEndianAt(file, place, 2) == (kMark << 8 | kMark)) // a mark may stand repeatedly
    {
        ++place;
    }
    if (BigEndianAt(file, place, 1) != kMark)
    {
        return std::nullopt;
    }
    const std::uint32_t name = BigEndianAt(file, place + 1, 1);
    const std::size_t length = BigEndianAt(file, place + kMarker, kLength);
    if (name == kStartOfScan || length < kLength || length > file.size() - place - kMarker)
    {
        return std::nullopt;
    }
    return PictureBlock{name, file.subspan(place + kMarker + kLength, length - kLength),
                        place + kMarker + length};
}

std::uint32_t BigEndianAt(Bytes bytes, std::size_t place, std::size_t count) noexcept
{
    if (place > bytes.size() || count > bytes.size() - place)
    {
        return 0;
    }
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < count; ++i)
    {
        value = value << 8 | std::to_integer<std::uint32_t>(bytes[place + i]);
    }
    return value;
}

bool BeginsWith(Bytes bytes, std::string_view text) noexcept
{
    return bytes.size() >= text.size() && std::memcmp(bytes.data(), text.data(), text.size()) == 0;
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

} // namespace GlazelHost
