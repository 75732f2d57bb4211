// Reads .clf files, the Common LUT Format of the Academy and the ASC: a list of process nodes,
// which become one look. Pure: no windows.h. Tests:
// tests/reference_renderer/core/clf_reader_test.cpp.
#pragma once

#include "reference_renderer/core/read_look.h"

#include <string>
#include <string_view>

namespace ReferenceRenderer
{

// By the root element of an XML text.
bool LooksLikeClf(std::string_view text) noexcept;

// The look in `text`, which is consumed: the parser works in it. `path` is for messages. Nodes that
// are not known are refused. Throws ImportError.
ReadLook ReadClf(std::string text, std::string_view path);

} // namespace ReferenceRenderer
