// Which instructions of the processor the kernels use. Every kernel gives the same bits with each.
// Pure: no windows.h. Tests: tests/reference_renderer/core/code_look_test.cpp.
#pragma once

namespace ReferenceRenderer
{

enum class InstructionSet
{
    Baseline, // what every x64 processor has
    Avx2,
};

// The best that processor and system offer, or Baseline where the environment variable
// GLAZEL_INSTRUCTIONS says "baseline". Asked once; any thread.
InstructionSet UsedInstructionSet() noexcept;

} // namespace ReferenceRenderer
