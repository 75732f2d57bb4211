#include "tools/glazelhost/commands/look_options.h"

#include "tools/glazelhost/commands/shared_options.h"
#include "tools/glazelhost/host_error.h"

#include <CLI/CLI.hpp>

#include <utility>

namespace GlazelHost
{

namespace
{

KeyLook KeyOf(const std::string& word)
{
    const auto equals = word.find('=');
    if (equals == std::string::npos || equals + 1 == word.size())
    {
        ThrowUsage("render", "--key " + word, "a keyframe is TIME=LOOK, as in 2.5=warm.cube");
    }
    const auto time = ParseKeyTime(std::string_view(word).substr(0, equals));
    if (!time)
    {
        ThrowUsage("render", "--key " + word,
                   "its time is seconds (2.5), HH:MM:SS.mmm (00:01:02.500) or a frame (48f)");
    }
    return {*time, word.substr(equals + 1)};
}

} // namespace

void AddRenderLook(CLI::App& command, RenderCommand& render, LookWords& words)
{
    constexpr char kGroup[] = "Look";
    for (CLI::Option* const shared : command.get_options([](const CLI::Option* option) {
             return option->check_name("--linear") || option->check_name("--unclamped");
         }))
    {
        shared->group(kGroup);
    }
    command.add_option("--look", render.look, "the look to apply")
        ->type_name("FILE")
        ->group(kGroup);
    command.add_option("--key", words.keys, "a look at a time; give it for each keyframe")
        ->allow_extra_args(false)
        ->type_name("TIME=LOOK")
        ->group(kGroup);
    command.add_option("--ease", words.ease, "from one keyframe to the next (default: linear)")
        ->check(CLI::IsMember(std::vector<std::string>{"linear", "smooth"}).description(""))
        ->type_name("linear|smooth")
        ->group(kGroup);
    command.add_option("--preset", render.preset, "a preset of the effect, applied to the look")
        ->type_name("NAME")
        ->group(kGroup);
    command.add_option("--project", render.project, "what --save-project kept")
        ->type_name("FILE")
        ->group(kGroup);
    command.add_option("--save-project", render.savedProject, "keep the look or the keyframes")
        ->type_name("FILE")
        ->group(kGroup);
}

void FinishRenderLook(RenderCommand& render, const LookWords& words)
{
    const bool keyed = !words.keys.empty();
    const std::pair<const char*, bool> sources[]{{"--look", render.look.has_value()},
                                                 {"--key", keyed},
                                                 {"--project", render.project.has_value()}};
    const char* chosen = nullptr;
    for (const auto& [name, given] : sources)
    {
        if (given && chosen != nullptr)
        {
            ThrowUsage("render", std::string(chosen) + " and " + name,
                       "a render has one of them only");
        }
        chosen = given ? name : chosen;
    }
    if (chosen == nullptr && !render.preset)
    {
        ThrowUsage("render", "command line", "there is no --look, --key, --project or --preset");
    }
    if (!words.ease.empty() && !keyed && !render.project)
    {
        ThrowUsage("render", "--ease", "it is for keyframes, and there is no --key or --project");
    }
    if (render.preset && keyed)
    {
        ThrowUsage("render", "--preset and --key", "a preset does not change keyframes");
    }
    if (render.preset && render.linear)
    {
        ThrowUsage("render", "--preset and --linear", "a preset brings that option itself");
    }
    if (render.project && render.unclamped)
    {
        ThrowUsage("render", "--project and --unclamped",
                   "the looks of a project are imported already");
    }
    if (words.keys.size() > kMostKeyframes)
    {
        ThrowUsage("render", "--key",
                   "there are more than " + std::to_string(kMostKeyframes) + " keyframes");
    }
    for (const std::string& word : words.keys)
    {
        render.keys.push_back(KeyOf(word));
    }
    if (!words.ease.empty())
    {
        render.ease = words.ease == "smooth" ? Ease::Smooth : Ease::Linear;
    }
}

} // namespace GlazelHost
