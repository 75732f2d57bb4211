// The options of "validate". Pure: no windows.h.
#pragma once

#include "tools/glazelhost/commands/command_line.h"

namespace CLI
{
class App;
}

namespace GlazelHost
{

// What the options fill lives as long as `command`.
void AddValidateOptions(CLI::App& command, ValidateCommand& validate);

// Throws HostError (WrongUsage) when the options do not make sense together.
ValidateCommand FinishValidate(ValidateCommand validate);

} // namespace GlazelHost
