// The options of "explain". Pure: no windows.h.
// Tests: tests/tools/glazelhost/commands/explain_options_test.cpp.
#pragma once

#include "tools/glazelhost/commands/command_line.h"

#include <string>

namespace CLI
{
class App;
}

namespace GlazelHost
{

// What CLI11 fills before it becomes a command.
struct ExplainWords
{
    std::string place;
    std::string colour;
    std::string linear;
    std::string depth;
    std::string size;
};

// `explain` and `words` live as long as `command`.
void AddExplainOptions(CLI::App& command, ExplainCommand& explain, ExplainWords& words);

// Throws HostError (WrongUsage) when the options do not make sense together.
ExplainCommand FinishExplain(ExplainCommand explain, const ExplainWords& words);

} // namespace GlazelHost
