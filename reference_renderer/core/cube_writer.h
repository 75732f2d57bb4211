// Writes the tables of looks as .cube files: one table with DOMAIN_MIN and DOMAIN_MAX where its
// domain is not 0..1, or curves before a cube with LUT_1D_INPUT_RANGE and LUT_3D_INPUT_RANGE.
// Pure: no windows.h. Tests: tests/reference_renderer/core/cube_writer_test.cpp.
#pragma once

#include "reference_renderer/core/look.h"

#include <string>

namespace ReferenceRenderer
{

// Whether a file can hold the tables of `look`, of which there is one at least: an INPUT_RANGE is
// the same for all channels.
bool FitsCubeFile(const Look& look) noexcept;

// The title and the tables of a look that FitsCubeFile; its correction and its strength are not
// part of it. Numbers are written so that they read back to the last bit.
std::string CubeFileText(const Look& look);

} // namespace ReferenceRenderer
