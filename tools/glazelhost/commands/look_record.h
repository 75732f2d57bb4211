// Looks of the command line as records of the renderer.
#pragma once

#include "tools/glazelhost/plugin/renderer_library.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace GlazelHost
{

class Reporter;

// The record of the look at `path`, with the option "assume linear gamma" as `linear` says (none:
// as the look says). Warnings go to `reporter`. The renderer has been started. Throws HostError.
std::vector<std::byte> ImportRecord(const RendererLibrary& renderer, const std::string& path,
                                    bool unclamped, std::optional<bool> linear, Reporter& reporter);

// Throws HostError, which names `look`, when the record has no such option.
void SetLinear(std::span<std::byte> record, std::optional<bool> linear, const std::string& look);

} // namespace GlazelHost
