// The order in which the nodes of a table are stored, and what each is expected to be from those
// before it. Writer and reader share it: both must get the same to the last bit, from additions and
// multiplications of floats in the order in which they stand here, none of them fused.
// Pure: no windows.h. Tests: tests/reference_renderer/core/table_coding_test.cpp.
#pragma once

#include "reference_renderer/core/four_floats.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include <emmintrin.h>

namespace ReferenceRenderer
{

// Tables hold whole numbers from 0 to this.
inline constexpr float kTopCode = 16.0F * 65535.0F;

// Nodes along each axis, red fastest; a curve is a table of one axis.
struct TableShape
{
    std::uint32_t red = 1;
    std::uint32_t green = 1;
    std::uint32_t blue = 1;

    std::size_t Nodes() const noexcept { return std::size_t{red} * green * blue; }
};

// Of a node, channel by channel; the fourth lane means nothing.
struct Expectation
{
    FourFloats code;
    FourFloats roughness; // how far the surroundings are from a straight line, in codes
};

namespace LatticeWalk
{

using TwoDoubles = double __attribute__((vector_size(16)));

// Two channels as the bits of a double, then the third: the node before this one may have been
// written just now, and four floats at once would have to wait for it. The fourth lane is 0.
inline FourFloats LoadThree(const float* node) noexcept
{
    double two;
    std::memcpy(&two, node, sizeof two);
    return _mm_movelh_ps(std::bit_cast<FourFloats>(TwoDoubles{two, 0.0}), _mm_load_ss(node + 2));
}

inline void StoreThree(float* node, FourFloats lanes) noexcept
{
    const double two = std::bit_cast<TwoDoubles>(lanes)[0];
    std::memcpy(node, &two, sizeof two);
    node[2] = lanes[2];
}

inline FourFloats All(float value) noexcept
{
    return LanesOf<FourFloats>::All(value);
}

inline FourFloats Smaller(FourFloats left, FourFloats right) noexcept
{
    return _mm_min_ps(left, right);
}

inline FourFloats Larger(FourFloats left, FourFloats right) noexcept
{
    return _mm_max_ps(left, right);
}

inline FourFloats Magnitude(FourFloats value) noexcept
{
    return std::bit_cast<FourFloats>(std::bit_cast<FourBits>(value) & 0x7FFFFFFFU);
}

inline FourFloats Limited(FourFloats code) noexcept
{
    return Smaller(Larger(code, All(0.0F)), All(kTopCode));
}

// The nodes on one line through the node in question that are known already: one and three
// distances before and behind it.
struct Line
{
    std::ptrdiff_t distance; // in floats
    bool hasNext;            // one distance behind
    bool hasEarlier;         // three distances before
    bool hasLater;           // three distances behind
    bool isWhole;            // all of them

