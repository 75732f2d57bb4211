// The options of "render". Pure: no windows.h.
// Tests: tests/tools/glazelhost/commands/command_line_test.cpp.
#pragma once

#include "tools/glazelhost/commands/command_line.h"
#include "tools/glazelhost/commands/look_options.h"

#include <cstdint>
#include <optional>
#include <string>

namespace CLI
{
class App;
}

namespace GlazelHost
{

// What CLI11 fills before it becomes a command.
struct RenderWords
{
    std::string linear;
    std::string depth;
    std::optional<std::string> frames; // an empty word is an error, not an absence
    std::optional<std::string> size;
    std::optional<std::string> framesPerSecond;
    std::string inputFormat;
    std::string inputLight;
    std::string outputFormat;
    std::vector<double> lumaWeights; // of red and of blue, or none
    std::string progress = "auto";
    LookWords look;
    bool quiet = false;
    bool dither = false;
    std::int64_t seed = -1;
    int bits = 0;
    std::int64_t firstNumber = -1;
    std::int64_t expected = 0;
};

// `render` and `words` live as long as `command`.
void AddRenderOptions(CLI::App& command, RenderCommand& render, RenderWords& words);

// Throws HostError (WrongUsage) when the options do not make sense together.
RenderCommand FinishRender(RenderCommand render, const RenderWords& words);

} // namespace GlazelHost
