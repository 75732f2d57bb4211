// Brings tables to a size that a record holds, and measures what storing a look costs.
// Pure: no windows.h. Tests: tests/reference_renderer/core/lut_fitting_test.cpp.
#pragma once

#include "reference_renderer/core/look.h"
#include "reference_renderer/core/look_record.h"

#include <string>
#include <vector>

namespace ReferenceRenderer
{

// What storing a look costs: the largest difference in any channel between the tables of the look
// and what is stored, and the value that reaches the table there.
struct StoringError
{
    double size = 0.0;
    Rgb input;
    bool atNode = false; // of the cube; otherwise along greys at an entry of the curves
};

// The largest difference in any channel.
double Difference(const Rgb& left, const Rgb& right) noexcept;

// "largest error 0.8 of an 8-bit code, at 0.02 0.02 0.01".
std::string LargestErrorText(double size, const Rgb& input);

// Fills `stored` from a look with a cube of any size: resampled over its domain where it has more
// points than a record holds, in coarser steps where it takes too much room, and with fewer points
// only where the steps would be seen. Says in `warnings` what is lost.
StoringError StoreFitted(const Look& look, StoredLook& stored, std::vector<std::string>& warnings);

// Compares at every node of the cube, and along greys at every entry of the curves.
StoringError LargestError(const Look& source, const StoredLook& stored);

} // namespace ReferenceRenderer
