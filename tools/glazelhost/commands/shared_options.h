// Options that several commands have. Pure: no windows.h.
#pragma once

#include "tools/glazelhost/commands/command_line.h"
#include "tools/glazelhost/media/frame_io.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace GlazelHost
{

// What the options fill lives as long as `command`.

// Throws HostError (WrongUsage) that names the help of `command`.
[[noreturn]] void ThrowUsage(const std::string& command, const std::string& what,
                             const std::string& why);

// Without the text that CLI11 would add to the help: the option's own says it already.
CLI::Validator Undescribed(CLI::Validator validator);
CLI::Validator OneOf(const std::vector<std::string>& words);

void AddToolOptions(CLI::App& command, ToolPaths& tools, bool withPlugin);
// "auto" too: as a render chooses it.
void AddRenderLinear(CLI::App& command, std::string& linear);
void AddUnclamped(CLI::App& command, bool& unclamped);
// `linear` is the option that the record of an imported look gets.
void AddLookOptions(CLI::App& command, std::string& linear, bool& unclamped);
void AddDepth(CLI::App& command, std::string& depth);
void AddFrame(CLI::App& command, std::optional<std::int64_t>& frame);

// Of words that the options have checked; none for an empty one and for "auto".
std::optional<bool> SwitchOf(const std::string& word);
std::optional<SampleType> SampleTypeOf(const std::string& word);

// "0.004" or "1/255"; none for what is no finite number, or has 0 or less under the stroke.
std::optional<double> FractionOf(std::string_view word);

// "1920x1080" as width and height. Throws like ThrowUsage.
std::pair<int, int> SizeOf(const std::string& word, const char* command);

} // namespace GlazelHost
