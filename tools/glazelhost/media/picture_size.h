// The size that a picture file states in its header: some codecs take memory for all pixels, or
// decode them, before they can be asked. Pure: no windows.h.
// Tests: tests/tools/glazelhost/media/picture_size_test.cpp.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace GlazelHost
{

struct PictureSize
{
    std::int64_t width;
    std::int64_t height; // never negative: a BMP whose rows run from the top has its rows counted

    bool operator==(const PictureSize&) const = default;
};

// Of a PNG, JPEG or BMP. None where the header does not say it, or is of another kind (the codecs
// of TIFF look at the header alone).
std::optional<PictureSize> SizeFromHeader(std::span<const std::byte> file) noexcept;

} // namespace GlazelHost
