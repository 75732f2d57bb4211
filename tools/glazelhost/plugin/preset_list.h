// Finding a preset by its name. Pure: no windows.h.
// Tests: tests/tools/glazelhost/plugin/preset_list_test.cpp.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace GlazelHost
{

// The place of `name`, letter by letter, in the effect's list. Throws HostError, which lists what
// there is, when it is not in it.
std::size_t PresetIndex(const std::vector<std::string>& names, const std::string& name);

} // namespace GlazelHost
