// The texts about an import: what a look holds, and the JSON that describes an import or its
// failure. Pure: no windows.h. Tests: tests/reference_renderer/core/look_import_test.cpp.
#pragma once

#include "reference_renderer/core/look_import.h"

#include <string>
#include <string_view>

namespace ReferenceRenderer
{

// {"kind":..., "title":..., "contents":..., "warnings":[...], "largestError":...}
std::string DescribeAsJson(const ImportedLook& imported);

// {"error": "..."}
std::string DescribeAsJson(std::string_view error);

} // namespace ReferenceRenderer
