#include "reference_renderer/editor/scope_picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace ReferenceRenderer
{

namespace
{

constexpr std::array kKinds{ScopeKind::Parade, ScopeKind::Waveform, ScopeKind::Vectors,
                            ScopeKind::Histogram};
constexpr Geometry::Extent kRoom{600, 240};
constexpr std::uint32_t kNoDot = 0;

// What a scope shows of two pictures of one colour each; with `dot`, the upper left pixel of the
// graded one is another. Pictures are 64 x 32.
class Scope
{
public:
    Scope(ScopeKind kind, std::uint32_t before, std::uint32_t after, std::uint32_t dot = kNoDot,
          Geometry::Extent room = kRoom, int dpi = 96)
        : places(ScopePlacesIn(kind, room, dpi)), m_room(room),
          m_pixels(static_cast<std::size_t>(room.width * room.height))
    {
        DrawScope(Counted(kind, before, kNoDot, room, dpi), Counted(kind, after, dot, room, dpi),
                  room, dpi, m_pixels);
    }

    std::uint32_t At(int x, int y) const
    {
        return m_pixels.at(static_cast<std::size_t>(y * m_room.width + x));
    }
    std::uint32_t Brightest(const Geometry::Rect& area) const
    {
        std::uint32_t brightest = 0;
        for (int y = area.top; y < area.Bottom(); ++y)
        {
            for (int x = area.left; x < area.Right(); ++x)
            {
                brightest = std::max(brightest, Brightness(At(x, y)));
            }
        }
        return brightest;
    }
    static std::uint32_t Brightness(std::uint32_t pixel)
    {
        return (pixel >> 16 & 0xFF) + (pixel >> 8 & 0xFF) + (pixel & 0xFF);
    }

    static std::uint32_t Peak(std::uint32_t pixel)
    {
        return std::max({pixel >> 16 & 0xFF, pixel >> 8 & 0xFF, pixel & 0xFF});
    }

    ScopePlaces places;

private:
    static ScopeBins Counted(ScopeKind kind, std::uint32_t colour, std::uint32_t dot,
                             Geometry::Extent room, int dpi)
    {
        std::vector<std::uint32_t> picture(std::size_t{64} * 32, colour);
        picture.front() = dot == kNoDot ? colour : dot;
        ScopeBins bins(kind, 64, ScopeColumns(kind, room, dpi, 64));
        bins.Count(reinterpret_cast<const std::byte*>(picture.data()), 64 * kChannels, 32);
        return bins;
    }

    Geometry::Extent m_room;
    std::vector<std::uint32_t> m_pixels;
};

TEST(ScopePicture, PlotsStandInsideTheWindowBesideEachOther)
{
    for (const ScopeKind kind : kKinds)
    {
        for (const int dpi : {96, 144, 192})
        {
            const Geometry::Extent room{450 * dpi / 96, 170 * dpi / 96};
            const ScopePlaces places = ScopePlacesIn(kind, room, dpi);
            int left = 0;
            for (const Geometry::Rect& plot : places.plots)
            {
                if (plot.width == 0)
                {
                    continue;
                }
                EXPECT_GE(plot.left, left);
                EXPECT_GT(plot.width, 90 * dpi / 96);
                EXPECT_GT(plot.height, 90 * dpi / 96);
                EXPECT_LT(plot.Right(), room.width);
                EXPECT_TRUE(plot.top > places.header.Bottom() ||
                            plot.Right() < places.clipped.left);
                EXPECT_LT(plot.Bottom(), room.height);
                left = plot.Right();
            }
            for (const ScopeLabel& label : ScopeLabels(kind, room, dpi))
            {
                EXPECT_GE(label.box.left, 0) << label.text;
                EXPECT_GE(label.box.top, 0) << label.text;
                EXPECT_LE(label.box.Right(), room.width) << label.text;
                EXPECT_LE(label.box.Bottom(), room.height) << label.text;
            }
        }
    }
}

TEST(ScopePicture, AWindowWithoutRoomDoesNoHarm)
{
    for (const ScopeKind kind : kKinds)
    {
        for (const Geometry::Extent room : {Geometry::Extent{1, 1}, {3, 200}, {200, 3}, {0, 0}})
        {
            Scope(kind, 0x808080, 0xFFFFFF, kNoDot, room, 192);
        }
    }
}

TEST(ScopePicture, TheParadeShowsEachColourAtItsLevelAboveTheFaintOriginal)
{
    const Scope scope(ScopeKind::Parade, 0x404040, 0xC08020);
    constexpr std::array<double, kColours> kLevelsAfter{0xC0, 0x80, 0x20};
    for (std::size_t colour = 0; colour < kColours; ++colour)
    {
        const Geometry::Rect& plot = scope.places.plots[colour];
        const int x = plot.left + plot.width / 2;
        const std::uint32_t after = scope.At(x, LevelRow(plot, kLevelsAfter[colour]));
        const std::uint32_t before = scope.At(x, LevelRow(plot, 0x40));
        const std::uint32_t ground = scope.At(x, LevelRow(plot, 0xE0));
        const auto own = after >> (16 - 8 * colour) & 0xFF;
        EXPECT_GT(own, 0xC0U) << colour;
        EXPECT_GT(own, after >> (16 - 8 * ((colour + 1) % 3)) & 0xFF) << colour;
        EXPECT_LT(Scope::Peak(before), Scope::Peak(after) * 2 / 3) << colour;
        EXPECT_GT(Scope::Brightness(before), Scope::Brightness(ground) * 2) << colour;
    }
}

TEST(ScopePicture, TheWaveformShowsLuma)
{
    const Scope scope(ScopeKind::Waveform, 0x808080, 0xFF0000);
    const Geometry::Rect& plot = scope.places.plots[0];
    const int x = plot.left + plot.width / 3;
    const std::uint32_t red = Scope::Brightness(scope.At(x, LevelRow(plot, 63)));
    EXPECT_GT(red, 500U);
    const std::uint32_t grey = Scope::Brightness(scope.At(x, LevelRow(plot, 126)));
    EXPECT_GT(grey, 150U);
    EXPECT_LT(grey, red);
}

TEST(ScopePicture, OneCodeAtItsEndIsMarkedInItsColumnOnly)
{
    for (const ScopeKind kind : {ScopeKind::Parade, ScopeKind::Waveform})
    {
        for (const bool high : {false, true})
        {
            const Scope scope(kind, 0x808080, 0x808080, high ? 0xFF8080 : 0x008080);
            const Geometry::Rect& plot = scope.places.plots[0];
            const int y = high ? plot.top - 4 : plot.Bottom() + 3;
            const int other = high ? plot.Bottom() + 3 : plot.top - 4;
            EXPECT_GT(Scope::Brightness(scope.At(plot.left, y)), 250U);
            EXPECT_EQ(scope.At(plot.left, other), kScopeGround);
            EXPECT_EQ(scope.At(plot.left + plot.width / 2, y), kScopeGround);
        }
    }
}

TEST(ScopePicture, TheVectorscopeShowsABarInItsTarget)
{
    constexpr std::uint32_t kBars[] = {0xBF0000, 0x00BF00, 0x0000BF, 0x00BFBF, 0xBF00BF, 0xBFBF00};
    for (const std::uint32_t bar : kBars)
    {
        const Scope scope(ScopeKind::Vectors, 0x808080, bar);
        const Geometry::Rect& plot = scope.places.plots[0];
        EXPECT_EQ(plot.width, plot.height);
        const LumaCodes codes = LumaCodesOf(bar >> 16, bar >> 8 & 0xFF, bar & 0xFF);
        const Geometry::Point at = VectorPlace(plot, codes);
        EXPECT_GT(scope.Brightest({at.x, at.y, 1, 1}), 250U) << std::hex << bar;
        for (const int side : {-5, 5}) // the edges of its box
        {
            EXPECT_GT(scope.Brightest({at.x + side, at.y, 1, 1}), 200U) << std::hex << bar;
            EXPECT_GT(scope.Brightest({at.x, at.y + side, 1, 1}), 200U) << std::hex << bar;
            EXPECT_LT(scope.Brightest({at.x + side / 2, at.y, 1, 1}), 200U) << std::hex << bar;
        }
    }
    EXPECT_EQ(ScopeLabels(ScopeKind::Vectors, kRoom, 96).size(), 6U);
}

TEST(ScopePicture, TheLineOfSkinGoesUpAndToTheLeft)
{
    const Scope scope(ScopeKind::Vectors, 0x808080, 0x808080);
    const Geometry::Rect& plot = scope.places.plots[0];
    // At 80 codes from the middle, 123 degrees from the blue difference.
    const Geometry::Point on = VectorPlace(plot, {0, 128 - 44, 128 + 67});
    EXPECT_GT(scope.Brightest({on.x - 1, on.y - 1, 3, 3}), 250U);
    const Geometry::Point mirrored = VectorPlace(plot, {0, 128 + 44, 128 - 67});
    EXPECT_LT(scope.Brightest({mirrored.x - 1, mirrored.y - 1, 3, 3}), 100U);
}

TEST(ScopePicture, TheHistogramHasABarForEachColourAndMarksTheEnds)
{
    const Scope scope(ScopeKind::Histogram, 0x484848, 0xC08020, 0xFF8000);
    const Geometry::Rect& plot = scope.places.plots[0];
    const auto column = [&](int level) { return plot.left + (2 * level + 1) * plot.width / 512; };
    const auto ink = [&](int level) { return scope.At(column(level), plot.Bottom() - 8); };
    const auto part = [](std::uint32_t pixel, int shift) { return pixel >> shift & 0xFF; };
    EXPECT_GT(part(ink(0xC0), 16), part(ink(0xC0), 8) + 20) << "red";
    EXPECT_GT(part(ink(0x80), 8), part(ink(0x80), 0) + 20) << "green";
    EXPECT_GT(part(ink(0x20), 0), part(ink(0x20), 16) + 20) << "blue";
    EXPECT_GT(Scope::Brightness(ink(0x48)), Scope::Brightness(ink(0x58)) + 40) << "the original";
    EXPECT_LT(Scope::Peak(ink(0x48)), Scope::Peak(ink(0xC0)) * 4 / 5) << "faint";
    const auto mark = [&](bool high, int third) {
        return scope.At(high ? plot.Right() + 3 : plot.left - 4,
                        plot.top + plot.height * (2 * third + 1) / 6);
    };
    EXPECT_NE(mark(true, 0), kScopeGround) << "one pixel of red";
    EXPECT_NE(mark(false, 2), kScopeGround) << "one pixel of blue";
    EXPECT_EQ(mark(false, 0), kScopeGround);
    EXPECT_EQ(mark(true, 1), kScopeGround);
    EXPECT_EQ(mark(true, 2), kScopeGround);
}

TEST(ScopePicture, WhatIsClippedIsSaidInPerCent)
{
    ScopeBins bins(ScopeKind::Histogram, 64, 64);
    std::vector<std::uint32_t> picture(std::size_t{64} * 32, 0x808080);
    const auto count = [&] {
        bins.Count(reinterpret_cast<const std::byte*>(picture.data()), 64 * kChannels, 32);
    };
    count();
    EXPECT_EQ(ClippedText(bins), "");
    picture[0] = 0xFF8000;
    count();
    EXPECT_EQ(ClippedText(bins), "0: B <0.1 %, 255: R <0.1 %");
    std::fill_n(picture.begin(), 1024, 0x00FF80U);
    bins = ScopeBins(ScopeKind::Histogram, 64, 64);
    count();
    EXPECT_EQ(ClippedText(bins), "0: R 50 %, 255: G 50 %");
}

} // namespace

} // namespace ReferenceRenderer
