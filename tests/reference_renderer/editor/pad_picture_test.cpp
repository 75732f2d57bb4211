#include "reference_renderer/editor/pad_picture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace ReferenceRenderer
{

namespace
{

constexpr PadInks kInks{0x000000, 0x101010, 0x202020, 0xFFFFFF};

class DrawnPad
{
public:
    DrawnPad(int size, const PadPoint& knob)
        : m_geometry{size}, m_pixels(static_cast<std::size_t>(size * size))
    {
        DrawPad(m_pixels, m_geometry, knob, kInks);
    }
    std::uint32_t At(const PadPoint& point) const
    {
        const PadPoint pixel = m_geometry.PixelOf(point);
        const int index = static_cast<int>(pixel.y) * m_geometry.size + static_cast<int>(pixel.x);
        return m_pixels[static_cast<std::size_t>(index)];
    }
    std::uint32_t Corner() const { return m_pixels.front(); }

private:
    PadGeometry m_geometry;
    std::vector<std::uint32_t> m_pixels;
};

TEST(PadPicture, ShowsTheKnobAtItsPoint)
{
    for (const int size : {30, 66, 200})
    {
        for (const PadPoint knob : {PadPoint{0.0, 0.0}, PadPoint{0.6, 0.3}, PadPoint{-0.5, -0.8}})
        {
            const DrawnPad pad(size, knob);
            EXPECT_EQ(pad.At(knob), kInks.knob);
            EXPECT_NE(pad.At({-knob.x + 0.3, -knob.y - 0.3}), kInks.knob);
            EXPECT_EQ(pad.Corner(), kInks.ground);
        }
    }
}

TEST(PadPicture, AKnobBeyondTheRimStandsOnIt)
{
    const DrawnPad pad(66, {30.0, -40.0});
    EXPECT_EQ(pad.At({0.6, -0.8}), kInks.knob);
}

TEST(PadPicture, WhatIsNoNumberStandsInTheMiddle)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(Within({nan, 0.5}), PadPoint());
    EXPECT_EQ(Within({0.0, -infinity}), PadPoint());
}

TEST(PadPicture, ThePictureHasAnySize)
{
    for (int size = 1; size < 12; ++size)
    {
        EXPECT_EQ(DrawnPad(size, {0.3, 0.3}).Corner() & 0xFF000000, 0U);
    }
}

} // namespace

} // namespace ReferenceRenderer
