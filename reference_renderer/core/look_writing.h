// The bytes of the files that a look is written as for other programs: .cube and .cc.
// Pure: no windows.h. Tests: tests/reference_renderer/core/look_writing_test.cpp.
#pragma once

#include "reference_renderer/core/look_export.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ReferenceRenderer
{

struct WrittenLook
{
    std::string bytes;
    std::string contents;            // in words
    std::vector<std::string> losses; // what it does not keep of the look
};

// A .cube file of the tables that ExportTables makes of the same arguments.
WrittenLook WriteCubeFile(const StoredLook* look, std::optional<std::uint32_t> points,
                          const GradeColours& grade, std::string_view title);

// Why a .cc file cannot hold a look, or "".
std::string WhyNoCorrection(const StoredLook& look);

// A .cc file of a look that IsCorrection.
WrittenLook WriteCorrectionFile(const StoredLook& look, std::string_view title);

} // namespace ReferenceRenderer
