#include "reference_renderer/editor/scope_picture.h"

#include "reference_renderer/editor/editor_layout.h"
#include "reference_renderer/editor/pixel_mix.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <functional>

namespace ReferenceRenderer
{

namespace
{

// All lengths are for 96 dots per inch.
constexpr int kScopeMargin = 12;
constexpr int kHeaderHeight = 18;
constexpr int kNameWidth = 120;
constexpr int kClippedLines = 3;   // beside a square
constexpr int kClippedWidth = 240; // where it has no room for one line
constexpr int kLabelWidth = 30;
constexpr int kLabelHeight = 16;
constexpr int kPlotGap = 10; // of a parade
constexpr int kMarkGap = 2;  // between a plot and the marks along its edge
constexpr int kMarkHeight = 3;
constexpr int kTargetReach = 5; // from the middle of a target to its edge

constexpr std::uint32_t kPlotGround = 0x141414;
constexpr std::uint32_t kGraticule = 0x343434;
constexpr std::uint32_t kBeforeInk = 0xA0A0A0;
constexpr std::uint32_t kBeforeLumaInk = 0x6E92C8; // the graded luma is grey itself
constexpr std::uint32_t kLumaInk = 0xE2E2DA;
constexpr std::uint32_t kSkinInk = 0xA8845C;
constexpr std::uint32_t kLabelInk = 0x7C7C7C;
constexpr std::array<std::uint32_t, kColours> kColourInks{0xFF6A5E, 0x6EDC78, 0x6CA0FF};
constexpr double kBeforeShare = 0.5; // of its ink, at most

constexpr double kCodes = 256.0; // along a plot
constexpr double kWhite = 255.0;

// The skin of people is near the I axis of the old colour difference signals, whoever they are.
constexpr double kSkinAngle = 123.0; // degrees, from the blue difference to the red one
constexpr double kFullDifference = 112.0;

struct Target
{
    const char* name;
    std::uint32_t red;
    std::uint32_t green;
    std::uint32_t blue;
};

constexpr std::uint32_t kBar = 191; // 75 % of 255
constexpr std::array<Target, 6> kTargets{{
    {"R", kBar, 0, 0},
    {"Yl", kBar, kBar, 0},
    {"G", 0, kBar, 0},
    {"Cy", 0, kBar, kBar},
    {"B", 0, 0, kBar},
    {"Mg", kBar, 0, kBar},
}};

// Levels of a plot with a line across and a label.
struct Mark
{
    double level;
    const char* label;
};

constexpr std::array<Mark, 5> kCodeMarks{
    {{255, "255"}, {192, "192"}, {128, "128"}, {64, "64"}, {0, "0"}}};
constexpr std::array<Mark, 5> kLumaMarks{
    {{235, "100"}, {180.25, "75"}, {125.5, "50"}, {70.75, "25"}, {16, "0"}}};

const std::array<Mark, 5>& MarksOf(ScopeKind kind) noexcept
{
    return kind == ScopeKind::Waveform ? kLumaMarks : kCodeMarks;
}

int LevelColumn(const Geometry::Rect& plot, double level) noexcept
{
    return plot.left + static_cast<int>((level + 0.5) * plot.width / kCodes);
}

// Where the densities of the graded picture and of the original are among the channels below.
constexpr std::size_t kOver = 0;
constexpr std::size_t kUnder = 1;

// A plane's counts, before and after, as shares of all pixels that could be there.
class DensityRows final : public PixelRows
{
public:
    DensityRows(const ScopeBins& before, const ScopeBins& after, std::size_t plane) noexcept
        : m_bins{&after, &before}, m_plane(plane)
    {
    }

