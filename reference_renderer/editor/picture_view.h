// Which part of the picture is shown, how large, and where in its window.
// Pure: no windows.h. Tests: tests/reference_renderer/editor/picture_view_test.cpp.
#pragma once

#include "reference_renderer/editor/area_average.h"
#include "support/geometry.h"

#include <optional>

namespace ReferenceRenderer
{

inline constexpr double kLargestScale = 16.0; // pixels shown for each of the picture's
inline constexpr double kZoomStep = 1.25;     // of one notch of the wheel

struct ViewPlace
{
    PixelSize whole;      // of the picture at its scale
    PixelPart part;       // of that, as much as the window has room for
    Geometry::Rect shown; // where that stands in the window
};

struct PicturePixel
{
    std::size_t column = 0;
    std::size_t row = 0;

    friend bool operator==(const PicturePixel&, const PicturePixel&) = default;
};

// A picture that fits its window, or one at a scale of its own with one of its points in the middle
// of the window.
class PictureView
{
public:
    // A picture as many rows high, and `shape` times as wide on a display. Both > 0.
    PictureView(double shape, double rows) noexcept : m_width(shape * rows), m_height(rows) {}

    // Keeps the scale, and the point in the middle, unless the picture fits.
    void SetRoom(Geometry::Extent room) noexcept;
    void Fit() noexcept
    {
        m_fitted = true;
        m_middleX = m_middleY = 0.5;
    }
    bool IsFitted() const noexcept { return m_fitted; }
    // The point of the picture at `about`, in pixels of the window, stays there as far as the
    // picture's edges allow.
    void ZoomTo(double scale, Geometry::Point about) noexcept;
    // Stops on the way where the picture fits and where it has its own size.
    void ZoomBy(double notches, Geometry::Point about) noexcept;
    // Moves the picture with the mouse.
    void PanBy(int right, int down) noexcept;
    // Whether there is more of the picture than the window shows.
    bool CanPan() const noexcept;

    double Scale() const noexcept { return m_fitted ? FittingScale() : m_scale; }
    Geometry::Point Middle() const noexcept { return {m_room.width / 2, m_room.height / 2}; }
    ViewPlace Place() const noexcept;
    // The pixel of the picture, of `size`, that holds the middle of the window's pixel at `point`,
    // whatever the scale. Nothing beside the picture.
    std::optional<PicturePixel> PixelAt(Geometry::Point point, PixelSize size) const noexcept;

private:
    double FittingScale() const noexcept;
    double SmallestScale() const noexcept;
    PixelSize Whole() const noexcept;

    double m_width;
    double m_height;
    Geometry::Extent m_room{1, 1};
    bool m_fitted = true;
    double m_scale = 1.0;
    double m_middleX = 0.5; // the picture's point in the middle of the window, as shares of it
    double m_middleY = 0.5;
};

} // namespace ReferenceRenderer
