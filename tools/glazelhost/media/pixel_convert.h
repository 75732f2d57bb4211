// Conversions between the channels of a file and those of an Image.
// Pure: no windows.h. Tests: tests/tools/glazelhost/media/pixel_convert_test.cpp.
#pragma once

#include "tools/glazelhost/media/frame_io.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace GlazelHost
{

// The nearest code, halves upwards; values outside 0 to 1 become the nearest end, NaN becomes 0.
// Exact: the product of a float and 255 or 65535 fits a double.
inline std::uint8_t ByteOf(float value) noexcept
{
    const double code = static_cast<double>(value) * 255.0 + 0.5;
    return static_cast<std::uint8_t>(code > 0.0 ? (code < 255.0 ? code : 255.0) : 0.0);
}
inline std::uint16_t WordOf(float value) noexcept
{
    const double code = static_cast<double>(value) * 65535.0 + 0.5;
    return static_cast<std::uint16_t>(code > 0.0 ? (code < 65535.0 ? code : 65535.0) : 0.0);
}
// The float nearest to code / 255 and code / 65535.
inline float FloatOf(std::uint8_t code) noexcept
{
    return static_cast<float>(code) / 255.0F;
}
inline float FloatOf(std::uint16_t code) noexcept
{
    return static_cast<float>(code) / 65535.0F;
}
// Between 8 and 16 bits; to 8 bits the nearest code.
inline std::uint8_t ByteOf(std::uint16_t code) noexcept
{
    return static_cast<std::uint8_t>((code * 255U + 32767U) / 65535U);
}
inline std::uint16_t WordOf(std::uint8_t code) noexcept
{
    return static_cast<std::uint16_t>(code * 257U);
}

// The value of a float of 16 bits: a sign, five of the exponent, ten of the fraction.
float FloatOfHalf(std::uint16_t bits) noexcept;

// How a channel is stored in a picture file.
enum class FileSample
{
    Bits8,
    Bits16, // of this machine's byte order
    Float32,
    Float16, // only read
};

// One pixel of a picture file: equal channels, one after the other, without gaps.
struct PixelLayout
{
    FileSample sample = FileSample::Bits8;
    int channels = 4;
    int red = 2; // index of the channel; grey pictures have one index for all three
    int green = 1;
    int blue = 0;
    int alpha = 3; // -1: none, the pixel is opaque
    bool premultiplied = false;

    bool HasAlpha() const noexcept { return alpha >= 0; }
    int BitsPerChannel() const noexcept;
    std::size_t PixelBytes() const noexcept;

    bool operator==(const PixelLayout&) const = default;
};

// Converts `width` pixels of a file into pixels of an Image of the given type. Premultiplied
// colours are divided by their alpha; where that is 0 they become 0.
void UnpackRow(const PixelLayout& layout, const std::byte* source, int width, SampleType type,
               std::byte* target) noexcept;

// Converts `width` pixels of an Image into pixels of a file; the layout is not premultiplied and
// not grey.
void PackRow(const PixelLayout& layout, const std::byte* source, int width, SampleType type,
             std::byte* target) noexcept;

// Turns the two bytes of each 16-bit channel round.
void SwapWords(std::span<std::byte> words) noexcept;

// Gives `image` a size and type, keeping its memory where that is enough; the pixels are arbitrary.
void Reshape(Image& image, int width, int height, SampleType type, bool hasAlpha);

// Throws HostError, which names `what`, unless both sides are 1 to kLargestSide.
void CheckSize(const std::string& what, std::int64_t width, std::int64_t height);

} // namespace GlazelHost
