#include "tools/glazelhost/media/zlib_block.h"

#include <cstdlib>
#include <limits>
#include <memory>
#include <new>

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_PNG // the packing is PNG's
#define STBI_NO_STDIO
#include <stb/stb_image.h>
#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#define STBI_WRITE_NO_STDIO
#include <stb/stb_image_write.h>

namespace GlazelHost
{

std::optional<std::vector<std::byte>> Unpacked(std::span<const std::byte> block)
{
    constexpr std::size_t kFirstTry = std::size_t{1} << 16;
    constexpr std::size_t kMost = std::size_t{1} << 24;
    if (block.size() > kMost)
    {
        return std::nullopt;
    }
    // Room that does not suffice and a damaged block look alike.
    for (std::size_t room = kFirstTry; room <= kMost; room *= 16)
    {
        const auto bytes = std::make_unique_for_overwrite<std::byte[]>(room);
        const int count = stbi_zlib_decode_buffer(
            reinterpret_cast<char*>(bytes.get()), static_cast<int>(room),
            reinterpret_cast<const char*>(block.data()), static_cast<int>(block.size()));
        if (count >= 0)
        {
            return std::vector<std::byte>(bytes.get(), bytes.get() + count);
        }
    }
    return std::nullopt;
}

std::vector<std::byte> Packed(std::span<const std::byte> bytes)
{
    constexpr int kThoroughness = 8;                         // stb's own for pictures
    std::vector<std::byte> copy(bytes.begin(), bytes.end()); // it takes no const
    int count = 0;
    const std::unique_ptr<unsigned char, decltype(&std::free)> packed(
        stbi_zlib_compress(reinterpret_cast<unsigned char*>(copy.data()),
                           static_cast<int>(copy.size()), &count, kThoroughness),
        &std::free);
    if (!packed)
    {
        throw std::bad_alloc();
    }
    const auto* const first = reinterpret_cast<const std::byte*>(packed.get());
    return {first, first + count};
}

} // namespace GlazelHost
