#include "reference_renderer/editor/pad_picture.h"

#include "reference_renderer/editor/pixel_mix.h"

#include <algorithm>
#include <cmath>

namespace ReferenceRenderer
{

namespace
{

// How much of a pixel is inside an edge that lies `inside` pixels further out.
double Coverage(double inside) noexcept
{
    return std::clamp(inside + 0.5, 0.0, 1.0);
}

std::uint32_t HueAt(const PadPoint& point) noexcept
{
    constexpr double kWhite = 255.0;
    const std::array<double, 3> colour = ColourAt(point);
    std::uint32_t pixel = 0;
    for (const double value : colour)
    {
        pixel = pixel << 8 | static_cast<std::uint32_t>(std::lround(value * kWhite));
    }
    return pixel;
}

} // namespace

double PadGeometry::Reach() const noexcept
{
    return std::max(1.0, Middle() - KnobRadius() - 2.0);
}

PadPoint PadGeometry::PixelOf(const PadPoint& point) const noexcept
{
    return {Middle() + point.x * Reach(), Middle() - point.y * Reach()};
}

PadPoint Within(const PadPoint& point, double limit) noexcept
{
    const double distance = std::hypot(point.x, point.y);
    if (!std::isfinite(distance))
    {
        return {};
    }
    const double share = distance <= limit ? 1.0 : limit / distance;
    return {point.x * share, point.y * share};
}

void DrawPad(std::span<std::uint32_t> pixels, const PadGeometry& geometry, const PadPoint& knob,
             const PadInks& inks) noexcept
{
    const double line = std::max(1.0, geometry.size / 66.0);
    const double middle = geometry.Middle();
    const PadPoint knobAt = geometry.PixelOf(Within(knob));
    for (int row = 0; row < geometry.size; ++row)
    {
        for (int column = 0; column < geometry.size; ++column)
        {
            const double x = column + 0.5 - middle;
            const double y = row + 0.5 - middle;
            const double distance = std::hypot(x, y);
            std::uint32_t pixel = HueAt({x / geometry.Reach(), -y / geometry.Reach()});
            const double cross =
                std::max(Coverage(line / 2.0 - std::abs(x)), Coverage(line / 2.0 - std::abs(y)));
            pixel = Mixed(pixel, inks.cross, cross / 2.0);
            pixel = Mixed(pixel, inks.rim, Coverage(distance - (middle - 1.0 - line)));
            pixel = Mixed(pixel, inks.ground, Coverage(distance - (middle - 1.0)));
            const double toKnob =
                std::hypot(column + 0.5 - knobAt.x, row + 0.5 - knobAt.y) - geometry.KnobRadius();
            pixel = Mixed(pixel, inks.rim, Coverage(line - toKnob));
            pixel = Mixed(pixel, inks.knob, Coverage(-toKnob));
            const int index = row * geometry.size + column;
            pixels[static_cast<std::size_t>(index)] = pixel;
        }
    }
}

} // namespace ReferenceRenderer
