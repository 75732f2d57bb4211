// The geometry of a slider and how a mouse drags its knob.
// Pure: no windows.h. Tests: tests/reference_renderer/editor/slider_drag_test.cpp.
#pragma once

namespace ReferenceRenderer
{

// The way that the knob's centre goes, in pixels of the slider's window.
struct SliderTrack
{
    double start = 0.0;
    double length = 1.0; // > 0

    double PixelOf(double position) const noexcept { return start + position * length; }
    double PositionOf(double pixel) const noexcept { return (pixel - start) / length; }
};

// The track inside a slider of `width` pixels with a knob of `knobWidth`.
SliderTrack TrackOf(int width, int knobWidth) noexcept;

// One drag, from button down to button up. Follows the mouse by differences, so that switching
// between coarse and fine never makes the knob jump.
class SliderDrag
{
public:
    // A press on the knob takes it where it is; beside it, the knob comes to the mouse.
    SliderDrag(const SliderTrack& track, double position, int knobWidth, int pixel) noexcept;

    // The position after the mouse went to `pixel`; a tenth of the way when `fine`.
    double Moved(int pixel, bool fine) noexcept;
    double Position() const noexcept;

private:
    SliderTrack m_track;
    double m_position; // not limited: beyond an end the knob waits for the mouse to come back
    int m_pixel;
};

} // namespace ReferenceRenderer
