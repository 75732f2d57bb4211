// The commands of the program. Each runs on one thread, which has initialised COM (for RunPage as a
// single-threaded apartment), and throws HostError when the job failed.
#pragma once

#include "tools/glazelhost/commands/command_line.h"

class Reporter;

// Notes, progress and warnings go to `reporter`.
void RunRender(const RenderCommand& command, Reporter& reporter);
// Returns when the user has closed the window. Warnings about the look go to `reporter`.
void RunPage(const PageCommand& command, Reporter& reporter);
// What the look holds goes to standard output.
void RunLook(const LookCommand& command);
// The record between two looks, as the effect blends keyframes.
void RunBlend(const BlendCommand& command);
// What differs goes to standard output. Throws HostError (OverWarning, OverLimit) behind that when
// it is more than the command allows.
void RunCompare(const CompareCommand& command);
// What the look does to the pixel goes to standard output. Throws HostError behind that when the
// plug-in did something else. Warnings about the look go to `reporter`.
void RunExplain(const ExplainCommand& command, Reporter& reporter);
// The effect's presets go to standard output.
void RunPresets(const PresetsCommand& command);
// Everything goes to standard output; that something is missing is an answer, not a failure.
void RunInfo(const InfoCommand& command);
