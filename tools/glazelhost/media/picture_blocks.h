// The blocks that PNG and JPEG files are made of. Whatever a file holds, nothing outside it is
// read. Pure: no windows.h. Tests: tests/tools/glazelhost/media/picture_blocks_test.cpp.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace GlazelHost
{

using Bytes = std::span<const std::byte>;

// Looks into the file, which outlives it.
struct PictureBlock
{
    std::uint32_t name = 0; // of a PNG chunk four letters, of a JPEG segment the marker's number
    Bytes contents;
    std::size_t end = 0; // place in the file of the byte behind it
};

constexpr std::uint32_t BlockName(std::string_view letters) noexcept
{
    std::uint32_t name = 0;
    for (const char letter : letters)
    {
        name = name << 8 | static_cast<unsigned char>(letter);
    }
    return name;
}

inline constexpr std::size_t kFirstPngChunk = 8;
inline constexpr std::size_t kFirstJpegSegment = 2;

// The block that begins at `place`; none when it does not lie wholly within the file, and none for
// a JPEG's scan, behind which no segments can be told apart from pixels without decoding.
std::optional<PictureBlock> PngChunkAt(Bytes file, std::size_t place) noexcept;
std::optional<PictureBlock> JpegSegmentAt(Bytes file, std::size_t place) noexcept;

// The number of `count` bytes, the highest first; 0 when they are not all there.
std::uint32_t BigEndianAt(Bytes bytes, std::size_t place, std::size_t count) noexcept;

bool BeginsWith(Bytes bytes, std::string_view text) noexcept;

// The EXIF block of a PNG or JPEG, which is a TIFF without pixels, or the whole of a TIFF. Empty
// for what has none.
Bytes DirectoryBytes(Bytes file) noexcept;

} // namespace GlazelHost
