#include "tools/glazelhost/commands/shared_options.h"

#include <utility>

CLI::Validator Undescribed(CLI::Validator validator)
{
    return validator.description("");
}

CLI::Validator OneOf(const std::vector<std::string>& words)
{
    return Undescribed(CLI::IsMember(words));
}

void AddToolOptions(CLI::App& command, ToolPaths& tools, bool withPlugin)
{
    command
        .add_option("--renderer", tools.rendererFolder,
                    "folder of GZ3Renderer_x64.dll (default: this program's folder, the system's, "
                    "the current one, then PATH)")
        ->envname("GLAZEL_RENDERER")
        ->type_name("DIR");
    if (withPlugin)
    {
        command
            .add_option("--plugin", tools.plugin,
                        "the plug-in (default: GlazelDX_x64.dll beside this program)")
            ->type_name("FILE");
    }
}

void AddUnclamped(CLI::App& command, bool& unclamped)
{
    command.add_flag("--unclamped", unclamped, "apply a CDL without clamping between its steps");
}

void AddLookOptions(CLI::App& command, std::string& linear, bool& unclamped)
{
    command
        .add_option("--linear", linear,
                    "take the pixels for linear light or not (default: as the look says)")
        ->check(OneOf({"on", "off"}))
        ->type_name("on|off");
    AddUnclamped(command, unclamped);
}

void AddDepth(CLI::App& command, std::string& depth)
{
    command
        .add_option("--depth", depth,
                    "precision to work in (default: 8 for 8-bit input, else float)")
        ->check(OneOf({"8", "float"}))
        ->type_name("8|float");
}

std::optional<bool> SwitchOf(const std::string& word)
{
    return word.empty() || word == "auto" ? std::nullopt : std::optional(word == "on");
}

std::optional<SampleType> SampleTypeOf(const std::string& word)
{
    if (word.empty())
    {
        return std::nullopt;
    }
    return word == "8" ? SampleType::Byte : SampleType::Float;
}