    std::size_t Width() const noexcept override
    {
        return IsVectors() ? kLevels : m_bins[kOver]->Columns();
    }
    std::size_t Height() const noexcept override { return kLevels; }
    void ReadRow(std::size_t row, float* floats) const noexcept override
    {
        const std::size_t level = kLevels - 1 - row; // the highest at the top
        std::fill_n(floats, Width() * kChannels, 0.0F);
        for (std::size_t x = 0; x < Width(); ++x, floats += kChannels)
        {
            for (const std::size_t channel : {kOver, kUnder})
            {
                const ScopeBins& bins = *m_bins[channel];
                floats[channel] = IsVectors() ? static_cast<float>(bins.Vector(x, level)) /
                                                    static_cast<float>(bins.Pixels())
                                              : static_cast<float>(bins.Levels(m_plane, x)[level]) /
                                                    static_cast<float>(bins.PixelsIn(x));
            }
        }
    }

private:
    bool IsVectors() const noexcept { return m_bins[kOver]->Kind() == ScopeKind::Vectors; }

    std::array<const ScopeBins*, 2> m_bins;
    std::size_t m_plane;
};

class FloatPicture final : public PixelSink
{
public:
    explicit FloatPicture(PixelSize size)
        : m_size(size), m_floats(size.width * size.height * kChannels)
    {
    }

    void WriteRow(std::size_t row, const float* floats) noexcept override
    {
        std::copy_n(floats, m_size.width * kChannels,
                    m_floats.begin() + static_cast<std::ptrdiff_t>(row * m_size.width * kChannels));
    }
    const float* At(int x, int y) const noexcept
    {
        return m_floats.data() +
               (static_cast<std::size_t>(y) * m_size.width + static_cast<std::size_t>(x)) *
                   kChannels;
    }

private:
    PixelSize m_size;
    std::vector<float> m_floats;
};

FloatPicture DensitiesOf(const ScopeBins& before, const ScopeBins& after, std::size_t plane,
                         const Geometry::Rect& plot)
{
    const PixelSize size{static_cast<std::size_t>(plot.width),
                         static_cast<std::size_t>(plot.height)};
    FloatPicture densities(size);
    ScaleByArea(DensityRows(before, after, plane), size, {0, 0, size}, densities);
    return densities;
}

// How bright a share of the pixels is: a few can be seen, and many have something to add.
float LevelTone(float density) noexcept
{
    constexpr float kGain = 60.0F;
    return density * kGain / (1.0F + density * kGain);
}

float VectorTone(float density) noexcept
{
    return LevelTone(std::sqrt(density)); // the greys in the middle are most of any picture
}

// The colour of a place in a vectorscope, in a middle luma.
std::uint32_t VectorInk(double blueDifference, double redDifference) noexcept
{
    constexpr double kLuma = 150.0;
    constexpr double kRange = 255.0 / 224.0;
    const auto code = [](double value) {
        return static_cast<std::uint32_t>(std::clamp(value, 40.0, kWhite));
    };
    const double b = (blueDifference - 128.0) * kRange;
    const double r = (redDifference - 128.0) * kRange;
    return code(kLuma + 1.5748 * r) << 16 | code(kLuma - 0.1873 * b - 0.4681 * r) << 8 |
           code(kLuma + 1.8556 * b);
}

class ScopeDrawing
{
public:
    ScopeDrawing(Geometry::Extent size, int dpi, std::span<std::uint32_t> pixels) noexcept
        : m_size(size), m_dpi(dpi), m_pixels(pixels)
    {
    }

    void Draw(const ScopeBins& before, const ScopeBins& after)
    {
        const ScopePlaces places = ScopePlacesIn(after.Kind(), m_size, m_dpi);
        Fill({0, 0, m_size.width, m_size.height}, kScopeGround, 1.0);
        switch (after.Kind())
        {
        case ScopeKind::Parade:
        case ScopeKind::Waveform:
            DrawLevels(before, after, places);
            break;
        case ScopeKind::Vectors:
            DrawVectors(before, after, places.plots[0]);
            break;
        case ScopeKind::Histogram:
            DrawHistogram(before, after, places.plots[0]);
            break;
        }
    }

private:
    int Px(int length) const noexcept { return Scaled(length, m_dpi); }

    void Mix(int x, int y, std::uint32_t ink, double share) noexcept
    {
        if (share > 0.0 && x >= 0 && y >= 0 && x < m_size.width && y < m_size.height)
        {
            auto& pixel =
                m_pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(m_size.width) +
                         static_cast<std::size_t>(x)];
            pixel = share < 1.0 ? Mixed(pixel, ink, share) : ink;
        }
    }

