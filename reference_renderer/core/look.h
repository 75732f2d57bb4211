// A look as it is edited and exchanged: a CDL correction, then curves, then a cube, each optional.
// Values are display-encoded red, green, blue, 0 = black and 1 = white, not limited to that range.
// Pure: no windows.h.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ReferenceRenderer
{

// No number of a look is larger: sums and differences of a few stay finite.
inline constexpr float kLargestNumber = 1e30F;

struct Rgb
{
    float r = 0.0F;
    float g = 0.0F;
    float b = 0.0F;
};

// A closed range of values; low < high wherever it is a domain.
struct Interval
{
    float low = 0.0F;
    float high = 1.0F;
};

using Domain = std::array<Interval, 3>; // red, green, blue

inline bool operator==(const Interval& left, const Interval& right) noexcept
{
    return left.low == right.low && left.high == right.high;
}

// Whether a look has a CDL correction, and whether that one limits values to 0..1 after its power
// and its saturation step. The numbers are stored in records.
enum class CdlMode : std::uint32_t
{
    None = 0,
    Clamped = 1,
    Unclamped = 2,
};

struct Cdl
{
    std::array<float, 3> slope{1.0F, 1.0F, 1.0F};  // >= 0
    std::array<float, 3> offset{0.0F, 0.0F, 0.0F}; //
    std::array<float, 3> power{1.0F, 1.0F, 1.0F};  // > 0
    float saturation = 1.0F;                       // >= 0
};

// One curve per channel over its own domain, straight between entries, constant beyond the ends.
struct Curves
{
    std::uint32_t size = 0; // entries per channel, >= 2
    Domain domain;
    std::vector<float> values; // 3 * size: all of red, then green, then blue
};

// A lattice over a domain, tetrahedral between nodes, constant beyond the faces.
struct Cube
{
    std::uint32_t size = 0; // nodes a side, >= 2
    Domain domain;
    std::vector<float> nodes; // size^3 nodes of red, green, blue, red fastest, then kNodePadding
};

// Floats behind the last node of a cube: a node is read as four floats.
inline constexpr std::size_t kNodePadding = 1;

struct Look
{
    CdlMode cdlMode = CdlMode::None;
    Cdl cdl;
    std::optional<Curves> curves; // before the cube when there are both
    std::optional<Cube> cube;
    float strength = 1.0F; // 0..1: how much of curves and cube shows over their own input
    std::string title;     // UTF-8
};

} // namespace ReferenceRenderer
