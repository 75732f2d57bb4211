// Which samples of the shared output buffer, and of what lies around it, are read when a part of
// the output is packed. Pure: no windows.h. Tests: tests/effect/packed_walk_test.cpp.
#pragma once

#include "support/geometry.h"

#include <cstddef>
#include <cstdint>
#include <optional>

// A walk over `height` rows of `width` samples each.
struct PackedWalk
{
    std::int64_t firstSample = 0;  // counted from the buffer's first one; may lie outside it
    std::int32_t rowPadding = 0;   // samples between the rows; may be negative
    std::size_t samplesBefore = 0; // that are read before the buffer's first one
    std::size_t samplesBehind = 0; // and behind its last one
    bool isWholeFrame = false;
};

// The walk for `area` over a buffer of `bufferWidth` x `bufferHeight` samples. None when a number
// does not fit its type.
//
// A part starts at its place in the buffer. Its row padding is stated in this product by contract,
// although a padding counts samples: rows of a part that is not as wide as the buffer are taken
// from further and further down, beyond the buffer's end. A host gets the right picture by
// executing whole frames, for which the padding is 0.
std::optional<PackedWalk> WalkOver(const Geometry::Rect& area, std::int32_t bufferWidth,
                                   std::int32_t bufferHeight) noexcept;