    void Fill(const Geometry::Rect& area, std::uint32_t ink, double share) noexcept
    {
        for (int y = area.top; y < area.Bottom(); ++y)
        {
            for (int x = area.left; x < area.Right(); ++x)
            {
                Mix(x, y, ink, share);
            }
        }
    }

    void DrawLevels(const ScopeBins& before, const ScopeBins& after, const ScopePlaces& places)
    {
        const bool isParade = after.Kind() == ScopeKind::Parade;
        for (std::size_t plane = 0; plane < (isParade ? kColours : 1); ++plane)
        {
            const Geometry::Rect& plot = places.plots[plane];
            Fill(plot, kPlotGround, 1.0);
            for (const Mark& mark : MarksOf(after.Kind()))
            {
                Fill({plot.left, LevelRow(plot, mark.level), plot.width, 1}, kGraticule, 1.0);
            }
            const std::uint32_t under = isParade ? kBeforeInk : kBeforeLumaInk;
            const std::uint32_t over = isParade ? kColourInks[plane] : kLumaInk;
            const FloatPicture densities = DensitiesOf(before, after, plane, plot);
            for (int y = 0; y < plot.height; ++y)
            {
                for (int x = 0; x < plot.width; ++x)
                {
                    const float* const density = densities.At(x, y);
                    Mix(plot.left + x, plot.top + y, under,
                        kBeforeShare * LevelTone(density[kUnder]));
                    Mix(plot.left + x, plot.top + y, over, LevelTone(density[kOver]));
                }
            }
            MarkColumns(after, plane, plot);
        }
    }

    // Along the upper and the lower edge, where a column has codes at their ends.
    void MarkColumns(const ScopeBins& bins, std::size_t plane, const Geometry::Rect& plot) noexcept
    {
        const bool isParade = bins.Kind() == ScopeKind::Parade;
        const int gap = Px(kMarkGap);
        const int height = Px(kMarkHeight);
        for (const bool high : {false, true})
        {
            const int top = high ? plot.top - gap - height : plot.Bottom() + gap;
            for (int x = 0; x < plot.width; ++x)
            {
                const std::size_t column = static_cast<std::size_t>(x) * bins.Columns() /
                                           static_cast<std::size_t>(plot.width);
                const std::uint32_t count = isParade
                                                ? bins.Levels(plane, column)[high ? kLevels - 1 : 0]
                                                : bins.AtEnd(high, column);
                Fill({plot.left + x, top, 1, height}, kClipMark,
                     ClipShare(count, bins.PixelsIn(column)));
            }
        }
    }

    // One pixel can be seen already.
    static double ClipShare(std::uint64_t count, std::uint64_t of) noexcept
    {
        constexpr double kFaintest = 0.45;
        constexpr double kGain = 8.0;
        const double share = static_cast<double>(count) / static_cast<double>(of);
        return count == 0 ? 0.0 : std::min(kFaintest + share * kGain, 1.0);
    }

    void DrawVectors(const ScopeBins& before, const ScopeBins& after, const Geometry::Rect& plot)
    {
        const FloatPicture densities = DensitiesOf(before, after, 0, plot);
        const double codesInPixel = kCodes / plot.width;
        const double scale = plot.width / kCodes;
        const double thickness = Px(1);
        const double skinX = std::cos(kSkinAngle * std::acos(-1.0) / 180.0);
        const double skinY = std::sin(kSkinAngle * std::acos(-1.0) / 180.0);
        Fill(plot, kPlotGround, 1.0);
        for (int y = 0; y < plot.height; ++y)
        {
            for (int x = 0; x < plot.width; ++x)
            {
                // Codes from the middle, 128.
                const double blue = (x + 0.5) * codesInPixel - 128.5;
                const double red = 127.5 - (y + 0.5) * codesInPixel;
                const double distance = std::hypot(blue, red);
                const double along = blue * skinX + red * skinY;
                const double across = std::abs(blue * skinY - red * skinX);
                const auto line = [&](double codesAway) {
                    return std::clamp(0.5 * thickness + 0.5 - codesAway * scale, 0.0, 1.0);
                };
                const int left = plot.left + x;
                const int top = plot.top + y;
                Mix(left, top, kGraticule, line(std::abs(distance - kFullDifference)));
                if (distance < kFullDifference)
                {
                    Mix(left, top, kGraticule, line(std::min(std::abs(blue), std::abs(red))));
                    Mix(left, top, kSkinInk, along > 0.0 ? line(across) : 0.0);
                }
                const float* const density = densities.At(x, y);
                Mix(left, top, kBeforeInk, kBeforeShare * VectorTone(density[kUnder]));
                if (density[kOver] > 0.0F)
                {
                    Mix(left, top, VectorInk(blue + 128.0, red + 128.0),
                        VectorTone(density[kOver]));
                }
            }
        }
        for (const Target& target : kTargets)
        {
            DrawTarget(plot, target);
        }
    }

