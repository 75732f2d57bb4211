// The options of "compare". Pure: no windows.h.
// Tests: tests/tools/glazelhost/commands/compare_options_test.cpp.
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
struct CompareWords
{
    std::string threshold;
    std::string warnOver;
    std::string failOver;
    std::string size;
};

// `compare` and `words` live as long as `command`.
void AddCompareOptions(CLI::App& command, CompareCommand& compare, CompareWords& words);

// Throws HostError (WrongUsage) when the options do not make sense together.
CompareCommand FinishCompare(CompareCommand compare, const CompareWords& words);

} // namespace GlazelHost
