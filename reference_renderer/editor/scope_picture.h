// Draws what a scope shows: the counts of the graded picture over those of the original, faintly,
// on a graticule; codes at their ends, 0 and 255, are marked.
// Pure: no windows.h. Tests: tests/reference_renderer/editor/scope_picture_test.cpp.
#pragma once

#include "reference_renderer/editor/scope_bins.h"
#include "support/geometry.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace ReferenceRenderer
{

// In the order of the enum; as the user reads them.
inline constexpr std::array<const char*, kScopeKinds> kScopeNames{"RGB parade", "Luma waveform, %",
                                                                  "Vectorscope", "RGB histogram"};

// 0xRRGGBB
inline constexpr std::uint32_t kScopeGround = 0x1B1B1B;
inline constexpr std::uint32_t kClipMark = 0xFFC84A;

struct ScopePlaces
{
    Geometry::Rect header;  // a line of text
    Geometry::Rect clipped; // ClippedText: the rest of that line, or lines beside a square
    // One for each colour of a parade, else the first. Vectors have a square.
    std::array<Geometry::Rect, kColours> plots{};
};

// For a window of this size, whatever it is: plots are at least a pixel wide and high.
ScopePlaces ScopePlacesIn(ScopeKind kind, Geometry::Extent size, int dpi) noexcept;

// The columns for ScopeBins of pictures of this width.
std::size_t ScopeColumns(ScopeKind kind, Geometry::Extent size, int dpi,
                         std::size_t width) noexcept;

// The place of a colour of a vectorscope, of a level of another plot.
Geometry::Point VectorPlace(const Geometry::Rect& plot, const LumaCodes& codes) noexcept;
int LevelRow(const Geometry::Rect& plot, double level) noexcept;

// Both of the same kind, with some rows. Fills `pixels`, 0xRRGGBB, size.width x size.height. Throws
// std::bad_alloc.
void DrawScope(const ScopeBins& before, const ScopeBins& after, Geometry::Extent size, int dpi,
               std::span<std::uint32_t> pixels);

struct ScopeLabel
{
    enum class Side
    {
        Left,
        Middle,
        Right,
    };

    Geometry::Rect box;
    std::string text;
    std::uint32_t colour = 0;
    Side side = Side::Middle; // of the box, where the text stands
};

// What is written on it, but for the header.
std::vector<ScopeLabel> ScopeLabels(ScopeKind kind, Geometry::Extent size, int dpi);

// How much of each colour is at its ends, in per cent: "0: R 1.2 B <0.1 %, 255: G 30 %".
// Empty when there is none.
std::string ClippedText(const ScopeBins& bins);

} // namespace ReferenceRenderer
