// The numbers in the editor's boxes as text, the same in every locale.
// Pure: no windows.h. Tests: tests/reference_renderer/editor/number_text_test.cpp.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ReferenceRenderer
{

// Three decimals, or up to five where the value has more: "1.000", "-0.25", "0.01234" are written
// "1.000", "-0.250", "0.01234".
std::string NumberText(float value);

// As short as the value allows: "1", "-0.25", "100".
std::string ShortNumberText(float value);

// What was typed: a decimal number with a point or one comma, spaces around it, a sign and an
// exponent if need be. Nothing for any other text.
std::optional<float> TypedNumber(std::string_view text);

} // namespace ReferenceRenderer
