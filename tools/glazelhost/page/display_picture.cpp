#include "tools/glazelhost/page/display_picture.h"

#include "tools/glazelhost/media/pixel_convert.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace GlazelHost
{

namespace
{

struct Channels // blue, green, red, alpha
{
    std::array<std::uint8_t, 4> codes;
};

Channels ChannelsAt(const Image& image, std::size_t pixel) noexcept
{
    Channels channels{};
    if (image.type == SampleType::Byte)
    {
        std::memcpy(channels.codes.data(), image.pixels.data() + pixel * 4, 4);
        return channels;
    }
    std::array<float, 4> values{};
    std::memcpy(values.data(), image.pixels.data() + pixel * sizeof values, sizeof values);
    for (std::size_t i = 0; i < values.size(); ++i)
    {
        channels.codes[i] = ByteOf(values[i]);
    }
    return channels;
}

unsigned GroundAt(int x, int y) noexcept
{
    constexpr int kSquare = 8; // pixels
    constexpr unsigned kDark = 102;
    constexpr unsigned kLight = 153;
    return (x / kSquare + y / kSquare) % 2 == 0 ? kDark : kLight;
}

// `colour` is red, green, blue, 0 to 1.
void PutPixel(std::byte* pixel, SampleType type, const std::array<double, 3>& colour) noexcept
{
    const std::array<float, 4> values{static_cast<float>(colour[2]), static_cast<float>(colour[1]),
                                      static_cast<float>(colour[0]), 1.0F};
    if (type == SampleType::Float)
    {
        std::memcpy(pixel, values.data(), sizeof values);
        return;
    }
    for (std::size_t channel = 0; channel < values.size(); ++channel)
    {
        pixel[channel] = std::byte{ByteOf(values[channel])};
    }
}

// 0 to 1 each, in turns: 0 is red, 1/3 green, 2/3 blue.
std::array<double, 3> ColourOf(double hue, double saturation, double value) noexcept
{
    const auto channel = [&](double turn) {
        const double at = std::fmod(hue + turn, 1.0) * 6.0;
        const double share = std::clamp(std::abs(at - 3.0) - 1.0, 0.0, 1.0);
        return value * (1.0 - saturation + saturation * share);
    };
    return {channel(0.0), channel(2.0 / 3.0), channel(1.0 / 3.0)};
}

} // namespace

Geometry::Rect PlacementOf(Geometry::Extent picture, double pixelAspect,
                           Geometry::Extent area) noexcept
{
    if (area.width < 1 || area.height < 1 || picture.width < 1 || picture.height < 1)
    {
        return {};
    }
    const double aspect = std::isfinite(pixelAspect) && pixelAspect > 0.0 ? pixelAspect : 1.0;
    const double width = picture.width * aspect;
    const double height = picture.height;
    const double scale = std::min({1.0, area.width / width, area.height / height});
    const auto side = [scale](double length, int most) {
        return static_cast<int>(std::clamp(std::round(length * scale), 1.0, double(most)));
    };
    const Geometry::Extent size{side(width, area.width), side(height, area.height)};
    return Geometry::RectAt({(area.width - size.width) / 2, (area.height - size.height) / 2}, size);
}

std::vector<std::uint32_t> DisplayPixels(const Image& image)
{
    std::vector<std::uint32_t> shown(static_cast<std::size_t>(image.width) *
                                     static_cast<std::size_t>(image.height));
    for (std::size_t pixel = 0; pixel < shown.size(); ++pixel)
    {
        const auto [codes] = ChannelsAt(image, pixel);
        const unsigned alpha = image.hasAlpha ? codes[3] : 255U;
        const auto width = static_cast<std::size_t>(image.width);
        const unsigned ground =
            GroundAt(static_cast<int>(pixel % width), static_cast<int>(pixel / width));
        std::uint32_t colour = 0;
        for (std::size_t channel = 3; channel-- > 0;)
        {
            const unsigned mixed = (codes[channel] * alpha + ground * (255U - alpha) + 127U) / 255U;
            colour = colour << 8 | mixed;
        }
        shown[pixel] = colour;
    }
    return shown;
}

Image TestChart(SampleType type)
{
    constexpr int kWidth = 640;
    constexpr int kHeight = 360;
    constexpr int kGreyTop = 270; // the steps are below
    constexpr int kSteps = 11;
    Image chart;
    Reshape(chart, kWidth, kHeight, type, false);
    std::byte* pixel = chart.pixels.data();
    for (int y = 0; y < kHeight; ++y)
    {
        for (int x = 0; x < kWidth; ++x, pixel += chart.PixelBytes())
        {
            const double down = (y + 0.5) / kGreyTop;
            const double step = std::floor(double{kSteps} * x / kWidth) / (kSteps - 1);
            // White above, the full hue in the middle, black below.
            const std::array<double, 3> colour =
                y < kGreyTop ? ColourOf((x + 0.5) / kWidth, std::min(1.0, 2.0 * down),
                                        std::min(1.0, 2.0 - 2.0 * down))
                             : std::array{step, step, step};
            PutPixel(pixel, type, colour);
        }
    }
    return chart;
}

} // namespace GlazelHost
