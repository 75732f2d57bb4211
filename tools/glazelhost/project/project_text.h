// The text of a project: JSON that holds the effect's look and the keyframes.
// docs/host-contract.md describes it.
// Pure: no windows.h. Tests: tests/tools/glazelhost/project/project_text_test.cpp.
#pragma once

#include "tools/glazelhost/project/keyframe_track.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace GlazelHost
{

// What a project holds beside the effect's own look.
struct Project
{
    Ease ease = Ease::Linear;
    std::vector<Keyframe> keyframes; // in the order of their times; none: the look stands alone
};

struct StoredProject
{
    std::string effect;          // its class, in braces
    std::vector<std::byte> look; // the effect's own, as it stores it
    Project project;
};

// The text carries a seal, so that a change of any value in it is found.
std::string TextOf(const StoredProject& stored);

// Throws HostError, naming `path`, for a text that is no project's, from a newer version, or not as
// it was written.
StoredProject ParseProject(std::string_view text, const std::string& path);

// The lines of everybody who finds these.
[[noreturn]] void ThrowNoProject(const std::string& path);
[[noreturn]] void ThrowDamagedProject(const std::string& path, const std::string& what);

} // namespace GlazelHost
