#include "tools/glazelhost/media/jpeg_writer.h"

#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/pixel_convert.h"

#include <utility>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#define STBI_WRITE_NO_STDIO
#include <stb/stb_image_write.h>

namespace GlazelHost
{

namespace
{

constexpr PixelLayout kRgb8{FileSample::Bits8, 3, 0, 1, 2, -1, false};

// Called by C code through which no exception may pass: the bytes are collected, and running out of
// memory is remembered.
struct Collected
{
    std::vector<std::byte> bytes;
    bool full = false;
};

void Collect(void* context, void* data, int size) noexcept
{
    auto& collected = *static_cast<Collected*>(context);
    try
    {
        const auto* const first = static_cast<const std::byte*>(data);
        collected.bytes.insert(collected.bytes.end(), first, first + size);
    }
    catch (const std::exception&)
    {
        collected.full = true;
    }
}

} // namespace

std::vector<std::byte> JpegOf(const Image& image, int quality, const std::string& name)
{
    const std::size_t rowBytes = static_cast<std::size_t>(image.width) * kRgb8.PixelBytes();
    std::vector<std::byte> rgb(rowBytes * static_cast<std::size_t>(image.height));
    for (std::size_t y = 0; y < static_cast<std::size_t>(image.height); ++y)
    {
        PackRow(kRgb8, image.pixels.data() + y * image.RowBytes(), image.width, image.type,
                rgb.data() + y * rowBytes);
    }
    Collected collected;
    const int written = stbi_write_jpg_to_func(Collect, &collected, image.width, image.height,
                                               kRgb8.channels, rgb.data(), quality);
    if (written == 0 || collected.full)
    {
        throw HostError(name, "it cannot be encoded: there is not enough memory",
                        "write a smaller picture");
    }
    return std::move(collected.bytes);
}

} // namespace GlazelHost