    void DrawTarget(const Geometry::Rect& plot, const Target& target) noexcept
    {
        const LumaCodes codes = LumaCodesOf(target.red, target.green, target.blue);
        const Geometry::Point middle = VectorPlace(plot, codes);
        const std::uint32_t ink = VectorInk(codes.blueDifference, codes.redDifference);
        const int reach = Px(kTargetReach);
        const int length = 2 * reach + 1;
        const int thickness = Px(1);
        const int left = middle.x - reach;
        const int top = middle.y - reach;
        constexpr double kShare = 0.8;
        Fill({left, top, length, thickness}, ink, kShare);
        Fill({left, top + length - thickness, length, thickness}, ink, kShare);
        Fill({left, top + thickness, thickness, length - 2 * thickness}, ink, kShare);
        Fill({left + length - thickness, top + thickness, thickness, length - 2 * thickness}, ink,
             kShare);
    }

    void DrawHistogram(const ScopeBins& before, const ScopeBins& after, const Geometry::Rect& plot)
    {
        Fill(plot, kPlotGround, 1.0);
        for (const Mark& mark : kCodeMarks)
        {
            Fill({LevelColumn(plot, mark.level), plot.top, 1, plot.height}, kGraticule, 1.0);
        }
        const double highest = HighestBar(before, after);
        for (std::size_t colour = 0; colour < kColours; ++colour)
        {
            DrawBars(before, colour, plot, highest, kBeforeInk, 0.16);
        }
        for (std::size_t colour = 0; colour < kColours; ++colour)
        {
            DrawBars(after, colour, plot, highest, kColourInks[colour], 0.42);
        }
        MarkEnds(after, plot);
    }

    // As a share of the pixels. Bars at the ends and a few others may go beyond it: they would
    // press the rest down.
    static double HighestBar(const ScopeBins& before, const ScopeBins& after) noexcept
    {
        constexpr std::size_t kFew = 2;
        constexpr double kTallest = 6.0; // bar, in heights of the plot
        double highest = 0.0;
        for (const ScopeBins* bins : {&before, &after})
        {
            for (std::size_t colour = 0; colour < kColours; ++colour)
            {
                auto counts = bins->Histogram(colour);
                auto* const first = counts.data() + 1;
                std::partial_sort(first, first + kFew + 1, counts.data() + kLevels - 1,
                                  std::greater<>());
                const double bar = std::max<double>(first[kFew], *first / kTallest);
                highest = std::max(highest, bar / static_cast<double>(bins->Pixels()));
            }
        }
        return highest > 0.0 ? highest : 1.0;
    }

