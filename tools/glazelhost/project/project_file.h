// Projects on disk: a look, or the keyframes of an animation, kept the way a host keeps them.
// Tests: tests/tools/glazelhost/project/project_file_test.cpp.
#pragma once

#include "tools/glazelhost/plugin/effect_controls.h"
#include "tools/glazelhost/project/project_text.h"

#include <cstddef>
#include <span>
#include <string>

namespace GlazelHost
{

// Paths are UTF-8. Everything throws HostError with one line.

// Gives the effect the look of the project at `path` and returns the rest. Refuses a file that is
// no project, is damaged, or comes from a newer version or another effect; the effect's look does
// not matter any more then.
Project OpenProject(const std::string& path, EffectControls& effect);

// Refuses a record that the effect would silently not store; `look` is its name for the user.
void CheckStorable(const std::string& look, std::span<const std::byte> record,
                   EffectControls& effect);

// What SaveProject would refuse of `path`: a file that exists is replaced only with `overwrite`,
// and only when it is a whole project that this version can read.
void CheckProjectTarget(const std::string& path, bool overwrite);

// Stores `project` with the effect's look. The file appears, or is replaced, when it is whole.
void SaveProject(const std::string& path, bool overwrite, const Project& project,
                 EffectControls& effect);

} // namespace GlazelHost
