// Loads and unloads, and what they leave in the process.
#pragma once

#include "tools/glazelhost/validate/check.h"

#include <windows.h>

#include <functional>

namespace GlazelHost
{

// `use` loads a library, uses it, unloads it and answers where it was, or null when it could not.
// What grows with the number of its calls is a failure.
void CheckLoads(Check& check, unsigned loads, const std::function<HMODULE()>& use);

} // namespace GlazelHost
