// A group of checks: one row for each, from which the list, the choice, the runs and the documents
// follow. Pure: no windows.h.
#pragma once

#include <span>

namespace GlazelHost
{

inline constexpr int kLowestLevel = 1;
inline constexpr int kHostLevel = 5; // up to here a host can live with what is judged
inline constexpr int kHighestLevel = 10;

enum class SubjectKind
{
    Renderer,
    PlugIn,
};

class Check;

struct CheckGroup
{
    const char* name;    // begins with the kind: "renderer.frames"
    int level;           // from kLowestLevel to kHighestLevel
    const char* asks;    // what holds when it passes, one sentence
    void (*run)(Check&); // in a process of its own
};

std::span<const CheckGroup> RendererGroups() noexcept;
std::span<const CheckGroup> PlugInGroups() noexcept;

inline std::span<const CheckGroup> GroupsOf(SubjectKind kind) noexcept
{
    return kind == SubjectKind::Renderer ? RendererGroups() : PlugInGroups();
}

} // namespace GlazelHost
