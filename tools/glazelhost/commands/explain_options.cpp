#include "tools/glazelhost/commands/explain_options.h"

#include "tools/glazelhost/commands/shared_options.h"
#include "tools/glazelhost/host_error.h"

#include <CLI/CLI.hpp>

#include <array>
#include <charconv>
#include <cmath>
#include <string_view>
#include <tuple>
#include <utility>

namespace GlazelHost
{

namespace
{

// The words between the commas.
template <std::size_t Count>
std::optional<std::array<std::string_view, Count>> Split(std::string_view text)
{
    std::array<std::string_view, Count> words;
    for (std::size_t i = 0; i < Count; ++i)
    {
        const auto comma = text.find(',');
        if ((comma == std::string_view::npos) != (i + 1 == Count))
        {
            return std::nullopt;
        }
        words[i] = text.substr(0, comma);
        text.remove_prefix(comma == std::string_view::npos ? text.size() : comma + 1);
    }
    return words;
}

std::pair<int, int> PlaceOf(const std::string& word)
{
    std::array<int, 2> numbers{};
    const auto words = Split<2>(word);
    for (std::size_t i = 0; i < numbers.size(); ++i)
    {
        const std::string_view text = words ? (*words)[i] : std::string_view();
        const char* const end = text.data() + text.size();
        const auto [stop, error] = std::from_chars(text.data(), end, numbers[i]);
        if (text.empty() || error != std::errc() || stop != end || numbers[i] < 0)
        {
            ThrowUsage("explain", word, "a pixel is X,Y, from 0,0 at the upper left");
        }
    }
    return {numbers[0], numbers[1]};
}

std::array<float, 3> ColourOf(const std::string& word)
{
    std::array<float, 3> colour{};
    const auto words = Split<3>(word);
    for (std::size_t i = 0; i < colour.size(); ++i)
    {
        const auto number = words ? FractionOf((*words)[i]) : std::nullopt;
        if (!number || !std::isfinite(static_cast<float>(*number)))
        {
            ThrowUsage(
                "explain", "--colour " + word,
                "a colour is RED,GREEN,BLUE from 0 to 1, as in 0.5,0.25,1 or 128/255,64/255,1");
        }
        colour[i] = static_cast<float>(*number);
    }
    return colour;
}

} // namespace

void AddExplainOptions(CLI::App& command, ExplainCommand& explain, ExplainWords& words)
{
    // No comma in the name: for CLI11 it would be two.
    command.add_option("PIXEL", words.place, "X,Y, from 0,0 at the upper left")->type_name("");
    command.add_option("INPUT", explain.render.source.path, "the picture, sequence or stream")
        ->type_name("");
    command.add_option("--colour", words.colour, "a colour instead of a pixel")->type_name("R,G,B");
    command.add_option("--look", explain.render.look, "the look to explain")
        ->required()
        ->type_name("FILE");
    AddRenderLinear(command, words.linear);
    AddUnclamped(command, explain.render.unclamped);
    AddDepth(command, words.depth);
    AddFrame(command, explain.frame);
    command.add_option("--size", words.size, "size of raw input")->type_name("WxH");
    command.add_flag("--json", explain.json, "as one JSON object");
    AddToolOptions(command, explain.render.tools, true);
}

ExplainCommand FinishExplain(ExplainCommand explain, const ExplainWords& words)
{
    SourceOptions& source = explain.render.source;
    if (!words.colour.empty())
    {
        if (!words.place.empty() || explain.frame || !words.size.empty())
        {
            ThrowUsage("explain", "--colour", "it stands in the place of PIXEL and INPUT");
        }
        explain.colour = ColourOf(words.colour);
    }
    else if (source.path.empty())
    {
        ThrowUsage("explain", "command line", "there is neither PIXEL and INPUT nor --colour");
    }
    else if (source.path == kStandardStream)
    {
        ThrowUsage("explain", "standard input", "the picture has to be a file");
    }
    else
    {
        std::tie(explain.x, explain.y) = PlaceOf(words.place);
    }
    if (!words.size.empty())
    {
        std::tie(source.width, source.height) = SizeOf(words.size, "explain");
    }
    explain.render.linear = SwitchOf(words.linear);
    explain.render.depth = SampleTypeOf(words.depth);
    return explain;
}

} // namespace GlazelHost
