#include "reference_renderer/editor/picture_view.h"

#include <algorithm>
#include <cmath>

namespace ReferenceRenderer
{

namespace
{

// One direction of the picture in one of the window.
struct Span
{
    int start = 0;        // in the window
    std::size_t from = 0; // in the picture
    std::size_t length = 1;
};

// The share of the picture that can be in the middle of the window: no room beyond its edges.
double Within(double middle, std::size_t whole, int room) noexcept
{
    const double half = room / 2.0 / static_cast<double>(whole);
    return half >= 0.5 ? 0.5 : std::clamp(middle, half, 1.0 - half);
}

Span SpanOf(double middle, std::size_t whole, int room) noexcept
{
    const auto places = static_cast<std::size_t>(room);
    if (whole <= places)
    {
        return {static_cast<int>((places - whole) / 2), 0, whole};
    }
    const double from = middle * static_cast<double>(whole) - room / 2.0;
    const auto most = static_cast<double>(whole - places);
    return {0, static_cast<std::size_t>(std::clamp(std::round(from), 0.0, most)), places};
}

std::size_t LengthAt(double scale, double full) noexcept
{
    return static_cast<std::size_t>(std::max(std::lround(full * scale), 1L));
}

// Where the middle of the window is in the picture when its point under `pixel` stays.
// Nothing is rounded: errors would grow with every step into the picture.
double MiddleAbout(int pixel, double before, std::size_t wholeBefore, std::size_t whole,
                   int room) noexcept
{
    const double away = pixel + 0.5 - room / 2.0; // of the pixel's own middle
    const double share = before + away / static_cast<double>(wholeBefore);
    return Within(share - away / static_cast<double>(whole), whole, room);
}

} // namespace

void PictureView::SetRoom(Geometry::Extent room) noexcept
{
    m_room = {std::max(room.width, 1), std::max(room.height, 1)};
    m_scale = std::max(m_scale, SmallestScale());
    const PixelSize whole = Whole();
    m_middleX = Within(m_middleX, whole.width, m_room.width);
    m_middleY = Within(m_middleY, whole.height, m_room.height);
}

void PictureView::ZoomTo(double scale, Geometry::Point about) noexcept
{
    const PixelSize before = Whole();
    m_scale = std::clamp(scale, SmallestScale(), std::max(kLargestScale, FittingScale()));
    m_fitted = m_scale == FittingScale();
    const PixelSize whole = Whole();
    m_middleX = MiddleAbout(about.x, m_middleX, before.width, whole.width, m_room.width);
    m_middleY = MiddleAbout(about.y, m_middleY, before.height, whole.height, m_room.height);
}

void PictureView::ZoomBy(double notches, Geometry::Point about) noexcept
{
    const double from = Scale();
    double to = from * std::pow(kZoomStep, notches);
    for (const double stop : {FittingScale(), 1.0})
    {
        if ((from < stop && stop < to) || (to < stop && stop < from))
        {
            to = stop;
        }
    }
    ZoomTo(to, about);
}

void PictureView::PanBy(int right, int down) noexcept
{
    const PixelSize whole = Whole();
    const auto moved = [](double middle, int by, std::size_t length, int room) {
        return Within(middle - by / static_cast<double>(length), length, room);
    };
    m_middleX = moved(m_middleX, right, whole.width, m_room.width);
    m_middleY = moved(m_middleY, down, whole.height, m_room.height);
}

bool PictureView::CanPan() const noexcept
{
    const PixelSize whole = Whole();
    return whole.width > static_cast<std::size_t>(m_room.width) ||
           whole.height > static_cast<std::size_t>(m_room.height);
}

ViewPlace PictureView::Place() const noexcept
{
    const PixelSize whole = Whole();
    const Span x = SpanOf(m_middleX, whole.width, m_room.width);
    const Span y = SpanOf(m_middleY, whole.height, m_room.height);
    return {whole,
            {x.from, y.from, {x.length, y.length}},
            {x.start, y.start, static_cast<int>(x.length), static_cast<int>(y.length)}};
}

std::optional<PicturePixel> PictureView::PixelAt(Geometry::Point point,
                                                 PixelSize size) const noexcept
{
    const ViewPlace place = Place();
    if (!place.shown.Contains(point))
    {
        return {};
    }
    const auto pixel = [](int at, int start, std::size_t from, std::size_t whole,
                          std::size_t length) {
        const auto within = static_cast<std::size_t>(at - start) + from;
        return (2 * within + 1) * length / (2 * whole);
    };
    return PicturePixel{
        pixel(point.x, place.shown.left, place.part.left, place.whole.width, size.width),
        pixel(point.y, place.shown.top, place.part.top, place.whole.height, size.height)};
}

double PictureView::FittingScale() const noexcept
{
    return std::min(m_room.width / m_width, m_room.height / m_height);
}

// Nothing is gained by a picture that is smaller than its window and than itself.
double PictureView::SmallestScale() const noexcept
{
    return std::min(FittingScale(), 1.0);
}

PixelSize PictureView::Whole() const noexcept
{
    const double scale = Scale();
    return {LengthAt(scale, m_width), LengthAt(scale, m_height)};
}

} // namespace ReferenceRenderer
