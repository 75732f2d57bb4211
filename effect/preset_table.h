// The effect's built-in presets.
#pragma once

#include "binding/session_data.h"

#include <cstdint>

inline constexpr std::int32_t kPresetCount = 1;
inline constexpr std::uint32_t kPresetNameBase = 10000; // string resource of preset 0's name

// kPresetCount records, shared by all effects from the module's load to its unload and only read.
// The one there is, "(Default)", is empty: applying it keeps the look and switches its option on.
SessionData* PresetTable() noexcept;
