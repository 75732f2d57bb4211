#include "reference_renderer/editor/slider_drag.h"

#include <algorithm>
#include <cmath>

namespace ReferenceRenderer
{

SliderTrack TrackOf(int width, int knobWidth) noexcept
{
    return {knobWidth / 2.0, std::max(1.0, static_cast<double>(width - knobWidth))};
}

SliderDrag::SliderDrag(const SliderTrack& track, double position, int knobWidth, int pixel) noexcept
    : m_track(track), m_position(position), m_pixel(pixel)
{
    if (std::abs(pixel - track.PixelOf(position)) > knobWidth / 2.0)
    {
        m_position = track.PositionOf(pixel);
    }
}

double SliderDrag::Moved(int pixel, bool fine) noexcept
{
    constexpr double kFineShare = 0.1;
    m_position += (pixel - m_pixel) / m_track.length * (fine ? kFineShare : 1.0);
    m_pixel = pixel;
    return Position();
}

double SliderDrag::Position() const noexcept
{
    return std::clamp(m_position, 0.0, 1.0);
}

} // namespace ReferenceRenderer
