// What a picture file says of its colours and of its size on paper, beside the pixels.
// Pure: no windows.h. Tests: tests/tools/glazelhost/media/picture_facts_test.cpp.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace GlazelHost
{

enum class LengthUnit
{
    None, // the numbers tell the shape of a pixel alone
    Inch,
    Centimetre,
};

// Pixels for each unit of length, both numbers above 0.
struct Resolution
{
    double across = 0.0;
    double down = 0.0;
    LengthUnit unit = LengthUnit::Inch;

    bool operator==(const Resolution&) const = default;
};

struct PictureFacts
{
    std::vector<std::byte> profile; // an ICC profile of RGB; empty: none
    std::optional<Resolution> resolution;
    std::optional<std::uint8_t> srgbIntent; // the colours are sRGB; how PNG says to render them
    std::optional<double> gamma;            // the exponent that makes light of codes: 2.2
    // x and y of white, red, green and blue.
    std::optional<std::array<double, 8>> chromaticities;
    std::optional<std::array<std::byte, 4>> codePoints; // of ITU-T H.273, as the PNG chunk cICP
    // What the file says and no picture that is made of it can: "its colour profile, which is of
    // CMYK and not of RGB".
    std::vector<std::string> unusable;

    bool operator==(const PictureFacts&) const = default;
};

// Of a PNG, JPEG, TIFF or BMP; what makes no sense is passed over. As it is stored, whichever way
// it is to be turned. Throws std::bad_alloc.
PictureFacts FactsOf(std::span<const std::byte> file);

} // namespace GlazelHost
