// The files that the editor writes a look as. Pure: no windows.h.
// Tests: tests/reference_renderer/editor/export_format_test.cpp.
#pragma once

#include "reference_renderer/core/look_writing.h"
#include "reference_renderer/core/prepared_look.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace ReferenceRenderer
{

struct ExportFormat
{
    const char* shown; // to choose from
    const char* ending;
    std::optional<std::uint32_t> points; // of a cube
};

// clang-format off
inline constexpr std::array kExportFormats{
    ExportFormat{"3D LUT, 33 points (*.cube)", ".cube", 33},
    ExportFormat{"3D LUT, 17 points (*.cube)", ".cube", 17},
    ExportFormat{"3D LUT, 65 points (*.cube)", ".cube", 65},
    ExportFormat{"CDL (*.cc)",                 ".cc",   {}},
    ExportFormat{"Look (*.look)",              ".look", {}},
};
// clang-format on

// The format of a file of that name, UTF-8: the chosen one, or where its ending is that of another,
// the first of these.
const ExportFormat& ExportFormatOf(std::string_view path, std::size_t chosen) noexcept;

// The name with the ending of the format, which it may have already.
std::string WithEnding(std::string_view path, const ExportFormat& format);

// Why a file of that format cannot hold the look, and what to do, or "".
std::string WhyNotExported(const ExportFormat& format, const StoredLook& look);

// The file of a look that it can hold. `record` is the one that `look` was read from.
WrittenLook Exported(const ExportFormat& format, const PreparedLook& look,
                     std::span<const std::uint8_t> record, std::string_view title);

} // namespace ReferenceRenderer
