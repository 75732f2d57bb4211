#include "tools/glazelhost/commands/shared_options.h"

#include "tools/glazelhost/host_error.h"

#include <charconv>
#include <cmath>
#include <utility>

namespace GlazelHost
{

namespace
{

std::optional<double> NumberOf(std::string_view text)
{
    double number = 0.0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end && std::isfinite(number) ? std::optional(number)
                                                                        : std::nullopt;
}

} // namespace

void ThrowUsage(const std::string& command, const std::string& what, const std::string& why)
{
    throw HostError(what, why, "see \"glazelhost " + command + " --help\"", ExitCode::WrongUsage);
}

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

void AddRenderLinear(CLI::App& command, std::string& linear)
{
    command
        .add_option("--linear", linear, "take the pixels for linear light or not (default: auto)")
        ->check(OneOf({"auto", "on", "off"}))
        ->type_name("auto|on|off");
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

void AddFrame(CLI::App& command, std::optional<std::int64_t>& frame)
{
    command
        .add_option("--frame", frame,
                    "number of the frame, as --frames of \"render\" has it (default: the first)")
        ->type_name("N");
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

std::optional<double> FractionOf(std::string_view word)
{
    const auto stroke = word.find('/');
    const auto over = NumberOf(word.substr(0, stroke));
    const auto under =
        stroke == std::string_view::npos ? std::optional(1.0) : NumberOf(word.substr(stroke + 1));
    if (!over || !under || *under <= 0.0 || !std::isfinite(*over / *under))
    {
        return std::nullopt;
    }
    return *over / *under;
}

std::pair<int, int> SizeOf(const std::string& word, const char* command)
{
    const auto refuse = [&](const std::string& why) { ThrowUsage(command, "--size " + word, why); };
    int width = 0;
    int height = 0;
    const char* const end = word.data() + word.size();
    const auto first = std::from_chars(word.data(), end, width);
    const bool hasCross = first.ec == std::errc() && first.ptr != end && *first.ptr == 'x';
    const auto second = hasCross ? std::from_chars(first.ptr + 1, end, height) : first;
    if (!hasCross || second.ec != std::errc() || second.ptr != end)
    {
        refuse("a size is WIDTHxHEIGHT, as in 1920x1080");
    }
    if (width < 1 || height < 1 || width > kLargestSide || height > kLargestSide)
    {
        refuse("width and height are from 1 to " + std::to_string(kLargestSide));
    }
    return {width, height};
}

} // namespace GlazelHost
