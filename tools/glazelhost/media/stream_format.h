// The raw streams that are read and written, by name: bare pixels, rows top-down without padding,
// frame after frame, straight alpha, little-endian.
// Pure: no windows.h. Tests: tests/tools/glazelhost/media/raw_stream_test.cpp.
#pragma once

#include "tools/glazelhost/media/pixel_convert.h"

#include <cstddef>
#include <optional>
#include <string_view>

namespace GlazelHost
{

enum class StreamFormat
{
    Bgra8,     // blue, green, red, alpha; 8 bits each
    Bgra16,    // the same with 16 bits each
    GbraFloat, // a plane each of green, blue, red and alpha; 32-bit floats, 0.0 to 1.0 nominal
    Gbr8,      // a plane each of green, blue and red, opaque; 8 bits each
    GbrFloat,  // the same of 32-bit floats
    Ycbcr16, // a plane each of luma and its blue and red difference; 16 bits, limited range, opaque
};

struct StreamFormatRow
{
    StreamFormat format;
    const char* name;        // on the command line
    const char* description; // for the user
    FileSample sample;
    int planes;           // 0: channels lie side by side
    bool isYcbcr = false; // else RGB
};

inline constexpr StreamFormatRow kStreamFormats[] = {
    {StreamFormat::Bgra8, "bgra8", "raw BGRA of 8 bits", FileSample::Bits8, 0},
    {StreamFormat::Bgra16, "bgra16", "raw BGRA of 16 bits", FileSample::Bits16, 0},
    {StreamFormat::GbraFloat, "gbraf32", "raw GBRA planes of 32-bit floats", FileSample::Float32,
     4},
    {StreamFormat::Gbr8, "gbr8", "raw GBR planes of 8 bits", FileSample::Bits8, 3},
    {StreamFormat::GbrFloat, "gbrf32", "raw GBR planes of 32-bit floats", FileSample::Float32, 3},
    {StreamFormat::Ycbcr16, "yuv16", "raw YCbCr planes of 16 bits", FileSample::Bits16, 3, true},
};

constexpr const StreamFormatRow& RowOf(StreamFormat format) noexcept
{
    return kStreamFormats[static_cast<std::size_t>(format)];
}

// None for a word that is no name.
constexpr std::optional<StreamFormat> StreamFormatFromName(std::string_view word) noexcept
{
    for (const StreamFormatRow& row : kStreamFormats)
    {
        if (word == row.name)
        {
            return row.format;
        }
    }
    return std::nullopt;
}

} // namespace GlazelHost
