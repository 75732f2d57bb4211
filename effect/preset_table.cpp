#include "effect/preset_table.h"

namespace
{

SessionData g_presets[kPresetCount];

} // namespace

SessionData* PresetTable() noexcept
{
    return g_presets;
}
