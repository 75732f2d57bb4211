// Brings tables to a size that a record holds, and measures what storing a look costs.
// Pure: no windows.h. Tests: tests/samples/renderer/lut_fitting_test.cpp.
#pragma once

#include "samples/renderer/look.h"
#include "samples/renderer/look_record.h"

#include <string>
#include <vector>

// `look` with a cube of more than kStoredCubeSize nodes a side, then curves of more than
// CurveCapacity entries, resampled over their domains; says so in `warnings`.
Look Fitted(const Look& look, std::vector<std::string>& warnings);

// The largest difference in any channel between the tables of `source` and what `stored` makes of
// the same values: at every node of the cube, and along greys at every entry of the curves. 0
// without tables.
double LargestError(const Look& source, const StoredLook& stored);
