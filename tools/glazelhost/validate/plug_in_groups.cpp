#include "tools/glazelhost/validate/check_group.h"
#include "tools/glazelhost/validate/plug_in_checks.h"

#include <array>

namespace GlazelHost
{

namespace
{

// clang-format off
constexpr std::array kPlugInGroups{
    CheckGroup{"plugin.exports", 1, "the module exports what COM calls", CheckPlugInExports},
    CheckGroup{"plugin.factory", 2, "class objects create, refuse and keep the module loaded", CheckPlugInFactory},
    CheckGroup{"plugin.identity", 2, "each object is one object behind all of its interfaces", CheckPlugInIdentity},
    CheckGroup{"plugin.aggregation", 3, "objects may be parts of others", CheckPlugInAggregation},
    CheckGroup{"plugin.setup", 3, "surfaces are taken, refused and given back as documented", CheckEffectSetup},
    CheckGroup{"plugin.properties", 3, "the properties of IDXEffect answer as documented", CheckEffectProperties},
    CheckGroup{"plugin.pages", 3, "the effect names its page", CheckEffectPages},
    CheckGroup{"plugin.presets", 3, "the preset is named and applied as documented", CheckEffectPresets},
    CheckGroup{"plugin.extension", 3, "the capabilities are told as documented", CheckEffectExtension},
    CheckGroup{"plugin.state", 3, "a look is stored byte for byte as it was loaded", CheckEffectState},
    CheckGroup{"plugin.frames", 4, "a frame of any size and format is what the renderer makes of it", CheckEffectFrames},
    CheckGroup{"plugin.keyframes", 4, "looks blend between keyframes as documented", CheckEffectKeyframes},
    CheckGroup{"plugin.automation", 4, "frames show the keyframes that the host has set", CheckEffectAutomatedFrames},
    CheckGroup{"plugin.page", 4, "the page's calls answer as documented", CheckPageCalls},
    CheckGroup{"plugin.exchange", 5, "the page and the host hear of changes and see the last frame", CheckEffectExchange},
    CheckGroup{"plugin.streams", 5, "a stream that fails or is slow gives the documented result", CheckEffectStreams},
    CheckGroup{"plugin.page_window", 5, "the page's window comes and goes", CheckPageWindow},
    CheckGroup{"plugin.storage", 6, "a look is stored in a storage", CheckEffectStorage},
    CheckGroup{"plugin.safety", 6, "scripts are told what is safe", CheckEffectSafety},
    CheckGroup{"plugin.failing_surfaces", 6, "a surface that fails gives its own result, and no lock stays", CheckEffectFailingSurfaces},
    CheckGroup{"plugin.unload", 6, "loads and unloads leave nothing in the process", CheckPlugInUnload},
    CheckGroup{"plugin.hostile_state", 7, "a look may hold any bytes", CheckEffectHostileState},
    CheckGroup{"plugin.threads", 8, "objects may be created on any thread", CheckPlugInThreads},
};
// clang-format on

} // namespace

std::span<const CheckGroup> PlugInGroups() noexcept
{
    return kPlugInGroups;
}

} // namespace GlazelHost
