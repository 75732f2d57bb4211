// The options of "render" that say what the effect shows: a look, keyframes, a project, a preset.
// Pure: no windows.h. Tests: tests/tools/glazelhost/commands/look_options_test.cpp.
#pragma once

#include "tools/glazelhost/commands/command_line.h"

#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace GlazelHost
{

// What CLI11 fills before it becomes part of a command.
struct LookWords
{
    std::vector<std::string> keys; // TIME=LOOK
    std::string ease;
};

// `render` and `words` live as long as `command`.
void AddRenderLook(CLI::App& command, RenderCommand& render, LookWords& words);

// Throws HostError (WrongUsage) when the options do not make sense together.
void FinishRenderLook(RenderCommand& render, const LookWords& words);

} // namespace GlazelHost
