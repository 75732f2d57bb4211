#include "tools/glazelhost/commands/commands.h"

#include "tools/glazelhost/plugin/effect_controls.h"
#include "tools/glazelhost/plugin/plugin_module.h"
#include "tools/glazelhost/plugin/renderer_library.h"
#include "tools/glazelhost/ui/console.h"

#include <nlohmann/json.hpp>

namespace GlazelHost
{

void RunCommand(const PresetsCommand& command, Reporter& /*reporter*/)
{
    const RendererLibrary renderer(command.tools.rendererFolder);
    renderer.Require();
    const PluginModule plugin(command.tools.plugin);
    const CComPtr<IUnknown> effect = plugin.CreateEffect();
    const std::vector<std::string> names = EffectControls(*effect, plugin.Path()).PresetNames();

    std::string text;
    auto presets = nlohmann::ordered_json::array();
    for (std::size_t index = 0; index < names.size(); ++index)
    {
        text += std::to_string(index) + "  " + names[index] + "\n";
        presets.push_back({{"index", index}, {"name", names[index]}});
    }
    WriteStandardOutput(command.json
                            ? nlohmann::ordered_json{{"presets", std::move(presets)}}.dump(2) + "\n"
                            : text);
}

} // namespace GlazelHost
