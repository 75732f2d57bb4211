// Reads .spi1d files, curves, and .spi3d files, cubes. Pure: no windows.h.
// Tests: tests/reference_renderer/core/spi_reader_test.cpp.
#pragma once

#include "reference_renderer/core/look.h"

#include <string>
#include <string_view>
#include <vector>

namespace ReferenceRenderer
{

// By the first lines of the contents, which start behind any byte order mark.
bool LooksLikeSpi1d(std::string_view text) noexcept;
bool LooksLikeSpi3d(std::string_view text) noexcept;

// The look in `text`. `path` is for messages. Keywords that are not known are skipped with a
// warning. Throw ImportError.
Look ReadSpi1d(std::string_view text, std::string_view path, std::vector<std::string>& warnings);
Look ReadSpi3d(std::string_view text, std::string_view path, std::vector<std::string>& warnings);

} // namespace ReferenceRenderer
