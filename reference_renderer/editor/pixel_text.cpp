#include "reference_renderer/editor/pixel_text.h"

#include <array>
#include <charconv>
#include <cmath>

namespace ReferenceRenderer
{

namespace
{

constexpr char kArrow[] = " \xE2\x86\x92 ";

std::string CodesText(const PreviewPicture& picture, const std::byte* pixel,
                      const PreparedLook* look)
{
    std::array<std::byte, kChannels> codes{};
    picture.WriteCodes(look, pixel, codes.data(), 1);
    const auto text = [&](std::size_t channel) {
        return std::to_string(std::to_integer<int>(codes[channel]));
    };
    return text(2) + " " + text(1) + " " + text(0);
}

std::string ValueText(float value)
{
    constexpr float kLongest = 10000.0F; // beyond it, decimals say nothing
    std::array<char, 32> room{};
    const bool isPlain = std::abs(value) < kLongest;
    const auto [end, error] = std::to_chars(
        room.data(), room.data() + room.size(), isPlain ? value + 0.0F : value,
        isPlain ? std::chars_format::fixed : std::chars_format::general, isPlain ? 3 : 4);
    std::string text(room.data(), error == std::errc() ? end : room.data());
    return text == "-0.000" ? "0.000" : text;
}

std::string ValuesText(const Rgb& value)
{
    return ValueText(value.r) + " " + ValueText(value.g) + " " + ValueText(value.b);
}

} // namespace

std::string PixelText(const PreviewPicture& picture, const PicturePixel& pixel,
                      const PreparedLook& look)
{
    std::array<std::byte, kChannels * sizeof(float)> shown{}; // of either format
    picture.ReadRow(pixel.row, pixel.column, 1, 1, shown.data());
    return std::to_string(pixel.column) + ", " + std::to_string(pixel.row) + ":  " +
           CodesText(picture, shown.data(), nullptr) + kArrow +
           CodesText(picture, shown.data(), &look) + "   " +
           ValuesText(picture.ValueAt(pixel.column, pixel.row, nullptr)) + kArrow +
           ValuesText(picture.ValueAt(pixel.column, pixel.row, &look));
}

} // namespace ReferenceRenderer
