// Small picture files for tests, made of chosen blocks, and without pixels.
#pragma once

#include "support/crc32.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace GlazelHost
{

inline std::string BigEndianText(std::size_t value, int bytes)
{
    std::string text;
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
    {
        text += static_cast<char>(value >> shift);
    }
    return text;
}

struct SampleBlock
{
    std::string name; // of a JPEG segment one letter: the marker's number
    std::string contents;
};

inline std::string PngChunk(const SampleBlock& chunk)
{
    const std::string checked = chunk.name + chunk.contents;
    return BigEndianText(chunk.contents.size(), 4) + checked +
           BigEndianText(Crc32(std::as_bytes(std::span(checked))), 4);
}

// The chunks stand between header and pixels.
inline std::string SamplePng(const std::vector<SampleBlock>& chunks)
{
    std::string file = "\x89PNG\r\n\x1A\n" + PngChunk({"IHDR", std::string(13, '\1')});
    for (const SampleBlock& chunk : chunks)
    {
        file += PngChunk(chunk);
    }
    return file + PngChunk({"IDAT", "pixels"}) + PngChunk({"IEND", ""});
}

inline std::string SampleJpeg(const std::vector<SampleBlock>& segments)
{
    std::string file = "\xFF\xD8";
    for (const SampleBlock& segment : segments)
    {
        file += "\xFF" + segment.name + BigEndianText(segment.contents.size() + 2, 2) +
                segment.contents;
    }
    return file + "\xFF\xDA" + BigEndianText(8, 2) + "facts, and the pixels";
}

// In a block of its own size, so that a look outside it is noticed.
inline std::vector<std::byte> BytesOfText(const std::string& text)
{
    const auto bytes = std::as_bytes(std::span(text));
    return {bytes.begin(), bytes.end()};
}

} // namespace GlazelHost
