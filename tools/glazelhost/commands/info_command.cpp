#include "contract/class_ids.h"
#include "tools/glazelhost/commands/commands.h"

#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/plugin/effect_interfaces.h"
#include "tools/glazelhost/plugin/plugin_module.h"
#include "tools/glazelhost/plugin/renderer_library.h"
#include "tools/glazelhost/ui/console.h"
#include "tools/glazelhost/windows_text.h"

#include <nlohmann/json.hpp>

namespace GlazelHost
{

namespace
{

using Json = nlohmann::ordered_json;

Json RendererJson(const RendererState& state)
{
    Json json{{"usable", state.IsUsable()}, {"file", state.path}, {"version", state.version}};
    if (state.library.problem != LibraryProblem::None)
    {
        json["problem"] = state.library.why;
        json["remedy"] = state.library.remedy;
    }
    else if (!state.missingEntryPoints.empty())
    {
        json["problem"] = "required entry points are missing";
        json["remedy"] = "use a renderer that has every required entry point";
    }
    json["missingEntryPoints"] = state.missingEntryPoints;
    json["absentOptionalEntryPoints"] = state.absentOptions;
    json["missingLibraries"] = state.library.missingLibraries;
    return json;
}

Json ClassJson(const PluginModule& module, const char* name, REFCLSID classId)
{
    CComPtr<IClassFactory> factory;
    const HRESULT found = module.GetClassObject(classId, factory);
    Json json{{"name", name}, {"available", SUCCEEDED(found)}};
    if (FAILED(found))
    {
        json["problem"] = ResultText(found);
    }
    return json;
}

Json EffectJson(const PluginModule& module)
{
    try
    {
        const CComPtr<IUnknown> effect = module.CreateEffect();
        Json interfaces = Json::array();
        for (const NamedInterface& row : kEffectInterfaces)
        {
            CComPtr<IUnknown> found;
            const HRESULT result =
                effect->QueryInterface(row.iid, reinterpret_cast<void**>(&found));
            interfaces.push_back({{"name", row.name}, {"answers", SUCCEEDED(result)}});
        }
        return {{"created", true}, {"interfaces", interfaces}};
    }
    catch (const HostError& error)
    {
        return {{"created", false}, {"problem", error.what()}};
    }
}

Json PluginJson(const std::string& path)
{
    try
    {
        const PluginModule module(path);
        return {{"file", module.Path()},
                {"version", FileVersion(module.Path())},
                {"classes",
                 {ClassJson(module, "Plugin", CLSID_Plugin),
                  ClassJson(module, "PluginPP", CLSID_PluginPP)}},
                {"effect", EffectJson(module)}};
    }
    catch (const HostError& error)
    {
        return {{"problem", error.what()}};
    }
}

std::string ListOf(const Json& names)
{
    std::string list;
    for (const Json& name : names)
    {
        list += (list.empty() ? "" : ", ") + name.get<std::string>();
    }
    return list;
}

std::string VersionSuffix(const Json& json)
{
    const std::string version = json.value("version", "");
    return version.empty() ? "" : " (version " + version + ")";
}

std::string RendererText(const Json& renderer)
{
    std::string text =
        "renderer   " + renderer.at("file").get<std::string>() + VersionSuffix(renderer) + "\n";
    const auto add = [&text](const char* label, const std::string& value) {
        if (!value.empty())
        {
            text += std::string("  ") + label + ": " + value + "\n";
        }
    };
    text += renderer.at("usable").get<bool>() ? "  usable\n" : "  NOT usable\n";
    add("problem", renderer.value("problem", ""));
    add("remedy", renderer.value("remedy", ""));
    add("missing entry points", ListOf(renderer.at("missingEntryPoints")));
    add("optional entry points that it does without",
        ListOf(renderer.at("absentOptionalEntryPoints")));
    return text;
}

std::string PluginText(const Json& plugin)
{
    if (plugin.contains("problem"))
    {
        return "plug-in    NOT loaded\n  problem: " + plugin["problem"].get<std::string>() + "\n";
    }
    std::string text =
        "plug-in    " + plugin.at("file").get<std::string>() + VersionSuffix(plugin) + "\n";
    for (const Json& row : plugin.at("classes"))
    {
        text += "  class " + row.at("name").get<std::string>() + ": " +
                (row.at("available").get<bool>() ? "available" : row.value("problem", "")) + "\n";
    }
    const Json& effect = plugin.at("effect");
    if (!effect.at("created").get<bool>())
    {
        return text + "  effect: NOT created\n  problem: " + effect.value("problem", "") + "\n";
    }
    text += "  effect: created; its interfaces:\n";
    for (const Json& row : effect.at("interfaces"))
    {
        text += "    " + row.at("name").get<std::string>() +
                (row.at("answers").get<bool>() ? "" : "  DOES NOT ANSWER") + "\n";
    }
    return text;
}

} // namespace

void RunCommand(const InfoCommand& command, Reporter& /*reporter*/)
{
    const RendererLibrary renderer(command.tools.rendererFolder);
    const Json report{
        {"program", {{"file", PathOfModule(nullptr)}, {"version", GLAZEL_VERSION}}},
        {"renderer", RendererJson(renderer.State())},
        {"plugin", PluginJson(command.tools.plugin)},
    };
    if (command.json)
    {
        WriteStandardOutput(report.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
    }
    else
    {
        const Json& program = report.at("program");
        WriteStandardOutput("program    " + program.at("file").get<std::string>() +
                            VersionSuffix(program) + "\n" + RendererText(report.at("renderer")) +
                            PluginText(report.at("plugin")));
    }
    renderer.Require();
    const Json& plugin = report.at("plugin");
    if (!plugin.contains("effect") || !plugin["effect"].at("created").get<bool>())
    {
        throw HostError("the plug-in", "it makes no effect", "do what is told above about it");
    }
}

} // namespace GlazelHost