    // Heights are roots: what is little can still be seen.
    void DrawBars(const ScopeBins& bins, std::size_t colour, const Geometry::Rect& plot,
                  double highest, std::uint32_t ink, double body)
    {
        constexpr double kEdge = 0.9; // of the ink, along the top
        const AreaAxis axis(kLevels, static_cast<std::size_t>(plot.width), 0,
                            static_cast<std::size_t>(plot.width));
        const double edge = ink == kBeforeInk ? 2.0 * body : kEdge;
        double last = -1.0;
        for (int x = 0; x < plot.width; ++x)
        {
            const AreaAxis::Cover cover = axis.Of(static_cast<std::size_t>(x));
            double share = 0.0;
            for (std::size_t i = 0; i < cover.count; ++i)
            {
                share += double{cover.shares[i]} * bins.Histogram(colour)[cover.first + i];
            }
            share /= static_cast<double>(bins.Pixels()) * highest;
            const double height = std::sqrt(std::min(share, 1.0)) * plot.height;
            const double from = last < 0.0 ? height : last; // an unbroken outline
            const double low = std::min(height, from);
            const double high = std::max(height, from);
            for (int y = 0; y < plot.height && y < high; ++y)
            {
                const bool isEdge = y + 1 >= low - Px(1) && high > 0.0;
                const double cut = std::min(high - y, 1.0);
                Mix(plot.left + x, plot.Bottom() - 1 - y, ink, (isEdge ? edge : body) * cut);
            }
            last = height;
        }
    }

    // Beside the plot, red above green above blue.
    void MarkEnds(const ScopeBins& bins, const Geometry::Rect& plot) noexcept
    {
        const int width = Px(kMarkHeight);
        const int height = plot.height / static_cast<int>(kColours);
        for (std::size_t colour = 0; colour < kColours; ++colour)
        {
            const auto& counts = bins.Histogram(colour);
            const int top = plot.top + static_cast<int>(colour) * height;
            Fill({plot.left - Px(kMarkGap) - width, top, width, height}, kColourInks[colour],
                 ClipShare(counts.front(), bins.Pixels()));
            Fill({plot.Right() + Px(kMarkGap), top, width, height}, kColourInks[colour],
                 ClipShare(counts.back(), bins.Pixels()));
        }
    }

    Geometry::Extent m_size;
    int m_dpi;
    std::span<std::uint32_t> m_pixels;
};

std::string PerCent(double share)
{
    constexpr double kLeast = 0.05; // what is written as 0.1
    constexpr double kMany = 9.95;
    const double perCent = share * 100.0;
    if (perCent < kLeast)
    {
        return "<0.1";
    }
    std::array<char, 16> room{};
    const auto [end, error] = std::to_chars(room.data(), room.data() + room.size(), perCent,
                                            std::chars_format::fixed, perCent < kMany ? 1 : 0);
    return {room.data(), error == std::errc() ? end : room.data()};
}

} // namespace

ScopePlaces ScopePlacesIn(ScopeKind kind, Geometry::Extent size, int dpi) noexcept
{
    const auto px = [dpi](int length) { return Scaled(length, dpi); };
    const int margin = px(kScopeMargin);
    ScopePlaces places;
    places.header = {margin, px(kScopeMargin) / 2, std::max(size.width - 2 * margin, 0),
                     px(kHeaderHeight)};
    places.clipped = places.header;
    places.clipped.left += px(kNameWidth);
    places.clipped.width = std::max(places.header.width - px(kNameWidth), 0);
    const int top = places.header.Bottom() + px(kMarkGap) + px(kMarkHeight) + px(kMarkGap);
    const bool hasFoot = kind == ScopeKind::Histogram;
    const int bottom = size.height - (hasFoot ? px(kLabelHeight) + px(kMarkGap) : margin);
    const bool hasSide = kind == ScopeKind::Parade || kind == ScopeKind::Waveform;
    const int start = hasSide ? margin / 2 + px(kLabelWidth) : margin;
    Geometry::Rect room{start, top, std::max(size.width - margin - start, 1),
                        std::max(bottom - top, 1)};
    if (kind == ScopeKind::Vectors)
    {
        const int edge = margin / 2; // the texts stand beside the square
        const int side = std::max(std::min(room.width, size.height - 2 * edge), 1);
        places.plots[0] = {room.left + (room.width - side) / 2, edge, side, side};
        const int left = places.plots[0].Right() + margin;
        const int width = std::max(size.width - margin - left, 0);
        const int lines = width < px(kClippedWidth) ? kClippedLines : 1;
        places.clipped = {left, places.header.top, width, lines * places.header.height};
        return places;
    }
    places.plots[0] = room;
    if (kind == ScopeKind::Parade)
    {
        const int gap = px(kPlotGap);
        const int width = std::max((room.width - 2 * gap) / 3, 1);
        for (Geometry::Rect& plot : places.plots)
        {
            plot = {room.left, room.top, width, room.height};
            room.left += width + gap;
        }
    }
    return places;
}

