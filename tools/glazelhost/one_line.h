// Texts for error lines. Pure: no windows.h.
// Tests: tests/tools/glazelhost/one_line_test.cpp.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace GlazelHost
{

// `text` with every run of control characters and spaces as one space, none at either end.
std::string OneLine(std::string_view text);

// With commas between.
std::string Joined(const std::vector<std::string>& names);

} // namespace GlazelHost
