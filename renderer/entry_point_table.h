// The names of the renderer's sixteen entry points, in the order in which they are looked up, and
// which of them a renderer must export. Pure: no windows.h.
#pragma once

#include <array>
#include <cstddef>

namespace RendererAPI
{

struct EntryPoint
{
    const char* name;
    bool required; // a library without it is refused
};

// clang-format off
inline constexpr std::array<EntryPoint, 16> kEntryPoints{{
    {"InitRenderer",                  true},
    {"ExitRenderer",                  true},
    {"DoModalUI",                     true},
    {"DoModalUI2",                    false}, // DoModalUI serves without it
    {"DoModalUIWithProfile",          false},
    {"RenderFrame",                   true},
    {"LoadSessionFile",               true},
    {"GetSessionIcon",                true},
    {"GetSessionDataSize",            true},
    {"GetSessionData",                true},
    {"InterpolateSessionData",        true},
    {"BeginToolChain",                true},
    {"AddToolToChain",                true},
    {"SetToolParameterValue",         true},
    {"EnableFeature",                 true},
    {"SetTopLevelMaskParameterValue", true},
}};
// clang-format on

} // namespace RendererAPI