std::size_t ScopeColumns(ScopeKind kind, Geometry::Extent size, int dpi, std::size_t width) noexcept
{
    const int plot = ScopePlacesIn(kind, size, dpi).plots[0].width;
    return std::min(static_cast<std::size_t>(plot), width);
}

Geometry::Point VectorPlace(const Geometry::Rect& plot, const LumaCodes& codes) noexcept
{
    return {LevelColumn(plot, codes.blueDifference), LevelRow(plot, codes.redDifference)};
}

int LevelRow(const Geometry::Rect& plot, double level) noexcept
{
    return plot.top + static_cast<int>((kWhite - level + 0.5) * plot.height / kCodes);
}

void DrawScope(const ScopeBins& before, const ScopeBins& after, Geometry::Extent size, int dpi,
               std::span<std::uint32_t> pixels)
{
    ScopeDrawing(size, dpi, pixels).Draw(before, after);
}

std::vector<ScopeLabel> ScopeLabels(ScopeKind kind, Geometry::Extent size, int dpi)
{
    using Side = ScopeLabel::Side;
    const int height = Scaled(kLabelHeight, dpi);
    const int gap = Scaled(kMarkGap, dpi);
    const Geometry::Rect plot = ScopePlacesIn(kind, size, dpi).plots[0];
    std::vector<ScopeLabel> labels;
    switch (kind)
    {
    case ScopeKind::Parade:
    case ScopeKind::Waveform:
        for (const Mark& mark : MarksOf(kind))
        {
            const int row = LevelRow(plot, mark.level);
            labels.push_back({{0, row - height / 2, plot.left - 3 * gap, height},
                              mark.label,
                              kLabelInk,
                              Side::Right});
        }
        break;
    case ScopeKind::Vectors:
        for (const Target& target : kTargets)
        {
            const LumaCodes codes = LumaCodesOf(target.red, target.green, target.blue);
            const Geometry::Point at = VectorPlace(plot, codes);
            const int away = Scaled(kTargetReach, dpi) + gap;
            const bool isRight = codes.blueDifference >= 128;
            const int width = Scaled(kLabelWidth, dpi) * 2 / 3;
            labels.push_back(
                {{isRight ? at.x + away : at.x - away - width, at.y - height / 2, width, height},
                 target.name,
                 VectorInk(codes.blueDifference, codes.redDifference),
                 isRight ? Side::Left : Side::Right});
        }
        break;
    case ScopeKind::Histogram:
        for (const Mark& mark : kCodeMarks)
        {
            const int width = Scaled(kLabelWidth, dpi);
            const int column = LevelColumn(plot, mark.level);
            const int left = std::clamp(column - width / 2, plot.left,
                                        std::max(plot.Right() - width, plot.left));
            const Side side = mark.level == 0.0      ? Side::Left
                              : mark.level == kWhite ? Side::Right
                                                     : Side::Middle;
            labels.push_back(
                {{left, plot.Bottom() + gap, width, height}, mark.label, kLabelInk, side});
        }
        break;
    }
    return labels;
}

std::string ClippedText(const ScopeBins& bins)
{
    constexpr std::array<const char*, kColours> kLetters{"R ", "G ", "B "};
    std::string text;
    for (const bool high : {false, true})
    {
        std::string part;
        for (std::size_t colour = 0; colour < kColours; ++colour)
        {
            const auto& counts = bins.Histogram(colour);
            if (const std::uint32_t count = high ? counts.back() : counts.front(); count > 0)
            {
                part += (part.empty() ? "" : " ") + std::string(kLetters[colour]) +
                        PerCent(count / static_cast<double>(bins.Pixels()));
            }
        }
        if (!part.empty())
        {
            text += std::string(text.empty() ? "" : ", ") + (high ? "255: " : "0: ") + part + " %";
        }
    }
    return text;
}

} // namespace ReferenceRenderer
