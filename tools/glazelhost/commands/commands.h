// The commands of the program. Each runs on one thread, which has initialised COM (for the page as
// a single-threaded apartment), and throws HostError when the job failed.
#pragma once

#include "tools/glazelhost/commands/command_line.h"
#include "tools/glazelhost/host_error.h"

#include <functional>

namespace GlazelHost
{

class Reporter;

// Notes, progress and warnings go to `reporter`.
void RunCommand(const RenderCommand& command, Reporter& reporter);
// Returns when the user has closed the window. Warnings about the look go to `reporter`.
void RunCommand(const PageCommand& command, Reporter& reporter);
// What the look holds goes to standard output.
void RunCommand(const LookCommand& command, Reporter& reporter);
// The record between two looks, as the effect blends keyframes.
void RunCommand(const BlendCommand& command, Reporter& reporter);
// What differs goes to standard output. Throws HostError (OverWarning, OverLimit) behind that when
// it is more than the command allows.
void RunCommand(const CompareCommand& command, Reporter& reporter);
// What the look does to the pixel goes to standard output. Throws HostError behind that when the
// plug-in did something else. Warnings about the look go to `reporter`.
void RunCommand(const ExplainCommand& command, Reporter& reporter);
// The effect's presets go to standard output.
void RunCommand(const PresetsCommand& command, Reporter& reporter);
// Everything goes to standard output; that something is missing is an answer, not a failure.
void RunCommand(const InfoCommand& command, Reporter& reporter);
// States and reasons go to standard output, a verdict last. Throws HostError (OverWarning,
// OverLimit) behind that when not all held. Runs this program again for each group of checks.
void RunCommand(const ValidateCommand& command, Reporter& reporter);
// The text goes to standard output.
void RunCommand(const TextCommand& command, Reporter& reporter);

// Runs `operation` and turns what it throws into a line of `reporter` and the program's exit code.
ExitCode ResultOf(Reporter& reporter, const std::function<void()>& operation);
// The command so, with COM for its time.
ExitCode RunToEnd(const Command& command, Reporter& reporter);

} // namespace GlazelHost
