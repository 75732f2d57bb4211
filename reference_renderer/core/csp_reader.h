// Reads .csp files: three curves of points in front, then one curve per channel or a cube.
// Pure: no windows.h. Tests: tests/reference_renderer/core/csp_reader_test.cpp.
#pragma once

#include "reference_renderer/core/read_look.h"

#include <string_view>

namespace ReferenceRenderer
{

// By the first line of the contents, which start behind any byte order mark.
bool LooksLikeCsp(std::string_view text) noexcept;

// The look in `text`. `path` is for messages. Throws ImportError.
ReadLook ReadCsp(std::string_view text, std::string_view path);

} // namespace ReferenceRenderer
