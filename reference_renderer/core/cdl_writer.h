// Writes a correction as an ASC CDL file of one correction, a .cc file.
// Pure: no windows.h. Tests: tests/reference_renderer/core/cdl_writer_test.cpp.
#pragma once

#include "reference_renderer/core/look.h"

#include <string>
#include <string_view>

namespace ReferenceRenderer
{

// Its description is `title`, in UTF-8, and its id what an XML name can hold of it. Numbers are
// written so that they read back to the last bit.
std::string CorrectionFileText(const Cdl& cdl, std::string_view title);

} // namespace ReferenceRenderer
