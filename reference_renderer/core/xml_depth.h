// How deeply the elements of an XML text are nested, without parsing it. Pure: no windows.h.
// Tests: tests/reference_renderer/core/xml_depth_test.cpp.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ReferenceRenderer
{

// The answer for a text with a document type declaration: what it may hold is not followed.
inline constexpr std::size_t kNotCountable = SIZE_MAX;

// Never less than the depth to which a parser of the text would descend; for text that is not
// well-formed it may be more.
std::size_t DeepestElement(std::string_view text) noexcept;

} // namespace ReferenceRenderer
