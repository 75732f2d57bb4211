// A look built by numbers: the tools and parameters behind BeginToolChain, AddToolToChain and
// SetToolParameterValue. Pure: no windows.h. Tests:
// tests/reference_renderer/core/tool_chain_test.cpp.
#pragma once

#include "reference_renderer/core/look.h"

#include <array>
#include <cstdint>

namespace ReferenceRenderer
{

// Tools, each a step of a CDL correction. They work in the order of the correction, whatever the
// order in which they are added.
inline constexpr std::uint32_t kToolSlope = 1;      // >= 0
inline constexpr std::uint32_t kToolOffset = 2;     // any
inline constexpr std::uint32_t kToolPower = 3;      // > 0
inline constexpr std::uint32_t kToolSaturation = 4; // >= 0

// Parameters: the channel that a value goes to. A saturation has one value for all, whatever is
// said.
inline constexpr std::uint32_t kParameterRed = 0;
inline constexpr std::uint32_t kParameterGreen = 1;
inline constexpr std::uint32_t kParameterBlue = 2;
inline constexpr std::uint32_t kParameterAll = 3;

// Answer of AddToolToChain to a tool that is not known; it is the binding's own answer too.
inline constexpr std::int32_t kToolRefused = -1;

// Not thread-safe: whoever holds it guards it.
class ToolChain
{
public:
    // An empty chain with a neutral correction.
    void Begin() noexcept;
    // The tool's place in the chain, from 0; a tool that is already there keeps its place and its
    // values. kToolRefused for a tool that is not known.
    std::int32_t Add(std::uint32_t tool) noexcept;
    // False, and nothing changes, when the tool is not in the chain, the parameter is not known or
    // the value is not one that the tool takes.
    bool Set(std::uint32_t tool, std::uint32_t parameter, double value) noexcept;

    // A clamped correction without tables.
    Look Result() const;

private:
    Cdl m_cdl;
    std::array<std::int32_t, kToolSaturation + 1> m_places{}; // by tool: place + 1, 0 = not there
    std::int32_t m_count = 0;
};

} // namespace ReferenceRenderer
