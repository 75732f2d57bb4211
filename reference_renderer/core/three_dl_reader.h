// Reads .3dl files: a cube of whole numbers, blue fastest, behind the list of the positions of its
// nodes; with or without the lines "3DMESH" and "Mesh A B" in front. Pure: no windows.h.
// Tests: tests/reference_renderer/core/three_dl_reader_test.cpp.
#pragma once

#include "reference_renderer/core/read_look.h"

#include <string_view>

namespace ReferenceRenderer
{

// By the first lines of the contents, which start behind any byte order mark.
bool LooksLike3dl(std::string_view text) noexcept;

// The look in `text`. `path` is for messages. Throws ImportError.
ReadLook Read3dl(std::string_view text, std::string_view path);

} // namespace ReferenceRenderer
