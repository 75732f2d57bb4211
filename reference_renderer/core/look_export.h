// Turns looks into tables that other programs read: as they are where a .cube file holds the whole
// look, else sampled, with what gets lost. Pure: no windows.h.
// Tests: tests/reference_renderer/core/look_export_test.cpp.
#pragma once

#include "reference_renderer/core/look.h"
#include "reference_renderer/core/look_record.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace ReferenceRenderer
{

// Grades display values in place, all in one go.
using GradeColours = std::function<void(std::span<Rgb> colours)>;

// The sizes of a sampled cube.
inline constexpr std::uint32_t kFewestPoints = 2;
inline constexpr std::uint32_t kMostPoints = kStoredCubeSize;

struct CubeExport
{
    Look tables;                     // one that FitsCubeFile, without a title
    double largestError = 0.0;       // between the look and the tables, within their domain
    std::vector<std::string> losses; // what the tables do not keep of the look, for the user
};

// The tables for a look that `grade` applies. `look` says what that look is, null when nobody
// knows. With `points` they are one cube of that size; without, the look's own tables where it has
// nothing else, or one cube of the first size that keeps it within 1/4096. Where none does, what a
// correction does to each channel alone goes into curves, before a cube where more follows, if that
// at least halves the error. Nodes of the look's own size and domain are those of the look. Throws
// what `grade` throws.
CubeExport ExportTables(const StoredLook* look, std::optional<std::uint32_t> points,
                        const GradeColours& grade);

// Whether slope, offset, power and saturation are all that there is of a look.
bool IsCorrection(const StoredLook& look) noexcept;

} // namespace ReferenceRenderer
