#include "tools/glazelhost/commands/commands.h"

#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/safe_output.h"
#include "tools/glazelhost/plugin/effect_controls.h"
#include "tools/glazelhost/plugin/plugin_module.h"
#include "tools/glazelhost/plugin/renderer_library.h"
#include "tools/glazelhost/project/look_formats.h"

namespace GlazelHost
{

void RunCommand(const BlendCommand& command, Reporter& /*reporter*/)
{
    CheckIsRecordName(command.output);
    CheckOutputTarget(command.output, command.overwrite);
    const RendererLibrary renderer(command.tools.rendererFolder);
    renderer.Require();
    const PluginModule plugin(command.tools.plugin);
    const CComPtr<IUnknown> effect = plugin.CreateEffect(); // starts the renderer
    const auto import = [&](const std::string& look) {
        return renderer
            .ImportLook(look, command.unclamped ? RendererAPI::kImportUnclampedCdl
                                                : RendererAPI::kImportRecord)
            .record;
    };
    const std::vector<std::byte> earlier = import(command.earlier);
    const std::vector<std::byte> later = import(command.later);
    const std::vector<std::byte> blend =
        EffectControls(*effect, plugin.Path()).Blend(earlier, later, command.fraction);
    if (blend.empty())
    {
        throw HostError(command.output, "the blended record is too large for the effect to store",
                        "use smaller looks");
    }
    const auto output = OpenSafeOutput(command.output, command.overwrite);
    output->Write(blend.data(), blend.size());
    output->Commit();
}

} // namespace GlazelHost
