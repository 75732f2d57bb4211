// Blends two looks for an animation between them. Pure: no windows.h.
// Tests: tests/reference_renderer/core/look_blend_test.cpp.
//
// Numbers of the CDL and the strength of the tables blend linearly; a look without a CDL counts as
// a neutral one, and the blend clamps when either does. Tables over the same lattice blend entry by
// entry, and a look without tables counts as tables of strength 0: both are exact. Otherwise both
// are sampled over a common lattice that covers both domains:
// * curves alone: 16384 entries;
// * cubes over one domain: the smallest lattice up to kStoredCubeSize that holds all nodes of both,
//   which is exact too;
// * anything else: kStoredCubeSize nodes a side behind curves that space the nodes as the two looks
//   need them, 0.45 of each one's own curves (where these rise) plus 0.1 of a straight line. The
//   error is that of interpolating both looks between those nodes.
#pragma once

#include "reference_renderer/core/prepared_look.h"
#include "reference_renderer/core/record_tables.h"

namespace ReferenceRenderer
{

// The fraction as it counts: limited to 0..1, NaN is 0.
inline double BlendFraction(double fraction) noexcept
{
    const double notBelow = fraction > 0.0 ? fraction : 0.0;
    return notBelow < 1.0 ? notBelow : 1.0;
}

// Fills `blend`, at the precision of a record: all of `a` at fraction 0, all of `b` at 1. Does not
// allocate. `encoder` is for the largest tables that a record holds.
void BlendLooks(const PreparedLook& a, const PreparedLook& b, double fraction, StoredLook& blend,
                TableEncoder& encoder) noexcept;

} // namespace ReferenceRenderer