    Line(std::ptrdiff_t floats, std::uint32_t place, std::uint32_t step,
         std::uint32_t size) noexcept
        : distance(floats), hasNext(place + step < size), hasEarlier(place >= 3 * step),
          hasLater(place + 3 * step < size), isWhole(hasEarlier && hasLater)
    {
    }
};

// What four nodes in a row let expect in their middle: a cubic through them. Where one of the two
// inner ones is at an end of the range and the other is not, values were probably cut off there:
// then the line through the nodes on the other side goes on, when it comes closer to that end.
inline Expectation Between(FourFloats earlier, FourFloats before, FourFloats next,
                           FourFloats later) noexcept
{
    const FourFloats zero = All(0.0F);
    const FourFloats top = All(kTopCode);
    const FourFloats sum = before + next;
    const FourFloats cubic = 0.5F * sum + (sum - (earlier + later)) * 0.0625F;
    const FourFloats bend =
        Larger(Magnitude(earlier + next - 2.0F * before), Magnitude(before + later - 2.0F * next));
    const FourInts beforeCut = (before == zero) | (before == top);
    const FourInts nextCut = (next == zero) | (next == top);
    constexpr int kColours = 7;
    if ((_mm_movemask_ps(std::bit_cast<FourFloats>(beforeCut | nextCut)) & kColours) == 0)
    {
        return {cubic, bend};
    }
    const FourInts oneCut = beforeCut ^ nextCut;
    const FourInts flat = beforeCut & (before == next);
    const FourFloats inside = Chosen(nextCut, before, next);
    const FourFloats end = Chosen(nextCut, next, before);
    const FourFloats goneOn = 1.5F * inside - 0.5F * Chosen(nextCut, earlier, later);
    const FourFloats middle = sum * 0.5F;
    const FourInts closer = Chosen(end == top, goneOn - middle, middle - goneOn) > zero;
    const FourFloats kinked = Chosen(oneCut & closer, goneOn, cubic);
    return {Chosen(flat, before, kinked),
            Chosen(flat, zero, Chosen(oneCut, Magnitude(before - next), bend))};
}

// The same where some of the four are missing: of lower degree.
inline Expectation AtBorder(const float* node, const Line& line) noexcept
{
    const FourFloats before = LoadThree(node - line.distance);
    const FourFloats earlier = line.hasEarlier ? LoadThree(node - 3 * line.distance) : before;
    if (!line.hasNext)
    {
        return {before + (before - earlier) * 0.5F, Magnitude(before - earlier)};
    }
    const FourFloats next = LoadThree(node + line.distance);
    if (line.hasEarlier)
    {
        return Between(earlier, before, next, 3.0F * (next - before) + earlier);
    }
    if (line.hasLater)
    {
        const FourFloats later = LoadThree(node + 3 * line.distance);
        return Between(3.0F * (before - next) + later, before, next, later);
    }
    return Between(2.0F * before - next, before, next, 2.0F * next - before);
}

inline Expectation Along(const float* node, const Line& line) noexcept
{
    if (line.isWhole)
    {
        return Between(LoadThree(node - 3 * line.distance), LoadThree(node - line.distance),
                       LoadThree(node + line.distance), LoadThree(node + 3 * line.distance));
    }
    return AtBorder(node, line);
}

// The smoother of two, or their mean where neither is much smoother.
inline Expectation Joined(const Expectation& left, const Expectation& right, float step) noexcept
{
    const FourInts onlyLeft = right.roughness > 2.0F * left.roughness + step;
    const FourInts onlyRight = left.roughness > 2.0F * right.roughness + step;
    const FourFloats mean = (left.code + right.code) * 0.5F;
    return {Chosen(onlyLeft, left.code, Chosen(onlyRight, right.code, mean)),
            Smaller(left.roughness, right.roughness)};
}

// The nodes between those of a lattice of twice the distance `step`: in the middle of its edges
// (one of the three is set), of its faces (two) or of its cells.
template <bool Red, bool Green, bool Blue, typename Visit>
void VisitBetween(float* codes, const TableShape& shape, std::uint32_t step, float precision,
                  Visit& visit)
{
    const std::ptrdiff_t greenFloats = std::ptrdiff_t{3} * shape.red;
    const std::ptrdiff_t blueFloats = greenFloats * shape.green;
    const auto distance = static_cast<std::ptrdiff_t>(step);
    for (std::uint32_t blue = Blue ? step : 0; blue < shape.blue; blue += 2 * step)
    {
        const Line alongBlue(distance * blueFloats, blue, step, shape.blue);
        for (std::uint32_t green = Green ? step : 0; green < shape.green; green += 2 * step)
        {
            const Line alongGreen(distance * greenFloats, green, step, shape.green);
            float* const row = codes + blue * blueFloats + green * greenFloats;
            for (std::uint32_t red = Red ? step : 0; red < shape.red; red += 2 * step)
            {
                float* const node = row + std::size_t{3} * red;
                Expectation expected;
                if constexpr (Red)
                {
                    expected = Along(node, Line(distance * 3, red, step, shape.red));
                }
                if constexpr (Green)
                {
                    const Expectation ofGreen = Along(node, alongGreen);
                    expected = Red ? Joined(expected, ofGreen, precision) : ofGreen;
                }
                if constexpr (Blue)
                {
                    const Expectation ofBlue = Along(node, alongBlue);
                    expected = Red || Green ? Joined(expected, ofBlue, precision) : ofBlue;
                }
                visit(node, expected);
            }
        }
    }
}

} // namespace LatticeWalk

// Calls `visit(node, expectation)` for every node of the table at `codes`, three floats a node,
// after all nodes that the expectation comes from. `precision` is the distance in codes below which
// differences do not count.
template <typename Visit>
void WalkLattice(float* codes, const TableShape& shape, float precision, Visit& visit)
{
    using namespace LatticeWalk;
    const std::uint32_t longest = std::max({shape.red, shape.green, shape.blue});
    std::uint32_t step = std::bit_ceil(std::max(longest, 2U) - 1);
    Expectation first{All(0.0F), All(kTopCode)};
    for (std::uint32_t blue = 0; blue < shape.blue; blue += step)
    {
        for (std::uint32_t green = 0; green < shape.green; green += step)
        {
            for (std::uint32_t red = 0; red < shape.red; red += step)
            {
                float* const node =
                    codes + 3 * ((std::size_t{blue} * shape.green + green) * shape.red + red);
                visit(node, first);
                first.code = LoadThree(node);
            }
        }
    }
    while (step > 1)
    {
        step /= 2;
        VisitBetween<true, false, false>(codes, shape, step, precision, visit);
        VisitBetween<false, true, false>(codes, shape, step, precision, visit);
        VisitBetween<false, false, true>(codes, shape, step, precision, visit);
        VisitBetween<true, true, false>(codes, shape, step, precision, visit);
        VisitBetween<true, false, true>(codes, shape, step, precision, visit);
        VisitBetween<false, true, true>(codes, shape, step, precision, visit);
        VisitBetween<true, true, true>(codes, shape, step, precision, visit);
    }
}

} // namespace ReferenceRenderer
